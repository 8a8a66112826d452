#include "fuzzing/fuzz_target.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

std::size_t held = 0;
std::size_t limit = std::numeric_limits<std::size_t>::max();

// Counts what the allocator really hands out, not what was asked for.
void* Take(std::size_t size) noexcept {
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory != nullptr) held += malloc_usable_size(memory);
  korvex::fuzz::Require(held <= limit, "no more memory than promised");
  return memory;
}

void* TakeOrThrow(std::size_t size) {
  void* const memory = Take(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void GiveBack(void* memory) noexcept {
  if (memory != nullptr) held -= malloc_usable_size(memory);
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
  return TakeOrThrow(size);
}
void* operator new[](std::size_t size) {
  return TakeOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Take(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Take(size);
}
void operator delete(void* memory) noexcept {
  GiveBack(memory);
}
void operator delete[](void* memory) noexcept {
  GiveBack(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  GiveBack(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  GiveBack(memory);
}

namespace korvex::fuzz {

MemoryPromise::MemoryPromise(std::size_t input_size, Input input) {
  const bool is_packed = input == Input::kPacked;
  limit = held + (is_packed ? 24 : 20) * input_size + (std::size_t{is_packed ? 832u : 64u} << 20);
}

MemoryPromise::~MemoryPromise() {
  limit = std::numeric_limits<std::size_t>::max();
}

void Require(bool holds, const char* what) {
  if (holds) return;
  // Printing may allocate, and must not fail on the same promise.
  limit = std::numeric_limits<std::size_t>::max();
  std::fprintf(stderr, "Not kept: %s\n", what);
  std::abort();
}

}  // namespace korvex::fuzz
