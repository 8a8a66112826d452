// Code page 1252, the single-byte text of the error log and of old workbooks.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace korvex {

// What the bytes 0x80 to 0xFF stand for in code page 1252; U+FFFD for the five that stand for none.
extern const std::array<char16_t, 128> kCodePage1252;

// The single-byte text of the log file. Characters that the code page lacks, and bytes that are not
// valid UTF-8, become "?".
std::string ToCodePage1252(std::string_view utf8);

// The character that a byte stands for; the five bytes that stand for none become the control
// character of the same number.
std::string Utf8FromCodePage1252(unsigned char byte);

}  // namespace korvex
