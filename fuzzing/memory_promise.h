// Checks the promise on how much memory reading an input takes.
#pragma once

#include <cstddef>

namespace korvex::fuzz {

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
