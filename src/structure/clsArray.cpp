#include "structure/clsArray.h"

#include <string_view>

#include "platform/error.h"
#include "text/text.h"
#include "workbook/cell.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

// The text form that values are compared by.
struct TextForm {
  std::string operator()(clsArray::Null) const { throw Error(error_number::kTypeMismatch); }
  std::string operator()(const std::string& text) const { return text; }
  std::string operator()(std::int32_t number) const { return std::to_string(number); }
  std::string operator()(double number) const { return CellText(CellValue::Number(number)); }
  std::string operator()(bool value) const { return CellText(CellValue::Boolean(value)); }
  std::string operator()(const clsArray::Object&) const {
    throw Error(error_number::kNoSuchMember);
  }
};

std::string TextOf(const clsArray::Value& value) {
  return std::visit(TextForm{}, value);
}

// Runs the body of one procedure. Its errors get a first line that names the procedure and this
// class.
template <class Body>
auto Named(std::string_view procedure, Body body) {
  try {
    return body();
  } catch (...) {
    throw PendingError().WithHeading("Error in proc " + UpperCase(procedure) +
                                     " of class: clsArray");
  }
}

}  // namespace

bool clsArray::Matches(const Value& searched, const Value& element) const {
  // Before the text forms are made, as Null has none.
  if (std::holds_alternative<Null>(searched) || std::holds_alternative<Null>(element)) return false;
  const std::string a = TextOf(searched);
  const std::string b = TextOf(element);
  return compare_mode_ == kBinaryCompare ? a == b : EqualText(a, b);
}

std::int32_t clsArray::Find(const Value& item) const {
  if (IsEmpty()) return -1;
  for (std::size_t i = 0; i < items_->size(); ++i) {
    if (Matches(item, (*items_)[i])) return static_cast<std::int32_t>(i);
  }
  return -1;
}

void clsArray::Append(Value value) {
  if (IsEmpty()) items_.emplace();
  items_->push_back(std::move(value));
}

void clsArray::Add(Values values) {
  for (Value& value : values) {
    if (compare_mode_ != kAcceptDuplicates) {
      const bool known = Named("Add", [&] { return Exists(value); });
      // Raised outside of Named: a duplicate is an answer to the caller, not a failure in here.
      if (known) throw Error(error_number::kDuplicateKey);
    }
    Append(std::move(value));
  }
}

void clsArray::AddArray(const Values& values) {
  Named("AddArray", [&] {
    for (const Value& value : values) Add({value});
  });
}

bool clsArray::Exists(const Value& item) const {
  return Named("Exists", [&] { return Find(item) >= 0; });
}

std::int32_t clsArray::GetPos(const Value& item, const Value& /*start_from*/) const {
  return Named("GetPos", [&] { return Find(item); });
}

std::int32_t clsArray::Count() const {
  return IsEmpty() ? 0 : static_cast<std::int32_t>(items_->size());
}

std::int32_t clsArray::Remove(const Value& item) {
  // The list is empty while the others are added, so that each is checked against those before it.
  const std::int32_t former_count = Count();
  const Values former = std::exchange(items_, std::nullopt).value_or(Values());
  for (const Value& value : former) {
    if (!Matches(item, value)) Add({value});
  }
  const std::int32_t removed = former_count - Count();
  if (removed == 0 && raise_if_not_found_) {
    throw Error(error_number::kInvalidCall, "Item not found", "clsArray");
  }
  return removed;
}

void clsArray::AddTexts(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) AddText(text);
}

std::vector<std::string> clsArray::Texts() const {
  std::vector<std::string> texts;
  if (IsEmpty()) return texts;
  texts.reserve(items_->size());
  for (const Value& value : *items_) texts.push_back(TextOf(value));
  return texts;
}

}  // namespace korvex
