#include "platform/native_platform.h"

#include <limits.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "platform/background_mail.h"
#include "platform/posix/posix_desktop.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/posix_io.h"
#include "platform/posix/posix_terminal.h"
#include "platform/posix/sendmail_mail.h"
#include "settings/ini_settings_store.h"

namespace korvex {
namespace {

class SystemClock : public Clock {
 public:
  std::tm Now() const override {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
  }
};

// The folder of the running executable, links followed.
std::string ProgramFolder() {
  const std::string link = "/proc/self/exe";
  std::array<char, PATH_MAX> path;
  const ssize_t length = readlink(link.c_str(), path.data(), path.size());
  if (length < 0) throw SystemError(errno, "read", link);
  return FolderOf(std::string(path.data(), static_cast<std::size_t>(length)));
}

// "korvex/NAME" in the user's own folder that a variable of the environment names, or else in the
// usual place below the home folder.
std::string OwnFile(const PosixFileSystem& files, const char* variable, const char* usual_place,
                    const char* name) {
  const char* chosen = std::getenv(variable);
  const std::string folder =
      // Relative paths in these variables are to be ignored.
      chosen && *chosen == '/' ? std::string(chosen) : files.DefaultFolder() + usual_place;
  return files.AbsolutePath(folder + "/korvex/" + name);
}

std::string SettingsFile(const PosixFileSystem& files) {
  return OwnFile(files, "XDG_CONFIG_HOME", "/.config", "korvex.ini");
}

std::string UserFolder(const PosixFileSystem& files) {
  return OwnFile(files, "XDG_STATE_HOME", "/.local/state", "");
}

std::string CacheFolder(const PosixFileSystem& files) {
  return OwnFile(files, "XDG_CACHE_HOME", "/.cache", "");
}

}  // namespace

struct NativePlatform::Parts {
  explicit Parts(const std::optional<std::string>& settings_file)
      : settings(files, settings_file ? *settings_file : SettingsFile(files)) {}

  PosixFileSystem files;
  IniSettingsStore settings;
  BackgroundMail mail{[] { return std::make_unique<SendmailMail>(); }};
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
          .user_folder = UserFolder(parts_->files),
          .cache_folder = CacheFolder(parts_->files)};
}

std::unique_ptr<Terminal> OpenTerminal() {
  return std::make_unique<PosixTerminal>();
}

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

}  // namespace korvex
