// Event sounds of the desktop's sound theme, through libcanberra where the machine has it; it is
// loaded when the first sound is played. Otherwise a terminal behind standard error beeps.
#pragma once

#include <memory>
#include <string>

#include "platform/sound.h"

namespace korvex {

class DesktopSound : public Sound {
 public:
  explicit DesktopSound(std::string library = "libcanberra.so.0");
  ~DesktopSound() override;

  void Beep() override;
  void PlayAlias(const std::string& alias) override;

 private:
  class Player;

  void Play(const char* event);

  std::string library_;
  bool tried_ = false;
  std::unique_ptr<Player> player_;  // none when there is no library
};

}  // namespace korvex
