// What a fuzz target defines, and what it checks the parsers with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// Each target defines it; libFuzzer calls it with one input after the other, replay.cpp with the
// saved ones. Returns 0, and aborts if anything is wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace korvex::fuzz {

// Reads a workbook as the program does, and checks what every reader promises about its cells. The
// file may be read or refused; anything else aborts.
void ReadWorkbook(std::span<const std::byte> file);

// While it lives, the program aborts when the memory held from `operator new` exceeds the promise.
class MemoryPromise {
 public:
  // kPlain: 20 times the size of the input and 64 MiB. kPacked, for inputs that can expand: three
  // times the budget of a reader (read_budget.h), because containers grow by doubling, and 64 MiB.
  enum class Input { kPlain, kPacked };
  explicit MemoryPromise(std::size_t input_size, Input input = Input::kPlain);
  ~MemoryPromise();
  MemoryPromise(const MemoryPromise&) = delete;
  MemoryPromise& operator=(const MemoryPromise&) = delete;
};

// Aborts with the text `what` unless it holds.
void Require(bool holds, const char* what);

}  // namespace korvex::fuzz
