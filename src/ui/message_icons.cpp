#include "ui/message_icons.h"

#include <wx/dcbuffer.h>

#include <array>
#include <initializer_list>
#include <memory>
#include <numbers>

namespace korvex {
namespace {

// All icons share one style: a grid of 32 units, flat shapes with round corners, an edge 2 units
// wide in a darker shade of its filling, and marks 3 units wide.
constexpr double kGrid = 32;
constexpr double kEdge = 2;
constexpr double kMark = 3;

struct Tint {
  unsigned fill;  // 0xRRGGBB
  unsigned edge;
};

constexpr Tint kBlue{0x3E8EDE, 0x1D5FA3};
constexpr Tint kGreen{0x3FAE6A, 0x1F7A45};
constexpr Tint kAmber{0xF6BC3F, 0xB87D0E};
constexpr Tint kRed{0xE5584F, 0xA82D2A};
constexpr Tint kSteel{0xA3B4C4, 0x647C93};
constexpr Tint kPaper{0xFFFFFF, 0x647C93};
constexpr Tint kMist{0xDCE6EF, 0x647C93};
constexpr unsigned kWhite = 0xFFFFFF;
constexpr unsigned kDark = 0x4A3206;  // marks on amber

wxColour Colour(unsigned rgb) {
  return wxColour(static_cast<unsigned char>(rgb >> 16), static_cast<unsigned char>(rgb >> 8),
                  static_cast<unsigned char>(rgb));
}

using Points = std::initializer_list<wxPoint2DDouble>;

// Draws shapes with the colours chosen last.
class Painter {
 public:
  explicit Painter(wxGraphicsContext& context) : context_(context) {}

  void Take(Tint tint) {
    context_.SetBrush(wxBrush(Colour(tint.fill)));
    TakePen(tint.edge, kEdge);
  }
  // Shapes without an edge.
  void TakeFill(unsigned colour) {
    context_.SetBrush(wxBrush(Colour(colour)));
    context_.SetPen(wxNullGraphicsPen);
  }
  // Lines and outlines.
  void TakeLine(unsigned colour, double width, wxPenCap cap = wxCAP_ROUND) {
    context_.SetBrush(wxNullGraphicsBrush);
    TakePen(colour, width, cap);
  }

  void Disc(double x, double y, double radius) {
    context_.DrawEllipse(x - radius, y - radius, 2 * radius, 2 * radius);
  }
  void Box(double left, double top, double right, double bottom, double corner = 2) {
    context_.DrawRoundedRectangle(left, top, right - left, bottom - top, corner);
  }
  void Line(Points points) { Draw(points, false); }
  void Shape(Points points) { Draw(points, true); }
  // Angles in degrees, clockwise from the right.
  void Arc(double x, double y, double radius, double from, double to) {
    wxGraphicsPath path = context_.CreatePath();
    path.AddArc(x, y, radius, from * kDegree, to * kDegree, true);
    context_.StrokePath(path);
  }
  wxGraphicsContext& Context() { return context_; }

  static constexpr double kDegree = std::numbers::pi / 180;

 private:
  void TakePen(unsigned colour, double width, wxPenCap cap = wxCAP_ROUND) {
    context_.SetPen(
        context_.CreatePen(wxGraphicsPenInfo(Colour(colour), width).Cap(cap).Join(wxJOIN_ROUND)));
  }
  void Draw(Points points, bool closed) {
    wxGraphicsPath path = context_.CreatePath();
    path.MoveToPoint(*points.begin());
    for (const wxPoint2DDouble& point : points) path.AddLineToPoint(point);
    if (closed) path.CloseSubpath();
    if (closed) context_.FillPath(path);
    context_.StrokePath(path);
  }

