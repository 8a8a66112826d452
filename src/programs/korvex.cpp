// The desktop program. Chooses the implementations of the platform services and opens the main
// window.

#include <wx/app.h>
#include <wx/wxcrtvararg.h>

#include <memory>

#include "errors/basFuncs.h"
#include "platform/error.h"
#include "platform/posix/desktop_shell.h"
#include "platform/posix/desktop_sound.h"
#include "platform/posix/ini_settings_store.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/program_folder.h"
#include "platform/posix/sendmail_mail.h"
#include "platform/posix/standard_streams.h"
#include "platform/posix/system_clock.h"
#include "platform/posix/user_folder.h"
#include "platform/services.h"
#include "spreadsheet/embedded_application.h"
#include "ui/open_main_window.h"
#include "ui/window_dialogs.h"
#include "ui/window_message_loop.h"

namespace korvex {
namespace {

// The platform as the whole program sees it, from its start to its end.
struct Desktop {
  PosixFileSystem files;
  IniSettingsStore settings{files, IniSettingsStore::PerUserPath(files)};
  EmbeddedSpreadsheet spreadsheet{files};
  SendmailMail mail;
  DesktopShell shell;
  DesktopSound sound;
  WindowDialogs dialogs;
  WindowMessageLoop message_loop;
  SystemClock clock;
  OpenMainWindow main_window;
  InstalledServices services{{.spreadsheet = &spreadsheet,
                              .settings = &settings,
                              .files = &files,
                              .mail = &mail,
                              .shell = &shell,
                              .sound = &sound,
                              .dialogs = &dialogs,
                              .message_loop = &message_loop,
                              .clock = &clock,
                              .main_window = &main_window,
                              .program_folder = ProgramFolder(),
                              .user_folder = UserFolder(files)}};
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

}  // namespace
}  // namespace korvex

wxIMPLEMENT_APP_NO_MAIN(korvex::App);

int main(int argc, char** argv) {
  korvex::OccupyStandardStreams();
  return wxEntry(argc, argv);
}
