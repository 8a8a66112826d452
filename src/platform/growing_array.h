// An array of plain values that grows in place where the system can: the pages of a large block are
// moved to their new place instead of being copied, so that growing costs neither the copy nor, for
// a moment, the memory of both.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace korvex {

// As std::vector, as far as it goes; what is missing was not needed. Clear keeps the memory. An
// index that is out of range ends the program.
template <class T>
class GrowingArray {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

 public:
  GrowingArray() = default;
  GrowingArray(GrowingArray&& other) noexcept { swap(other); }
  GrowingArray& operator=(GrowingArray&& other) noexcept {
    swap(other);
    return *this;
  }

  std::size_t size() const { return size_; }
  std::size_t capacity() const { return capacity_; }
  bool empty() const { return size_ == 0; }
  T* data() { return values_.get(); }
  const T* data() const { return values_.get(); }
  T* begin() { return data(); }
  T* end() { return data() + size_; }
  const T* begin() const { return data(); }
  const T* end() const { return data() + size_; }
  T& operator[](std::size_t index) { return data()[Checked(index)]; }
  const T& operator[](std::size_t index) const { return data()[Checked(index)]; }
  T& back() { return (*this)[size_ - 1]; }
  const T& back() const { return (*this)[size_ - 1]; }

  void push_back(const T& value) {
    if (size_ == capacity_) return PushToFull(value);
    data()[size_++] = value;
  }
  void append(const T* values, std::size_t count) {
    Reserve(count);
    if (count > 0) std::memcpy(end(), values, count * sizeof(T));
    size_ += count;
  }
  // What is added has the value.
  void resize(std::size_t size, const T& value) {
    if (size > size_) {
      Reserve(size - size_);
      std::uninitialized_fill(end(), data() + size, T(value));
    }
    size_ = size;
  }
  void clear() { size_ = 0; }
  // Removes everything from that place on.
  void CutAt(const T* place) { size_ = static_cast<std::size_t>(place - data()); }
  void swap(GrowingArray& other) noexcept {
    std::swap(values_, other.values_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

 private:
  struct Free {
    void operator()(T* values) const { std::free(values); }
  };

  std::size_t Checked(std::size_t index) const {
    if (index >= size_) std::abort();
    return index;
  }
  // The value may lie in this array.
  [[gnu::noinline]] void PushToFull(T value) {
    Reserve(1);
    data()[size_++] = value;
  }
  void Reserve(std::size_t more) {
    constexpr std::size_t kFirst = 64;
    if (capacity_ - size_ >= more) return;
    if (more > std::numeric_limits<std::size_t>::max() / sizeof(T) / 2 - size_) {
      throw std::bad_alloc();
    }
    const std::size_t capacity = std::max({2 * capacity_, size_ + more, kFirst});
    void* const grown = std::realloc(values_.get(), capacity * sizeof(T));
    if (grown == nullptr) throw std::bad_alloc();
    static_cast<void>(values_.release());
    values_.reset(static_cast<T*>(grown));
    capacity_ = capacity;
  }

  std::unique_ptr<T[], Free> values_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace korvex
