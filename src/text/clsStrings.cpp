#include "text/clsStrings.h"

namespace korvex {
namespace {

// Every byte of a UTF-8 character beyond ASCII is junk by itself, so whole characters go.
bool IsJunk(char c) {
  const auto code = static_cast<unsigned char>(c);
  return code < 33 || code >= 127;
}

}  // namespace

std::string clsStrings::TrimJunk(std::string_view string) const {
  while (!string.empty() && IsJunk(string.front())) string.remove_prefix(1);
  while (!string.empty() && IsJunk(string.back())) string.remove_suffix(1);
  return std::string(string);
}

}  // namespace korvex
