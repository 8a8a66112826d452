// The function that each fuzz target defines. libFuzzer calls it with one input after the other,
// replay.cpp with the saved ones.
#pragma once

#include <cstddef>
#include <cstdint>

// Returns 0, and aborts if anything is wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
