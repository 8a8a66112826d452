#include "spreadsheet/input_workbook.h"
#include "spreadsheet/open_workbook.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/file_system.h"
#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/cells/cell_place.h"
#include "text/text.h"
#include "workbook/sheet_rules.h"

namespace korvex {
namespace {

// Memory of one unusually large workbook is not kept: all the others need far less.
constexpr std::size_t kMostKeptMemory = 16u << 20;

std::size_t MemoryOf(const ReadBuffers& buffers) {
  return buffers.file.capacity() + buffers.strings.MemorySize() + buffers.cells.MemorySize() +
         (buffers.format ? buffers.format->MemorySize() : 0);
}

}  // namespace

std::unique_ptr<ReadBuffers> ReadBufferPool::Take() {
  const std::lock_guard lock(mutex_);
  if (spare_.empty()) return std::make_unique<ReadBuffers>();
  std::unique_ptr<ReadBuffers> buffers = std::move(spare_.back());
  spare_.pop_back();
  return buffers;
}

void ReadBufferPool::GiveBack(std::unique_ptr<ReadBuffers> buffers) {
  const std::lock_guard lock(mutex_);
  if (MemoryOf(*buffers) <= kMostKeptMemory && spare_.size() < most_spare_) {
    spare_.push_back(std::move(buffers));
  }
}

class InputWorkbook::Sheet : public Worksheet {
 public:
  Sheet(InputWorkbook& workbook, std::size_t index)
      : workbook_(workbook), index_(index), last_(workbook.reader_->LastPlace()) {
    last_.column = std::max(last_.column, kLastHeaderColumn);
  }

  std::string Name() const override { return Info().name; }
  void SetName(const std::string&) override { workbook_.RefuseChange(); }
  int Index() const override { return static_cast<int>(index_) + 1; }
  void Activate() override {}
  void Delete() override { workbook_.RefuseChange(); }
  CellValue Value(int row, int column) const override;
  bool ReadRow(int row, std::span<const int> columns, std::span<CellValue> values) const override;
  void SetValue(int, int, const CellValue&) override { workbook_.RefuseChange(); }
  CellAddress LastCell() const override { return Cells().LastCell(); }
  void CheckRoom(CellAddress) const override { workbook_.RefuseChange(); }
  int CountA(int row) const override;
  void DeleteColumn(int) override { workbook_.RefuseChange(); }

 private:
  const SheetInfo& Info() const { return workbook_.reader_->Sheets()[index_]; }
  const SheetCells& Cells() const {
    if (cells_ == nullptr) cells_ = &workbook_.Cells(index_, own_cells_);
    return *cells_;
  }
  void CheckPlace(int row, int column) const {
    if (row < 1 || row > last_.row || column < 1 || column > last_.column) RefusePlace(row, column);
  }
  [[noreturn, gnu::cold, gnu::noinline]] void RefusePlace(int row, int column) const;
  [[noreturn, gnu::cold, gnu::noinline]] void RefuseUncalculated(int row, int column) const;

