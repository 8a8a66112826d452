// Properties of form controls, for code that works on controls of any class. A property that the
// control does not have is error 438.
//
// Indexes are zero-based, texts UTF-8. A form's controls are those that its designer placed:
// neither the inner parts of a control nor what a user control such as the file chooser is made of.
#pragma once

#include <wx/window.h>

#include <cstdint>
#include <string>
#include <vector>

namespace korvex::late_bound {

// List and combo boxes. A new item's data is 0.
int ListCount(const wxWindow& control);
std::string List(const wxWindow& control, int index);
// Returns the index of the new item, which depends on its text in a sorted list.
int AddItem(wxWindow& control, const std::string& text);
std::int32_t ItemData(const wxWindow& control, int index);
void SetItemData(wxWindow& control, int index, std::int32_t data);
// Leaves the item as the only one selected.
void SetListIndex(wxWindow& control, int index);

// The text that a user can type: of text boxes and of combo boxes with an edit part.
void SetText(wxWindow& control, const std::string& text);

// Option buttons and check boxes; a command button's is always false. Setting it raises no event.
bool Value(const wxWindow& control);
void SetValue(wxWindow& control, bool value);

// Buttons and labels ("&" before their access key), frames, user controls, forms.
std::string Caption(const wxWindow& control);

// Every control has the rest.
std::string Name(const wxWindow& control);
// A text that a form keeps with a control for itself; empty until it is set.
std::string Tag(const wxWindow& control);
void SetTag(wxWindow& control, const std::string& tag);
void SetEnabled(wxWindow& control, bool enabled);
// The window that directly holds the control, and the form around it; error 91 outside of any form.
const wxWindow* Container(const wxWindow& control);
wxWindow& Parent(wxWindow& control);
// In order of their creation, what lies in a container after the container.
std::vector<wxWindow*> Controls(wxWindow& form);

}  // namespace korvex::late_bound
