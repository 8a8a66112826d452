// The one set of platform services that the whole process uses. A program's main installs the real
// one, a test its fakes, so that modules of free procedures need no context argument.
#pragma once

#include <string>

namespace korvex {

class Clock;
class Dialogs;
class FileSystem;
class Mail;
class MainWindow;
class MessageLoop;
class SettingsStore;
class Shell;
class Sound;
class SpreadsheetProgram;
class WindowSystem;

// The title of messages and the source of the program's own errors.
inline constexpr char kProgramTitle[] = "KORVEX";
extern const char kProgramVersion[];  // of project() in CMakeLists.txt

// None is owned.
struct Services {
  SpreadsheetProgram* spreadsheet = nullptr;
  SettingsStore* settings = nullptr;
  FileSystem* files = nullptr;
  Mail* mail = nullptr;
  Shell* shell = nullptr;
  Sound* sound = nullptr;
  WindowSystem* window_system = nullptr;  // null where the toolkit's own means serve
  Dialogs* dialogs = nullptr;
  MessageLoop* message_loop = nullptr;
  Clock* clock = nullptr;
  MainWindow* main_window = nullptr;
  // Without trailing separator.
  std::string program_folder;  // of the executable
  // The user's own, for what the program keeps and for what can be made anew; both need not exist,
  // and are empty where the user has none.
  std::string user_folder = {};
  std::string cache_folder = {};
  // Where the user keeps documents; empty for programs that put none there.
  std::string documents_folder = {};
};

// The installed set; error 91 when there is none.
const Services& Platform();

// Installs a set for its own lifetime and puts the former one back.
class InstalledServices {
 public:
  // `services` is copied; what it points to must outlive this object.
  explicit InstalledServices(const Services& services);
  ~InstalledServices();
  InstalledServices(const InstalledServices&) = delete;
  InstalledServices& operator=(const InstalledServices&) = delete;

 private:
  Services services_;
  const Services* former_;
};

}  // namespace korvex
