// The desktop program. Chooses the implementations of the platform services and opens the main
// window.

#include <wx/app.h>

#include <iostream>
#include <memory>
#include <string_view>

#include "errors/basFuncs.h"
#include "platform/error.h"
#include "platform/native_platform.h"
#include "platform/services.h"
#include "platform/standard_streams.h"
#include "spreadsheet/embedded_application.h"
#include "ui/open_main_window.h"
#include "ui/window_dialogs.h"
#include "ui/window_message_loop.h"

namespace korvex {
namespace {

// The platform as the whole program sees it, from its start to its end.
class Desktop {
 public:
  OpenMainWindow main_window;

 private:
  Services AllServices() {
    Services services = native_.Provided();
    if (!services.spreadsheet) services.spreadsheet = &embedded_;
    services.dialogs = &dialogs_;
    services.message_loop = &message_loop_;
    services.main_window = &main_window;
    return services;
  }

  NativePlatform native_;
  EmbeddedSpreadsheet embedded_{*native_.Provided().files};
  WindowDialogs dialogs_;
  WindowMessageLoop message_loop_;
  InstalledServices installed_{AllServices()};
};

class App : public wxApp {
 public:
  bool OnInit() override {
    SetAppName("korvex");
    SetAppDisplayName(kProgramTitle);
    if (!wxApp::OnInit()) return false;
    desktop_ = std::make_unique<Desktop>();
    desktop_->main_window.Show();
    return true;
  }

  // Every handler traps its own errors; what gets here all the same is reported, and the window
  // stays.
  bool OnExceptionInMainLoop() override {
    Report("korvex");
    return true;
  }

 private:
  std::unique_ptr<Desktop> desktop_;
};

// What every program is asked for, also where there is no display.
bool AnswerOnTerminal(std::string_view question) {
  if (question == "--version") {
    std::cout << "korvex " << kProgramVersion << '\n';
  } else if (question == "--help" || question == "-h") {
    std::cout << "Usage: korvex\n\n"
                 "Opens the window in which workbooks of plate readers are converted.\n"
                 "korvex-convert does the same without a window.\n";
  } else {
    return false;
  }
  return true;
}

}  // namespace
}  // namespace korvex

wxIMPLEMENT_APP_NO_MAIN(korvex::App);

int main(int argc, char** argv) {
  korvex::OccupyStandardStreams();
  if (argc == 2 && korvex::AnswerOnTerminal(argv[1])) return 0;
  return wxEntry(argc, argv);
}