  wxGraphicsContext& context_;
};

// Marks, drawn about a middle at `size` (1 in a sign that fills the icon).

void Cross(Painter& painter, double x, double y, double size) {
  const double arm = 5 * size;
  painter.TakeLine(kWhite, kMark * size);
  painter.Line({{x - arm, y - arm}, {x + arm, y + arm}});
  painter.Line({{x + arm, y - arm}, {x - arm, y + arm}});
}

void Exclamation(Painter& painter, double x, double y, double size) {
  painter.TakeLine(kDark, kMark * size);
  painter.Line({{x, y - 6 * size}, {x, y + size}});
  painter.TakeFill(kDark);
  painter.Disc(x, y + 6 * size, 2 * size);
}

void QuestionMark(Painter& painter, double x, double y, double size) {
  painter.TakeLine(kWhite, kMark * size);
  wxGraphicsPath path = painter.Context().CreatePath();
  path.AddArc(x, y - 3.5 * size, 4.5 * size, -170 * Painter::kDegree, 60 * Painter::kDegree, true);
  path.AddQuadCurveToPoint(x, y + 1.5 * size, x, y + 3 * size);
  painter.Context().StrokePath(path);
  painter.TakeFill(kWhite);
  painter.Disc(x, y + 7.5 * size, 2 * size);
}

// Signs.

void Information(Painter& painter) {
  painter.Take(kBlue);
  painter.Disc(16, 16, 14);
  painter.TakeFill(kWhite);
  painter.Disc(16, 9.5, 2.2);
  painter.TakeLine(kWhite, kMark);
  painter.Line({{16, 15}, {16, 23}});
}

void Question(Painter& painter) {
  painter.Take(kBlue);
  painter.Disc(16, 16, 14);
  QuestionMark(painter, 16, 15.5, 1);
}

void Warning(Painter& painter) {
  painter.Take(kAmber);
  painter.Shape({{16, 4}, {30, 28}, {2, 28}});
  Exclamation(painter, 16, 18, 0.95);
}

void Failure(Painter& painter) {
  painter.Take(kRed);
  painter.Disc(16, 16, 14);
  Cross(painter, 16, 16, 1.05);
}

void Stop(Painter& painter) {
  painter.Take(kRed);
  painter.Shape({{10, 2}, {22, 2}, {30, 10}, {30, 22}, {22, 30}, {10, 30}, {2, 22}, {2, 10}});
  painter.TakeLine(kWhite, 4);
  painter.Line({{9, 16}, {23, 16}});
}

void Success(Painter& painter) {
  painter.Take(kGreen);
  painter.Disc(16, 16, 14);
  painter.TakeLine(kWhite, kMark);
  painter.Line({{9, 16.5}, {13, 21}, {22, 11}});
}

// Badges in the lower right corner of a thing.

void WarningBadge(Painter& painter) {
  painter.Take(kAmber);
  painter.Shape({{23, 15}, {31, 30}, {15, 30}});
  Exclamation(painter, 23, 24, 0.6);
}

void CrossBadge(Painter& painter) {
  painter.Take(kRed);
  painter.Disc(24, 24, 7);
  Cross(painter, 24, 24, 0.6);
}

void QuestionBadge(Painter& painter) {
  painter.Take(kBlue);
  painter.Disc(24, 24, 7);
  QuestionMark(painter, 24, 23.7, 0.55);
}

// Things.

// What is too thin to have a shape.
void Tube(Painter& painter, Tint tint, Points points) {
  painter.TakeLine(tint.edge, 5);
  painter.Line(points);
  painter.TakeLine(tint.fill, 2);
  painter.Line(points);
}

void Page(Painter& painter) {
  painter.Take(kPaper);
  painter.Shape({{5, 3}, {20, 3}, {27, 10}, {27, 29}, {5, 29}});
  painter.Take(kMist);
  painter.Shape({{20, 3}, {27, 10}, {20, 10}});
}

void Sheet(Painter& painter, Tint head) {
  painter.Take(kPaper);
  painter.Box(3, 5, 29, 27);
  painter.Take(head);
  painter.Box(3, 5, 29, 11);
  painter.TakeLine(kSteel.fill, 1);
  painter.Line({{4, 16.5}, {28, 16.5}});
  painter.Line({{4, 21.5}, {28, 21.5}});
  painter.Line({{11.5, 12}, {11.5, 26}});
  painter.Line({{20.5, 12}, {20.5, 26}});
}

void Workbook(Painter& painter) {
  Sheet(painter, kGreen);
}

void Columns(Painter& painter) {
  Sheet(painter, kSteel);
  painter.Take(kBlue);
  painter.Box(12, 5, 20, 27, 1);
}

void Folder(Painter& painter) {
  painter.Take(kAmber);
  painter.Shape({{3, 6}, {12, 6}, {15, 9}, {29, 9}, {29, 26}, {3, 26}});
  painter.TakeLine(kAmber.edge, kEdge);
  painter.Line({{3, 13}, {29, 13}});
}

void MissingFolder(Painter& painter) {
  Folder(painter);
  QuestionBadge(painter);
}

void PlateAt(Painter& painter, double left, double top, int columns, int rows) {
  painter.Take(kMist);
  painter.Box(left, top, left + 5 * columns + 3, top + 5 * rows + 3);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      painter.TakeFill((row + column) % 3 == 0 ? kGreen.fill : kBlue.fill);
      painter.Disc(left + 4 + 5 * column, top + 4 + 5 * row, 1.75);
    }
  }
}

