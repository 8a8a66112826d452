// A collection of values under names, in insertion order. Names ignore letter case; each keeps the
// spelling of its first use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/growing_array.h"
#include "text/text_hash.h"

namespace korvex {

// The index of names behind a keyed collection: a hash table over names that lie one behind the
// other in one text, so that a look-up allocates nothing and a name costs its own length and a few
// bytes.
class NameIndex {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  std::size_t Count() const { return ends_.size(); }
  std::string_view Name(std::size_t position) const {
    const std::size_t start = position == 0 ? 0 : ends_[position - 1];
    return {text_.data() + start, ends_[position] - start};
  }
  // All names, one behind the other.
  std::string_view Text() const { return {text_.data(), text_.size()}; }
  // Position in insertion order, kNone when the name is absent.
  std::size_t Find(std::string_view name) const;
  // Position of the name, and whether it had to be added.
  std::pair<std::size_t, bool> FindOrAdd(std::string_view name);
  void Clear();

 private:
  GrowingArray<char> text_;
  GrowingArray<std::size_t> ends_;  // of each name in the text
  HashSlots slots_;
  std::size_t last_found_ = 0;
};

template <class Value>
class KeyedCollection {
 public:
  // Error 457 when the name is there already.
  void Add(std::string_view name, Value value) {
    const auto [position, added] = names_.FindOrAdd(name);
    if (!added) throw Error(error_number::kDuplicateKey);
    values_.push_back(std::move(value));
  }

  bool Exists(std::string_view name) const { return names_.Find(name) != NameIndex::kNone; }

  // The value of a name. A name that is absent is added, with an empty value.
  Value& Item(std::string_view name) {
    const auto [position, added] = names_.FindOrAdd(name);
    if (added) values_.emplace_back();
    return values_[position];
  }

  std::vector<std::string> Keys() const {
    std::vector<std::string> keys;
    keys.reserve(names_.Count());
    for (std::size_t i = 0; i < names_.Count(); ++i) keys.emplace_back(names_.Name(i));
    return keys;
  }

  std::size_t Count() const { return names_.Count(); }

  void RemoveAll() {
    names_.Clear();
    values_.clear();
  }

 private:
  NameIndex names_;
  std::vector<Value> values_;
};

}  // namespace korvex
