#include "automation/installed_workbook.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <thread>
#include <utility>

#include "automation/installed_application.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/windows/wide_text.h"
#include "text/text.h"
#include "workbook/delimited_writer.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr wchar_t kScratchPrefix[] = L"korvex-";

// Virus scanners hold a new file for a moment. More than a moment would keep a user from what is
// wrong.
constexpr std::chrono::seconds kScratchPatience{2};
constexpr std::chrono::milliseconds kScratchPause{250};

// Repeats `step` while it fails within that time.
template <class Step>
void Persistently(Step step) {
  const auto start = std::chrono::steady_clock::now();
  for (;;) {
    try {
      return step();
    } catch (const Error&) {
      if (std::chrono::steady_clock::now() - start >= kScratchPatience) throw;
    }
    std::this_thread::sleep_for(kScratchPause);
  }
}

}  // namespace

ScratchFile::ScratchFile(FileSystem& files, const std::string& folder, std::string_view ending)
    : files_(files),
      name_(kScratchPrefix, ToWide(ending)),
      full_name_(folder + files.Separator() + FromWide(name_.Text())) {}

ScratchFile::~ScratchFile() {
  Attempt([&] { files_.DeleteFile(full_name_); });
}

void ScratchFile::RemoveLeftovers(const std::string& folder) {
  korvex::RemoveLeftovers(ToWide(folder) + L"\\", kScratchPrefix);
}

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
    const std::unique_ptr<ReplacementFile> file = files.Replace(target);
    if (format.separator != 0) {
      WriteDelimited(*this, format, *file);
    } else {
      for (const auto& sheet : sheets_) {
        // The cells were checked against the first name's format; this one may hold fewer.
        if (!is_input_) CheckOutputPlace(format, sheet->LastCell());
        sheet->Upload();
      }
      SaveScratch(format);
      std::vector<std::byte> bytes;
      Persistently([&] { files.ReadFile(scratch_->FullName(), bytes); });
      file->Write(bytes);
    }
    as_new ? file->CommitAsNew() : file->Commit();
  } catch (const Error& error) {
    throw SaveFailure(target, error);
  }
  full_name_ = target;
}

void InstalledWorkbook::TrySaving() {
  try {
    // It would show what .xls cannot hold in a window that nobody sees.
    workbook_.Put(L"CheckCompatibility", false);
  } catch (const Error& error) {
    // Old versions do not have the property.
    if (error.Number() != error_number::kNoSuchMember) throw;
  }
  if (format_.separator != 0) return;
  try {
    SaveScratch(format_);
  } catch (const Error& error) {
    throw Error(error_number::kAutomation,
                "The installed spreadsheet application cannot save " + std::string(format_.ending) +
                    " workbooks: " + error.Description(),
                error.Source());
  }
}

// Under a name that no other save has had, and with an ending: the application appends ".xls" to a
// name without one.
void InstalledWorkbook::SaveScratch(const OutputFormat& format) {
  const int number = application_.FormatNumber(format);
  Persistently([&] {
    auto scratch = std::make_unique<ScratchFile>(application_.Files(), application_.ScratchFolder(),
                                                 format.ending);
    workbook_.CallNamed(L"SaveAs", {{L"Filename", scratch->FullName()}, {L"FileFormat", number}});
    // Deletes the former one, which the application has left.
    scratch_ = std::move(scratch);
  });
}

void InstalledWorkbook::Close() {
  workbook_.CallNamed(L"Close", {{L"SaveChanges", false}});
  application_.Drop(*this);
}

}  // namespace korvex
