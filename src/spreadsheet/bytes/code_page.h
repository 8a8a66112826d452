// Texts of workbooks up to BIFF7, bytes in the code page that the workbook names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "platform/code_page_converter.h"
#include "spreadsheet/bytes/text_arena.h"

namespace korvex {

inline constexpr std::uint16_t kDefaultCodePage = 1252;

class CodePage {
 public:
  // `number` is the value of a CODEPAGE record: a Windows or DOS page, 10000 to 10081 for those of
  // the Macintosh, 32768 for the first of these, 32769 for 1252, 1200 or 21010 for UTF-16 where the
  // text is not ASCII.
  explicit CodePage(std::uint16_t number = kDefaultCodePage);

  std::uint16_t Number() const { return number_; }
  // Whether it is known, and has one byte a character.
  bool IsSingleByte() const;
  // Appends a whole text. A byte without a character becomes U+FFFD; so does all that is not ASCII
  // in a page that is not known.
  void AppendText(std::span<const std::byte> bytes, TextArena& out) const;

 private:
  bool IsUtf16(std::span<const std::byte> bytes) const;
  bool Is1252() const { return number_ == kDefaultCodePage; }

  // Null for 1252, UTF-16 and what is not known.
  CodePageConverter* Converter() const;

  std::uint16_t number_;
  // Opened for the first text that needs it: most workbooks name a page and never use it.
  mutable std::optional<std::unique_ptr<CodePageConverter>> converter_;
};

}  // namespace korvex
