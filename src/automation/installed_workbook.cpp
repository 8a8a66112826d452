#include "automation/installed_workbook.h"

#include <memory>
#include <utility>

#include "automation/installed_application.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "text/text.h"
#include "workbook/delimited_writer.h"
#include "workbook/output_rules.h"

namespace korvex {

InstalledWorkbook::InstalledWorkbook(InstalledApplication& application, Dispatch workbook,
                                     std::string full_name, const OutputFormat& format)
    : application_(application),
      workbook_(std::move(workbook)),
      is_input_(!full_name.empty()),
      full_name_(std::move(full_name)),
      format_(format) {}

std::string InstalledWorkbook::Name() const {
  if (full_name_.empty()) return workbook_.Get(L"Name").Text();
  return full_name_.substr(full_name_.rfind(application_.Files().Separator()) + 1);
}

std::string InstalledWorkbook::Path() const {
  const std::size_t end = full_name_.rfind(application_.Files().Separator());
  return end == std::string::npos ? std::string() : full_name_.substr(0, end);
}

int InstalledWorkbook::WorksheetCount() const {
  return workbook_.Object(L"Worksheets").Get(L"Count").Integer();
}

Worksheet& InstalledWorkbook::Worksheets(int index) {
  return SheetOf(workbook_.Object(L"Worksheets").Object(L"Item", {index}));
}

Worksheet& InstalledWorkbook::Worksheets(std::string_view name) {
  for (const auto& sheet : sheets_) {
    if (EqualText(sheet->Name(), name)) return *sheet;
  }
  try {
    return SheetOf(workbook_.Object(L"Worksheets").Object(L"Item", {name}));
  } catch (const Error& error) {
    // A bad index becomes a text that names the sheet; a failure of another kind keeps its own.
    if (error.Number() != error_number::kSubscript) throw;
    throw Error(error_number::kSubscript,
                "The workbook " + Name() + " has no worksheet \"" + std::string(name) + "\".");
  }
}

InstalledSheet& InstalledWorkbook::SheetOf(Dispatch sheet) {
  // By name, since the application answers with a new object for the same sheet each time.
  std::string name = sheet.Get(L"Name").Text();
  for (const auto& known : sheets_) {
    if (EqualText(known->Name(), name)) return *known;
  }
  if (is_input_) {
    sheets_.push_back(
        std::make_unique<InstalledInputSheet>(*this, std::move(sheet), std::move(name)));
  } else {
    sheets_.push_back(
        std::make_unique<InstalledOutputSheet>(*this, std::move(sheet), std::move(name)));
  }
  return *sheets_.back();
}

void InstalledWorkbook::Drop(const InstalledSheet& deleted) {
  std::erase_if(sheets_, [&deleted](const auto& sheet) { return sheet.get() == &deleted; });
}

void InstalledWorkbook::SaveAs(const std::string& full_name) {
  Save(full_name, false);
}

// The application replaces files without asking: check for one just before it saves.
void InstalledWorkbook::SaveAsNew(const std::string& full_name) {
  Save(full_name, true);
}

void InstalledWorkbook::Save(const std::string& full_name, bool as_new) {
  FileSystem& files = application_.Files();
  // The application has a current folder of its own.
  const std::string target = files.AbsolutePath(full_name);
  try {
    CheckOutputTarget(files, target, application_.Inputs());
    // The name given now decides, not the one that the workbook was added with.
    const OutputFormat& format = OutputFormatOf(target);
    if (format.separator != 0) {
      const std::unique_ptr<ReplacementFile> file = files.Replace(target);
      WriteDelimited(*this, format, *file);
      as_new ? file->CommitAsNew() : file->Commit();
    } else {
      for (const auto& sheet : sheets_) {
        // The cells were checked against the first name's format; this one may hold fewer.
        if (!is_input_) CheckOutputPlace(format, sheet->LastCell());
        sheet->Upload();
      }
      // As late as possible: another program may have created the file during the upload.
      if (as_new && files.FileExists(target)) {
        throw Error(error_number::kFileExists);
      }
      workbook_.CallNamed(
          L"SaveAs", {{L"Filename", target}, {L"FileFormat", application_.FormatNumber(format)}});
    }
  } catch (const Error& error) {
    throw SaveFailure(target, error);
  }
  full_name_ = target;
}

void InstalledWorkbook::Close() {
  workbook_.CallNamed(L"Close", {{L"SaveChanges", false}});
  application_.Drop(*this);
}

}  // namespace korvex
