// The code page in which a workbook up to BIFF7, or an XML document, holds its texts.
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
  // `number` is the value of a CODEPAGE record: a Windows or DOS page; 10000 to 10081 a page of the
  // Macintosh; 32768 the same as 10000, 32769 as 1252; 1200 or 21010 UTF-16 for texts that are not
  // ASCII.
  explicit CodePage(std::uint16_t number = kDefaultCodePage);

  std::uint16_t Number() const { return number_; }
  // Whether the page is known and has one byte for each character.
  bool IsSingleByte() const;
  // Appends a whole text. A byte without a character becomes U+FFFD; in an unknown page every byte
  // that is not ASCII does.
  void AppendText(std::span<const std::byte> bytes, TextArena& out) const;

 private:
  bool IsUtf16(std::span<const std::byte> bytes) const;
  bool Is1252() const { return number_ == kDefaultCodePage; }

  // Null for 1252 and UTF-16, which need none, and for unknown pages.
  CodePageConverter* Converter() const;

  std::uint16_t number_;
  // Opened for the first text that needs it: most workbooks name a page and never use it.
  mutable std::optional<std::unique_ptr<CodePageConverter>> converter_;
};

}  // namespace korvex
