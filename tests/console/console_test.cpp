// Running without a window: questions, progress and Ctrl-C on a terminal.
#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "console/console_dialogs.h"
#include "console/console_run_view.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// A terminal that keeps what is written; its user has typed everything beforehand.
class ConsoleTest : public testing::Test, public Terminal {
 protected:
  bool CanAsk() const override { return can_ask_; }
  bool CanRedraw() const override { return can_redraw_; }
  int Columns() const override { return columns_; }
  void WriteError(std::string_view text) override { written_ += text; }
  std::optional<std::string> ReadLine() override {
    std::string line;
    if (!std::getline(typed_, line)) return std::nullopt;
    written_ += "\n";  // the terminal's echo of the user's Enter
    return line;
  }
  bool TakeInterrupt() override { return std::exchange(interrupted_, false); }
  bool IsInterrupted() const override { return interrupted_; }

  void Type(const std::string& lines) { typed_ = std::istringstream(lines); }
  // The last line as it looks after all carriage returns.
  std::string LastLine() const {
    std::string line;
    for (const auto& drawn : Split(written_.substr(written_.rfind('\n') + 1), "\r"))
      line = drawn + line.substr(std::min(line.size(), drawn.size()));
    return line.substr(0, line.find_last_not_of(' ') + 1);
  }
  std::string AskToStop(int default_button = 0) {
    return dialogs_.ShowButtons(
        {"Stop Process?", {"&Yes, Stop.", "Continue"}, "KORVEX", 13, default_button, 6});
  }
  BoxAnswer Ask(BoxButtons buttons) { return dialogs_.ShowPlain({"Well?", buttons}); }

  TestPlatform platform_;
  std::istringstream typed_;
  std::string written_;
  bool can_ask_ = true, can_redraw_ = true, interrupted_ = false;
  int columns_ = 80;
  ConsoleLine line_{*this};
  ConsoleDialogs dialogs_{*this, line_};
  ConsoleRunView view_{*this, line_, false};
};

TEST_F(ConsoleTest, TakesAnAnswerInEveryForm) {
  const std::pair<const char*, bool> cases[] = {
      {"yes, stop.\n", true},  {"y\n", true},    {"1\n", true},  {"", true},
      {"no\n", true},          {" C \n", false}, {"2\n", false}, {"\n", false},
      {"3\nno\n0\nc\n", false}};
  for (const auto& [typed, stop] : cases) {
    Type(typed);
    EXPECT_EQ(AskToStop(1), stop ? "&Yes, Stop." : "Continue") << typed;
  }
  Type("s\nä\nskip\n");
  EXPECT_EQ(dialogs_.ShowButtons({"?", {"Stop", "Skip", "Ändern", "Äußern"}, "", 0, 9}), "Skip")
      << "a first letter that fits several";
  Type("\nc\nr\nunread\n");
  EXPECT_EQ(Ask(BoxButtons::kOkCancel), BoxAnswer::kOk) << "Enter is the default button";
  EXPECT_EQ(Ask(BoxButtons::kOkCancel), BoxAnswer::kCancel);
  EXPECT_EQ(Ask(BoxButtons::kRetryCancel), BoxAnswer::kRetry);
  written_.clear();
  dialogs_.ShowPlain({.text = "Not written.\r\nSorry.", .cause = "Disk full"});
  EXPECT_EQ(written_, "Not written.\nSorry.\nCause: Disk full\n[OK]\n");
  EXPECT_EQ(ReadLine(), "unread") << "nobody waits where nothing is asked";
}

TEST_F(ConsoleTest, DecidesByItselfWhenNobodyCanAnswer) {
  for (const bool can_ask : {true, false}) {  // the end of the input, or no terminal
    can_ask_ = can_ask;
    EXPECT_EQ(Ask(BoxButtons::kOkCancel), BoxAnswer::kCancel) << "it never agrees";
    EXPECT_EQ(Ask(BoxButtons::kRetryCancel), BoxAnswer::kCancel);
  }
  written_.clear();
  EXPECT_EQ(AskToStop(1), "&Yes, Stop.");
  EXPECT_EQ(written_, "Stop Process?\n[Yes, Stop.] [Continue]\nNobody answered: Yes, Stop.\n");
  can_ask_ = true;
  for (const int sound : {1, 2, 9, 10, 0, -1})
    dialogs_.ShowButtons({"a\x1b[2J\tb\xC2\x9B\re", {"OK"}, "", 0, 0, sound});
  EXPECT_THAT(platform_.sound.played,
              ElementsAre("beep", "alias BuildComplete", "alias Open", "alias "))
      << "only for who can answer";
  EXPECT_THAT(written_, HasSubstr("\na?[2J b?\ne\n")) << "no control characters";
}

TEST_F(ConsoleTest, DrawsProgressOnOneLineThatMakesRoomForQuestions) {
  view_.SetMessage("idle");
  EXPECT_EQ(written_, "");
  view_.EnterRunning();
  view_.SetMessage("Initializing...");
  view_.SetProgress(2, 12);
  view_.ProcessedFile();
  EXPECT_EQ(LastLine(), "[#####---------------]  25%   3 of 12  Initializing...");
  view_.Message("two\nlines");
  view_.SetProgress(99, 12);
  EXPECT_EQ(LastLine(), "[####################] 100%  12 of 12  two lines");
  const std::string former = written_;
  view_.SetMessage("two\nlines");
  EXPECT_EQ(written_, former) << "nothing has changed";
  EXPECT_EQ(written_.find('\n'), std::string::npos);
  Type("c\n");
  AskToStop();
  EXPECT_THAT(written_, HasSubstr(std::string(20, ' ') + "\rStop Process?\n"));
  view_.SetMessage("two\nlines");
  EXPECT_THAT(LastLine(), testing::EndsWith("two lines")) << "drawn again below the question";
  view_.LeaveRunning();
  EXPECT_EQ(LastLine(), "");
  columns_ = 6;
  view_.EnterRunning();
  view_.ErrorMessage("µµµµµµµµ");
  EXPECT_EQ(LastLine(), "µµµµµ") << "cut by characters";
}

TEST_F(ConsoleTest, WritesPlainLinesWithoutATerminalAndNothingWhenQuiet) {
  can_redraw_ = false;
  ConsoleRunView quiet(*this, line_, true);
  for (ConsoleRunView* view : {&view_, &quiet}) {
    view->EnterRunning();
    view->SetProgress(0, 2);
    for (const char* message : {"a", "a", "", "b"}) view->SetMessage(message);
    view->ProcessedFile();
    view->LeaveRunning();
  }
  EXPECT_EQ(written_, "a\nb\n");
}

TEST_F(ConsoleTest, PassesOnEachCtrlCOnce) {
  int stops = 0;
  ConsoleMessageLoop loop(*this, [&] { ++stops; });
  for (const bool pressed : {false, true, false}) {
    interrupted_ = pressed;
    loop.Yield();
  }
  EXPECT_EQ(stops, 1);
}

}  // namespace
}  // namespace korvex
