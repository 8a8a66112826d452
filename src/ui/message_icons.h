// The program's icons, drawn at whatever size they are needed.
#pragma once

#include <wx/bmpbndl.h>
#include <wx/graphics.h>
#include <wx/window.h>

namespace korvex {

// Icons are numbered from 1 to this.
inline constexpr int kMessageIcons = 27;

// Fills the square of `size` at the origin.
void DrawMessageIcon(wxGraphicsContext& context, int number, double size);

// An icon on a form; none (0) at first.
class IconImage : public wxWindow {
 public:
  IconImage(wxWindow* parent, const wxString& name);

  void SetIcon(int number);
  // Shows a picture in place of a numbered icon.
  void SetPicture(const wxBitmapBundle& picture);
  bool AcceptsFocus() const override { return false; }

 private:
  void OnPaint(wxPaintEvent& event);

  int number_ = 0;
  wxBitmapBundle picture_;
};

}  // namespace korvex
