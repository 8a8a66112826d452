#include "platform/posix/process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <thread>

#include "text/text.h"

namespace korvex {
namespace {

constexpr std::chrono::milliseconds kWaitInterval{5};

bool IsExecutable(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

// The signals that this process ignores or blocks must not be ignored or blocked in the other.
class SpawnAttributes {
 public:
  SpawnAttributes() {
    sigset_t set;
    posix_spawnattr_init(&attributes_);
    sigemptyset(&set);
    posix_spawnattr_setsigmask(&attributes_, &set);
    for (const int number : {SIGINT, SIGPIPE, SIGXFSZ}) sigaddset(&set, number);
    posix_spawnattr_setsigdefault(&attributes_, &set);
    posix_spawnattr_setflags(&attributes_,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;

  const posix_spawnattr_t* Get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

class SpawnFiles {
 public:
  explicit SpawnFiles(int standard_input) {
    posix_spawn_file_actions_init(&actions_);
    if (standard_input >= 0) {
      posix_spawn_file_actions_adddup2(&actions_, standard_input, STDIN_FILENO);
    } else {
      posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    }
    // What it prints would get between the lines of this program's progress or into its result.
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
  }
  ~SpawnFiles() { posix_spawn_file_actions_destroy(&actions_); }
  SpawnFiles(const SpawnFiles&) = delete;
  SpawnFiles& operator=(const SpawnFiles&) = delete;

  const posix_spawn_file_actions_t* Get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

}  // namespace

std::string FindProgram(const std::string& name,
                        std::initializer_list<const char*> further_folders) {
  const char* path = std::getenv("PATH");
  std::vector<std::string> folders = Split(path ? path : "", ":");
  folders.insert(folders.end(), further_folders.begin(), further_folders.end());
  for (const std::string& folder : folders) {
    const std::string program = folder + "/" + name;
    // An empty or relative folder of PATH depends on the current folder, where anybody may have put
    // a program of that name.
    if (folder.starts_with('/') && IsExecutable(program)) return program;
  }
  return {};
}

pid_t StartProgram(const std::vector<std::string>& arguments, int standard_input) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const SpawnAttributes attributes;
  const SpawnFiles files(standard_input);
  pid_t program = -1;
  const int error =
      posix_spawn(&program, argv[0], files.Get(), attributes.Get(), argv.data(), environ);
  return error == 0 ? program : -1;
}

// The process in between exits at once, so that init adopts the program and later reaps it.
void StartDetached(const std::vector<std::string>& arguments) {
  const pid_t parent = fork();
  if (parent == 0) {
    StartProgram(arguments, -1);
    _exit(0);
  }
  while (parent > 0 && waitpid(parent, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::optional<int> WaitForProgram(pid_t program, std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  for (;;) {
    int status = 0;
    const pid_t ended = waitpid(program, &status, WNOHANG);
    if (ended == program) return status;
    if (ended < 0 && errno != EINTR) return 0;  // somebody else has waited for it
    if (std::chrono::steady_clock::now() >= deadline) return std::nullopt;
    std::this_thread::sleep_for(kWaitInterval);
  }
}

}  // namespace korvex