void Plate(Painter& painter) {
  PlateAt(painter, 2, 5, 5, 4);
}

void Replicates(Painter& painter) {
  PlateAt(painter, 3, 4, 3, 3);
  PlateAt(painter, 11, 10, 3, 3);
}

void Search(Painter& painter) {
  Tube(painter, kSteel, {{21, 21}, {27.5, 27.5}});
  painter.Take(kMist);
  painter.Disc(13, 13, 10);
  painter.TakeLine(kWhite, kEdge);
  painter.Arc(13, 13, 6, 180, 260);
}

void KeyAt(Painter& painter, double x, double y, Tint tint) {
  Tube(painter, tint, {{x + 14, y + 3}, {x + 14, y}});
  Tube(painter, tint, {{x + 6, y}, {x + 20, y}, {x + 20, y + 4}});
  painter.Take(tint);
  painter.Disc(x, y, 6);
  painter.TakeFill(kWhite);
  painter.Disc(x - 1, y, 2);
}

void Key(Painter& painter) {
  KeyAt(painter, 8, 16, kAmber);
}

void DuplicateKey(Painter& painter) {
  KeyAt(painter, 8, 9, kSteel);
  KeyAt(painter, 8, 22, kAmber);
}

void Lock(Painter& painter) {
  Tube(painter, kSteel,
       {{9, 16}, {9, 9}, {11, 6}, {14, 4.5}, {18, 4.5}, {21, 6}, {23, 9}, {23, 16}});
  painter.Take(kAmber);
  painter.Box(5, 14, 27, 29);
  painter.TakeFill(kDark);
  painter.Disc(16, 20, 2.2);
  painter.TakeLine(kDark, 2);
  painter.Line({{16, 20}, {16, 24}});
}

void Damaged(Painter& painter) {
  Page(painter);
  painter.TakeLine(kRed.fill, 2);
  painter.Line({{5, 19}, {10, 15}, {14, 21}, {19, 15}, {23, 21}, {27, 17}});
}

void Gear(Painter& painter, double x, double y) {
  wxGraphicsContext& context = painter.Context();
  const auto teeth = [&](double half, double outer) {
    for (int tooth = 0; tooth < 8; ++tooth) {
      painter.Box(-half, -outer, half, -5, 1);
      context.Rotate(45 * Painter::kDegree);
    }
  };
  context.PushState();
  context.Translate(x, y);
  painter.Take(kSteel);
  teeth(2.5, 13);
  painter.Disc(0, 0, 9.5);
  painter.TakeFill(kSteel.fill);  // opens the rim towards the teeth
  teeth(1.5, 11.5);
  painter.Take(kPaper);
  painter.Disc(0, 0, 4);
  context.PopState();
}

void Settings(Painter& painter) {
  Gear(painter, 16, 16);
}

void SettingsWarning(Painter& painter) {
  Gear(painter, 14, 14);
  WarningBadge(painter);
}

void Save(Painter& painter) {
  painter.Take(kBlue);
  painter.Shape({{4, 4}, {24, 4}, {28, 8}, {28, 28}, {4, 28}});
  painter.TakeFill(kWhite);
  painter.Box(9, 4, 21, 11, 1);
  painter.Box(8, 16, 24, 27, 1);
  painter.TakeLine(kBlue.edge, 2);
  painter.Line({{18, 6}, {18, 9}});
  painter.Line({{12, 20}, {20, 20}});
  painter.Line({{12, 24}, {20, 24}});
}

