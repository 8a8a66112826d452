#include "engine/clsKorvex.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "errors/clsAppLog.h"
#include "errors/trap.h"
#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "platform/ciphers.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "settings/basSettings.h"
#include "structure/basFuncs_workbooks.h"
#include "structure/clsArray.h"
#include "text/text.h"
#include "workbook/sheet_rules.h"

namespace korvex {
namespace {

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

// Display paths for messages about an error. They show the whole path where it cannot be shortened:
// the folder may be what is missing.
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

// A sub-folder that was listed may be on a share that has gone since; what is left of it can look
// like an empty folder.
void CheckIsThere(const std::string& sub_folder) {
  if (Platform().files->FolderExists(sub_folder)) return;
  throw Error(error_number::kPathNotFound,
              "The sub-folder " + sub_folder + " has gone since the run was started.");
}

}  // namespace

clsKorvex::clsKorvex(KorvexEvents& events, RunOptions options) : events_(events) {
  if (options.keep_readings) record_.readings.emplace();
  record_.options = std::move(options);
}

clsKorvex::~clsKorvex() {
  QuitExcel(application_);
}

void clsKorvex::ProcessFolders(std::string& folder, const std::vector<std::string>& files) {
  running_ = true;
  processing_folder_ = folder;
  files_ = files;
  // The outermost of three layers: ProcessFile reports what goes wrong in a file, ProcessFiles
  // names the folder, and the caller gets error 17 for every failure.
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
  Step([&] { CheckStructure(); });
  BeginRecord();
  HideApplication();
  output_full_name_ =
      record_.options.wide ? basSettings::OutputFullName() : record_.options.long_form;
  if (record_.options.wide) {
    Step([&] {
      CreateOutputWorkbook();
      output_->WriteHeaders();
    });
  }
  if (basSettings::ProcessingSubFolders()) {
    ProcessSubFolders();
  } else {
    ProcessSelectedFiles();
  }
  if (output_) {
    output_->RemoveEmptyColumns();
    output_->NoteMisplaced(record_.findings);
  }
  watch_->EndRun();
  if (record_.options.check) return;
  CheckStrict();
  place_ = {};
  if (output_) SaveOutputWorkbook();
  if (long_form_) SaveLongForm();
  application_->Quit();
  application_.reset();
}

template <class Body>
void clsKorvex::Step(Body&& body) {
  if (!record_.options.check) {
    std::forward<Body>(body)();
    return;
  }
  try {
    std::forward<Body>(body)();
  } catch (...) {
    const Error error = PendingError();
    if (error.Number() == error_number::kUserInterrupt) throw;
    // What was told has been recorded on its way.
    if (error.Number() != error_number::kCannotPerform) {
      record_.problems.push_back({"An error occurred while processing the file " +
                                      (place_.file.empty() ? processing_folder_ : place_.file),
                                  error.Description(), place_});
    }
  }
}

// The columns as the settings name them; the sample has them all when the run has come this far.
void clsKorvex::BeginRecord() {
  record_.processing_folder = processing_folder_;
  record_.sub_folders = basSettings::ProcessingSubFolders();
  record_.key_columns = basSettings::KeysColumns();
  record_.data_column = basSettings::DataColumn();
  clsArray names;
  names.AddTexts(basSettings::OutputColumns());
  names.Remove(record_.data_column);
  record_.output_columns = names.Texts();
  watch_.emplace(record_, keys_);
}

// The sample is read in an application of its own, which the structure starts and quits.
void clsKorvex::CheckStructure() {
  structure_.Constructor(processing_folder_, files_, nullptr, &folders_);
  if (!structure_.Discrepancy()) return;
  TellAndFail(std::string("Please check structure settings before start.") + kLineBreak +
              kLineBreak + "File used for format check:" + kLineBreak + kLineBreak +
              structure_.SampleFileUsed(true));
}

// Without alerts, neither deleting sheets nor saving over a file asks anybody.
void clsKorvex::HideApplication() {
  application_->SetVisible(false);
  application_->SetScreenUpdating(false);
  application_->SetDisplayAlerts(false);
}

void clsKorvex::CreateOutputWorkbook() {
  output_workbook_ = &application_->AddWorkbook(output_full_name_);
  while (output_workbook_->WorksheetCount() >= 2) output_workbook_->Worksheets(1).Delete();
  Worksheet& sheet = output_workbook_->Worksheets(1);
  const std::string name = SheetName();
  if (!name.empty()) sheet.SetName(name);
  output_.emplace(sheet, structure_);
}

// Empty where the folder has no name, as a drive has none.
std::string clsKorvex::SheetName() const {
  const std::string folder = Platform().files->AbsolutePath(processing_folder_);
  return SheetNameFromFolder(SharedFileSys().GetFileTitle(folder, false));
}

void clsKorvex::BeginLongForm() {
  if (record_.options.long_form.empty() || record_.options.check) return;
  long_form_.emplace(record_.options.long_form, SheetName(), *application_, structure_);
  long_form_->WriteHeaders();
}

// What cannot be done is refused before the first file is read, since a run may take an hour.
void clsKorvex::ProcessSubFolders() {
  const std::vector<std::string> sub_folders = folders_.SubFolders(processing_folder_);
  folder_count_ = Int16(sub_folders.size(), "sub-folders of " + processing_folder_);
  std::vector<std::string> names;
  for (const std::string& sub_folder : sub_folders) {
    const std::string path = JoinPath(processing_folder_, sub_folder);
    Step([&] {
      CheckIsThere(path);
      const std::vector<std::string> found = folders_.Workbooks(path);
      Int16(found.size(), "files in " + path);
      if (output_ && sub_folder == sub_folders.front()) {
        output_->CheckFoldersAhead(found, folder_count_);
      }
      names.insert(names.end(), found.begin(), found.end());
    });
  }
  record_.input_count = names.size();
  if (output_) Step([&] { output_->CheckReplicationsAhead(names); });
  BeginLongForm();
  for (const std::string& sub_folder : sub_folders) {
    ++current_folder_;
    Step([&] {
      const std::vector<std::string> files = FilesOf(sub_folder);
      NoteSkippedFolders(sub_folder);
      ProcessFiles(files);
    });
    if (output_) Step([&] { output_->CheckFoldersAhead(current_folder_, folder_count_); });
  }
}

std::vector<std::string> clsKorvex::FilesOf(const std::string& sub_folder) {
  const std::string path = JoinPath(processing_folder_, sub_folder);
  CheckIsThere(path);
  clsArray files;
  for (const std::string& name : folders_.Workbooks(path)) files.AddText(JoinPath(path, name));
  if (files.IsEmpty()) {
    TellAndFail("The sub-folder \"" + Shown(sub_folder) + "\" is empty. " +
                "Please make sure all sub-folders of chosen processing folder have " +
                "files in them.");
  }
  return files.Texts();
}

// Folders named like workbooks are among the files, and refused by name.
void clsKorvex::NoteSkippedFolders(const std::string& sub_folder) {
  const std::string path = JoinPath(processing_folder_, sub_folder);
  const std::vector<std::string> files = folders_.Workbooks(path);
  for (const FolderEntry& entry : folders_.Entries(path)) {
    if (!entry.is_folder || entry.is_hidden) continue;
    if (std::ranges::find(files, entry.name) != files.end()) continue;
    watch_->SkippedFolder(sub_folder + "/" + entry.name);
  }
}

void clsKorvex::ProcessSelectedFiles() {
  folder_count_ = 1;
  current_folder_ = 1;
  std::vector<std::string> names;
  for (const std::string& path : files_) {
    names.push_back(SharedFileSys().GetFileTitle(path, false));
  }
  record_.input_count = names.size();
  if (output_) Step([&] { output_->CheckReplicationsAhead(names); });
  BeginLongForm();
  Step([&] { ProcessFiles(files_); });
}

// One batch: a sub-folder, or the selected files.
void clsKorvex::ProcessFiles(const std::vector<std::string>& files) {
  try {
    const std::int16_t count = Int16(files.size(), "files");
    std::int16_t number = 0;
    for (const std::string& path : files) {
      const std::string base_name = SharedFileSys().GetFileTitle(path, true);
      ++number;
      Step([&] { ProcessFile(path, base_name, number, count); });
    }
    if (output_) {
      output_->RemoveEmptyColumns();
      output_->AddExtraHeaders();
    }
    watch_->EndBatch();
  } catch (...) {
    if (basSettings::ProcessingSubFolders()) {
      const std::string folder = SharedFileSys().GetFilePath(files.front(), false);
      events_.ErrorMessage("Error while processing folder " + FailedFolder(folder));
    }
    throw;
  }
}

// After an error that the user has been told of, the workbook is closed. After others it stays open
// until the engine goes, since its application may be what failed.
void clsKorvex::ProcessFile(const std::string& path, const std::string& base_name,
                            std::int16_t file_number, std::int16_t file_count) {
  Workbook* input = nullptr;
  TakeDownInput(path);
  Trap(
      "frmMain.ProcessFile",
      [&] {
        input = &OpenInput(path);
        CheckSheetExists(*input);
        structure_.RefreshAvailableCols(*input);
        DataSheet sheet(*input, structure_, record_.options.decimal_comma);
        Platform().message_loop->Yield();
        AskWhetherToStop();
        ProcessSheet(sheet, base_name, file_number, file_count);
        std::exchange(input, nullptr)->Close();
        events_.ProcessedFile();
      },
      [&](const TrappedError& error) {
        const bool stopped = error.Number() == error_number::kUserInterrupt;
        if (error.IsTold() || record_.options.check) {
          if (input != nullptr) Attempt([&] { input->Close(); });
          if (record_.options.check) throw;
        } else if (!stopped) {
          error.Report("An error occurred while processing the file " + FailedPath(path));
        }
        if (basSettings::ProcessingFiles()) {
          events_.ErrorMessage("Error while processing file " + FailedPath(path));
        }
        throw Error(stopped ? error_number::kUserInterrupt : error_number::kCannotPerform);
      });
}

Workbook& clsKorvex::OpenInput(const std::string& path) {
  OpenOptions options;
  options.read_only = true;
  options.ignore_read_only_recommended = true;
  options.add_to_recent_files = false;
  return application_->OpenWorkbook(path, options);
}

void clsKorvex::ProcessSheet(DataSheet& sheet, const std::string& base_name,
                             std::int16_t file_number, std::int16_t file_count) {
  events_.Message("Folder " + std::to_string(current_folder_) + " of " +
                  std::to_string(folder_count_) + ", Filename " + Shown(base_name) + " (" +
                  std::to_string(file_number) + " of " + std::to_string(file_count) + ")" +
                  ", Sheet " + std::to_string(sheet.Index()) + " of " +
                  std::to_string(sheet.SheetCount()));
  sheet.ReadLayout(output_ ? output_->ColumnCount()
                           : static_cast<int>(record_.output_columns.size()));
  InputRecord& input = record_.inputs.back();
  input.replication = sheet.Replication();
  input.day = sheet.DayField();
  input.date = sheet.DateOrNothing();
  const auto number = static_cast<std::uint32_t>(record_.inputs.size() - 1);
  keys_.BeginSheet(number, sheet.Replication(), current_folder_, sheet.FirstRow());
  if (output_) output_->BeginSheet(input.path, current_folder_);
  if (long_form_) long_form_->BeginSheet(sheet, input.path);
  watch_->BeginSheet(sheet, output_ ? &*output_ : nullptr);
  int row = sheet.FirstRow();
  for (; sheet.HasRow(row); ++row) {
    if (record_.options.check) {
      CheckRow(sheet, row);
    } else {
      ProcessRow(sheet, row);
    }
  }
  place_.row = 0;
  place_.key.clear();
  watch_->EndSheet(row);
}

void clsKorvex::ProcessRow(DataSheet& sheet, int row) {
  sheet.BuildKey(row, key_);
  const KeyTable::Found key = keys_.Add(key_);
  if (key.is_duplicate) RefuseDuplicate(sheet, row, key.key);
  const CellValue value = sheet.MeasuredValue(row);
  if (output_) {
    if (!output_->WriteData(key.key, sheet, value)) RefuseOverwriting(sheet, row, key.key);
    if (key.is_new) output_->WriteOutputColumns(key.key, sheet, row);
  } else if (!taken_.Take(key.key, sheet.Replication(), value)) {
    RefuseOverwriting(sheet, row, key.key);
  }
  if (long_form_) long_form_->Write(row, value);
  watch_->Row(key, row, value);
}

// The rows of a sheet count one by one, with a reading or without.
void clsKorvex::CheckRow(DataSheet& sheet, int row) {
  const std::size_t sheet_number = keys_.Sheets().size() - 1;
  const std::size_t rows = keys_.ReadingsOf(sheet_number);
  place_.row = row;
  place_.key.clear();
  Step([&] { ProcessRow(sheet, row); });
  if (keys_.ReadingsOf(sheet_number) == rows) keys_.SkipRow();
}

void clsKorvex::TakeDownInput(const std::string& path) {
  place_ = {};
  place_.file = RelativePath(path);
  InputRecord& input = record_.inputs.emplace_back();
  input.path = place_.file;
  input.full_name = path;
  input.batch = current_folder_ - 1;
  if (const auto version = Platform().files->VersionOf(path)) {
    input.size = static_cast<std::uint64_t>(version->size);
  }
  if (record_.readings) Attempt([&] { input.sha256 = Sha256OfFile(*Platform().files, path); });
}

std::string clsKorvex::RelativePath(const std::string& path) const {
  const std::string folder = WithSeparator(processing_folder_);
  std::string relative = path.starts_with(folder) ? path.substr(folder.size()) : path;
  std::ranges::replace(relative, Platform().files->Separator(), '/');
  return relative;
}

void clsKorvex::RefuseDuplicate(const DataSheet& sheet, int row, std::uint32_t key) {
  place_.row = row;
  place_.key = key_;
  const std::uint32_t input = keys_.Sheets().back().input;
  const auto first =
      keys_.FindRow(key, [&](const KeyTable::Sheet& other) { return other.input == input; });
  RefuseKey(std::string("Duplicate key in file ") + kLineBreak + "'" + sheet.DisplayPath() + "'" +
                kLineBreak + kLineBreak + "Key name:   " + Shown(key_),
            first, row);
}

void clsKorvex::RefuseOverwriting(const DataSheet& sheet, int row, std::uint32_t key) {
  place_.row = row;
  place_.key = key_;
  // In the long form nothing shares a column.
  const auto first = keys_.Find(key, [&](const KeyTable::Sheet& other) {
    if (other.replication == sheet.Replication()) return true;
    return output_ &&
           EqualText(ReplicationLetter(other.replication), ReplicationLetter(sheet.Replication()));
  });
  RefuseKey(std::string("The same key, with the same replication number was found in ") +
                "different files, and data would be overwritten. Please check that all key " +
                "fields are truely unique." + kLineBreak + kLineBreak + "Current file: " +
                sheet.DisplayPath() + kLineBreak + kLineBreak + "Key name:   " + Shown(key_) +
                (output_ ? output_->SharedLetter(sheet.Replication()) : std::string()),
            first, row);
}

// The message is the user's; where the key was first stands below it and, with the whole refusal,
// in the log.
void clsKorvex::RefuseKey(const std::string& message, const std::optional<KeyTable::Place>& first,
                          int row) {
  std::string cause;
  if (first) {
    cause = "Row " + std::to_string(row) + " repeats what row " + std::to_string(first->row) +
            " of " + FailedPath(record_.inputs[first->input].full_name) + " held first.";
  }
  if (!record_.options.check) {
    Attempt([&] {
      AppLog().AddText("The key " + Shown(key_) + " was refused in " + place_.file + ". " + cause,
                       {}, true, 1, false);
    });
  }
  TellAndFail(message, cause);
}

// Findings are failures of a strict run.
void clsKorvex::CheckStrict() {
  if (!record_.options.strict || record_.findings.IsEmpty()) return;
  place_ = {};
  TellAndFail(
      "The data could be converted, but they do not look right, and this run is strict. "
      "No output was written.");
}

void clsKorvex::AskWhetherToStop() {
  if (!stop_requested_) return;
  const std::string answer =
      ShowMessageBox("Stop Process?", {kStopButton, "Continue"}, kProgramTitle);
  if (EqualText(answer, kStopButton)) throw Error(error_number::kUserInterrupt);
  stop_requested_ = false;
}

// The last steps of a run that succeeded; after a failure nothing is saved.
void clsKorvex::SaveOutputWorkbook() {
  const CellAddress last = output_workbook_->Worksheets(1).LastCell();
  if (keep_existing_output_) {
    SaveUnlessTaken();
  } else {
    output_workbook_->SaveAs(output_full_name_);
  }
  output_.reset();
  std::exchange(output_workbook_, nullptr)->Close();
  record_.output = RecordOf(output_full_name_, last.row, last.column);
}

void clsKorvex::SaveLongForm() {
  const int rows = long_form_->RowCount();
  const int columns = long_form_->ColumnCount();
  keep_existing_long_form_ ? long_form_->SaveAsNew() : long_form_->Save();
  long_form_.reset();
  record_.long_form = RecordOf(record_.options.long_form, rows, columns);
}

OutputRecord clsKorvex::RecordOf(const std::string& full_name, int rows, int columns) const {
  OutputRecord output{full_name, 0, {}, rows, columns};
  if (const auto version = Platform().files->VersionOf(full_name)) {
    output.size = static_cast<std::uint64_t>(version->size);
  }
  if (record_.readings) output.sha256 = Sha256OfFile(*Platform().files, full_name);
  return output;
}

// Saves the output under another name when a file has appeared under its own: the work of the run
// is kept, and the error says where.
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
