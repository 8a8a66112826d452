// The three streams that a program is started with, or without.
#pragma once

#include <string_view>

namespace korvex {

// To be called before anything is opened: a stream that the program was started without would
// otherwise lend its number to the next file, and messages would be written into that. Such a
// stream goes on to fail when it is used.
void OccupyStandardStreams();

// Both write through the stdout of C, and throw when nobody takes what is written (57, 61, 75): a
// result that is lost is no success.
void WriteOutput(std::string_view text);
void FlushOutput();

}  // namespace korvex
