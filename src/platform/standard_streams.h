// The three streams that a program is started with, or without.
#pragma once

#include <string_view>

namespace korvex {

// Call this before anything is opened: the next file would otherwise get the number of a standard
// stream that the program was started without, and messages would be written into it. Using such a
// stream fails as before.
void OccupyStandardStreams();

// Both write through the stdout of C and throw when the text cannot be written (57, 61, 75): a run
// whose result is lost has failed.
void WriteOutput(std::string_view text);
void FlushOutput();

}  // namespace korvex
