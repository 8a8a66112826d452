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
#include "text/text.h"

namespace korvex {

// The index of names behind a keyed collection: an open-addressing hash table over names that lie
// one behind the other in one text, so that a look-up allocates nothing and a name costs its own
// length and a few bytes.
class NameIndex {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  std::size_t Count() const { return names_.size(); }
  std::string_view Name(std::size_t position) const;
  // All names, one behind the other.
  const std::string& Text() const { return text_; }
  // Position in insertion order, kNone when the name is absent.
  std::size_t Find(std::string_view name) const;
  // Position of the name, and whether it had to be added.
  std::pair<std::size_t, bool> FindOrAdd(std::string_view name);
  void Clear();

 private:
  struct Stored {
    std::size_t start;
    std::uint32_t length;
    std::uint32_t hash;  // of the upper-cased name
  };

  std::uint32_t Hash(std::string_view name) const;
  // The slot that holds the name, or the empty slot where it belongs.
  std::size_t SlotOf(std::string_view name, std::uint32_t hash) const;
  void Grow();

  std::string text_;
  std::vector<Stored> names_;
  std::vector<std::uint32_t> slots_;  // position + 1, 0 for an empty slot
  std::size_t last_found_ = 0;
  mutable std::string upper_;
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
