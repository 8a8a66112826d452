#pragma once

#include <string>
#include <string_view>

namespace korvex {

// Code page 1252, the single-byte code page of the log file. Characters that it lacks, and bytes
// that are not valid UTF-8, become "?".
std::string ToCodePage1252(std::string_view utf8);

// The character that a byte stands for; the five bytes that stand for none become the control
// character of the same number.
std::string Utf8FromCodePage1252(unsigned char byte);

}  // namespace korvex
