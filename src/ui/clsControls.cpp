#include "ui/clsControls.h"

#include "platform/error.h"
#include "ui/late_bound.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

bool IsInContainer(const wxWindow& control, const wxWindow& container) {
  return late_bound::Container(control) == &container;
}

// The controls of the form around a container, the last one first.
std::vector<wxWindow*> FromLastToFirst(wxWindow& container) {
  const std::vector<wxWindow*> controls = late_bound::Controls(late_bound::Parent(container));
  return {controls.rbegin(), controls.rend()};
}

std::string TextOf(const OptionId& value) {
  if (const auto* position = std::get_if<std::int16_t>(&value)) return std::to_string(*position);
  const auto* text = std::get_if<std::string>(&value);
  return text ? *text : std::string();
}

bool IsPosition(std::int16_t counter, const std::string& value) {
  // Positions arrive as text. One that is no number ends the search like any other failure.
  const std::optional<double> position = ParseNumber(value);
  if (!position) throw Error(error_number::kTypeMismatch);
  return *position == counter;
}

bool IsOption(const wxWindow& control, std::int16_t counter, const OptionId& value,
              obWhatData what) {
  if (const auto* object = std::get_if<wxWindow*>(&value))
    return what == kByControl && *object == &control;
  const std::string text = TextOf(value);
  switch (what) {
    case kByPosition:
      return IsPosition(counter, text);
    case kByName:
      return late_bound::Name(control) == text;
    case kByCaption:
      return late_bound::Caption(control) == text;
    case kByTag:
      return late_bound::Tag(control) == text;
    default:
      return false;
  }
}

OptionId Identify(wxWindow& control, std::int16_t counter, obWhatData what) {
  switch (what) {
    case kByPosition:
      return counter;
    case kByName:
      return late_bound::Name(control);
    case kByCaption:
      return late_bound::Caption(control);
    case kByTag:
      return late_bound::Tag(control);
    case kByControl:
      return &control;
    default:
      return {};
  }
}

}  // namespace

void clsControls::ArrayToList(wxWindow& control, const std::vector<std::string>& values,
                              const std::vector<std::int32_t>& ids) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i].empty()) continue;
    // A sorted list chooses the place of the item and returns its index.
    const int new_index = late_bound::AddItem(control, values[i]);
    if (ids.empty()) continue;
    if (i >= ids.size()) throw Error(error_number::kSubscript);
    late_bound::SetItemData(control, new_index, ids[i]);
  }
}

bool clsControls::SelectInList(wxWindow& control, const std::string& value,
                               std::optional<std::int32_t> item_data) {
  // Clears what was typed into a combo box. Other lists have no such text, which does not matter.
  Attempt([&] { late_bound::SetText(control, ""); });
  const int count = late_bound::ListCount(control);
  // By data the last match wins, by text the first one. Callers rely on both.
  for (int i = 0; i < count; ++i) {
    if (item_data) {
      if (late_bound::ItemData(control, i) == *item_data) late_bound::SetListIndex(control, i);
    } else if (late_bound::List(control, i) == value) {
      late_bound::SetListIndex(control, i);
      break;
    }
  }
  return true;
}

OptionId clsControls::GetSelectedOption(wxWindow& container, obWhatData what) {
  OptionId selected;
  Attempt([&] {
    counter_ = 1;
    for (wxWindow* control : FromLastToFirst(container)) {
      // Only controls of the container count here. One without a value, a label for example, raises
      // an error that ends the search with nothing found.
      if (!IsInContainer(*control, container)) continue;
      if (late_bound::Value(*control)) {
        selected = Identify(*control, counter_, what);
        break;
      }
      ++counter_;
    }
  });
  return selected;
}

bool clsControls::SetSelectedOption(const OptionId& value, wxWindow& container, obWhatData what) {
  Attempt([&] {
    counter_ = 1;
    for (wxWindow* control : FromLastToFirst(container)) {
      // Unlike above, the controls outside of the container count, too.
      if (IsInContainer(*control, container) && IsOption(*control, counter_, value, what)) {
        late_bound::SetValue(*control, true);
        break;
      }
      ++counter_;
    }
  });
  return true;
}

void clsControls::EnableFrame(wxWindow& container, bool enable) {
  Attempt([&] {
    for (wxWindow* control : FromLastToFirst(container)) {
      if (IsInContainer(*control, container)) late_bound::SetEnabled(*control, enable);
    }
  });
}

clsControls& SharedControls() {
  static clsControls controls;
  return controls;
}

}  // namespace korvex
