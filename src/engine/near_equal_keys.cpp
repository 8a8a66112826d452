#include "engine/near_equal_keys.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string_view>
#include <unordered_map>

#include "engine/plate_layout.h"
#include "text/text.h"

namespace korvex {
namespace {

// The second byte of a non-breaking blank stands for it: nothing is missed, whatever else it is
// part of. The inner loop counts in bytes, which the machine does for many of them at once.
std::size_t Blanks(std::string_view text) {
  std::size_t count = 0;
  while (!text.empty()) {
    const std::string_view part = text.substr(0, 255);
    std::uint8_t of_part = 0;
    for (const char c : part) {
      of_part = static_cast<std::uint8_t>(of_part + ((c == ' ') | (c == kNonBreakingBlank[1])));
    }
    count += of_part;
    text.remove_prefix(part.size());
  }
  return count;
}

// Most campaigns hold no blank in any value: all that their keys have are those of the names. Where
// a file lacks a key column its keys have fewer, and are looked at more closely.
bool ValuesHoldBlanks(const KeyTable& keys, const std::vector<std::string>& key_columns) {
  std::size_t in_names = 0;
  for (const std::string& name : key_columns) in_names += Blanks(name);
  return Blanks(keys.Text()) != in_names * keys.Count();
}

// Without blanks, in which keys may differ, and with all wells in one form. `out` is replaced.
void MakeComparable(std::string_view key, std::string& out) {
  out.clear();
  for (std::size_t i = 0; i < key.size();) {
    if (const std::size_t blank = BlankLength(key.substr(i))) {
      i += blank;
    } else {
      out.push_back(key[i++]);
    }
  }
  for (std::size_t start = out.find('='); start != std::string::npos;
       start = out.find('=', start + 1)) {
    const std::size_t end = out.find(';', start);
    if (end == std::string::npos || end - start > kLongestWellText) continue;
    const auto well = WellFromName(std::string_view(out).substr(start + 1, end - start - 1));
    if (well) out.replace(start + 1, end - start - 1, NameOf(*well));
  }
}

}  // namespace

std::vector<std::pair<std::uint32_t, std::uint32_t>> NearEqualKeys(
    const KeyTable& keys, const std::vector<std::string>& key_columns, bool mixed_wells) {
  std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
  if (!mixed_wells && !ValuesHoldBlanks(keys, key_columns)) return pairs;
  // By the hash of the comparable form: keys of one hash are compared in full.
  std::unordered_multimap<std::size_t, std::uint32_t> seen;
  seen.reserve(keys.Count());
  std::string comparable;
  std::string other;
  for (std::uint32_t key = 0; key < keys.Count(); ++key) {
    MakeComparable(keys.Name(key), comparable);
    for (char& c : comparable) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    const std::size_t hash = std::hash<std::string_view>()(comparable);
    std::uint32_t first = key;
    const auto [begin, end] = seen.equal_range(hash);
    for (auto entry = begin; entry != end; ++entry) {
      MakeComparable(keys.Name(entry->second), other);
      if (EqualText(comparable, other)) first = std::min(first, entry->second);
    }
    if (first != key) {
      pairs.emplace_back(first, key);
    } else {
      seen.emplace(hash, key);
    }
  }
  return pairs;
}

}  // namespace korvex
