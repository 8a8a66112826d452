// The conversion engine: turns a folder of sub-folders of workbooks, or a list of workbooks, into
// one output workbook with a row per key and a data column per replication number.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "structure/clsArray.h"
#include "structure/clsStructure.h"
#include "structure/keyed_collection.h"
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

// One instance serves one run. Rows and columns are one-based.
class clsKorvex {
 public:
  // `events` must outlive the engine.
  explicit clsKorvex(KorvexEvents& events) : events_(events) {}
  // Quits the spreadsheet application of a run that failed.
  ~clsKorvex();
  clsKorvex(const clsKorvex&) = delete;
  clsKorvex& operator=(const clsKorvex&) = delete;

  // Converts every file of every sub-folder of `folder`, or `files` when the settings say that
  // single files are processed, and saves the output workbook under the name that the settings
  // give. Whatever fails, the user has been told when this raises error 17.
  void ProcessFolders(std::string& folder, const std::vector<std::string>& files);
  // Asks for a stop; the user is asked to confirm it before the next file is read.
  void StopProcess() { stop_requested_ = true; }
  // Asks the user when a stop was asked for; error 18 when the answer is yes.
  void AskWhetherToStop();
  // From now on a file that stands in the output's place when it is saved stays there: the user
  // wanted to be asked, and there was none to ask about.
  void KeepExistingOutput() { keep_existing_output_ = true; }
  // True from the start of a run to its end.
  bool Running() const { return running_; }
  // Where the run saves its output, as the settings named it when the run began; a change during
  // the run is for the next one.
  const std::string& OutputFullName() const { return output_full_name_; }
  // Whether the run ended because the user confirmed a stop.
  bool Stopped() const { return stopped_; }

 private:
  // Where a column's values come from in the current data sheet.
  struct ColumnSource {
    enum class Kind { kSheetColumn, kDate, kFilename, kDayNum, kNothing };
    Kind kind = Kind::kNothing;
    int sheet_column = 0;
  };
  struct KeyColumn {
    std::string label;  // "name="
    ColumnSource source;
  };
  struct OutputColumn {
    int position = 0;
    ColumnSource source;
  };
  // The columns of the current data sheet, looked up once for all of its rows.
  struct SheetColumns {
    std::vector<KeyColumn> keys;
    std::vector<OutputColumn> outputs;
    int data_column = 0;
  };
  // A key's output row and the number of the last data sheet that held it; no row when it is new.
  struct KeyRow {
    int row = 0;
    int last_sheet = 0;
  };

  // The output column of a letter, and the replications that have it.
  struct ReplicationColumns {
    int column = 0;
    std::set<std::int16_t> replications;
  };

  // How many columns replications take, and the highest of those that give a column its place.
  struct Replications {
    int count = 0;
    std::int16_t highest = 0;
  };

  // The run, in clsKorvex.cpp.
  void Run();
  void CheckStructure();
  void CreateOutputWorkbook();
  void ProcessSubFolders();
  void ProcessFiles(const std::vector<std::string>& files);
  void ProcessFile(const std::string& path, const std::string& base_name, std::int16_t file_number,
                   std::int16_t file_count);
  void ReadFile(const std::string& path, const std::string& base_name, std::int16_t file_number,
                std::int16_t file_count);
  void CloseInputWorkbook();
  void SaveOutputWorkbook();
  void SaveUnlessTaken();

  // Reading a data sheet, in clsKorvex_sheet.cpp.
  void ProcessSheet(const std::string& base_name, std::int16_t file_number,
                    std::int16_t file_count);
  SheetColumns FindSheetColumns(int header_row);
  ColumnSource FindColumn(const std::string& name);
  void BuildKey(int row, const SheetColumns& columns, std::string& key);
  CellValue GetColumnValue(const ColumnSource& source, int row);
  std::string GetDate() const;
  std::int16_t GetDayNum() const;
  std::int16_t GetReplicationNum() const;
  static std::int16_t ReplicationOf(const std::string& workbook_name);
  std::string InputFullName() const;
  std::string InputDisplayPath() const;

  // Filling the output sheet, in clsKorvex_output.cpp.
  void WriteHeaders();
  KeyRow& CheckKey(const std::string& key, bool& is_new);
  void WriteData(const std::string& key, int output_row, int row, int data_column);
  int ReplicationColumn(std::int16_t replication);
  std::string SharedColumn();
  void WriteOutputColumns(int output_row, int row, const SheetColumns& columns);
  void RemoveEmptyColumns();
  void AddExtraHeaders();
  bool HeaderIsEmpty(int column) const;
  void CheckColumnsAhead(int columns) const;
  void CheckReplicationsAhead(const std::vector<std::string>& workbook_names) const;
  static Replications ReplicationsOf(const std::vector<std::string>& workbook_names);

  // Shows a message with the one button "OK" and ends the run with error 17.
  [[noreturn]] static void Refuse(const std::string& message);

  KorvexEvents& events_;
  std::unique_ptr<Application> application_;
  Workbook* input_workbook_ = nullptr;
  Workbook* output_workbook_ = nullptr;
  Worksheet* data_sheet_ = nullptr;
  Worksheet* output_sheet_ = nullptr;
  clsStructure structure_;
  KeyedCollection<KeyRow> key_table_;
  KeyedCollection<ReplicationColumns> replication_table_;
  clsArray extra_headers_;
  std::string processing_folder_;
  std::string output_full_name_;
  int output_columns_ = 0;  // of the sample file; a later file may lack some and leaves them blank
  std::int32_t next_output_row_ = 2;
  std::vector<std::string> files_;
  bool stop_requested_ = false;
  bool keep_existing_output_ = false;
  bool running_ = false;
  bool stopped_ = false;
  std::int16_t current_folder_ = 0;
  std::int16_t folder_count_ = 0;

  int sheet_number_ = 0;  // counts the data sheets of the run
  // Of the current data sheet, each once a row needed it.
  std::int16_t replication_ = 0;
  int replication_column_ = 0;
  std::optional<std::string> date_;
  std::optional<std::string> filename_;
  std::optional<std::string> day_num_;

  std::string key_;           // of the current row
  std::string written_text_;  // room for the text form of a value
};

}  // namespace korvex
