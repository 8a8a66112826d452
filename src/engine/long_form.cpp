#include "engine/long_form.h"

#include <array>
#include <utility>

#include "engine/output_table.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "structure/basFuncs_workbooks.h"
#include "text/text.h"
#include "workbook/cell_text.h"
#include "workbook/delimited_writer.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

// Calls, and makes the file part of any error.
template <class Call>
auto Naming(const std::string& target, Call call) {
  try {
    return call();
  } catch (const Error& error) {
    throw SaveFailure(target, error);
  }
}

// A text file takes each row as it comes: a campaign of a million readings needs no memory for
// them. It is written beside its target from the first row on.
class TextLongForm : public LongFormFile {
 public:
  TextLongForm(const std::string& full_name, const std::string& sheet_name,
               const OutputFormat& format)
      : files_(*Platform().files),
        target_(files_.AbsolutePath(full_name)),
        sheet_name_(sheet_name),
        format_(format),
        file_(Naming(target_, [&] { return files_.Replace(target_); })),
        writer_(*file_, format.separator) {}

  // Whether a column of times holds longer ones than a day is known only when it has ended, so that
  // all times without a day are numbers.
  void AddCell(CellAddress place, const CellValue& value) override {
    CheckOutputCell(format_, sheet_name_, place, value);
    writer_.AddField(IsTimeWithoutDay(value) ? CellValue::Number(value.number) : value);
  }
  void EndRow() override {
    Naming(target_, [&] { writer_.EndRecord(); });
  }
  void Save(bool as_new, const std::vector<std::string>& inputs) override {
    Naming(target_, [&] {
      // Checked again: what the name leads to may have changed since the run began.
      CheckOutputTarget(files_, target_, inputs);
      writer_.Finish();
      as_new ? file_->CommitAsNew() : file_->Commit();
    });
  }

 private:
  FileSystem& files_;
  const std::string target_;
  const std::string sheet_name_;
  const OutputFormat& format_;
  const std::unique_ptr<ReplacementFile> file_;
  DelimitedWriter writer_;
};

// The only sheet of a new workbook.
class WorkbookLongForm : public LongFormFile {
 public:
  WorkbookLongForm(const std::string& full_name, const std::string& sheet_name,
                   Application& application)
      : full_name_(full_name),
        workbook_(application.AddWorkbook(full_name)),
        sheet_(KeepOneSheet(workbook_, sheet_name)) {}

  void AddCell(CellAddress place, const CellValue& value) override {
    sheet_.SetValue(place.row, place.column, value);
  }
  void EndRow() override {}
  // The application knows its inputs.
  void Save(bool as_new, const std::vector<std::string>&) override {
    as_new ? workbook_.SaveAsNew(full_name_) : workbook_.SaveAs(full_name_);
    workbook_.Close();
  }

 private:
  const std::string full_name_;
  Workbook& workbook_;
  Worksheet& sheet_;
};

std::unique_ptr<LongFormFile> OpenFile(const std::string& full_name, const std::string& sheet_name,
                                       Application& application) {
  const OutputFormat& format = OutputFormatOf(full_name);
  if (format.separator != 0) return std::make_unique<TextLongForm>(full_name, sheet_name, format);
  return std::make_unique<WorkbookLongForm>(full_name, sheet_name, application);
}

constexpr std::array<const char*, LongForm::kOwnColumns> kOwnHeaders = {"day", "replication",
                                                                        "value", "file", "row"};

// The name, or the first of "name_2", "name_3" ... that is not among the others.
std::string NameUnlike(const std::vector<std::string>& others, const std::string& name) {
  std::string unlike = name;
  for (int number = 2; ContainsText(others, unlike); ++number) {
    unlike = name + "_" + std::to_string(number);
  }
  return unlike;
}

}  // namespace

LongForm::LongForm(const std::string& full_name, const std::string& sheet_name,
                   Application& application, clsStructure& structure)
    : structure_(structure), file_(OpenFile(full_name, sheet_name, application)) {}

void LongForm::CheckName(const std::string& full_name) {
  if (&OutputFormatOf(full_name) != &kXlsFormat) return;
  throw Error(error_number::kAutomation,
              "The long form is written as .csv, .tsv or .xlsx, but not as " + full_name +
                  ". Choose a name that ends with one of these.");
}

void LongForm::CheckTarget(const std::string& full_name, const std::vector<std::string>& inputs) {
  const FileSystem& files = *Platform().files;
  const std::string target = files.AbsolutePath(full_name);
  Naming(target, [&] { CheckOutputTarget(files, target, inputs); });
}

void LongForm::WriteHeaders() {
  columns_ = structure_.KeyColsArray();
  // Once each: a column that is in the key and in the output has the same value in both.
  for (const std::string& name : structure_.OutputColsArray()) {
    if (!ContainsText(columns_, name)) columns_.push_back(name);
  }
  std::vector<std::string> headers;
  for (const std::string& name : columns_) headers.push_back(NameUnlike(headers, HeaderOf(name)));
  for (const char* name : kOwnHeaders) {
    headers.push_back(NameUnlike(headers, name));
  }
  for (const std::string& header : headers) AddCell(CellFromText(header));
  EndRow();
}

void LongForm::BeginSheet(DataSheet& sheet, const std::string& file) {
  sheet_ = &sheet;
  inputs_.push_back(sheet.FullName());
  sources_.clear();
  for (const std::string& name : columns_) sources_.push_back(sheet.SourceOf(name));
  // A name without a day leaves the cell empty, as only a column "day_num" refuses it.
  const std::optional<std::int16_t> day = sheet.Day();
  day_ = day ? CellValue::Number(*day) : CellValue();
  file_text_ = file;
}

void LongForm::Write(int row, const CellValue& value) {
  for (const ColumnSource& source : sources_) {
    AddCell(WrittenAsText(sheet_->GetColumnValue(source, row), written_text_));
  }
  AddCell(day_);
  AddCell(CellValue::Number(sheet_->Replication()));
  AddCell(value);
  AddCell(CellValue::Text(file_text_));
  AddCell(CellValue::Number(row));
  EndRow();
}

void LongForm::AddCell(const CellValue& value) {
  file_->AddCell({row_count_ + 1, ++column_}, value);
}

void LongForm::EndRow() {
  file_->EndRow();
  ++row_count_;
  column_ = 0;
}

bool TakenReadings::Take(std::size_t key, std::int16_t replication, const CellValue& value) {
  // The readings of one key are few, so that a chain through all readings is searched quickly and
  // costs less than a table of pairs.
  if (key >= last_of_key_.size()) last_of_key_.resize(key + 1);
  std::uint32_t& last = last_of_key_[key];
  for (std::uint32_t place = last; place != 0; place = taken_[place - 1].next) {
    if (taken_[place - 1].replication == replication) return false;
  }
  if (!IsBlank(value)) {
    taken_.push_back({replication, last});
    last = static_cast<std::uint32_t>(taken_.size());
  }
  return true;
}

}  // namespace korvex
