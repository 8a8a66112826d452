// The desktop program. Chooses the implementations of the platform services and opens the main
// window.

#include <wx/app.h>
#include <wx/msgout.h>
#include <wx/stdpaths.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "errors/basFuncs.h"
#include "platform/error.h"
#include "platform/native_platform.h"
#include "platform/services.h"
#include "platform/standard_streams.h"
#include "programs/spreadsheet_choice.h"
#include "ui/form_helpers.h"
#include "ui/window_services.h"

namespace korvex {
namespace {

// What --spreadsheet names. The toolkit makes the application, and has no arguments for it.
std::optional<std::string> chosen_spreadsheet;

// The platform as the whole program sees it, from its start to its end.
class Desktop {
 public:
  OpenMainWindow main_window;

 private:
  Services AllServices() {
    Services services = native_.Provided();
    services.spreadsheet = &spreadsheets_.Choose(chosen_spreadsheet);
    services.dialogs = &dialogs_;
    services.message_loop = &message_loop_;
    services.main_window = &main_window;
    services.documents_folder = FromWx(wxStandardPaths::Get().GetDocumentsDir());
    return services;
  }

  NativePlatform native_;
  SpreadsheetChoice spreadsheets_{*native_.Provided().files};
  WindowDialogs dialogs_;
  WindowMessageLoop message_loop_;
  InstalledServices installed_{AllServices()};
};

// What every program is asked for.
std::optional<std::string> AnswerTo(std::string_view question) {
  if (question == "--version") return std::string("korvex ") + kProgramVersion + '\n';
  if (question != "--help" && question != "-h") return std::nullopt;
  return "Usage: korvex [FOLDER | FILE...]\n\n"
         "Opens the window in which workbooks of plate readers are converted: with the sub-folders "
         "of\nFOLDER to be processed, or with these files of one folder.\n"
         "korvex-convert does the same without a window.\n"
         "--spreadsheet embedded or installed chooses the spreadsheet application.\n";
}

// Works where there is no display, and fails where there is nobody to read it.
bool AnswerOnOutput(std::string_view question) {
  const std::optional<std::string> answer = AnswerTo(question);
  return answer && Attempt([&] {
           WriteOutput(*answer);
           FlushOutput();
         });
}

// The toolkit makes the application, and has no arguments for it.
std::vector<std::string> paths_to_open;

class App : public wxApp {
 public:
  bool OnInit() override {
    SetAppName("korvex");
    SetAppDisplayName(kProgramTitle);
    if (const auto answer = argc == 2 ? AnswerTo(FromWx(argv[1])) : std::nullopt) {
      wxMessageOutput::Get()->Output(ToWx(*answer));
      return true;
    }
    if (!wxApp::OnInit()) return false;
    try {
      desktop_ = std::make_unique<Desktop>();
    } catch (const Error& error) {
      wxMessageOutput::Get()->Output(ToWx(error.Description()));
      return false;
    }
    desktop_->main_window.Show(paths_to_open);
    return true;
  }

  int OnRun() override { return desktop_ ? wxApp::OnRun() : 0; }

  // Every handler traps its own errors; what gets here all the same is reported, and the window
  // stays.
  bool OnExceptionInMainLoop() override {
    Report("korvex");
    return true;
  }

 private:
  std::unique_ptr<Desktop> desktop_;
};

// Takes the option --spreadsheet out of the arguments.
void TakeSpreadsheet(std::vector<std::string>& arguments) {
  static constexpr std::string_view kOption = "--spreadsheet";
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    if (*argument == "--") return;
    if (!argument->starts_with(kOption)) continue;
    const bool has_value = argument->size() > kOption.size();
    if (has_value && (*argument)[kOption.size()] != '=') continue;
    auto end = argument + 1;
    // Without a value it is an empty name, which is refused.
    chosen_spreadsheet = has_value ? argument->substr(kOption.size() + 1) : std::string();
    if (!has_value && end != arguments.end()) chosen_spreadsheet = *end++;
    arguments.erase(argument, end);
    return;
  }
}

// Options are the toolkit's, which would take them from the code page of the machine. Paths never
// get there: their bytes need not be UTF-8.
int RunWindow(const std::vector<std::string>& arguments) {
  std::vector<std::wstring> texts{L"korvex"};
  bool options = true;
  for (const std::string& argument : arguments) {
    if (options && argument == "--") {
      options = false;
    } else if (options && argument.starts_with('-')) {
      texts.push_back(ToWx(argument).ToStdWstring());
    } else {
      paths_to_open.push_back(argument);
    }
  }
  std::vector<wchar_t*> pointers;
  for (std::wstring& text : texts) pointers.push_back(text.data());
  auto count = static_cast<int>(pointers.size());
  pointers.push_back(nullptr);
  return wxEntry(count, pointers.data());
}

}  // namespace
}  // namespace korvex

wxIMPLEMENT_APP_NO_MAIN(korvex::App);

int main(int argc, char** argv) {
  korvex::OccupyStandardStreams();
  std::vector<std::string> arguments = korvex::ProgramArguments(argc, argv);
  korvex::TakeSpreadsheet(arguments);
  if (arguments.size() == 1 && korvex::AnswerOnOutput(arguments.front())) return 0;
  return korvex::RunWindow(arguments);
}
