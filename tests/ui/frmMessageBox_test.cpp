#include "ui/frmMessageBox.h"

#include <wx/display.h>
#include <wx/imagbmp.h>
#include <wx/image.h>
#include <wx/uiaction.h>

#include <memory>
#include <set>

#include "tests/support/errors.h"
#include "tests/support/fakes.h"
#include "tests/ui/ui_support.h"
#include "ui/window_services.h"

namespace korvex {
namespace {

class MessageBoxTest : public testing::Test {
 protected:
  // Shows a message, does `step` to the box, and presses the first button if it still shows.
  std::string Show(const ButtonMessage& message, const ModalDriver::Step& step) {
    driver_.Expect([step](wxDialog& box) {
      step(box);
      if (box.IsShown()) Click(box, "cmdMain0");
    });
    return WindowDialogs().ShowButtons(message);
  }

  TestPlatform platform_;
  ModalDriver driver_;
};

std::string Lines(int count) {
  std::string text = "1";
  for (int i = 2; i <= count; ++i) text += "\r\n" + std::to_string(i);
  return text;
}

TEST_F(MessageBoxTest, ReturnsTheCaptionAsItWasGivenAndPlaysItsSound) {
  const auto press = [](wxDialog& box) {
    EXPECT_EQ(box.GetTitle(), "Title");
    Click(box, "cmdMain1");
  };
  EXPECT_EQ(Show({"Go on?", {"&Yes", "Fish && chips", "&No"}, "Title", 0, 0, 7}, press),
            "Fish && chips");
  EXPECT_THAT(platform_.sound.played, ElementsAre("alias SystemExclamation"));
}

TEST_F(MessageBoxTest, LetsTheTextBeReadOnly) {
  Show({"One\r\nTwo", {"OK"}, "", 1}, [](wxDialog& box) {
    auto& text = Find<wxTextCtrl>(box, "txtMessage");
    text.SelectAll();
    EXPECT_EQ(text.GetStringSelection(), "One\nTwo");
    text.WriteText("typed");
    WaitUntil([&] { return text.GetValue() == "One\nTwo"; });
  });
}

TEST_F(MessageBoxTest, StartsAtTheDefaultButtonAndClosesByAButtonOnly) {
  const auto try_keys = [](wxDialog& box) {
    auto& chosen = Find<wxButton>(box, "cmdMain1");
    EXPECT_EQ(box.GetChildren().GetFirst()->GetData(), &chosen);
    EXPECT_FALSE(box.Close());
    WaitUntil([&] { return chosen.HasFocus(); });
    wxUIActionSimulator keyboard;
    keyboard.Char(WXK_ESCAPE);
    keyboard.Char(WXK_F4, wxMOD_ALT);
    Find<wxTextCtrl>(box, "txtMessage").SetFocus();
    ServeEvents();
    EXPECT_TRUE(box.IsShown());
    keyboard.Char(WXK_RETURN);
    WaitUntil([&] { return !box.IsShown(); });
  };
  EXPECT_EQ(Show({"?", {"A", "B"}, "", 0, 1}, try_keys), "B");
}

TEST_F(MessageBoxTest, ShowsEveryLineAndEveryButton) {
  const std::string path = "/data/" + std::string(200, 'x') + "/plates/KINASE-A-1.xls";
  for (const std::string& prompt :
       {Lines(5), Lines(30), "File " + path + " (\"" + path + "\") is missing.",
        std::string("A sentence that is too long for one line of an ordinary message box.")}) {
    const std::string cause = "Row 5 repeats what row 3 of " + path + " held first.";
    const ButtonMessage message{prompt, {"OK", "A very long caption indeed"}, "", 13, 0, 1, cause};
    Show(message, [&](wxDialog& box) {
      auto& text = Find<wxTextCtrl>(box, "txtMessage");
      EXPECT_TRUE(text.GetValue().EndsWith(ToWx("\n\n" + cause)));
      ServeEvents();
      EXPECT_LE(text.PositionToCoords(text.GetLastPosition()).y + text.GetCharHeight(),
                text.GetClientSize().y);
      const auto& last = Find<wxButton>(box, "cmdMain1");
      EXPECT_TRUE(wxRect(box.GetClientSize()).Contains(last.GetRect()));
      EXPECT_GE(last.GetSize().x, last.GetBestSize().x);
      EXPECT_FALSE(last.GetRect().Intersects(text.GetRect()));
    });
  }
}

TEST_F(MessageBoxTest, StaysWithinTheScreen) {
  const std::vector<std::string> many(40, "One of many buttons");
  Show({Lines(500), many, "", 13}, [](wxDialog& box) {
    ServeEvents();
    EXPECT_TRUE(wxDisplay(&box).GetClientArea().Contains(box.GetScreenRect()));
    std::vector<wxRect> placed{Find<wxTextCtrl>(box, "txtMessage").GetRect()};
    EXPECT_GT(placed[0].height, 100) << "what has no room scrolls";
    for (int i = 0; i < 40; ++i) {
      const wxRect button = Find<wxButton>(box, "cmdMain" + std::to_string(i)).GetRect();
      EXPECT_TRUE(wxRect(box.GetClientSize()).Contains(button)) << i;
      for (const wxRect& other : placed) EXPECT_FALSE(button.Intersects(other)) << i;
      placed.push_back(button);
    }
  });
}

TEST_F(MessageBoxTest, ShowsPlainMessages) {
  using enum BoxAnswer;
  const struct {
    BoxButtons buttons;
    BoxIcon icon;
    const char* press;  // none: closed as Esc does
    const char* chosen;
    BoxAnswer answer;
  } cases[] = {
      {BoxButtons::kOk, BoxIcon::kExclamation, nullptr, "cmdMain0", kOk},
      {BoxButtons::kOkCancel, BoxIcon::kNone, "cmdMain0", "cmdMain0", kOk},
      {BoxButtons::kOkCancel, BoxIcon::kCritical, nullptr, "cmdMain1", kCancel},
      {BoxButtons::kRetryCancel, BoxIcon::kExclamation, "cmdMain0", "cmdMain0", kRetry},
  };
  for (const auto& c : cases) {
    driver_.Expect([&](wxDialog& box) {
      auto& icon = Find<IconImage>(box, "imgIcon");
      EXPECT_EQ(icon.IsShown(), c.icon != BoxIcon::kNone);
      const wxRect text = Find<wxTextCtrl>(box, "txtMessage").GetRect();
      EXPECT_TRUE(!icon.IsShown() || icon.GetRect().GetRight() < text.x);
      WaitUntil([&] { return Find<wxButton>(box, c.chosen).HasFocus(); });
      if (c.press != nullptr) {
        Click(box, c.press);
      } else {
        wxUIActionSimulator().Char(WXK_ESCAPE);
        WaitUntil([&] { return !box.IsShown(); });
      }
    });
    EXPECT_EQ(frmMessageBox(nullptr).ShowPlain({"Text", c.buttons, c.icon}), c.answer);
  }
  EXPECT_THAT(platform_.sound.played, IsEmpty());
}

TEST_F(MessageBoxTest, RefusesWhatItCannotShow) {
  const std::pair<ButtonMessage, int> cases[] = {
      {{"?", {"OK"}, "", kMessageIcons + 1}, error_number::kInvalidCall},
      {{"?", {"OK"}, "", -1}, error_number::kInvalidCall},
      {{"?", {}, ""}, error_number::kSubscript},
      {{"?", {"OK"}, "", 0, 1}, error_number::kSubscript},
      {{"?", {"OK"}, "", 0, -1}, error_number::kSubscript}};
  for (const auto& [message, error] : cases)
    EXPECT_EQ(ErrorOf([&] { frmMessageBox(nullptr).ShowMsgBox(message); }).Number(), error);
}

// The icon of the program's file is made by hand from the picture that the windows draw.
TEST(AppIcons, LookLikeTheIconOfTheProgramsFile) {
  constexpr int kSide = 32;
  if (!wxImage::FindHandler(wxBITMAP_TYPE_ICO)) wxImage::AddHandler(new wxICOHandler);
  const auto picture = [](const wxIconBundle& icons) {
    wxBitmap bitmap;
    bitmap.CopyFromIcon(icons.GetIcon(wxSize(kSide, kSide), wxIconBundle::FALLBACK_NONE));
    return bitmap.ConvertToImage();
  };
  const wxImage drawn = picture(AppIcons());
  // That size alone: the largest is a PNG picture, which wx cannot read everywhere.
  constexpr int kNumberInFile = 3;
  wxIcon icon;
  icon.CopyFromBitmap(wxImage(SAMPLES "/../icons/korvex.ico", wxBITMAP_TYPE_ICO, kNumberInFile));
  const wxImage shipped = picture(icon);
  ASSERT_TRUE(drawn.IsOk() && shipped.IsOk());
  constexpr int kBytes = 3 * kSide * kSide;
  int difference = 0;
  for (int i = 0; i < kBytes; ++i)
    difference += std::abs(drawn.GetData()[i] - shipped.GetData()[i]);
  EXPECT_LT(difference / kBytes, 8) << "run tools/make-icon";
}

TEST(MessageIcons, DifferFromNumberToNumber) {
  std::set<std::string> images;
  for (int number = 0; number <= kMessageIcons; ++number) {
    wxImage image(32, 32);
    if (number > 0) {
      const std::unique_ptr<wxGraphicsContext> context(wxGraphicsContext::Create(image));
      DrawMessageIcon(*context, number, 32);
    }
    images.emplace(reinterpret_cast<const char*>(image.GetData()), 3 * 32 * 32);
  }
  EXPECT_EQ(images.size(), 1u + kMessageIcons);
}

}  // namespace
}  // namespace korvex
