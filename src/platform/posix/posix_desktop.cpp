#include "platform/posix/posix_desktop.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "platform/posix/posix_file_system.h"
#include "platform/posix/posix_io.h"
#include "platform/posix/process.h"

namespace korvex {
namespace {

constexpr char kDefaultEvent[] = "bell";

// System event aliases and the names of the freedesktop sound theme that mean the same.
constexpr std::array<std::pair<const char*, const char*>, 8> kEvents{{
    {"BuildComplete", "complete"},
    {"BuildError", "dialog-error"},
    {"BuildWarning", "dialog-warning"},
    {"SystemAsterisk", "dialog-information"},
    {"SystemQuestion", "dialog-question"},
    {"SystemExclamation", "dialog-warning"},
    {"Close", "window-close"},
    {"Open", "window-new"},
}};

const char* EventOf(const std::string& alias) {
  for (const auto& [name, event] : kEvents) {
    if (alias == name) return event;
  }
  return kDefaultEvent;
}

void IgnoreAlsaError(const char*, int, const char*, int, const char*, ...) {}

// Sound libraries complain about missing sound cards on standard error; messages belong there.
class QuietStandardError {
 public:
  QuietStandardError() : former_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
    const Descriptor nowhere = OpenFile("/dev/null", O_WRONLY);
    if (former_.IsOpen() && nowhere.IsOpen()) dup2(nowhere.Get(), STDERR_FILENO);
  }
  ~QuietStandardError() {
    if (former_.IsOpen()) dup2(former_.Get(), STDERR_FILENO);
  }
  QuietStandardError(const QuietStandardError&) = delete;
  QuietStandardError& operator=(const QuietStandardError&) = delete;

 private:
  Descriptor former_;
};

// The playing threads outlive the calls that QuietStandardError covers.
void SilenceAlsa() {
  using Handler = void (*)(const char*, int, const char*, int, const char*, ...);
  using SetHandler = int (*)(Handler);
  void* alsa = dlopen("libasound.so.2", RTLD_LAZY | RTLD_NOLOAD);
  if (!alsa) return;
  const auto set_handler = reinterpret_cast<SetHandler>(dlsym(alsa, "snd_lib_error_set_handler"));
  if (set_handler) set_handler(IgnoreAlsaError);
  dlclose(alsa);
}

}  // namespace

void DesktopShell::Open(const std::string& file) {
  const PosixFileSystem files;
  if (!files.FileExists(file)) return;
  const std::string program = FindProgram("xdg-open");
  // An absolute path cannot be taken for an option or an address.
  if (!program.empty()) StartDetached({program, files.AbsolutePath(file)});
}

std::string DesktopShell::EnvironmentVariable(const std::string& name) const {
  const char* value = std::getenv(name.c_str());
  return value ? value : "";
}

// The few functions of libcanberra that play a sound. The library is never unloaded: its threads
// may run to the end of the program.
class DesktopSound::Player {
 public:
  static std::unique_ptr<Player> Load(const std::string& library) {
    void* handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_NODELETE);
    if (!handle) return nullptr;
    std::unique_ptr<Player> player(new Player);
    const bool complete = Find(handle, "ca_context_create", player->create_) &&
                          Find(handle, "ca_context_destroy", player->destroy_) &&
                          Find(handle, "ca_context_play_full", player->play_) &&
                          Find(handle, "ca_proplist_create", player->create_list_) &&
                          Find(handle, "ca_proplist_sets", player->set_property_) &&
                          Find(handle, "ca_proplist_destroy", player->destroy_list_);
    if (!complete || player->create_(&player->context_) != 0) return nullptr;
    return player;
  }

  ~Player() {
    if (context_) destroy_(context_);
  }

  // Whether the sound has begun.
  bool Play(const char* event) {
    Properties* properties = nullptr;
    if (create_list_(&properties) != 0) return false;
    set_property_(properties, "event.id", event);
    // Without a cache file in the user's folder.
    set_property_(properties, "canberra.cache-control", "volatile");
    const int result = play_(context_, 0, properties, nullptr, nullptr);
    destroy_list_(properties);
    SilenceAlsa();
    return result == 0;
  }

 private:
  struct Context;
  struct Properties;

  Player() = default;

  template <class Function>
  static bool Find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
  }

  Context* context_ = nullptr;
  int (*create_)(Context**) = nullptr;
  int (*destroy_)(Context*) = nullptr;
  int (*play_)(Context*, std::uint32_t id, Properties*, void* callback, void* data) = nullptr;
  int (*create_list_)(Properties**) = nullptr;
  int (*set_property_)(Properties*, const char* key, const char* value) = nullptr;
  int (*destroy_list_)(Properties*) = nullptr;
};

DesktopSound::DesktopSound(std::string library) : library_(std::move(library)) {}

DesktopSound::~DesktopSound() {
  const QuietStandardError quiet;
  player_.reset();
}

void DesktopSound::Beep() {
  Play(kDefaultEvent);
}

void DesktopSound::PlayAlias(const std::string& alias) {
  Play(EventOf(alias));
}

void DesktopSound::Play(const char* event) {
  {
    const QuietStandardError quiet;
    // Looked for once, not before every sound.
    if (!std::exchange(tried_, true)) player_ = Player::Load(library_);
    if (player_ && player_->Play(event)) return;
  }
  // Not into a file: there a beep would be a stray byte.
  if (isatty(STDERR_FILENO)) [[maybe_unused]]
    const ssize_t written = write(STDERR_FILENO, "\a", 1);
}

}  // namespace korvex
