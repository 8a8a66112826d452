#include "automation/installed_application.h"

#include <cstddef>
#include <cstdlib>
#include <utility>

#include "platform/error.h"
#include "platform/file_system.h"
#include "text/utf8.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr std::chrono::seconds kEndPatience{10};

constexpr std::size_t kLongestPath = 218;  // UTF-16 units

constexpr int kNoMacros = 3;       // of AutomationSecurity
constexpr int kNoLinks = 0;        // of UpdateLinks: neither updated nor asked about
constexpr int kAutomatic = -4105;  // of Calculation
constexpr int kIsCalculated = 0;   // of CalculationState

constexpr int kFirstVersionWithManyFormats = 12;
constexpr int kXlsx = 51;
constexpr int kXls = 56;
constexpr int kOnlyFormat = -4143;  // of the versions before

bool IsVisible(const Dispatch& application) {
  return application.Get(L"Visible").Integer() != 0;
}

}  // namespace

void CheckFileForApplication(const std::string& full_name) {
  const auto refuse = [&](const std::string& why) {
    throw Error(error_number::kAutomation,
                "The installed spreadsheet application cannot open " + full_name + ": " + why +
                    " Move or rename it, or convert without that application, with the option "
                    "--spreadsheet embedded.");
  };
  const std::size_t length = Utf16Length(full_name);
  if (length > kLongestPath) {
    refuse("its path has " + std::to_string(length) + " characters, and the application takes " +
           std::to_string(kLongestPath) + ".");
  }
  if (full_name.find_first_of("[]", full_name.find_last_of("\\/") + 1) != std::string::npos) {
    refuse("its name holds \"[\" or \"]\".");
  }
}

InstalledApplication::InstalledApplication(Dispatch application, FileSystem& files,
                                           std::string scratch_folder)
    : application_(std::move(application)),
      files_(files),
      scratch_folder_(std::move(scratch_folder)) {
  // First, so that it ends with this program whatever fails. One that the user sees already is
  // somebody else's.
  Attempt([&] {
    if (IsVisible(application_)) return;
    const int window = application_.Get(L"Hwnd").Integer();
    process_ = ApplicationProcess(reinterpret_cast<HWND>(static_cast<INT_PTR>(window)));
  });
  ForbidMacros();
  application_.Put(L"EnableEvents", false);
}

// A macro could show a dialog that nobody sees.
void InstalledApplication::ForbidMacros() {
  try {
    macro_security_ = application_.Get(L"AutomationSecurity");
    application_.Put(L"AutomationSecurity", kNoMacros);
  } catch (const Error& error) {
    // Old versions do not have the property.
    if (error.Number() != error_number::kNoSuchMember) throw;
  }
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
  const Dispatch workbooks = Running().Object(L"Workbooks");
  workbooks_.push_back(std::make_unique<InstalledWorkbook>(
      *this, workbooks.ObjectFrom(workbooks.Call(L"Add")), "", format));
  // What forbids saving shows now, not at the end of a long run.
  workbooks_.back()->TrySaving();
  return *workbooks_.back();
}

Workbook& InstalledApplication::OpenWorkbook(const std::string& full_name,
                                             const OpenOptions& options) {
  const Dispatch workbooks = Running().Object(L"Workbooks");
  // The application has a current folder of its own.
  const std::string path = files_.AbsolutePath(full_name);
  CheckFileForApplication(path);
  // An answer to each question, which would wait in a window that nobody sees, for ever. A file
  // that needs a password is refused because this one is wrong.
  std::vector<NamedArgument> arguments = {{L"Filename", path},
                                          {L"UpdateLinks", kNoLinks},
                                          {L"ReadOnly", true},
                                          {L"Password", kDefaultPassword},
                                          {L"WriteResPassword", kDefaultPassword},
                                          {L"IgnoreReadOnlyRecommended", true}};
  if (!options.add_to_recent_files) arguments.push_back({L"AddToMru", false});
  const std::size_t open = workbooks_.size();
  try {
    workbooks_.push_back(std::make_unique<InstalledWorkbook>(
        *this, workbooks.ObjectFrom(workbooks.CallNamed(L"Open", arguments)), path, kXlsFormat));
    FinishCalculation();
  } catch (const Error& error) {
    if (workbooks_.size() > open) Attempt([&] { workbooks_.back()->Close(); });
    throw Error(error_number::kAutomation, path + " cannot be opened: " + error.Description(),
                error.Source());
  }
  // For good: an output must not replace a file that was read, even when it is closed again.
  inputs_.push_back(path);
  return *workbooks_.back();
}

void InstalledApplication::Expect(const std::vector<std::string>& full_names, const std::string&) {
  for (const std::string& full_name : full_names) {
    CheckFileForApplication(files_.AbsolutePath(full_name));
  }
}

// A formula that nobody has calculated would be read as 0. The first workbook that is opened
// decides whether the application calculates by itself.
void InstalledApplication::FinishCalculation() const {
  const Dispatch& application = Running();
  const auto is_calculated = [&] {
    return application.Get(L"CalculationState").Integer() == kIsCalculated;
  };
  if (application.Get(L"Calculation").Integer() != kAutomatic) {
    application.Put(L"Calculation", kAutomatic);
  }
  if (is_calculated()) return;
  application.Call(L"Calculate");
  if (is_calculated()) return;
  throw Error(
      error_number::kAutomation,
      "the spreadsheet application does not finish calculating its formulas. Open it there, "
      "let it calculate, and save it.");
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
  Dispatch application = std::move(application_);
  // It was hidden, so it shows because the user has opened a workbook in it.
  bool is_the_users = false;
  Attempt([&] { is_the_users = IsVisible(application); });
  if (is_the_users) process_.SetFree();
  while (!workbooks_.empty()) {
    const std::size_t open = workbooks_.size();
    Attempt([&] { workbooks_.back()->Close(); });
    // Closing takes the workbook off the list, unless it failed.
    if (workbooks_.size() == open) workbooks_.pop_back();
  }
  if (is_the_users) {
    LeaveToUser(application);
    return;
  }
  // A failure means that the application has exited already; an invisible one exits with the last
  // reference to it.
  Attempt([&] { application.Call(L"Quit"); });
  application = {};
  // A new one cannot be started while this one ends.
  process_.WaitForEnd(kEndPatience);
  process_ = {};
}

void InstalledApplication::LeaveToUser(const Dispatch& application) const {
  if (macro_security_.Type() != VT_EMPTY) {
    Attempt([&] { application.Put(L"AutomationSecurity", macro_security_); });
  }
  // With UserControl it stays when nobody holds its objects any more.
  for (const wchar_t* property :
       {L"UserControl", L"DisplayAlerts", L"ScreenUpdating", L"EnableEvents"}) {
    Attempt([&] { application.Put(property, true); });
  }
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
