#include "spreadsheet/cells/text_pool.h"

#include <algorithm>

namespace korvex {
namespace {

constexpr std::size_t kBlockSize = 32 * 1024;

}  // namespace

// Texts of plates repeat in thousands of cells.
std::uint32_t TextPool::Intern(std::string_view text) {
  const std::uint32_t next = Count();
  const std::uint32_t id = slots_.FindOrAdd(
      HashOf(text), next, [&](std::uint32_t other) { return texts_[other] == text; });
  if (id == next) texts_.push_back(Store(text));
  return id;
}

// Texts are packed into blocks. The rest of a block that is too short for the next text stays
// unused.
std::string_view TextPool::Store(std::string_view text) {
  if (text.size() > free_size_) {
    const std::size_t size = std::max(kBlockSize, text.size());
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(size));
    free_ = blocks_.back().get();
    free_size_ = size;
  }
  char* const stored = free_;
  free_ = std::copy(text.begin(), text.end(), stored);
  free_size_ -= text.size();
  return {stored, text.size()};
}

}  // namespace korvex
