#include "spreadsheet/xlsx/xlsx_writer.h"

#include <xlsxwriter.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <span>
#include <string>

#include "platform/error.h"
#include "platform/file_system.h"
#include "spreadsheet/xlsx/xlsx_row_writer.h"

namespace korvex {
namespace {

// The time of creation of every workbook, so that equal cells give equal files: 1980-01-01.
constexpr std::time_t kCreated = 315'532'800;

// Number formats that are built in.
constexpr std::uint8_t kDateNumber = 14;
constexpr std::uint8_t kTimeNumber = 21;
constexpr std::uint8_t kDateTimeNumber = 22;

constexpr double kDateColumnWidth = 17;  // in digits; a date with its time does not fit into 8
constexpr std::uint64_t kLargestPart = 0xFFFF'0000;  // of a package that is not zip64

// The library writes numbers with the locale's decimal point; XML needs ".".
class PlainNumbers {
 public:
  PlainNumbers() : former_(std::setlocale(LC_NUMERIC, nullptr)) { std::setlocale(LC_NUMERIC, "C"); }
  ~PlainNumbers() { std::setlocale(LC_NUMERIC, former_.c_str()); }
  PlainNumbers(const PlainNumbers&) = delete;
  PlainNumbers& operator=(const PlainNumbers&) = delete;

 private:
  std::string former_;
};

[[noreturn]] void Fail(lxw_error error) {
  throw Error(error_number::kDeviceIo, std::string(lxw_strerror(error)));
}

// The library's workbook while it is made.
//
// In its mode of constant memory the library keeps the rows of a sheet as text in a temporary file
// until the end. XlsxRowWriter fills that file instead of the library, whose own cells have numbers
// of 16 digits, not the 17 that tell them apart, and no error values.
class Package {
 public:
  Package(const std::string& folder, const std::string& file) {
    std::string temporary_files = folder;
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    options.tmpdir = temporary_files.data();
    workbook_ = workbook_new_opt(file.c_str(), &options);
    if (workbook_ == nullptr) throw Error(error_number::kOutOfMemory);
    lxw_doc_properties properties{};
    properties.created = kCreated;
    workbook_set_properties(workbook_, &properties);
    styles_ = {AddStyle(kDateTimeNumber), AddStyle(kDateNumber), AddStyle(kTimeNumber)};
  }
  ~Package() {
    if (workbook_ == nullptr) return;
    // Only after a failure: workbook_close closes the files and frees the workbook.
    for (lxw_worksheet* sheet : sheets_) std::fclose(sheet->optimize_tmpfile);
    lxw_workbook_free(workbook_);
  }
  Package(const Package&) = delete;
  Package& operator=(const Package&) = delete;

  // Returns the number of bytes of the rows.
  std::uint64_t AddSheet(const TextPool& texts, const SheetContent& content) {
    lxw_worksheet* const sheet = workbook_add_worksheet(workbook_, content.name.c_str());
    if (sheet == nullptr) Fail(LXW_ERROR_CREATING_TMPFILE);
    sheets_.push_back(sheet);
    if (content.selected) worksheet_activate(sheet);
    SetExtent(*content.cells, *sheet);
    const std::uint64_t bytes =
        XlsxRowWriter(*content.cells, texts, styles_, sheet->optimize_tmpfile).Write();
    if (bytes > kLargestPart) workbook_->options.use_zip64 = LXW_TRUE;
    return bytes;
  }

  void Close() {
    const PlainNumbers plain;
    const lxw_error error = workbook_close(workbook_);
    workbook_ = nullptr;
    if (error != LXW_NO_ERROR) Fail(error);
  }

 private:
  int AddStyle(std::uint8_t number_format) {
    lxw_format* const format = workbook_add_format(workbook_);
    if (format == nullptr) throw Error(error_number::kOutOfMemory);
    format_set_num_format_index(format, number_format);
    return lxw_format_get_xf_index(format);
  }

  // Tells the library what it would know had it written the cells: which are in use, and widths.
  void SetExtent(const CellStore& cells, lxw_worksheet& sheet) {
    int last_row = 1;
    int last_column = 1;
    for (int column = 0; column < cells.ColumnCount(); ++column) {
      const int end = cells.RowEnd(column);
      if (end == 0) continue;
      last_row = std::max(last_row, end);
      last_column = column + 1;
      if (!cells.HasDates(column)) continue;
      const auto at = static_cast<lxw_col_t>(column);
      worksheet_set_column(&sheet, at, at, kDateColumnWidth, nullptr);
    }
    sheet.dim_rowmin = 0;
    sheet.dim_colmin = 0;
    sheet.dim_rowmax = static_cast<lxw_row_t>(last_row - 1);
    sheet.dim_colmax = static_cast<lxw_col_t>(last_column - 1);
  }

  lxw_workbook* workbook_ = nullptr;
  XlsxDateStyles styles_;
  std::vector<lxw_worksheet*> sheets_;
};

void Assemble(const std::string& folder, const std::string& path, const TextPool& texts,
              const std::vector<SheetContent>& sheets) {
  std::vector<std::uint64_t> row_bytes;
  Package package(folder, path);
  for (const SheetContent& sheet : sheets) row_bytes.push_back(package.AddSheet(texts, sheet));
  package.Close();
  if (!IsWholeXlsx(path, row_bytes)) {
    throw Error(error_number::kDiskFull,
                "What was written there is not whole; the disk may be full.");
  }
}

void Copy(const std::string& path, ReplacementFile& target) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             std::fclose);
  if (file == nullptr) throw Error(error_number::kDeviceIo, "Cannot read " + path + ".");
  std::array<std::byte, 64 * 1024> block;
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
    target.Write(std::span(block).first(count));
  }
  if (std::ferror(file.get()) != 0)
    throw Error(error_number::kDeviceIo, "Cannot read " + path + ".");
}

constexpr char kPlace[] = "Putting it together in the folder for temporary files failed: ";

std::unique_ptr<ScratchFolder> MakeFolder(FileSystem& files) {
  try {
    return files.MakeScratchFolder();
  } catch (const Error& error) {
    throw Error(error.Number(), kPlace + error.Description());
  }
}

}  // namespace

void WriteXlsx(FileSystem& files, const TextPool& texts, const std::vector<SheetContent>& sheets,
               ReplacementFile& file) {
  const std::unique_ptr<ScratchFolder> folder = MakeFolder(files);
  const std::string path = folder->Path() + "/workbook";
  try {
    Assemble(folder->Path(), path, texts, sheets);
  } catch (const Error& error) {
    throw Error(error.Number(), std::string(kPlace) + folder->Path() + ": " + error.Description());
  }
  Copy(path, file);
}

void CheckXlsxFolder(FileSystem& files) {
  MakeFolder(files);
}

}  // namespace korvex
