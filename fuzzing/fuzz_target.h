// What a fuzz target defines: libFuzzer calls it with input after input, or replay.cpp with the
// saved ones.
#pragma once

#include <cstddef>
#include <cstdint>

// Returns 0; whatever is wrong aborts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