void DiskFull(Painter& painter) {
  Save(painter);
  WarningBadge(painter);
}

void Network(Painter& painter) {
  painter.TakeLine(kSteel.edge, kEdge);
  painter.Line({{16, 12}, {16, 17}});
  painter.Line({{7, 22}, {7, 17}, {25, 17}, {25, 22}});
  painter.Take(kBlue);
  painter.Box(10, 3, 22, 12);
  painter.Take(kMist);
  painter.Box(2, 21, 12, 29);
  painter.Box(20, 21, 30, 29);
}

void Mail(Painter& painter) {
  painter.Take(kPaper);
  painter.Box(3, 6, 29, 26);
  painter.TakeLine(kPaper.edge, kEdge);
  painter.Line({{4, 8}, {16, 18}, {28, 8}});
}

void Clock(Painter& painter) {
  painter.Take(kPaper);
  painter.Disc(16, 16, 13);
  painter.TakeLine(kBlue.edge, kEdge);
  painter.Line({{16, 8}, {16, 16}, {22, 20}});
}

void Log(Painter& painter) {
  Page(painter);
  painter.TakeLine(kBlue.fill, 2);
  painter.Line({{10, 15}, {22, 15}});
  painter.Line({{10, 19}, {22, 19}});
  painter.Line({{10, 23}, {18, 23}});
}

void MissingFile(Painter& painter) {
  Page(painter);
  CrossBadge(painter);
}

void Help(Painter& painter) {
  painter.TakeLine(kRed.edge, 11);
  painter.Arc(16, 16, 9, 0, 360);
  painter.TakeLine(kRed.fill, 7);
  painter.Arc(16, 16, 9, 0, 360);
  painter.TakeLine(kWhite, 7, wxCAP_BUTT);
  for (const double middle : {45, 135, 225, 315}) painter.Arc(16, 16, 9, middle - 22, middle + 22);
}

// clang-format off
constexpr std::array<void (*)(Painter&), kMessageIcons> kDrawings{
    /*  1 */ Information, Question, Warning, Failure, Stop,
    /*  6 */ Workbook, Columns, Folder, MissingFolder, Plate,
    /* 11 */ Search, Key, Success, Replicates, DuplicateKey,
    /* 16 */ Lock, SettingsWarning, Settings, Save, DiskFull,
    /* 21 */ Network, Mail, MissingFile, Clock, Log,
    /* 26 */ Damaged, Help};
// clang-format on

}  // namespace

void DrawMessageIcon(wxGraphicsContext& context, int number, double size) {
  context.PushState();
  context.Scale(size / kGrid, size / kGrid);
  context.SetAntialiasMode(wxANTIALIAS_DEFAULT);
  Painter painter(context);
  kDrawings.at(static_cast<std::size_t>(number - 1))(painter);
  context.PopState();
}

IconImage::IconImage(wxWindow* parent, const wxString& name)
    : wxWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, name) {
  SetBackgroundStyle(wxBG_STYLE_PAINT);
  Bind(wxEVT_PAINT, &IconImage::OnPaint, this);
}

void IconImage::SetIcon(int number) {
  number_ = number;
  Refresh();
}

void IconImage::SetPicture(const wxBitmapBundle& picture) {
  picture_ = picture;
  Refresh();
}

void IconImage::OnPaint(wxPaintEvent&) {
  wxAutoBufferedPaintDC dc(this);
  dc.SetBackground(wxBrush(GetParent()->GetBackgroundColour()));
  dc.Clear();
  const std::unique_ptr<wxGraphicsContext> context(wxGraphicsContext::Create(dc));
  if (!context) return;
  const wxSize size = GetClientSize();
  const double side = std::min(size.x, size.y);
  if (picture_.IsOk()) context->DrawBitmap(picture_.GetBitmapFor(this), 0, 0, side, side);
  if (number_ != 0) DrawMessageIcon(*context, number_, side);
}

}  // namespace korvex
