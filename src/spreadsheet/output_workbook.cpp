#include "spreadsheet/output_workbook.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/file_system.h"
#include "spreadsheet/bytes/byte_writer.h"
#include "spreadsheet/xls/biff8_writer.h"
#include "spreadsheet/xls/compound_file_writer.h"
#include "spreadsheet/xlsx/xlsx_writer.h"
#include "text/text.h"
#include "workbook/delimited_writer.h"
#include "workbook/output_rules.h"

namespace korvex {

namespace {

void WriteXls(const TextPool& texts, std::vector<SheetContent> sheets, ReplacementFile& file) {
  // The container's header needs the size of the stream, which the writer has measured.
  Biff8Writer workbook(texts, std::move(sheets));
  ByteWriter out(file);
  CompoundFileWriter container(out, workbook.StreamSize());
  container.WriteHeader();
  workbook.Write(out);
  container.WriteTail();
  out.Flush();
}

}  // namespace

OutputWorkbook::OutputWorkbook(FileSystem& files, std::string name, const OutputFormat& format,
                               const std::vector<std::string>& inputs,
                               std::function<void(const Workbook&)> close)
    : files_(files),
      inputs_(inputs),
      name_(std::move(name)),
      format_(format),
      close_(std::move(close)) {
  for (const char* sheet : {"Sheet1", "Sheet2", "Sheet3"}) {
    sheets_.push_back(std::make_unique<OutputSheet>(*this, sheet));
  }
  active_ = sheets_.front().get();
}

Worksheet& OutputWorkbook::Worksheets(int index) {
  if (index < 1 || index > WorksheetCount()) {
    throw Error(error_number::kSubscript,
                "The workbook " + name_ + " has " + std::to_string(WorksheetCount()) +
                    " worksheets, but no number " + std::to_string(index) + ".");
  }
  return *sheets_[static_cast<std::size_t>(index - 1)];
}

Worksheet& OutputWorkbook::Worksheets(std::string_view name) {
  for (const auto& sheet : sheets_) {
    if (EqualText(sheet->Name(), name)) return *sheet;
  }
  throw Error(error_number::kSubscript,
              "The workbook " + name_ + " has no worksheet \"" + std::string(name) + "\".");
}

// Found by search: the numbers of sheets change when one of them is deleted.
int OutputWorkbook::IndexOf(const OutputSheet& sheet) const {
  const auto found = std::find_if(sheets_.begin(), sheets_.end(),
                                  [&sheet](const auto& other) { return other.get() == &sheet; });
  return static_cast<int>(found - sheets_.begin()) + 1;
}

void OutputWorkbook::Delete(const OutputSheet& sheet) {
  if (sheets_.size() == 1) {
    throw Error(error_number::kAutomation,
                "The worksheet \"" + sheet.Name() +
                    "\" cannot be deleted: a workbook holds one sheet at least.");
  }
  const auto at = sheets_.erase(sheets_.begin() + (IndexOf(sheet) - 1));
  // As in any spreadsheet program the next sheet becomes the active one, or else the last.
  if (active_ == &sheet) active_ = (at == sheets_.end() ? sheets_.back() : *at).get();
}

void OutputWorkbook::CheckSheetName(std::string_view name, const OutputSheet& sheet) const {
  korvex::CheckSheetName(name);
  for (const auto& other : sheets_) {
    if (other.get() == &sheet || !EqualText(other->Name(), name)) continue;
    throw Error(error_number::kAutomation,
                SheetNameRefusal(name) + "another sheet of the workbook has this name.");
  }
}

void OutputWorkbook::Save(const std::string& full_name, bool as_new) {
  const std::string target = files_.AbsolutePath(full_name);
  try {
    CheckOutputTarget(files_, target, inputs_);
    WriteFile(OutputFormatOf(target), target, as_new);
  } catch (const Error& error) {
    throw SaveFailure(target, error);
  }
  // Only now: a workbook that could not be saved keeps its former name.
  const std::size_t name_start = target.rfind(files_.Separator()) + 1;
  name_ = target.substr(name_start);
  path_ = target.substr(0, name_start == 0 ? 0 : name_start - 1);
}

void OutputWorkbook::WriteFile(const OutputFormat& format, const std::string& target, bool as_new) {
  // Cells were checked against format_ when they were set; the file's name may ask for another one.
  if (&format != &format_) {
    for (const auto& sheet : sheets_) sheet->CheckFits(format);
  }
  // The target changes only with the commit; after an error before it the former file stays.
  const std::unique_ptr<ReplacementFile> file = files_.Replace(target);
  if (format.separator != 0) {
    WriteDelimited(*this, format, *file);
  } else if (&format == &kXlsxFormat) {
    WriteXlsx(texts_, Contents(), *file);
  } else {
    WriteXls(texts_, Contents(), *file);
  }
  as_new ? file->CommitAsNew() : file->Commit();
}

std::vector<SheetContent> OutputWorkbook::Contents() const {
  std::vector<SheetContent> contents;
  for (const auto& sheet : sheets_) {
    contents.push_back({sheet->Name(), &sheet->Cells(), sheet.get() == active_});
  }
  return contents;
}

// The handler destroys this workbook: it is moved out first, and nothing is touched afterwards.
void OutputWorkbook::Close() {
  const std::function<void(const Workbook&)> close = std::move(close_);
  close(*this);
}

}  // namespace korvex
