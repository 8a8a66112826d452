#include "platform/posix/posix_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>

namespace korvex {
namespace {

constexpr int kDefaultColumns = 80;
constexpr int kLastPress = 3;        // of Ctrl-C, which ends the program
constexpr int kWriteTimeout = 1000;  // milliseconds that a stopped terminal can hold up the program

// A signal handler has no arguments, so these are global.
std::atomic<int> interrupts = 0;  // that nobody has taken yet
std::atomic<int> presses = 0;     // since the user last answered
std::atomic<int> wake_descriptor = -1;

void HandleInterrupt(int signal_number) {
  if (++presses == kLastPress) {
    // Comes when this handler has ended.
    signal(signal_number, SIG_DFL);
    raise(signal_number);
    return;
  }
  // The signal may come between a call of the program and its look at errno.
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(wake_descriptor, "", 1);
  ++interrupts;  // last: who takes it finds the byte to drain
  errno = error;
}

}  // namespace

PosixTerminal::PosixTerminal() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
    throw Error(error_number::kDeviceIo, std::string("Cannot make a pipe: ") + strerror(errno));
  }
  wake_reader_ = Descriptor(ends[0]);
  wake_writer_ = Descriptor(ends[1]);
  wake_descriptor = ends[1];
  interrupts = 0;
  presses = 0;

  struct sigaction action {};
  action.sa_handler = SIG_IGN;
  // Writing answers with EPIPE and EFBIG then, and the run ends with a message instead of silently.
  sigaction(SIGPIPE, &action, &former_pipe_);
  sigaction(SIGXFSZ, &action, &former_file_size_);
  action.sa_handler = HandleInterrupt;
  sigaction(SIGINT, &action, &former_interrupt_);
}

PosixTerminal::~PosixTerminal() {
  sigaction(SIGINT, &former_interrupt_, nullptr);
  sigaction(SIGXFSZ, &former_file_size_, nullptr);
  sigaction(SIGPIPE, &former_pipe_, nullptr);
  wake_descriptor = -1;
}

bool PosixTerminal::CanAsk() const {
  return isatty(STDIN_FILENO) && isatty(STDERR_FILENO);
}

bool PosixTerminal::CanRedraw() const {
  return isatty(STDERR_FILENO);
}

int PosixTerminal::Columns() const {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kDefaultColumns;
  return size.ws_col;
}

void PosixTerminal::WriteError(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd output{STDERR_FILENO, POLLOUT, 0};
      if (poll(&output, 1, kWriteTimeout) == 0) return;
    } else if (errno != EINTR) {
      return;
    }
  }
}

std::optional<std::string> PosixTerminal::ReadLine() {
  for (;;) {
    const std::size_t end = unread_.find('\n');
    if (end != std::string::npos) {
      std::string line = unread_.substr(0, end);
      unread_.erase(0, end + 1);
      if (line.ends_with('\r')) line.pop_back();
      presses = 0;
      return line;
    }
    if (!WaitForInput()) {
      unread_.clear();
      return std::nullopt;
    }
    if (!ReadMore()) {
      if (unread_.empty()) return std::nullopt;
      unread_ += '\n';  // the last line may lack its end
    }
  }
}

bool PosixTerminal::IsInterrupted() const {
  return interrupts > 0;
}

bool PosixTerminal::TakeInterrupt() {
  if (!IsInterrupted()) return false;
  char wake;
  [[maybe_unused]] const ssize_t count = read(wake_reader_.Get(), &wake, 1);
  --interrupts;
  return true;
}

// False when Ctrl-C ended the wait; that press counts as the answer and is taken.
bool PosixTerminal::WaitForInput() {
  for (;;) {
    if (TakeInterrupt()) return false;
    std::array<pollfd, 2> sources{pollfd{STDIN_FILENO, POLLIN, 0},
                                  pollfd{wake_reader_.Get(), POLLIN, 0}};
    const int ready = poll(sources.data(), sources.size(), -1);
    // With a byte in the pipe, a signal has come: look at the count before the input.
    if (ready > 0 && sources[1].revents == 0) return true;
    if (ready < 0 && errno != EINTR) return true;  // reading will tell
  }
}

bool PosixTerminal::ReadMore() {
  std::array<char, 4096> bytes;
  const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
  if (count > 0) unread_.append(bytes.data(), static_cast<std::size_t>(count));
  // A terminal that another program has set to non-blocking has nothing yet (EAGAIN).
  return count > 0 || (count < 0 && (errno == EINTR || errno == EAGAIN));
}

}  // namespace korvex
