#include "ui/app_icon.h"

#include <wx/bitmap.h>
#include <wx/brush.h>
#include <wx/graphics.h>
#include <wx/icon.h>
#include <wx/image.h>

#include <algorithm>
#include <memory>

namespace korvex {
namespace {

// The picture's own units; its edges lie on sixteenths.
constexpr double kSide = 64;
constexpr double kRadius = 8;
constexpr double kCutCorner = 10;
constexpr double kWell = 16;
constexpr double kMargin = 4;
constexpr double kPitch = 20;

constexpr unsigned kPlate = 0x0f6479;
constexpr unsigned kCell = 0xffffff;
constexpr unsigned kWells[2][3] = {{0xffb546, 0xb9e4ec, 0x5fb9cc}, {0x5fb9cc, 0xffb546, 0xb9e4ec}};

void Fill(wxGraphicsContext& picture, unsigned rgb) {
  const auto part = [rgb](int shift) { return static_cast<unsigned char>(rgb >> shift); };
  picture.SetBrush(wxBrush(wxColour(part(16), part(8), part(0))));
}

void DrawPlate(wxGraphicsContext& picture) {
  wxGraphicsPath outline = picture.CreatePath();
  outline.MoveToPoint(kCutCorner, 0);
  outline.AddArcToPoint(kSide, 0, kSide, kSide, kRadius);
  outline.AddArcToPoint(kSide, kSide, 0, kSide, kRadius);
  outline.AddArcToPoint(0, kSide, 0, 0, kRadius);
  outline.AddLineToPoint(0, kCutCorner);
  outline.CloseSubpath();
  Fill(picture, kPlate);
  picture.FillPath(outline);
}

// Two rows of wells, and the table row that the third one has become.
void DrawWells(wxGraphicsContext& picture) {
  for (int column = 0; column < 3; ++column) {
    const double left = kMargin + column * kPitch;
    for (int row = 0; row < 2; ++row) {
      Fill(picture, kWells[row][column]);
      picture.DrawEllipse(left, kMargin + row * kPitch, kWell, kWell);
    }
    Fill(picture, kCell);
    picture.DrawRectangle(left, kMargin + 2 * kPitch, kWell, kWell);
  }
}

wxIcon DrawnIcon(int size) {
  wxImage image(size, size);
  image.InitAlpha();
  std::fill_n(image.GetAlpha(), size * size, wxALPHA_TRANSPARENT);
  // The picture is in the image once its context is gone.
  if (const std::unique_ptr<wxGraphicsContext> picture{wxGraphicsContext::Create(image)}) {
    picture->SetPen(*wxTRANSPARENT_PEN);
    picture->Scale(size / kSide, size / kSide);
    DrawPlate(*picture);
    DrawWells(*picture);
  }
  wxIcon icon;
  icon.CopyFromBitmap(wxBitmap(image));
  return icon;
}

}  // namespace

wxIconBundle AppIcons() {
  wxIconBundle icons;
  for (const int size : {16, 24, 32, 48, 64, 128}) icons.AddIcon(DrawnIcon(size));
  return icons;
}

}  // namespace korvex
