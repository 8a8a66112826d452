#include "platform/desktop.h"

#include <array>
#include <cstddef>

namespace korvex {
namespace {

constexpr int kBeep = 1;
constexpr int kFirstAlias = 2;
constexpr std::array<const char*, 8> kAliases{
    "BuildComplete",  "BuildError",        "BuildWarning", "SystemAsterisk",
    "SystemQuestion", "SystemExclamation", "Close",        "Open"};

}  // namespace

void PlayMessageSound(Sound& sound, int number) {
  if (number == kBeep) sound.Beep();
  if (number <= kBeep) return;
  const auto alias = static_cast<std::size_t>(number - kFirstAlias);
  sound.PlayAlias(alias < kAliases.size() ? kAliases[alias] : "");
}

}  // namespace korvex
