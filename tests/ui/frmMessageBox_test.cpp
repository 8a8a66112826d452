#include "ui/frmMessageBox.h"

#include <gmock/gmock.h>
#include <wx/display.h>
#include <wx/imagbmp.h>
#include <wx/image.h>
#include <wx/uiaction.h>

#include <cstdlib>
#include <memory>
#include <set>

#include "tests/support/errors.h"
#include "tests/support/fakes.h"
#include "tests/ui/ui_support.h"
#include "ui/form_helpers.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MessageBoxTest : public testing::Test {
 protected:
  // Shows a message, does `step` to the box, and presses the first button if it still shows.
  std::string Show(const ButtonMessage& message, ModalDriver::Step step) {
    driver_.Expect([step = std::move(step)](wxDialog& box) {
      step(box);
      if (box.IsShown()) Click(Find<wxButton>(box, "cmdMain0"));
    });
    return frmMessageBox(nullptr).ShowMsgBox(message);
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
  const ButtonMessage question{"Go on?", {"&Yes", "Fish && chips", "&No"}, "Title", 0, 0, 7};

  EXPECT_EQ(Show(question, [](wxDialog& box) { Click(Find<wxButton>(box, "cmdMain1")); }),
            "Fish && chips");
  EXPECT_EQ(Show(question, [](wxDialog& box) { EXPECT_EQ(box.GetTitle(), "Title"); }), "&Yes");
  EXPECT_THAT(platform_.sound.played,
              ElementsAre("alias SystemExclamation", "alias SystemExclamation"));
}

TEST_F(MessageBoxTest, LetsTheTextBeReadOnly) {
  Show({"One\r\nTwo", {"OK"}, "", 1}, [](wxDialog& box) {
    auto& text = Find<wxTextCtrl>(box, "txtMessage");
    EXPECT_EQ(text.GetValue(), "One\nTwo");
    text.SelectAll();
    EXPECT_EQ(text.GetStringSelection(), "One\nTwo");
    text.WriteText("typed");
    WaitUntil([&] { return text.GetValue() == "One\nTwo"; });
  });
}

TEST_F(MessageBoxTest, StartsAtTheDefaultButtonAndClosesByAButtonOnly) {
  EXPECT_EQ(Show({"?", {"A", "B"}, "", 0, 1},
                 [](wxDialog& box) {
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
                 }),
            "B");
}

TEST_F(MessageBoxTest, ShowsEveryLineAndEveryButton) {
  const std::string path = "/data/" + std::string(200, 'x') + "/plates/KINASE-A-1.xls";
  const std::vector<std::string> prompts{
      "Process finished!", Lines(5), Lines(30), "File " + path + " (\"" + path + "\") is missing.",
      "An ordinary sentence that is much too long for one line of an ordinary message box."};
  for (const std::string& prompt : prompts) {
    Show({prompt, {"OK", "A very long caption indeed"}, "", 13}, [](wxDialog& box) {
      auto& text = Find<wxTextCtrl>(box, "txtMessage");
      const auto bottom_of_text = [&] {
        return text.PositionToCoords(text.GetLastPosition()).y + text.GetCharHeight();
      };
      ServeEvents();
      EXPECT_LE(bottom_of_text(), text.GetClientSize().y);
      const auto& last = Find<wxButton>(box, "cmdMain1");
      EXPECT_TRUE(wxRect(box.GetClientSize()).Contains(last.GetRect()));
      EXPECT_GE(last.GetSize().x, last.GetBestSize().x);
      EXPECT_FALSE(last.GetRect().Intersects(text.GetRect()));
    });
  }
}

TEST_F(MessageBoxTest, StaysWithinTheScreen) {
  const std::vector<std::string> many(40, "One of many buttons");
  Show({Lines(500), many, "", 13}, [&](wxDialog& box) {
    ServeEvents();
    EXPECT_TRUE(wxDisplay(&box).GetClientArea().Contains(box.GetScreenRect()));
    EXPECT_TRUE(wxRect(box.GetClientSize()).Contains(Find<wxButton>(box, "cmdMain39").GetRect()));
    EXPECT_GT(Find<wxTextCtrl>(box, "txtMessage").GetSize().y, 100);
  });
}

TEST_F(MessageBoxTest, RefusesWhatItCannotShow) {
  const struct {
    ButtonMessage message;
    int error;
  } cases[] = {{{"?", {"OK"}, "", kMessageIcons + 1}, error_number::kInvalidCall},
               {{"?", {"OK"}, "", -1}, error_number::kInvalidCall},
               {{"?", {}, ""}, error_number::kSubscript},
               {{"?", {"OK"}, "", 0, 1}, error_number::kSubscript},
               {{"?", {"OK"}, "", 0, -1}, error_number::kSubscript}};
  for (const auto& [message, error] : cases) {
    EXPECT_EQ(ErrorOf([&] { frmMessageBox(nullptr).ShowMsgBox(message); }).Number(), error);
  }
  EXPECT_THAT(platform_.sound.played, IsEmpty());
}

// The icon of the program's file is made by hand from the picture that the windows draw.
TEST(AppIcons, LookLikeTheIconOfTheProgramsFile) {
  constexpr int kSide = 32;
  if (!wxImage::FindHandler(wxBITMAP_TYPE_ICO)) wxImage::AddHandler(new wxICOHandler);
  wxImage expected;
  const wxString file = SAMPLES "/../icons/korvex.ico";
  for (int i = 0; i < 8 && (!expected.IsOk() || expected.GetWidth() != kSide); ++i) {
    expected.LoadFile(file, wxBITMAP_TYPE_ICO, i);
  }
  wxBitmap drawn;
  drawn.CopyFromIcon(AppIcons().GetIcon(wxSize(kSide, kSide), wxIconBundle::FALLBACK_NONE));
  const wxImage image = drawn.ConvertToImage();
  ASSERT_TRUE(image.IsOk() && expected.IsOk());
  ASSERT_EQ(image.GetSize(), expected.GetSize());
  int difference = 0;
  for (int i = 0; i < 3 * kSide * kSide; ++i) {
    difference += std::abs(image.GetData()[i] - expected.GetData()[i]);
  }
  EXPECT_LT(difference / (3 * kSide * kSide), 8) << "run tools/make-icon";
}

TEST(MessageIcons, DiffersFromNumberToNumber) {
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
