#include "automation/installed_application.h"

#include <cstdlib>
#include <utility>

#include "platform/error.h"
#include "platform/file_system.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr int kNoMacros = 3;  // of AutomationSecurity

constexpr int kFirstVersionWithManyFormats = 12;
constexpr int kXlsx = 51;
constexpr int kXls = 56;
constexpr int kOnlyFormat = -4143;  // of the versions before

}  // namespace

InstalledApplication::InstalledApplication(Dispatch application, FileSystem& files)
    : application_(std::move(application)), files_(files) {
  // A macro could show a dialog that nobody sees. Old versions do not have the property.
  Attempt([&] { application_.Put(L"AutomationSecurity", kNoMacros); });
}

InstalledApplication::~InstalledApplication() {
  if (!has_quit_) Quit();
}

const Dispatch& InstalledApplication::Running() const {
  if (has_quit_) {
    throw Error(error_number::kAutomation, "The spreadsheet application has quit already.");
  }
  return application_;
}

void InstalledApplication::SetVisible(bool visible) {
  Running().Put(L"Visible", visible);
}

void InstalledApplication::SetScreenUpdating(bool update) {
  Running().Put(L"ScreenUpdating", update);
}

void InstalledApplication::SetDisplayAlerts(bool display) {
  Running().Put(L"DisplayAlerts", display);
}

Workbook& InstalledApplication::AddWorkbook(const std::string& full_name) {
  const OutputFormat& format = OutputFormatOf(full_name);
  // Now, not at the end of a long run.
  if (&format == &kXlsxFormat) FormatNumber(format);
  const Dispatch workbooks = Running().Object(L"Workbooks");
  workbooks_.push_back(std::make_unique<InstalledWorkbook>(
      *this, workbooks.ObjectFrom(workbooks.Call(L"Add")), "", format));
  return *workbooks_.back();
}

Workbook& InstalledApplication::OpenWorkbook(const std::string& full_name,
                                             const OpenOptions& options) {
  const Dispatch workbooks = Running().Object(L"Workbooks");
  // The application has a current folder of its own.
  const std::string path = files_.AbsolutePath(full_name);
  std::vector<NamedArgument> arguments = {{L"Filename", path}};
  if (options.read_only) arguments.push_back({L"ReadOnly", true});
  if (options.ignore_read_only_recommended) {
    arguments.push_back({L"IgnoreReadOnlyRecommended", true});
  }
  if (!options.add_to_recent_files) arguments.push_back({L"AddToMru", false});
  try {
    workbooks_.push_back(std::make_unique<InstalledWorkbook>(
        *this, workbooks.ObjectFrom(workbooks.CallNamed(L"Open", arguments)), path, kXlsFormat));
  } catch (const Error& error) {
    throw Error(error_number::kAutomation, path + " cannot be opened: " + error.Description(),
                error.Source());
  }
  // For good: an output must not replace a file that was read, even when it is closed again.
  inputs_.push_back(path);
  return *workbooks_.back();
}

int InstalledApplication::WorkbookCount() const {
  return static_cast<int>(workbooks_.size());
}

Workbook& InstalledApplication::Workbooks(int index) {
  if (index < 1 || index > WorkbookCount()) {
    throw Error(error_number::kSubscript,
                "The spreadsheet application has " + std::to_string(workbooks_.size()) +
                    " open workbooks, but no number " + std::to_string(index) + ".");
  }
  return *workbooks_[static_cast<std::size_t>(index - 1)];
}

void InstalledApplication::Quit() {
  has_quit_ = true;
  // Released at the end of this procedure, after all workbooks: the process stays until nobody
  // holds any of its objects.
  const Dispatch application = std::move(application_);
  while (!workbooks_.empty()) {
    const std::size_t open = workbooks_.size();
    Attempt([&] { workbooks_.back()->Close(); });
    // Closing takes the workbook off the list, unless it failed.
    if (workbooks_.size() == open) workbooks_.pop_back();
  }
  // A failure means that the application has exited already; an invisible one exits with the last
  // reference to it.
  Attempt([&] { application.Call(L"Quit"); });
}

int InstalledApplication::FormatNumber(const OutputFormat& format) const {
  const std::string version = Running().Get(L"Version").Text();
  const bool has_many = std::atoi(version.c_str()) >= kFirstVersionWithManyFormats;
  if (&format != &kXlsxFormat) return has_many ? kXls : kOnlyFormat;
  if (has_many) return kXlsx;
  throw Error(error_number::kAutomation,
              "The installed spreadsheet application, of version " + version +
                  ", does not write .xlsx files. Give the output a name that ends with .xls.");
}

void InstalledApplication::Drop(const InstalledWorkbook& closed) {
  std::erase_if(workbooks_, [&closed](const auto& open) { return open.get() == &closed; });
}

}  // namespace korvex
