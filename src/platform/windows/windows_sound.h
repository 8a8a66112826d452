// The sounds that the user has chosen for the events of the system.
#pragma once

#include "platform/sound.h"

namespace korvex {

class WindowsSound : public Sound {
 public:
  void Beep() override;
  void PlayAlias(const std::string& alias) override;
};

}  // namespace korvex
