// The conversion engine: turns a folder of sub-folders of workbooks, or a list of workbooks, into
// one output workbook with a row per key and a data column per replication number.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/data_sheet.h"
#include "engine/key_table.h"
#include "engine/run_outputs.h"
#include "engine/run_record.h"
#include "engine/run_watch.h"
#include "files/folder_listing.h"
#include "structure/clsStructure.h"
#include "workbook/spreadsheet.h"

namespace korvex {

// What a run tells whoever started it.
class KorvexEvents {
 public:
  virtual ~KorvexEvents() = default;

  // The folder or file that failed, by its display path.
  virtual void ErrorMessage(const std::string& text) = 0;
  // The progress line of the workbook that is being read.
  virtual void Message(const std::string& text) = 0;
  // After each input workbook is closed.
  virtual void ProcessedFile() = 0;
};

// One instance serves one run, on one thread: opens the workbooks in order, hands the rows of each
// (DataSheet) to the output (OutputTable), and tells and reports what goes wrong.
class clsKorvex {
 public:
  // `events` must outlive the engine.
  explicit clsKorvex(KorvexEvents& events, RunOptions options = {});
  // Quits the spreadsheet application of a run that failed.
  ~clsKorvex();
  clsKorvex(const clsKorvex&) = delete;
  clsKorvex& operator=(const clsKorvex&) = delete;

  // Converts every file of every sub-folder of `folder`, or `files` when the settings say that
  // single files are processed, and saves the output workbook under the name that the settings
  // give. Raises error 17 when anything fails; the user has been told by then.
  void ProcessFolders(std::string& folder, const std::vector<std::string>& files);
  // Asks for a stop; the user is asked to confirm it before the next file is read.
  void StopProcess() { stop_requested_ = true; }
  // Asks the user when a stop was asked for; error 18 when the answer is yes.
  void AskWhetherToStop();
  // For what is decided about them before the run.
  RunOutputs& Outputs() { return outputs_; }
  // True from the start of a run to its end.
  bool Running() const { return running_; }
  // Where the run saves its output, as the settings named it when the run began; a change during
  // the run is for the next one.
  const std::string& OutputFullName() const { return output_full_name_; }
  // The folders that the run has listed so far. Its files are counted ahead from the same lists.
  ListedFolders& Folders() { return folders_; }
  // Whether the run ended because the user confirmed a stop.
  bool Stopped() const { return stopped_; }
  // What is known of the run so far.
  RunRecord& Record() { return record_; }
  // What the run works on at this moment: messages that are recorded belong there.
  const FindingPlace& Place() const { return place_; }

 private:
  void Run();
  void CheckStructure();
  void HideApplication();
  std::string SheetName() const;
  // Refuse what can be known before the first file is read, then process every batch.
  void ProcessSubFolders();
  void ProcessSelectedFiles();
  void ExpectInputs(const std::vector<std::string>& paths);
  // The sub-folder's files, by their full names. Refuses a folder without any.
  std::vector<std::string> FilesOf(const std::string& sub_folder);
  void ProcessFiles(const std::vector<std::string>& files);
  // One input workbook, from opening to closing. Error 17 for what was told or reported, 18 for a
  // stop; in a check the error itself.
  void ProcessFile(const std::string& path, const std::string& base_name, std::int16_t file_number,
                   std::int16_t file_count);
  Workbook& OpenInput(const std::string& path);
  // Does one step of a run. In a check a step that fails is taken down as a problem of the file or
  // row that the run works on, and the check goes on.
  template <class Body>
  void Step(Body&& body);
  void BeginRecord();
  void ProcessRow(DataSheet& sheet, int row);
  // The same in a check: a row that fails is one problem, and the next row is looked at.
  void CheckRow(DataSheet& sheet, int row);
  // Tells which row had the key first, and raises error 17.
  [[noreturn]] void RefuseKey(const DataSheet& sheet, int row, const KeyTable::Found& key);
  void CheckStrict();
  void ProcessSheet(DataSheet& sheet, const std::string& base_name, std::int16_t file_number,
                    std::int16_t file_count);

  KorvexEvents& events_;
  // The one of the run; it goes at the end of a run that was saved, or with the engine.
  std::unique_ptr<Application> application_;
  clsStructure structure_;
  RunRecord record_;
  RunOutputs outputs_;
  KeyTable keys_;
  std::optional<RunWatch> watch_;  // from the moment the columns of the run are known
  FindingPlace place_;
  std::string key_;  // of the current row
  ListedFolders folders_;
  std::string processing_folder_;
  std::string output_full_name_;
  std::vector<std::string> files_;
  // Set from within Yield, on the thread of the run, and so plain.
  bool stop_requested_ = false;
  bool running_ = false;
  bool stopped_ = false;
  std::int16_t current_folder_ = 0;
  std::int16_t folder_count_ = 0;
};

}  // namespace korvex