  InputWorkbook& workbook_;
  std::size_t index_;
  CellAddress last_;  // that may be asked for
  mutable std::unique_ptr<SheetCells> own_cells_;
  mutable const SheetCells* cells_ = nullptr;
  mutable int last_row_ = 0;  // the row that was read last, and its cells
  mutable SheetCells::Row last_cells_;
};

CellValue InputWorkbook::Sheet::Value(int row, int column) const {
  CheckPlace(row, column);
  // Callers walk a sheet row by row: the row is looked up once for all its columns.
  if (row != last_row_) {
    last_cells_ = Cells().RowOf(row);
    last_row_ = row;
  }
  if (cells_->IsUncalculated(row, column)) RefuseUncalculated(row, column);
  return cells_->Value(last_cells_, column);
}

bool InputWorkbook::Sheet::ReadRow(int row, std::span<const int> columns,
                                   std::span<CellValue> values) const {
  const SheetCells& cells = Cells();
  if (cells.HasUncalculated()) return false;
  for (const int column : columns) CheckPlace(row, column);
  cells.Values(cells.RowOf(row), columns, values);
  return true;
}

void InputWorkbook::Sheet::RefuseUncalculated(int row, int column) const {
  const CellPlace place = {static_cast<std::uint32_t>(row) - 1,
                           static_cast<std::uint32_t>(column) - 1};
  throw Error(error_number::kAutomation,
              workbook_.full_name_ +
                  " cannot be used: its formulas were never calculated: open and save it in a "
                  "spreadsheet application (the first one asked for is in cell " +
                  CellName(place) + " of sheet \"" + Name() + "\")");
}

int InputWorkbook::Sheet::CountA(int row) const {
  CheckPlace(row, 1);
  return Cells().CountA(row);
}

void InputWorkbook::Sheet::RefusePlace(int row, int column) const {
  throw Error(error_number::kAutomation, "There is no cell in row " + std::to_string(row) +
                                             ", column " + std::to_string(column) + " of sheet \"" +
                                             Name() + "\" of " + workbook_.full_name_);
}

InputWorkbook::InputWorkbook(const FileSystem& files, const std::string& full_name,
                             ReadBufferPool& pool,
                             std::shared_ptr<const std::atomic<bool>> given_up)
    : full_name_(full_name),
      name_start_(full_name.rfind(files.Separator()) + 1),
      pool_(pool),
      buffers_(pool.Take()) {
  buffers_->given_up = std::move(given_up);
  reader_ = NamingFile(full_name, [&] {
    ReadWorkbookFile(files, full_name, buffers_->file);
    return OpenWorkbookReader(*buffers_);
  });
  // Charts and macro sheets keep their place among the tabs, but are no worksheets.
  const std::vector<SheetInfo>& sheets = reader_->Sheets();
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    if (sheets[i].kind == SheetKind::kWorksheet) {
      worksheets_.push_back(std::make_unique<Sheet>(*this, i));
    }
  }
}

InputWorkbook::~InputWorkbook() {
  // What uses the buffers goes first.
  worksheets_.clear();
  reader_.reset();
  pool_.GiveBack(std::move(buffers_));
}

void InputWorkbook::Prepare(const std::string& sheet) {
  Attempt([&] { Worksheets(sheet).LastCell(); });
}

bool InputWorkbook::IsStill(const FileSystem& files) const {
  std::vector<std::byte> content;
  return Attempt([&] { files.ReadFile(full_name_, content); }) && content == buffers_->file;
}

bool InputWorkbook::IsSmall() const {
  return MemoryOf(*buffers_) <= kMostKeptMemory;
}

std::string InputWorkbook::Name() const {
  return full_name_.substr(name_start_);
}

std::string InputWorkbook::Path() const {
  return name_start_ == 0 ? std::string() : full_name_.substr(0, name_start_ - 1);
}

Worksheet& InputWorkbook::Worksheets(int index) {
  if (index < 1 || index > WorksheetCount()) {
    throw Error(error_number::kSubscript,
                full_name_ + " has no worksheet number " + std::to_string(index));
  }
  return *worksheets_[static_cast<std::size_t>(index) - 1];
}

Worksheet& InputWorkbook::Worksheets(std::string_view name) {
  for (const std::unique_ptr<Sheet>& sheet : worksheets_) {
    if (EqualText(sheet->Name(), name)) return *sheet;
  }
  throw Error(error_number::kSubscript,
              full_name_ + " has no worksheet \"" + std::string(name) + "\"");
}

void InputWorkbook::SaveAs(const std::string&) {
  RefuseChange();
}

void InputWorkbook::RefuseChange() const {
  throw Error(error_number::kAutomation, full_name_ + " is opened for reading only");
}

// The handler destroys this workbook: it is moved out first, and nothing is touched afterwards.
void InputWorkbook::Close() {
  const std::function<void(const Workbook&)> on_close = std::move(on_close_);
  if (on_close) on_close(*this);
}

// The first sheet that is read gets the cells of the buffers, whose memory goes from workbook to
// workbook. Of most workbooks only one sheet is ever read; others get cells of their own.
const SheetCells& InputWorkbook::Cells(std::size_t sheet, std::unique_ptr<SheetCells>& own) {
  SheetCells* cells = &buffers_->cells;
  if (are_buffer_cells_used_) {
    own = std::make_unique<SheetCells>();
    cells = own.get();
  }
  NamingFile(full_name_, [&] { reader_->ReadSheet(sheet, *cells); });
  are_buffer_cells_used_ |= cells == &buffers_->cells;
  return *cells;
}

}  // namespace korvex
