#include "structure/keyed_collection.h"

#include "text/text.h"

namespace korvex {

std::size_t NameIndex::Find(std::string_view name) const {
  const std::uint32_t found = slots_.Find(
      HashIgnoringCase(name), [&](std::uint32_t number) { return EqualText(Name(number), name); });
  return found == HashSlots::kNone ? kNone : found;
}

std::pair<std::size_t, bool> NameIndex::FindOrAdd(std::string_view name) {
  // The workbooks of one plate hold its keys in the same order, so the name after the one found
  // last is tried first; that saves the hash.
  if (++last_found_ < Count() && Name(last_found_) == name) return {last_found_, false};
  const auto next = static_cast<std::uint32_t>(Count());
  last_found_ = slots_.FindOrAdd(HashIgnoringCase(name), next, [&](std::uint32_t number) {
    return EqualText(Name(number), name);
  });
  if (last_found_ != next) return {last_found_, false};
  text_.append(name.data(), name.size());
  ends_.push_back(text_.size());
  return {next, true};
}

void NameIndex::Clear() {
  text_.clear();
  ends_.clear();
  slots_.Clear();
  last_found_ = 0;
}

}  // namespace korvex
