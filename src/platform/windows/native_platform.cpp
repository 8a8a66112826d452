#include "platform/native_platform.h"

#include "platform/windows/ini_settings_store.h"
#include "platform/windows/mapi_mail.h"
#include "platform/windows/program_folder.h"
#include "platform/windows/registry_settings_store.h"
#include "platform/windows/system_clock.h"
#include "platform/windows/user_folder.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_shell.h"
#include "platform/windows/windows_sound.h"
#include "platform/windows/windows_terminal.h"
#include "platform/windows/windows_window_system.h"

// After the header of the system, which it needs.
#include <shellapi.h>

namespace korvex {

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
  MapiMail mail;
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
          .user_folder = UserFolder()};
}

std::unique_ptr<Terminal> OpenTerminal() {
  return std::make_unique<WindowsTerminal>();
}

// What main is given has been through the code page of the machine.
std::vector<std::string> ProgramArguments(int, char**) {
  std::vector<std::string> arguments;
  int count = 0;
  wchar_t** texts = CommandLineToArgvW(GetCommandLineW(), &count);
  for (int i = 1; texts && i < count; ++i) arguments.push_back(FromWide(texts[i]));
  LocalFree(texts);
  return arguments;
}

}  // namespace korvex
