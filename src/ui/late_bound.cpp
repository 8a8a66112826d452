#include "ui/late_bound.h"

#include <wx/bookctrl.h>
#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/clntdata.h>
#include <wx/combobox.h>
#include <wx/ctrlsub.h>
#include <wx/listbox.h>
#include <wx/panel.h>
#include <wx/radiobut.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/toplevel.h>

#include "platform/error.h"
#include "ui/FileChooser.h"
#include "ui/form_helpers.h"
#include "ui/frame_panel.h"

namespace korvex::late_bound {
namespace {

[[noreturn]] void RaiseNoSuchProperty(const wxWindow& control, const char* property) {
  throw Error(error_number::kNoSuchMember, StandardErrorText(error_number::kNoSuchMember) + ": " +
                                               Name(control) + "." + property);
}

// The control as the class that has the property.
template <class Class, class Window>
Class& As(Window& control, const char* property) {
  auto* found = dynamic_cast<Class*>(&control);
  if (!found) RaiseNoSuchProperty(control, property);
  return *found;
}

// Dialogs that belong to a form are forms of their own, and the label that a frame draws for its
// caption is part of the frame.
void AppendControls(const wxWindow& container, std::vector<wxWindow*>& controls) {
  const auto* frame = dynamic_cast<const FramePanel*>(&container);
  for (wxWindow* control : container.GetChildren()) {
    if (control->IsTopLevel() || (frame && frame->IsOwnPart(*control))) continue;
    controls.push_back(control);
    const bool is_container =
        dynamic_cast<wxPanel*>(control) || dynamic_cast<wxBookCtrlBase*>(control);
    if (is_container && !dynamic_cast<FileChooser*>(control)) AppendControls(*control, controls);
  }
}

}  // namespace

int ListCount(const wxWindow& control) {
  return static_cast<int>(As<const wxItemContainer>(control, "ListCount").GetCount());
}

std::string List(const wxWindow& control, int index) {
  return FromWx(As<const wxItemContainer>(control, "List").GetString(static_cast<unsigned>(index)));
}

int AddItem(wxWindow& control, const std::string& text) {
  return As<wxItemContainer>(control, "AddItem").Append(ToWx(text));
}

std::int32_t ItemData(const wxWindow& control, int index) {
  const auto& list = As<const wxItemContainer>(control, "ItemData");
  // The number travels in the pointer that a list keeps with each item.
  if (!list.HasClientUntypedData()) return 0;
  return static_cast<std::int32_t>(
      reinterpret_cast<std::intptr_t>(list.GetClientData(static_cast<unsigned>(index))));
}

void SetItemData(wxWindow& control, int index, std::int32_t data) {
  As<wxItemContainer>(control, "ItemData")
      .SetClientData(static_cast<unsigned>(index),
                     reinterpret_cast<void*>(static_cast<std::intptr_t>(data)));
}

void SetListIndex(wxWindow& control, int index) {
  auto& list = As<wxItemContainer>(control, "ListIndex");
  // A list with multiple selection would only add the item to those that are selected.
  if (auto* list_box = dynamic_cast<wxListBox*>(&control);
      list_box && list_box->HasMultipleSelection()) {
    list_box->DeselectAll(index);
  }
  list.SetSelection(index);
}

void SetText(wxWindow& control, const std::string& text) {
  // To wx it is a text entry all the same, though nobody can type into it.
  if (dynamic_cast<wxComboBox*>(&control) && control.HasFlag(wxCB_READONLY))
    RaiseNoSuchProperty(control, "Text");
  As<wxTextEntry>(control, "Text").ChangeValue(ToWx(text));
}

bool Value(const wxWindow& control) {
  if (const auto* option = dynamic_cast<const wxRadioButton*>(&control)) return option->GetValue();
  // A command button has the property as well, but is never a selected option.
  if (dynamic_cast<const wxButton*>(&control)) return false;
  return As<const wxCheckBox>(control, "Value").GetValue();
}

void SetValue(wxWindow& control, bool value) {
  if (auto* option = dynamic_cast<wxRadioButton*>(&control)) {
    option->SetValue(value);
  } else {
    As<wxCheckBox>(control, "Value").SetValue(value);
  }
}

std::string Caption(const wxWindow& control) {
  if (const auto* frame = dynamic_cast<const FramePanel*>(&control)) return frame->Caption();
  if (const auto* chooser = dynamic_cast<const FileChooser*>(&control)) return chooser->Caption();
  const bool has_caption = control.IsTopLevel() || dynamic_cast<const wxAnyButton*>(&control) ||
                           dynamic_cast<const wxRadioButton*>(&control) ||
                           dynamic_cast<const wxCheckBox*>(&control) ||
                           dynamic_cast<const wxStaticText*>(&control);
  if (!has_caption) RaiseNoSuchProperty(control, "Caption");
  return FromWx(control.GetLabel());
}

std::string Name(const wxWindow& control) {
  return FromWx(control.GetName());
}

std::string Tag(const wxWindow& control) {
  const wxEvtHandler& keeper = control;  // the lists have client objects for their items, too
  const auto* tag = dynamic_cast<const wxStringClientData*>(keeper.GetClientObject());
  return tag ? FromWx(tag->GetData()) : std::string();
}

void SetTag(wxWindow& control, const std::string& tag) {
  wxEvtHandler& keeper = control;
  keeper.SetClientObject(new wxStringClientData(ToWx(tag)));
}

void SetEnabled(wxWindow& control, bool enabled) {
  if (auto* chooser = dynamic_cast<FileChooser*>(&control)) {
    chooser->SetEnabled(enabled);
  } else {
    control.Enable(enabled);
  }
}

const wxWindow* Container(const wxWindow& control) {
  return control.GetParent();
}

wxWindow& Parent(wxWindow& control) {
  wxWindow* form = wxGetTopLevelParent(&control);
  if (!form) throw Error(error_number::kObjectNotSet);
  return *form;
}

std::vector<wxWindow*> Controls(wxWindow& form) {
  std::vector<wxWindow*> controls;
  AppendControls(form, controls);
  return controls;
}

}  // namespace korvex::late_bound
