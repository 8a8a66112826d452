// Texts in the code pages of Windows, DOS and old Macintosh scripts, by the system's own converter.
// Every platform has one implementation of this header.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace korvex {

// One thread at a time.
class CodePageConverter {
 public:
  virtual ~CodePageConverter() = default;

  // Appends `bytes`, a text of its own, as UTF-8. What stands for no character becomes U+FFFD: a
  // byte, or in a double-byte page a pair.
  virtual void Append(std::string_view bytes, std::string& utf8) = 0;
};

// By the number that Windows gives the page (932, 10007). Null where the system does not know it.
std::unique_ptr<CodePageConverter> OpenCodePage(std::uint16_t number);

// Whether the page has characters of two bytes: the East Asian ones.
inline bool IsDoubleBytePage(std::uint16_t number) {
  switch (number) {
    case 932:    // Shift-JIS
    case 936:    // GBK
    case 949:    // Korean
    case 950:    // Big5
    case 1361:   // Johab
    case 10001:  // the same scripts on the Macintosh
    case 10002:
    case 10003:
    case 10008:
      return true;
    default:
      return false;
  }
}

}  // namespace korvex
