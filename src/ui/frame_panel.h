// A frame of a form: groups controls on the window background inside a thin border, below a caption
// when it has one.
#pragma once

#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <string>

namespace korvex {

class FramePanel : public wxPanel {
 public:
  // `name` is the frame's name on its form. Without a border it only groups.
  FramePanel(wxWindow* parent, const std::string& name, const std::string& caption = {},
             bool border = true);

  // Where the controls are laid out; their parent is the frame itself.
  wxBoxSizer& Content() { return *content_; }

  std::string Caption() const;
  void SetCaption(const std::string& caption);

  // Whether a child belongs to the frame itself, not to the form that it is placed on.
  bool IsOwnPart(const wxWindow& child) const { return &child == caption_; }

 private:
  wxStaticText* caption_;
  wxBoxSizer* content_;
};

}  // namespace korvex
