#include "engine/clsKorvex.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "engine/key_refusals.h"
#include "engine/refusal_recorder.h"
#include "errors/trap.h"
#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "files/stray_files.h"
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

clsKorvex::clsKorvex(KorvexEvents& events, RunOptions options)
    : events_(events), outputs_(record_.options, structure_) {
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
  // Before the structure is checked: the report of a refused run names its settings, too.
  BeginRecord();
  Step([&] { CheckStructure(); });
  HideApplication();
  output_full_name_ =
      record_.options.wide ? basSettings::OutputFullName() : record_.options.long_form;
  if (record_.options.wide) {
    Step([&] { outputs_.CreateOutputWorkbook(*application_, output_full_name_, SheetName()); });
  }
  if (basSettings::ProcessingSubFolders()) {
    ProcessSubFolders();
  } else {
    ProcessSelectedFiles();
  }
  outputs_.EndRun(record_.findings);
  watch_->EndRun();
  if (record_.options.check) {
    // The engine may stay for as long as the program.
    QuitExcel(application_);
    return;
  }
  // After all findings are known, and before anything takes its place on the disk.
  CheckStrict();
  place_ = {};
  outputs_.Save(record_);
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
      const bool is_file = !record_.inputs.empty() && record_.inputs.back().path == place_.file;
      record_.AddProblem({std::string("An error occurred while processing the ") +
                              (is_file ? "file " : "folder ") +
                              (place_.file.empty() ? processing_folder_ : place_.file),
                          error.Description(), place_});
    }
  }
}

// The columns as the settings name them: a run goes no further than a sample that lacks one.
void clsKorvex::BeginRecord() {
  record_.processing_folder = processing_folder_;
  record_.sub_folders = basSettings::ProcessingSubFolders();
  record_.key_columns = basSettings::KeysColumns();
  record_.data_column = basSettings::DataColumn();
  clsArray names;
  // The data column is an output column by its replications only, as in the structure.
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
                  structure_.SampleFileUsed(true),
              MissingText(structure_.Missing()));
}

// Without alerts, neither deleting sheets nor saving over a file asks anybody.
void clsKorvex::HideApplication() {
  application_->SetVisible(false);
  application_->SetScreenUpdating(false);
  application_->SetDisplayAlerts(false);
}

// Empty where the folder has no name, as a drive has none.
std::string clsKorvex::SheetName() const {
  const std::string folder = Platform().files->AbsolutePath(processing_folder_);
  return SheetNameFromFolder(SharedFileSys().GetFileTitle(folder, false));
}

// What cannot be done is refused before the first file is read, since a run may take an hour.
void clsKorvex::ProcessSubFolders() {
  const std::vector<std::string> sub_folders = folders_.SubFolders(processing_folder_);
  folder_count_ = Int16(sub_folders.size(), "sub-folders of " + processing_folder_);
  OutputTable* const table = outputs_.Table();
  std::vector<std::string> names;
  std::vector<std::string> paths;
  for (const std::string& sub_folder : sub_folders) {
    const std::string path = JoinPath(processing_folder_, sub_folder);
    place_.file = sub_folder;
    Step([&] {
      CheckIsThere(path);
      const std::vector<std::string> found = folders_.Workbooks(path);
      // Called for its error: too many files are refused before any is read.
      Int16(found.size(), "files in " + path);
      // The first sub-folder alone decides how wide the sheet is when headers are first appended.
      if (table != nullptr && sub_folder == sub_folders.front()) {
        table->CheckFoldersAhead(found, folder_count_);
      }
      names.insert(names.end(), found.begin(), found.end());
      for (const std::string& name : found) paths.push_back(JoinPath(path, name));
    });
  }
  place_ = {};
  record_.input_count = names.size();
  if (table != nullptr) Step([&] { table->CheckReplicationsAhead(names); });
  outputs_.BeginLongForm(*application_, SheetName(), paths);
  ExpectInputs(paths);
  for (const std::string& sub_folder : sub_folders) {
    ++current_folder_;
    place_ = {};
    place_.file = sub_folder;
    Step([&] {
      const std::vector<std::string> files = FilesOf(sub_folder);
      const std::string path = JoinPath(processing_folder_, sub_folder);
      // After the folder was found to hold workbooks: an empty one is refused, and is no finding.
      watch_->NoteSkippedFolders(sub_folder, folders_.Entries(path), folders_.Workbooks(path));
      ProcessFiles(files);
    });
    place_ = {};
    // Again with the columns that there are now: later sub-folders may have brought new
    // replications.
    if (table != nullptr) {
      Step([&] { table->CheckFoldersAhead(current_folder_, folder_count_); });
    }
  }
}

