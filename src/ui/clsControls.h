// Helpers for list controls and groups of option buttons. They work on any control, by the names of
// its properties (ui/late_bound.h).
#pragma once

#include <wx/window.h>

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace korvex {

// What identifies an option button: its position (one-based), its Name, its Caption, its Tag as
// text, or the control itself. Any other number identifies nothing.
using obWhatData = std::int16_t;
inline constexpr obWhatData kByPosition = 1;
inline constexpr obWhatData kByName = 2;
inline constexpr obWhatData kByCaption = 3;
inline constexpr obWhatData kByTag = 4;
inline constexpr obWhatData kByControl = 5;

// Nothing, a position, a text, or a control.
using OptionId = std::variant<std::monostate, std::int16_t, std::string, wxWindow*>;

class clsControls {
 public:
  // Appends the texts to a list or combo box, the empty ones left out. `ids` runs parallel to
  // `values` and becomes the items' data.
  void ArrayToList(wxWindow& control, const std::vector<std::string>& values,
                   const std::vector<std::int32_t>& ids = {});

  // Selects an item of a list or combo box: the first with the text `value`, or, when `item_data`
  // is given, the last that carries it. Without a match the selection stays. Always true.
  bool SelectInList(wxWindow& control, const std::string& value,
                    std::optional<std::int32_t> item_data = std::nullopt);

  // The selected option of a container, or nothing. A position counts the container's controls from
  // the end of the form.
  OptionId GetSelectedOption(wxWindow& container, obWhatData what);

  // Selects an option of a container. Unlike above, a position counts every control of the form,
  // from its end. Always true.
  bool SetSelectedOption(const OptionId& value, wxWindow& container, obWhatData what);

  // Enables or disables the controls directly inside a container, not the container itself.
  void EnableFrame(wxWindow& container, bool enable);

 private:
  std::int16_t counter_ = 1;
};

// The one instance that everybody uses.
clsControls& SharedControls();

}  // namespace korvex
