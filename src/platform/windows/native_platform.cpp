#include "platform/native_platform.h"

#include "platform/background_mail.h"
#include "platform/windows/command_line.h"
#include "platform/windows/mapi_mail.h"
#include "platform/windows/registry_settings_store.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_desktop.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_path.h"
#include "platform/windows/windows_terminal.h"
#include "settings/ini_settings_store.h"

// After the header of the system, which they need.
#include <knownfolders.h>
#include <shellapi.h>
#include <shlobj.h>

namespace korvex {
namespace {

class SystemClock : public Clock {
 public:
  std::tm Now() const override;
};

// Asked of the system: the C library takes the time zone from an environment variable that tools of
// other systems set in another form.
std::tm SystemClock::Now() const {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  std::tm local{};
  local.tm_year = now.wYear - 1900;
  local.tm_mon = now.wMonth - 1;
  local.tm_mday = now.wDay;
  local.tm_wday = now.wDayOfWeek;
  local.tm_hour = now.wHour;
  local.tm_min = now.wMinute;
  local.tm_sec = now.wSecond;
  local.tm_isdst = -1;
  return local;
}

// The folder of the running executable.
std::string ProgramFolder() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) throw SystemError(GetLastError(), "find", "the program's own folder");
    // A path that fills the buffer may have been cut off.
    if (length < path.size()) {
      path.resize(length);
      break;
    }
    path.resize(2 * path.size());
  }
  std::wstring folder = FolderOf(AbsoluteWide(FromWide(path)));
  if (folder.ends_with(L'\\')) folder.pop_back();
  return FromWide(folder);
}

// Of the environment first: who starts the program may have chosen another one.
std::string LocalData() {
  std::wstring value(32768, L'\0');  // as long as any variable
  const DWORD length =
      GetEnvironmentVariableW(L"LOCALAPPDATA", value.data(), static_cast<DWORD>(value.size()));
  if (length > 0 && length < value.size()) return FromWide(value.substr(0, length));
  PWSTR folder = nullptr;
  std::string found;
  if (SUCCEEDED(
          SHGetKnownFolderPath(FOLDERID_LocalAppData, KF_FLAG_DONT_VERIFY, nullptr, &folder))) {
    found = FromWide(folder);
  }
  CoTaskMemFree(folder);
  return found;
}

// What the program keeps for the user besides settings, and what can be made anew:
// "%LOCALAPPDATA%\KORVEX". Empty when the user has no such folder.
std::string UserFolder() {
  const std::string data = LocalData();
  return data.empty() ? "" : data + "\\KORVEX";
}

}  // namespace

struct NativePlatform::Parts {
  explicit Parts(const std::optional<std::string>& settings_file) {
    if (settings_file) {
      settings = std::make_unique<IniSettingsStore>(files, *settings_file);
    } else {
      settings = std::make_unique<RegistrySettingsStore>();
    }
  }

  WindowsFileSystem files;
  std::unique_ptr<SettingsStore> settings;
  BackgroundMail mail{[] { return std::make_unique<MapiMail>(); }, [] { return MapiObstacle(); }};
  WindowsShell shell;
  WindowsSound sound;
  WindowsWindowSystem window_system;
  SystemClock clock;
};

NativePlatform::NativePlatform(const std::optional<std::string>& settings_file)
    : parts_(std::make_unique<Parts>(settings_file)) {}

NativePlatform::~NativePlatform() = default;

Services NativePlatform::Provided() const {
  return {.settings = parts_->settings.get(),
          .files = &parts_->files,
          .mail = &parts_->mail,
          .shell = &parts_->shell,
          .sound = &parts_->sound,
          .window_system = &parts_->window_system,
          .clock = &parts_->clock,
          .program_folder = ProgramFolder(),
          .user_folder = UserFolder(),
          .cache_folder = UserFolder()};
}

std::unique_ptr<Terminal> OpenTerminal() {
  return std::make_unique<WindowsTerminal>();
}

// What main is given has been through the code page of the machine.
std::vector<std::string> ProgramArguments(int, char**) {
  return CommandLineArguments(GetCommandLineW());
}

}  // namespace korvex
