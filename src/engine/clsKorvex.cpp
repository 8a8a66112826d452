// The run: the structure check, the output workbook, folders and files in order, and the layers
// that hand an error up.

#include "engine/clsKorvex.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "errors/trap.h"
#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "settings/basSettings.h"
#include "structure/basFuncs_workbooks.h"
#include "text/text.h"
#include "workbook/sheet_rules.h"

namespace korvex {
namespace {

constexpr char kLineBreak[] = "\r\n";
constexpr char kStopButton[] = "Yes, Stop.";

// Folders and files are counted by 16-bit numbers. `things` are "sub-folders of /data/run1".
std::int16_t Int16(std::size_t count, const std::string& things) {
  constexpr auto kMost = std::numeric_limits<std::int16_t>::max();
  if (count > static_cast<std::size_t>(kMost)) {
    throw Error(error_number::kOverflow, "There are " + GroupedDigits(count) + " " + things +
                                             ", and a run takes at most " + GroupedDigits(kMost) +
                                             ". Spread them over several runs.");
  }
  return static_cast<std::int16_t>(count);
}

// "/out/all (2).xls" for "/out/all.xls": the first such name that no file has yet.
std::string FreeNameLike(const std::string& full_name) {
  const clsFileSys& names = SharedFileSys();
  const std::string stem = names.DropExtention(full_name);
  const std::string ending = full_name.substr(stem.size());
  for (int number = 2;; ++number) {
    std::string name = stem + " (" + std::to_string(number) + ")" + ending;
    if (!Platform().files->FileExists(name)) return name;
  }
}

// A display path for the handling of an error: the path itself where it cannot be shortened, since
// the folder may be what went missing.
std::string FailedPath(const std::string& path) {
  try {
    return GetDisplayPath(path);
  } catch (const Error&) {
    return Shown(path);
  }
}

std::string FailedFolder(const std::string& folder) {
  try {
    return ShortenPath(folder, false);
  } catch (const Error&) {
    return Shown(folder);
  }
}

}  // namespace

clsKorvex::~clsKorvex() {
  QuitExcel(application_);
}

void clsKorvex::Refuse(const std::string& message) {
  ShowMessageBox(message, {"OK"}, kProgramTitle);
  throw Error(error_number::kCannotPerform);
}

void clsKorvex::ProcessFolders(std::string& folder, const std::vector<std::string>& files) {
  running_ = true;
  processing_folder_ = folder;
  files_ = files;
  Trap(
      "frmMain.ProcessFolders", [&] { Run(); },
      [&](const TrappedError& error) {
        stopped_ = error.Number() == error_number::kUserInterrupt;
        if (!error.IsTold()) error.Report();
        running_ = false;
        throw Error(error_number::kCannotPerform);
      });
  running_ = false;
}

void clsKorvex::Run() {
  application_ = Platform().spreadsheet->CreateApplication();
  CheckStructure();
  next_output_row_ = 2;
  CreateOutputWorkbook();
  WriteHeaders();
  if (basSettings::ProcessingSubFolders()) {
    ProcessSubFolders();
  } else {
    folder_count_ = 1;
    current_folder_ = 1;
    std::vector<std::string> names;
    for (const std::string& path : files_)
      names.push_back(SharedFileSys().GetFileTitle(path, false));
    CheckReplicationsAhead(names);
    ProcessFiles(files_);
  }
  RemoveEmptyColumns();
  SaveOutputWorkbook();
}

void clsKorvex::CheckStructure() {
  structure_.Constructor(processing_folder_, files_, nullptr);
  if (!structure_.Discrepancy()) return;
  Refuse(std::string("Please check structure settings before start.") + kLineBreak + kLineBreak +
         "File used for format check:" + kLineBreak + kLineBreak + structure_.SampleFileUsed(true));
}

void clsKorvex::CreateOutputWorkbook() {
  application_->SetVisible(false);
  application_->SetScreenUpdating(false);
  application_->SetDisplayAlerts(false);
  output_full_name_ = basSettings::OutputFullName();
  output_workbook_ = &application_->AddWorkbook(output_full_name_);
  while (output_workbook_->WorksheetCount() >= 2) output_workbook_->Worksheets(1).Delete();
  output_sheet_ = &output_workbook_->Worksheets(1);
  const std::string folder = Platform().files->AbsolutePath(processing_folder_);
  const std::string name = SheetNameFromFolder(SharedFileSys().GetFileTitle(folder, false));
  if (!name.empty()) output_sheet_->SetName(name);
}

void clsKorvex::ProcessSubFolders() {
  const std::vector<std::string> sub_folders = SubFolderNames(processing_folder_);
  // The sample came from one of them. A share that went away since can look like an empty folder.
  if (sub_folders.empty() && !structure_.SampleFileUsed(false).empty()) {
    throw Error(error_number::kPathNotFound, "The sub-folders of " + processing_folder_ +
                                                 " have gone since the run was started.");
  }
  folder_count_ = Int16(sub_folders.size(), "sub-folders of " + processing_folder_);
  std::vector<std::string> names;
  int first_count = 0;  // of the first sub-folder's replications, which are side by side after it
  for (const std::string& sub_folder : sub_folders) {
    const std::string path = JoinPath(processing_folder_, sub_folder);
    std::vector<std::string> found = WorkbookNames(path);
    Int16(found.size(), "files in " + path);
    std::ranges::move(found, std::back_inserter(names));
    if (first_count == 0) first_count = ReplicationsOf(names).count;
  }
  CheckColumnsAhead(output_columns_ + first_count);
  CheckReplicationsAhead(names);
  for (const std::string& name : sub_folders) {
    ++current_folder_;
    const std::string sub_folder = JoinPath(processing_folder_, name);
    clsArray paths;
    for (const std::string& file : WorkbookNames(sub_folder))
      paths.AddText(JoinPath(sub_folder, file));
    if (paths.IsEmpty()) {
      Refuse("The sub-folder \"" + Shown(name) + "\" is empty. " +
             "Please make sure all sub-folders of chosen processing folder have " +
             "files in them.");
    }
    ProcessFiles(paths.Texts());
    CheckColumnsAhead(output_sheet_->LastCell().column);
  }
}

void clsKorvex::ProcessFiles(const std::vector<std::string>& files) {
  try {
    const std::int16_t count = Int16(files.size(), "files");
    std::int16_t number = 0;
    for (const std::string& path : files) {
      const std::string base_name = SharedFileSys().GetFileTitle(path, true);
      ProcessFile(path, base_name, ++number, count);
    }
    RemoveEmptyColumns();
    AddExtraHeaders();
  } catch (...) {
    if (basSettings::ProcessingSubFolders()) {
      const std::string folder = SharedFileSys().GetFilePath(files.front(), false);
      events_.ErrorMessage("Error while processing folder " + FailedFolder(folder));
    }
    throw;
  }
}

void clsKorvex::ProcessFile(const std::string& path, const std::string& base_name,
                            std::int16_t file_number, std::int16_t file_count) {
  Trap(
      "frmMain.ProcessFile", [&] { ReadFile(path, base_name, file_number, file_count); },
      [&](const TrappedError& error) {
        const bool stopped = error.Number() == error_number::kUserInterrupt;
        if (error.IsTold()) {
          CloseInputWorkbook();
        } else if (!stopped) {
          error.Report("An error occurred while processing the file " + FailedPath(path));
        }
        if (basSettings::ProcessingFiles()) {
          events_.ErrorMessage("Error while processing file " + FailedPath(path));
        }
        throw Error(stopped ? error_number::kUserInterrupt : error_number::kCannotPerform);
      });
}

void clsKorvex::ReadFile(const std::string& path, const std::string& base_name,
                         std::int16_t file_number, std::int16_t file_count) {
  OpenOptions options;
  options.read_only = true;
  options.ignore_read_only_recommended = true;
  options.add_to_recent_files = false;
  input_workbook_ = &application_->OpenWorkbook(path, options);
  CheckSheetExists(*input_workbook_);
  structure_.RefreshAvailableCols(*input_workbook_);
  data_sheet_ = &GetDataSheet(*input_workbook_);
  Platform().message_loop->Yield();
  AskWhetherToStop();
  ProcessSheet(base_name, file_number, file_count);
  CloseInputWorkbook();
  events_.ProcessedFile();
}

void clsKorvex::CloseInputWorkbook() {
  data_sheet_ = nullptr;
  if (input_workbook_ == nullptr) return;
  Workbook& workbook = *input_workbook_;
  input_workbook_ = nullptr;
  workbook.Close();
}

void clsKorvex::AskWhetherToStop() {
  if (!stop_requested_) return;
  const std::string answer =
      ShowMessageBox("Stop Process?", {kStopButton, "Continue"}, kProgramTitle);
  if (EqualText(answer, kStopButton)) throw Error(error_number::kUserInterrupt);
  stop_requested_ = false;
}

void clsKorvex::SaveOutputWorkbook() {
  if (keep_existing_output_) {
    SaveUnlessTaken();
  } else {
    output_workbook_->SaveAs(output_full_name_);
  }
  output_workbook_->Close();
  output_sheet_ = nullptr;
  output_workbook_ = nullptr;
  application_->Quit();
  application_.reset();
}

// What the run has made is saved in any case; where it is the user must know, since it is not where
// it was expected.
void clsKorvex::SaveUnlessTaken() {
  const auto save_as = [&](const std::string& name) {
    try {
      output_workbook_->SaveAsNew(name);
      return true;
    } catch (const Error& error) {
      if (error.Number() != error_number::kFileExists) throw;
      return false;
    }
  };
  if (save_as(output_full_name_)) return;
  std::string kept;
  do {
    kept = FreeNameLike(output_full_name_);
  } while (!save_as(kept));
  throw Error(error_number::kFileExists, "A file " + output_full_name_ +
                                             " appeared during the run and was not replaced, since "
                                             "nobody was asked. The output of the run is in " +
                                             kept + ".");
}

}  // namespace korvex