// An application may refuse some by their names. A check goes on, and hears of each when it is
// opened.
void clsKorvex::ExpectInputs(const std::vector<std::string>& paths) {
  try {
    application_->Expect(paths, kDataSheetName);
  } catch (const Error&) {
    if (!record_.options.check) throw;
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

void clsKorvex::ProcessSelectedFiles() {
  folder_count_ = 1;
  current_folder_ = 1;
  OutputTable* const table = outputs_.Table();
  std::vector<std::string> names;
  for (const std::string& path : files_) {
    names.push_back(SharedFileSys().GetFileTitle(path, false));
  }
  record_.input_count = names.size();
  if (table != nullptr) Step([&] { table->CheckReplicationsAhead(names); });
  outputs_.BeginLongForm(*application_, SheetName(), files_);
  ExpectInputs(files_);
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
    // A batch that failed is not ended, since nothing of the run is saved.
    outputs_.EndBatch();
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
  place_ = {};
  place_.file = watch_->BeginInput(path, current_folder_);
  Trap(
      "frmMain.ProcessFile",
      [&] {
        input = &OpenInput(path);
        CheckSheetExists(*input);
        // Of every workbook: its columns may stand in another order than those of the sample.
        structure_.RefreshAvailableCols(*input);
        DataSheet sheet(*input, structure_, record_.options.decimal_comma);
        // Once a file, where nothing of it has been written yet.
        Platform().message_loop->Yield();
        AskWhetherToStop();
        ProcessSheet(sheet, base_name, file_number, file_count);
        // Exchanged first, so that a failing close is not tried again below.
        std::exchange(input, nullptr)->Close();
        events_.ProcessedFile();
      },
      [&](const TrappedError& error) {
        const bool stopped = error.Number() == error_number::kUserInterrupt;
        if (error.IsTold() || record_.options.check) {
          if (input != nullptr) Attempt([&] { input->Close(); });
          // The step around it takes down the error itself, with its own text.
          if (record_.options.check) throw;
        } else if (!stopped) {
          error.Report("An error occurred while processing the file " + FailedPath(path));
        }
        if (basSettings::ProcessingFiles()) {
          events_.ErrorMessage("Error while processing file " + FailedPath(path));
        }
        // A stop is told further up, in its own words. All else is told or reported by now.
        if (stopped) throw;
        throw Error(error_number::kCannotPerform);
      });
}

Workbook& clsKorvex::OpenInput(const std::string& path) {
  OpenOptions options;
  // Read-only, so that a workbook that somebody has open can be read, too; a campaign does not fill
  // the list of recent files.
  options.read_only = true;
  options.ignore_read_only_recommended = true;
  options.add_to_recent_files = false;
  return OpenUnlessStray(path,
                         [&]() -> Workbook& { return application_->OpenWorkbook(path, options); });
}

void clsKorvex::ProcessSheet(DataSheet& sheet, const std::string& base_name,
                             std::int16_t file_number, std::int16_t file_count) {
  events_.Message("Folder " + std::to_string(current_folder_) + " of " +
                  std::to_string(folder_count_) + ", Filename " + Shown(base_name) + " (" +
                  std::to_string(file_number) + " of " + std::to_string(file_count) + ")" +
                  ", Sheet " + std::to_string(sheet.Index()) + " of " +
                  std::to_string(sheet.SheetCount()));
  OutputTable* const table = outputs_.Table();
  sheet.ReadLayout(table != nullptr ? table->ColumnCount()
                                    : static_cast<int>(record_.output_columns.size()));
  const auto number = static_cast<std::uint32_t>(record_.inputs.size() - 1);
  keys_.BeginSheet(number, sheet.Replication(), current_folder_, sheet.FirstRow());
  outputs_.BeginSheet(sheet, place_.file, current_folder_);
  watch_->BeginSheet(sheet, table);
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
  if (key.is_duplicate) RefuseKey(sheet, row, key);
  const CellValue value = sheet.MeasuredValue(row);
  if (!outputs_.Write(key, sheet, row, value)) RefuseKey(sheet, row, key);
  if (IsMissing(value)) keys_.MarkMissing();
  watch_->Row(key, row, value);
}

void clsKorvex::RefuseKey(const DataSheet& sheet, int row, const KeyTable::Found& key) {
  place_.row = row;
  place_.key = key_;
  const KeyTable::Sheet current = keys_.Sheets().back();
  // In the output workbook replications whose letters differ in case alone share a column.
  const auto is_meant = [&](const KeyTable::Sheet& other) {
    if (key.is_duplicate) return other.input == current.input;
    if (other.replication == current.replication) return true;
    return outputs_.Table() != nullptr &&
           EqualText(ReplicationLetter(other.replication), ReplicationLetter(current.replication));
  };
  // A blank row makes a later one in its sheet a duplicate, but takes no place in the output.
  const auto first =
      key.is_duplicate ? keys_.FindRow(key.key, is_meant) : keys_.Find(key.key, is_meant);
  CollidingRow colliding{sheet, row, key_, {}, 0, !record_.options.check};
  if (first) {
    colliding.first_file = record_.inputs[first->input].full_name;
    colliding.first_row = first->row;
  }
  if (key.is_duplicate) RefuseDuplicate(colliding);
  OutputTable* const table = outputs_.Table();
  RefuseOverwriting(colliding,
                    table != nullptr ? table->SharedLetter(sheet.Replication()) : std::string());
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
  if (EqualText(answer, kStopButton)) throw Error(error_number::kUserInterrupt, kStopCause);
  // The answer holds until the user asks for a stop again.
  stop_requested_ = false;
}

}  // namespace korvex
