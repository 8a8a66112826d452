// The layout of the input workbooks: which columns they offer, which form the key, which are copied
// to the output, and which holds the measured value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "structure/clsArray.h"
#include "structure/keyed_collection.h"
#include "workbook/spreadsheet.h"

namespace korvex {

class ListedFolders;

// Pseudo-columns, which no sheet holds: the engine supplies their values.
inline constexpr char kFilenameColumn[] = "Filename";
inline constexpr char kDateColumn[] = "Date";
inline constexpr char kDayNumColumn[] = "day_num";
inline constexpr std::int16_t kPseudoColumn = -1;

// Configured columns that a workbook does not offer, as the settings name them.
struct MissingColumns {
  std::vector<std::string> keys;
  std::vector<std::string> outputs;
  std::optional<std::string> data;  // empty when none is configured
};

// "Missing: key columns "batch", "run"; data column "OD"." for the user; empty when nothing is.
std::string MissingText(const MissingColumns& missing);

// The user's choice of columns lives in the settings; what is available is read from the header row
// of a workbook. Column names ignore letter case. Column numbers and positions are one-based.
class clsStructure {
 public:
  // Checks the user's choice of columns against a sample workbook: forgets what was read before,
  // and reads the available columns of the first file of the first sub-folder of `path`, or of the
  // first of `files` when single files are processed. Without an `application` it starts one for
  // the sample and quits it again. Never fails: it tells the user what is wrong with the sample,
  // and keeps what it could read. A run passes the `folders` that it has listed, so that the sample
  // is one of the files that it reads.
  void Constructor(const std::string& path, const std::vector<std::string>& files,
                   Application* application, ListedFolders* folders = nullptr);

  // Reads the available columns of an open workbook and rebuilds key and output columns from the
  // settings. Error 9 without a sheet "data", 457 when two headers are equal or one is named like a
  // pseudo-column, 1004 when no row can be the header row.
  void RefreshAvailableCols(Workbook& workbook);

  // The header row of the workbook that was read last; one-based.
  int HeaderRow() const { return header_row_; }
  // The number or position of a column; 0 for a name that is not there, which is added to the
  // collection with that number. Among the available columns, -1 for a pseudo-column.
  std::int16_t OutputColPosition(std::string_view name) { return output_columns_.Item(name); }
  std::int16_t AvailableColPosition(std::string_view name) { return available_columns_.Item(name); }
  std::int16_t KeyColPosition(std::string_view name) { return key_columns_.Item(name); }
  bool HasAvailableCol(std::string_view name) const { return available_columns_.Exists(name); }

  // Pseudo-columns first, then the headers from left to right.
  std::vector<std::string> AvailableColsArray() const { return available_columns_.Keys(); }
  // In configured order, without the data column and without what is not available.
  std::vector<std::string> OutputColsArray();
  std::vector<std::string> KeyColsArray();
  std::string DataColumn();

  // Store the user's choice. A list without an element is error 13.
  void SetOutputColsArray(const std::optional<clsArray::Values>& names);
  void SetKeyColsArray(const std::optional<clsArray::Values>& names);
  void SetDataColumn(const std::string& name);

  // Whether a configured key, output or data column turned out not to be available.
  bool Discrepancy() const { return discrepancy_; }
  // Which they were when the lists were last built from the settings.
  const MissingColumns& Missing() const { return missing_; }
  // Whether the Constructor could read its sample to the end.
  bool SampleUsable() const { return sample_usable_; }
  // Full path of the sample; with `short_name` its display path.
  std::string SampleFileUsed(bool short_name) const;

 private:
  using Columns = KeyedCollection<std::int16_t>;

  void ChooseSample(const std::string& path, const std::vector<std::string>& files,
                    ListedFolders& folders);
  void ReadSample(Application& application);
  // What could not be used as a sample, and why.
  std::string SampleProblem() const;

  Columns available_columns_;
  Columns output_columns_;
  Columns key_columns_;
  MissingColumns missing_;
  std::string sample_file_;
  int header_row_ = 0;
  bool discrepancy_ = false;
  bool sample_usable_ = false;
};

}  // namespace korvex
