// The desktop of a Linux machine: the associated program of a document through xdg-open, and event
// sounds.
#pragma once

#include <memory>
#include <string>

#include "platform/desktop.h"

namespace korvex {

class DesktopShell : public Shell {
 public:
  // Does nothing when the file does not exist or the machine has no xdg-open.
  void Open(const std::string& file) override;
  // A text file's associated program is the text editor.
  void OpenInTextEditor(const std::string& file) override { Open(file); }
  std::string EnvironmentVariable(const std::string& name) const override;
};

// Event sounds of the desktop's sound theme, through libcanberra where the machine has it; it is
// loaded when the first sound is played. Otherwise a terminal behind standard error beeps.
class DesktopSound : public Sound {
 public:
  explicit DesktopSound(std::string library = "libcanberra.so.0");
  ~DesktopSound() override;

  void Beep() override;
  void PlayAlias(const std::string& alias) override;

 private:
  class Player;

  // By the sound theme, or else the terminal's bell.
  void Play(const char* event);

  std::string library_;
  // Whether the library has been looked for.
  bool tried_ = false;
  std::unique_ptr<Player> player_;  // none when there is no library
};

}  // namespace korvex
