// What the core asks of the program around it, with windows or on a terminal: questions and
// messages, the message loop, and the folder that the user has chosen. Texts are UTF-8 with CR LF
// line ends.
#pragma once

#include <string>
#include <vector>

namespace korvex {

enum class BoxButtons { kOk, kOkCancel, kRetryCancel };
enum class BoxIcon { kNone, kCritical, kExclamation };
enum class BoxAnswer { kOk, kCancel, kRetry };

// The platform's standard message box. An empty title means the application title.
struct PlainMessage {
  std::string text;
  BoxButtons buttons = BoxButtons::kOk;
  BoxIcon icon = BoxIcon::kNone;
  std::string title = {};
  // What lies behind an error or a refusal, shown below the text.
  std::string cause = {};
};

// The program's own message box.
struct ButtonMessage {
  std::string prompt;
  std::vector<std::string> buttons;  // captions, left to right; "&" marks an access key
  std::string title;
  int icon = 0;            // 1 to 27, 0 for none
  int default_button = 0;  // zero-based
  int sound = 1;           // 1 beep, 2 to 9 system sounds, 0 silent
  // What lies behind a refusal, shown below the prompt.
  std::string cause = {};
};

// All of them modal.
class Dialogs {
 public:
  virtual ~Dialogs() = default;

  virtual BoxAnswer ShowPlain(const PlainMessage& message) = 0;
  // Returns the caption of the pressed button.
  virtual std::string ShowButtons(const ButtonMessage& message) = 0;
  // Folders of the file system only; empty when the user cancels. `owner` is the native window.
  virtual std::string BrowseForFolder(void* owner, const std::string& prompt) = 0;
  // A share of the network, or what stands for one here; empty when the user cancels or stops at a
  // computer.
  virtual std::string BrowseNetwork(void* owner, const std::string& title) = 0;
};

// The message loop of the one thread: where a running conversion lets the user in.
class MessageLoop {
 public:
  virtual ~MessageLoop() = default;

  // Handles what is waiting (a Stop click, timers, repainting) and returns.
  virtual void Yield() = 0;
};

// Where a run is started from: the main window, or the command line.
class MainWindow {
 public:
  virtual ~MainWindow() = default;

  // The folder that the user has chosen at this moment, without a trailing separator.
  virtual std::string ProcessingFolder() const = 0;
};

}  // namespace korvex
