#include "platform/desktop.h"

#include <algorithm>
#include <array>

#include "platform/error.h"
#include "platform/shown_text.h"

namespace korvex {
namespace {

constexpr int kBeep = 1;
constexpr int kFirstAlias = 2;
// By the numbers 2 to 9 of a message box.
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

void CheckMailAddress(const std::string& address, std::size_t longest) {
  if (address.find_first_not_of(' ') == std::string::npos) {
    throw Error(error_number::kInvalidCall, "There is no e-mail address to send to.");
  }
  if (address.size() > longest || std::ranges::any_of(address, IsAsciiControl)) {
    throw Error(error_number::kInvalidCall, "The e-mail address to send to is not one line.");
  }
}

}  // namespace korvex
