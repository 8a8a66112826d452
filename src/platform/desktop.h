// What the program asks of the desktop that it runs on: clock, sounds, documents, mail, and what
// the window system can do beyond the toolkit. Texts are UTF-8.
#pragma once

#include <cstddef>
#include <ctime>
#include <string>

namespace korvex {

class Clock {
 public:
  virtual ~Clock() = default;

  // Local date and time.
  virtual std::tm Now() const = 0;
};

// System sounds. A machine that cannot play one stays silent; nothing here fails or waits.
class Sound {
 public:
  virtual ~Sound() = default;

  virtual void Beep() = 0;
  // By the alias name of a system event, "SystemAsterisk" for example; the platform maps it to its
  // own sound, an unknown or empty name to its default sound.
  virtual void PlayAlias(const std::string& alias) = 0;
};

// Plays a message box's sound by its number: 1 the beep, 2 to 9 a system event, any number above
// the default sound; 0 and below are silent.
void PlayMessageSound(Sound& sound, int number);

class Shell {
 public:
  virtual ~Shell() = default;

  // Opens a document with its associated program, without waiting. Does not say whether it worked.
  virtual void Open(const std::string& file) = 0;
  // Shows a text file in the platform's plain text editor, without waiting.
  virtual void OpenInTextEditor(const std::string& file) = 0;
  // Empty when the variable is not set.
  virtual std::string EnvironmentVariable(const std::string& name) const = 0;
};

// One error message by e-mail, in the steps of Simple MAPI. Every step can fail on its own; the
// caller goes on with the next one.
class Mail {
 public:
  virtual ~Mail() = default;

  // Why nothing can be mailed from here at all; empty when nothing is known against it.
  virtual std::string Obstacle() const { return {}; }
  virtual void SignOn() = 0;
  virtual void Compose() = 0;  // starts an empty message in the session signed on
  virtual void SetSubject(const std::string& subject) = 0;
  virtual void SetNoteText(const std::string& text) = 0;
  virtual void SetPrimaryRecipient(const std::string& address) = 0;
  virtual void ResolveName() = 0;
  virtual void Send() = 0;  // without a dialog
  virtual void SignOff() = 0;
};

// Error 5 for an address that is blank, or is not one line of at most `longest` bytes: further
// lines would become headers of the message.
void CheckMailAddress(const std::string& address, std::size_t longest = std::string::npos);

// Windows are passed by their native handle.
class WindowSystem {
 public:
  virtual ~WindowSystem() = default;

  // Disables the close item of a window's system menu, and with it its close box, or enables it
  // again. Returns 0 when that is done or there is no such item, -1 when `window` is no window,
  // -2 when the item's identifier cannot be changed, and -3 when its state cannot.
  virtual int EnableCloseButton(void* window, bool enable) = 0;
  // A folder of the file system, from anywhere; empty when the user cancels.
  virtual std::string BrowseForFolder(void* owner, const std::string& prompt) = 0;
  // A share of the network, or a folder in one; empty when the user cancels or stops at a computer.
  virtual std::string BrowseNetwork(void* owner, const std::string& title) = 0;
};

}  // namespace korvex
