#include "ui/message_icons.h"

#include <wx/dcbuffer.h>

#include <array>
#include <initializer_list>
#include <memory>
#include <numbers>

namespace korvex {
namespace {

// One hand: a grid of 32 units, flat shapes with round corners, an edge of 2 units in a darker
// shade of what it holds, and marks of 3.
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
class Hand {
 public:
  explicit Hand(wxGraphicsContext& context) : context_(context) {}

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

void Cross(Hand& hand, double x, double y, double size) {
  const double arm = 5 * size;
  hand.TakeLine(kWhite, kMark * size);
  hand.Line({{x - arm, y - arm}, {x + arm, y + arm}});
  hand.Line({{x + arm, y - arm}, {x - arm, y + arm}});
}

void Exclamation(Hand& hand, double x, double y, double size) {
  hand.TakeLine(kDark, kMark * size);
  hand.Line({{x, y - 6 * size}, {x, y + size}});
  hand.TakeFill(kDark);
  hand.Disc(x, y + 6 * size, 2 * size);
}

void QuestionMark(Hand& hand, double x, double y, double size) {
  hand.TakeLine(kWhite, kMark * size);
  wxGraphicsPath path = hand.Context().CreatePath();
  path.AddArc(x, y - 3.5 * size, 4.5 * size, -170 * Hand::kDegree, 60 * Hand::kDegree, true);
  path.AddQuadCurveToPoint(x, y + 1.5 * size, x, y + 3 * size);
  hand.Context().StrokePath(path);
  hand.TakeFill(kWhite);
  hand.Disc(x, y + 7.5 * size, 2 * size);
}

// Signs.

void Information(Hand& hand) {
  hand.Take(kBlue);
  hand.Disc(16, 16, 14);
  hand.TakeFill(kWhite);
  hand.Disc(16, 9.5, 2.2);
  hand.TakeLine(kWhite, kMark);
  hand.Line({{16, 15}, {16, 23}});
}

void Question(Hand& hand) {
  hand.Take(kBlue);
  hand.Disc(16, 16, 14);
  QuestionMark(hand, 16, 15.5, 1);
}

void Warning(Hand& hand) {
  hand.Take(kAmber);
  hand.Shape({{16, 4}, {30, 28}, {2, 28}});
  Exclamation(hand, 16, 18, 0.95);
}

void Failure(Hand& hand) {
  hand.Take(kRed);
  hand.Disc(16, 16, 14);
  Cross(hand, 16, 16, 1.05);
}

void Stop(Hand& hand) {
  hand.Take(kRed);
  hand.Shape({{10, 2}, {22, 2}, {30, 10}, {30, 22}, {22, 30}, {10, 30}, {2, 22}, {2, 10}});
  hand.TakeLine(kWhite, 4);
  hand.Line({{9, 16}, {23, 16}});
}

void Success(Hand& hand) {
  hand.Take(kGreen);
  hand.Disc(16, 16, 14);
  hand.TakeLine(kWhite, kMark);
  hand.Line({{9, 16.5}, {13, 21}, {22, 11}});
}

// Badges in the lower right corner of a thing.

void WarningBadge(Hand& hand) {
  hand.Take(kAmber);
  hand.Shape({{23, 15}, {31, 30}, {15, 30}});
  Exclamation(hand, 23, 24, 0.6);
}

void CrossBadge(Hand& hand) {
  hand.Take(kRed);
  hand.Disc(24, 24, 7);
  Cross(hand, 24, 24, 0.6);
}

void QuestionBadge(Hand& hand) {
  hand.Take(kBlue);
  hand.Disc(24, 24, 7);
  QuestionMark(hand, 24, 23.7, 0.55);
}

// Things.

// What is too thin to have a shape.
void Tube(Hand& hand, Tint tint, Points points) {
  hand.TakeLine(tint.edge, 5);
  hand.Line(points);
  hand.TakeLine(tint.fill, 2);
  hand.Line(points);
}

void Page(Hand& hand) {
  hand.Take(kPaper);
  hand.Shape({{5, 3}, {20, 3}, {27, 10}, {27, 29}, {5, 29}});
  hand.Take(kMist);
  hand.Shape({{20, 3}, {27, 10}, {20, 10}});
}

void Sheet(Hand& hand, Tint head) {
  hand.Take(kPaper);
  hand.Box(3, 5, 29, 27);
  hand.Take(head);
  hand.Box(3, 5, 29, 11);
  hand.TakeLine(kSteel.fill, 1);
  hand.Line({{4, 16.5}, {28, 16.5}});
  hand.Line({{4, 21.5}, {28, 21.5}});
  hand.Line({{11.5, 12}, {11.5, 26}});
  hand.Line({{20.5, 12}, {20.5, 26}});
}

void Workbook(Hand& hand) {
  Sheet(hand, kGreen);
}

void Columns(Hand& hand) {
  Sheet(hand, kSteel);
  hand.Take(kBlue);
  hand.Box(12, 5, 20, 27, 1);
}

void Folder(Hand& hand) {
  hand.Take(kAmber);
  hand.Shape({{3, 6}, {12, 6}, {15, 9}, {29, 9}, {29, 26}, {3, 26}});
  hand.TakeLine(kAmber.edge, kEdge);
  hand.Line({{3, 13}, {29, 13}});
}

void MissingFolder(Hand& hand) {
  Folder(hand);
  QuestionBadge(hand);
}

void PlateAt(Hand& hand, double left, double top, int columns, int rows) {
  hand.Take(kMist);
  hand.Box(left, top, left + 5 * columns + 3, top + 5 * rows + 3);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      hand.TakeFill((row + column) % 3 == 0 ? kGreen.fill : kBlue.fill);
      hand.Disc(left + 4 + 5 * column, top + 4 + 5 * row, 1.75);
    }
  }
}

void Plate(Hand& hand) {
  PlateAt(hand, 2, 5, 5, 4);
}

void Replicates(Hand& hand) {
  PlateAt(hand, 3, 4, 3, 3);
  PlateAt(hand, 11, 10, 3, 3);
}

void Search(Hand& hand) {
  Tube(hand, kSteel, {{21, 21}, {27.5, 27.5}});
  hand.Take(kMist);
  hand.Disc(13, 13, 10);
  hand.TakeLine(kWhite, kEdge);
  hand.Arc(13, 13, 6, 180, 260);
}

void KeyAt(Hand& hand, double x, double y, Tint tint) {
  Tube(hand, tint, {{x + 14, y + 3}, {x + 14, y}});
  Tube(hand, tint, {{x + 6, y}, {x + 20, y}, {x + 20, y + 4}});
  hand.Take(tint);
  hand.Disc(x, y, 6);
  hand.TakeFill(kWhite);
  hand.Disc(x - 1, y, 2);
}

void Key(Hand& hand) {
  KeyAt(hand, 8, 16, kAmber);
}

void DuplicateKey(Hand& hand) {
  KeyAt(hand, 8, 9, kSteel);
  KeyAt(hand, 8, 22, kAmber);
}

void Lock(Hand& hand) {
  Tube(hand, kSteel, {{9, 16}, {9, 9}, {11, 6}, {14, 4.5}, {18, 4.5}, {21, 6}, {23, 9}, {23, 16}});
  hand.Take(kAmber);
  hand.Box(5, 14, 27, 29);
  hand.TakeFill(kDark);
  hand.Disc(16, 20, 2.2);
  hand.TakeLine(kDark, 2);
  hand.Line({{16, 20}, {16, 24}});
}

void Damaged(Hand& hand) {
  Page(hand);
  hand.TakeLine(kRed.fill, 2);
  hand.Line({{5, 19}, {10, 15}, {14, 21}, {19, 15}, {23, 21}, {27, 17}});
}

void Gear(Hand& hand, double x, double y) {
  wxGraphicsContext& context = hand.Context();
  const auto teeth = [&](double half, double outer) {
    for (int tooth = 0; tooth < 8; ++tooth) {
      hand.Box(-half, -outer, half, -5, 1);
      context.Rotate(45 * Hand::kDegree);
    }
  };
  context.PushState();
  context.Translate(x, y);
  hand.Take(kSteel);
  teeth(2.5, 13);
  hand.Disc(0, 0, 9.5);
  hand.TakeFill(kSteel.fill);  // opens the rim towards the teeth
  teeth(1.5, 11.5);
  hand.Take(kPaper);
  hand.Disc(0, 0, 4);
  context.PopState();
}

void Settings(Hand& hand) {
  Gear(hand, 16, 16);
}

void SettingsWarning(Hand& hand) {
  Gear(hand, 14, 14);
  WarningBadge(hand);
}

void Save(Hand& hand) {
  hand.Take(kBlue);
  hand.Shape({{4, 4}, {24, 4}, {28, 8}, {28, 28}, {4, 28}});
  hand.TakeFill(kWhite);
  hand.Box(9, 4, 21, 11, 1);
  hand.Box(8, 16, 24, 27, 1);
  hand.TakeLine(kBlue.edge, 2);
  hand.Line({{18, 6}, {18, 9}});
  hand.Line({{12, 20}, {20, 20}});
  hand.Line({{12, 24}, {20, 24}});
}

void DiskFull(Hand& hand) {
  Save(hand);
  WarningBadge(hand);
}

void Network(Hand& hand) {
  hand.TakeLine(kSteel.edge, kEdge);
  hand.Line({{16, 12}, {16, 17}});
  hand.Line({{7, 22}, {7, 17}, {25, 17}, {25, 22}});
  hand.Take(kBlue);
  hand.Box(10, 3, 22, 12);
  hand.Take(kMist);
  hand.Box(2, 21, 12, 29);
  hand.Box(20, 21, 30, 29);
}

void Mail(Hand& hand) {
  hand.Take(kPaper);
  hand.Box(3, 6, 29, 26);
  hand.TakeLine(kPaper.edge, kEdge);
  hand.Line({{4, 8}, {16, 18}, {28, 8}});
}

void Clock(Hand& hand) {
  hand.Take(kPaper);
  hand.Disc(16, 16, 13);
  hand.TakeLine(kBlue.edge, kEdge);
  hand.Line({{16, 8}, {16, 16}, {22, 20}});
}

void Log(Hand& hand) {
  Page(hand);
  hand.TakeLine(kBlue.fill, 2);
  hand.Line({{10, 15}, {22, 15}});
  hand.Line({{10, 19}, {22, 19}});
  hand.Line({{10, 23}, {18, 23}});
}

void MissingFile(Hand& hand) {
  Page(hand);
  CrossBadge(hand);
}

void Help(Hand& hand) {
  hand.TakeLine(kRed.edge, 11);
  hand.Arc(16, 16, 9, 0, 360);
  hand.TakeLine(kRed.fill, 7);
  hand.Arc(16, 16, 9, 0, 360);
  hand.TakeLine(kWhite, 7, wxCAP_BUTT);
  for (const double middle : {45, 135, 225, 315}) hand.Arc(16, 16, 9, middle - 22, middle + 22);
}

// clang-format off
constexpr std::array<void (*)(Hand&), kMessageIcons> kDrawings{
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
  Hand hand(context);
  kDrawings.at(static_cast<std::size_t>(number - 1))(hand);
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

void IconImage::OnPaint(wxPaintEvent&) {
  wxAutoBufferedPaintDC dc(this);
  dc.SetBackground(wxBrush(GetParent()->GetBackgroundColour()));
  dc.Clear();
  if (number_ == 0) return;
  const std::unique_ptr<wxGraphicsContext> context(wxGraphicsContext::Create(dc));
  const wxSize size = GetClientSize();
  if (context) DrawMessageIcon(*context, number_, std::min(size.x, size.y));
}

}  // namespace korvex
