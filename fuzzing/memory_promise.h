// The promise that reading an input takes at most 20 times its size and 64 MiB of memory, checked.
#pragma once

#include <cstddef>

namespace korvex::fuzz {

// Aborts when, within its lifetime, `operator new` hands out more than promised at a time.
class MemoryPromise {
 public:
  explicit MemoryPromise(std::size_t input_size);
  ~MemoryPromise();
  MemoryPromise(const MemoryPromise&) = delete;
  MemoryPromise& operator=(const MemoryPromise&) = delete;
};

// Aborts, naming what does not hold.
void Require(bool holds, const char* what);

}  // namespace korvex::fuzz
