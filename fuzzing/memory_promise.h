// The promise on the memory that reading an input takes, checked.
#pragma once

#include <cstddef>

namespace korvex::fuzz {

// Aborts when, within its lifetime, `operator new` hands out more than promised at a time.
class MemoryPromise {
 public:
  // 20 times the size and 64 MiB; of an input that may stand for far more than its size, three
  // times what a reader's budget grants (read_budget.h), for growing by doubling, and 64 MiB.
  enum class Input { kPlain, kPacked };
  explicit MemoryPromise(std::size_t input_size, Input input = Input::kPlain);
  ~MemoryPromise();
  MemoryPromise(const MemoryPromise&) = delete;
  MemoryPromise& operator=(const MemoryPromise&) = delete;
};

// Aborts, naming what does not hold.
void Require(bool holds, const char* what);

}  // namespace korvex::fuzz
