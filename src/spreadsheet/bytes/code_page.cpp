#include "spreadsheet/bytes/code_page.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/bytes/unicode.h"
#include "text/code_page_1252.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr std::uint16_t kUtf16 = 1200;
constexpr std::uint16_t kMacRoman = 10000;

// The system's number of a page that has another one in workbooks.
std::uint16_t UsualNumber(std::uint16_t number) {
  switch (number) {
    case 0:
    case 367:  // ASCII
    case 32769:
      return kDefaultCodePage;
    case 32768:
      return kMacRoman;
    case 21010:
      return kUtf16;
    default:
      return number;
  }
}

bool IsAscii(std::byte byte) {
  return LoadU8(&byte) < 0x80;
}

}  // namespace

CodePage::CodePage(std::uint16_t number) : number_(UsualNumber(number)) {}

// 1252 is the page of workbooks that name none, and has a table of its own.
CodePageConverter* CodePage::Converter() const {
  if (Is1252() || number_ == kUtf16) return nullptr;
  if (!converter_) converter_ = OpenCodePage(number_);
  return converter_->get();
}

bool CodePage::IsSingleByte() const {
  return Is1252() || (!IsDoubleBytePage(number_) && Converter() != nullptr);
}

// Writers that name UTF-16 as the code page use it only for texts that need it; others are ASCII. A
// zero byte, or one above ASCII, tells them apart.
bool CodePage::IsUtf16(std::span<const std::byte> bytes) const {
  if (number_ != kUtf16 || bytes.size() % 2 != 0) return false;
  return std::any_of(bytes.begin(), bytes.end(),
                     [](std::byte byte) { return LoadU8(&byte) == 0 || !IsAscii(byte); });
}

// Most texts are ASCII, which means the same in all pages: they need no converter.
void CodePage::AppendText(std::span<const std::byte> bytes, TextArena& out) const {
  char* at = out.Reserve((bytes.size() + 1) * kUtf8PerUnit);
  if (IsUtf16(bytes)) {
    Utf16Decoder decoder;
    at = decoder.Append(bytes.data(), bytes.size() / 2, at);
    out.CommitUpTo(decoder.Finish(at));
    return;
  }
  const bool is_ascii = std::all_of(bytes.begin(), bytes.end(), IsAscii);
  if (CodePageConverter* const converter = is_ascii ? nullptr : Converter()) {
    std::string text;
    converter->Append({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, text);
    out.Append(text);
    return;
  }
  for (const std::byte byte : bytes) {
    if (IsAscii(byte)) {
      *at++ = static_cast<char>(byte);
    } else {
      at = EncodeUtf8(Is1252() ? kCodePage1252[LoadU8(&byte) - 0x80u] : kReplacementCharacter, at);
    }
  }
  out.CommitUpTo(at);
}

}  // namespace korvex
