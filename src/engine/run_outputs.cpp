#include "engine/run_outputs.h"

#include <utility>

#include "files/basGeneral.h"
#include "platform/ciphers.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "structure/basFuncs_workbooks.h"

namespace korvex {
namespace {

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

OutputRecord RecordOf(const std::string& full_name, int rows, int columns, bool with_digest) {
  const FileSystem& files = *Platform().files;
  OutputRecord output{full_name, 0, {}, rows, columns};
  // A size that cannot be asked for fails no run whose output is in place.
  if (const auto version = files.VersionOf(full_name)) {
    output.size = static_cast<std::uint64_t>(version->size);
  }
  // For a report alone, since it reads the whole file once more.
  if (with_digest) output.sha256 = Sha256OfFile(files, full_name);
  return output;
}

}  // namespace

void RunOutputs::CreateOutputWorkbook(Application& application, const std::string& full_name,
                                      const std::string& sheet_name) {
  output_full_name_ = full_name;
  output_workbook_ = &application.AddWorkbook(full_name);
  table_.emplace(KeepOneSheet(*output_workbook_, sheet_name), structure_);
  table_->WriteHeaders();
}

void RunOutputs::BeginLongForm(Application& application, const std::string& sheet_name,
                               const std::vector<std::string>& inputs) {
  if (options_.long_form.empty() || options_.check) return;
  LongForm::CheckTarget(options_.long_form, inputs);
  long_form_.emplace(options_.long_form, sheet_name, application, structure_);
  long_form_->WriteHeaders();
}

void RunOutputs::BeginSheet(DataSheet& sheet, const std::string& file, int batch) {
  if (table_) table_->BeginSheet(file, batch);
  if (long_form_) long_form_->BeginSheet(sheet, file);
}

bool RunOutputs::Write(const KeyTable::Found& key, DataSheet& sheet, int row,
                       const CellValue& value) {
  // Without a sheet, whose cells show what is taken, the places are remembered.
  if (table_) {
    if (!table_->WriteData(key.key, sheet, value)) return false;
    if (key.is_new) table_->WriteOutputColumns(key.key, sheet, row);
  } else if (!taken_.Take(key.key, sheet.Replication(), value)) {
    return false;
  }
  // Last, since a row that has been written to a text file cannot be taken back.
  if (long_form_) long_form_->Write(row, value);
  return true;
}

void RunOutputs::EndBatch() {
  if (!table_) return;
  table_->RemoveEmptyColumns();
  table_->AddExtraHeaders();
}

void RunOutputs::EndRun(Findings& findings) {
  if (!table_) return;
  table_->RemoveEmptyColumns();
  table_->NoteMisplaced(findings);
}

void RunOutputs::Save(RunRecord& record) {
  if (table_) SaveOutputWorkbook(record);
  if (long_form_) SaveLongForm(record);
}

void RunOutputs::SaveOutputWorkbook(RunRecord& record) {
  const CellAddress last = output_workbook_->Worksheets(1).LastCell();
  if (keep_existing_output_) {
    SaveUnlessTaken();
  } else {
    output_workbook_->SaveAs(output_full_name_);
  }
  // It refers to a sheet of the workbook.
  table_.reset();
  std::exchange(output_workbook_, nullptr)->Close();
  record.output = RecordOf(output_full_name_, last.row, last.column, record.readings.has_value());
}

void RunOutputs::SaveLongForm(RunRecord& record) {
  const int rows = long_form_->RowCount();
  const int columns = long_form_->ColumnCount();
  keep_existing_long_form_ ? long_form_->SaveAsNew() : long_form_->Save();
  long_form_.reset();
  record.long_form = RecordOf(options_.long_form, rows, columns, record.readings.has_value());
}

// Saves the output under another name when a file has appeared under its own: the work of the run
// is kept, and the error says where.
void RunOutputs::SaveUnlessTaken() {
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
  // Once more when a file of the new name appears between looking and saving.
  do {
    kept = FreeNameLike(output_full_name_);
  } while (!save_as(kept));
  throw Error(error_number::kFileExists, "A file " + output_full_name_ +
                                             " appeared during the run and was not replaced, since "
                                             "nobody was asked. The output of the run is in " +
                                             kept + ".");
}

}  // namespace korvex
