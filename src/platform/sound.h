// System sounds. A machine that cannot play one stays silent; nothing here fails or waits.
#pragma once

#include <string>

namespace korvex {

class Sound {
 public:
  virtual ~Sound() = default;

  virtual void Beep() = 0;
  // By the alias name of a system event, "SystemAsterisk" for example; the platform maps it to its
  // own sound, an unknown or empty name to its default sound.
  virtual void PlayAlias(const std::string& alias) = 0;
};

}  // namespace korvex
