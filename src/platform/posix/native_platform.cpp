#include "platform/native_platform.h"

#include "platform/posix/desktop_shell.h"
#include "platform/posix/desktop_sound.h"
#include "platform/posix/ini_settings_store.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/posix_terminal.h"
#include "platform/posix/program_folder.h"
#include "platform/posix/sendmail_mail.h"
#include "platform/posix/system_clock.h"
#include "platform/posix/user_folder.h"

namespace korvex {

struct NativePlatform::Parts {
  explicit Parts(const std::optional<std::string>& settings_file)
      : settings(files, settings_file ? files.AbsolutePath(*settings_file)
                                      : IniSettingsStore::PerUserPath(files)) {}

  PosixFileSystem files;
  IniSettingsStore settings;
  SendmailMail mail;
  DesktopShell shell;
  DesktopSound sound;
  SystemClock clock;
};

NativePlatform::NativePlatform(const std::optional<std::string>& settings_file)
    : parts_(std::make_unique<Parts>(settings_file)) {}

NativePlatform::~NativePlatform() = default;

Services NativePlatform::Provided() const {
  return {.settings = &parts_->settings,
          .files = &parts_->files,
          .mail = &parts_->mail,
          .shell = &parts_->shell,
          .sound = &parts_->sound,
          .clock = &parts_->clock,
          .program_folder = ProgramFolder(),
          .user_folder = UserFolder(parts_->files)};
}

std::unique_ptr<Terminal> OpenTerminal() {
  return std::make_unique<PosixTerminal>();
}

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

}  // namespace korvex
