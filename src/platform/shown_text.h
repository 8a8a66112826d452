// How messages show a text that comes from outside: a name of a file, sheet or column, a key, what
// another program says.
#pragma once

#include <string>

namespace korvex {

// An ASCII control character, line ends and DEL among them.
inline bool IsAsciiControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// The text with every control character as its escape ("\n", "\x1B", "\u202E"): it can neither
// begin a line of its own in a log nor give a terminal orders. Line and paragraph separators and
// the characters that change the direction of writing count as control characters. UTF-8; what is
// none stays as it is.
std::string Shown(std::string text);

}  // namespace korvex
