// One growing block of UTF-8 that holds the texts of many cells, each found by offset and length;
// and the shared texts of a workbook, which lie in one.
#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/growing_array.h"
#include "spreadsheet/bytes/refusal.h"

namespace korvex {

// Where a text lies in its arena.
struct TextRange {
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

// Clear keeps the memory for the next use. Views into an arena are valid until it grows or is
// cleared.
class TextArena {
 public:
  // Bytes that are in use; offsets and sizes stay below 4 GB.
  std::uint32_t Size() const { return static_cast<std::uint32_t>(size_); }
  std::size_t Capacity() const { return capacity_; }
  std::string_view Text(TextRange range) const {
    return {bytes_.get() + range.offset, range.length};
  }
  void Clear() { size_ = 0; }

  // Memory for `count` more bytes at the end. CommitUpTo makes what was written there part of the
  // text.
  char* Reserve(std::size_t count) {
    if (capacity_ - size_ < count) Grow(count);
    return bytes_.get() + size_;
  }
  void CommitUpTo(const char* end) { size_ = static_cast<std::size_t>(end - bytes_.get()); }

  // Removes everything from an offset on.
  void CutAt(std::uint32_t offset) { size_ = offset; }

  // What was committed since Size() was `start`.
  TextRange RangeSince(std::uint32_t start) const { return {start, Size() - start}; }

  // Copies the text, which may not lie in this arena.
  TextRange Append(std::string_view text) {
    const std::uint32_t start = Size();
    char* out = Reserve(text.size());
    if (!text.empty()) std::memcpy(out, text.data(), text.size());
    CommitUpTo(out + text.size());
    return RangeSince(start);
  }

 private:
  void Grow(std::size_t count) {
    const std::size_t needed = size_ + count;
    if (needed > std::numeric_limits<std::uint32_t>::max()) Refuse("holds over 4 GB of text");
    std::size_t capacity = capacity_ * 2;
    if (capacity < needed) capacity = needed;
    if (capacity < 4096) capacity = 4096;
    std::unique_ptr<char[]> grown(new char[capacity]);
    if (size_ > 0) std::memcpy(grown.get(), bytes_.get(), size_);
    bytes_ = std::move(grown);
    capacity_ = capacity;
  }

  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// The shared texts of a workbook, by their number: cells of .xls and .xlsx name a text by it.
class SharedStrings {
 public:
  void Clear() {
    arena_.Clear();
    starts_.clear();
  }
  // To add a text, append it to Texts() and call EndText().
  TextArena& Texts() { return arena_; }
  void EndText() {
    if (starts_.empty()) starts_.push_back(0);
    starts_.push_back(arena_.Size());
  }

  // Numbers count from 0. The caller checks them: Range takes only those below Count().
  std::size_t Count() const { return starts_.empty() ? 0 : starts_.size() - 1; }
  [[gnu::always_inline]] TextRange Range(std::size_t index) const {
    return {starts_[index], starts_[index + 1] - starts_[index]};
  }
  const TextArena& Arena() const { return arena_; }
  // Bytes that are held, and those of them that texts fill.
  std::size_t MemorySize() const { return arena_.Capacity() + 4 * starts_.capacity(); }
  std::size_t UsedMemory() const { return arena_.Size() + 4 * starts_.size(); }

 private:
  TextArena arena_;
  GrowingArray<std::uint32_t> starts_;  // one more than texts
};

}  // namespace korvex
