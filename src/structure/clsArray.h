// An ordered list of values: column names, file paths, headers.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace korvex {

class clsArray {
 public:
  struct Null {
    friend bool operator==(Null, Null) = default;
  };
  using Object = std::shared_ptr<const void>;
  // Texts are UTF-8. Objects are kept as references; they have no text form.
  using Value = std::variant<Null, std::string, std::int32_t, double, bool, Object>;
  using Values = std::vector<Value>;

  // CompareMode: 0 compares byte by byte, anything else ignores letter case; with any mode but
  // kAcceptDuplicates a value that is in the list already is refused with error 457.
  static constexpr std::int32_t kBinaryCompare = 0;
  static constexpr std::int32_t kAcceptDuplicates = 73;

  // Unexpected errors of Add, AddArray, Exists, GetPos and Count keep number and source; their
  // description starts with "Error in proc ADD of class: clsArray" and CR LF.
  void Add(Values values);
  // Each element through Add, in order.
  void AddArray(const Values& values);
  // A copy of the list; no value when it is empty.
  std::optional<Values> Items() const { return items_; }
  bool IsEmpty() const { return !items_.has_value(); }
  bool Exists(const Value& item) const;
  // Zero-based position of the first match, -1 when there is none. `start_from` is accepted and
  // ignored: the search always begins at the first element.
  std::int32_t GetPos(const Value& item, const Value& start_from = Null{}) const;
  std::int32_t Count() const;
  // Removes every match and returns how many there were. The other elements are added again, one by
  // one: an element that cannot be compared, or that is a duplicate in a mode that was set later,
  // raises its error, and the list keeps only what came before it. Without a match, error 5 ("Item
  // not found", source "clsArray") if SetRaiseIfNotFound asked for it.
  std::int32_t Remove(const Value& item);
  std::int32_t CompareMode() const { return compare_mode_; }
  void SetCompareMode(std::int32_t mode) { compare_mode_ = mode; }
  void Clear() { items_.reset(); }
  void SetRaiseIfNotFound(bool raise) { raise_if_not_found_ = raise; }

  // The usual case: a list of texts.
  void AddText(std::string text) { Add({Value(std::move(text))}); }
  void AddTexts(const std::vector<std::string>& texts);
  // Every element as text, in order; empty for an empty list.
  std::vector<std::string> Texts() const;

 private:
  std::int32_t Find(const Value& item) const;
  bool Matches(const Value& searched, const Value& element) const;
  void Append(Value value);

  std::optional<Values> items_;
  std::int32_t compare_mode_ = kAcceptDuplicates;
  bool raise_if_not_found_ = false;
};

}  // namespace korvex
