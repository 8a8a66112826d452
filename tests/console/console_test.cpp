// Running without a window.
#include <gmock/gmock.h>

#include <algorithm>
#include <deque>

#include "console/console_dialogs.h"
#include "console/console_run_view.h"
#include "platform/terminal.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

// A terminal whose screen is a text and whose user has typed everything beforehand.
class FakeTerminal : public Terminal {
 public:
  bool CanAsk() const override { return can_ask; }
  bool CanRedraw() const override { return can_redraw; }
  int Columns() const override { return columns; }
  void WriteError(std::string_view text) override { written += text; }
  std::optional<std::string> ReadLine() override {
    if (typed.empty()) return std::nullopt;
    std::string line = typed.front();
    typed.pop_front();
    written += "\n";  // the terminal's echo of the user's Enter
    return line;
  }
  bool TakeInterrupt() override { return std::exchange(interrupted, false); }

  // The last line as it looks after all carriage returns.
  std::string LastLine() const {
    std::string line;
    std::size_t column = 0;
    for (const char c : written.substr(written.rfind('\n') + 1)) {
      if (c == '\r') {
        column = 0;
      } else {
        line.resize(std::max(line.size(), column + 1), ' ');
        line[column++] = c;
      }
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
  }

  bool can_ask = true;
  bool can_redraw = true;
  int columns = 80;
  std::deque<std::string> typed;
  bool interrupted = false;
  std::string written;
};

class ConsoleDialogsTest : public testing::Test {
 protected:
  std::string AskToStop(int default_button = 0) {
    return dialogs_.ShowButtons(
        {"Stop Process?", {"&Yes, Stop.", "Continue"}, "KORVEX", 13, default_button, 6});
  }
  BoxAnswer AskToReplace() {
    return dialogs_.ShowPlain({"Replace?", BoxButtons::kOkCancel, BoxIcon::kExclamation});
  }

  TestPlatform platform_;
  FakeTerminal terminal_;
  ConsoleLine line_{terminal_};
  ConsoleDialogs dialogs_{terminal_, line_};
};

TEST_F(ConsoleDialogsTest, TakesAnAnswerInEveryForm) {
  const std::pair<std::deque<std::string>, const char*> cases[] = {
      {{"yes, stop."}, "&Yes, Stop."},
      {{"y"}, "&Yes, Stop."},
      {{" C "}, "Continue"},
      {{"2"}, "Continue"},
      {{"1"}, "&Yes, Stop."},
      {{""}, "Continue"},
      {{"3", "no", "0", "c"}, "Continue"},
      {{}, "&Yes, Stop."},  // end of input
      {{"no"}, "&Yes, Stop."},
  };
  for (const auto& [typed, answer] : cases) {
    terminal_.typed = typed;
    EXPECT_EQ(AskToStop(1), answer) << testing::PrintToString(typed);
    EXPECT_THAT(terminal_.typed, IsEmpty());
  }
  terminal_.typed = {"s", "ä", "skip"};
  EXPECT_EQ(dialogs_.ShowButtons({"?", {"Stop", "Skip", "Ändern", "Äußern"}, "", 0, 9}), "Skip")
      << "a first letter that fits several";
}

TEST_F(ConsoleDialogsTest, DecidesByItselfWhenNobodyCanAnswer) {
  EXPECT_EQ(AskToReplace(), BoxAnswer::kCancel) << "end of input or Ctrl-C";
  terminal_.can_ask = false;
  EXPECT_EQ(AskToReplace(), BoxAnswer::kCancel) << "it never agrees";
  EXPECT_EQ(dialogs_.ShowPlain({"Again?", BoxButtons::kRetryCancel}), BoxAnswer::kCancel);
  terminal_.written.clear();
  EXPECT_EQ(AskToStop(1), "&Yes, Stop.");
  EXPECT_EQ(terminal_.written,
            "Stop Process?\n[Yes, Stop.] [Continue]\nNobody answered: Yes, Stop.\n");
  EXPECT_THAT(platform_.sound.played, IsEmpty());
}

TEST_F(ConsoleDialogsTest, TakesAnswersToPlainQuestions) {
  terminal_.typed = {"", "c", "r", "unread"};
  EXPECT_EQ(AskToReplace(), BoxAnswer::kOk) << "Enter is the default button";
  EXPECT_EQ(AskToReplace(), BoxAnswer::kCancel);
  EXPECT_EQ(dialogs_.ShowPlain({"Again?", BoxButtons::kRetryCancel}), BoxAnswer::kRetry);
  terminal_.written.clear();
  EXPECT_EQ(dialogs_.ShowPlain({.text = "Not written.\r\nSorry.", .cause = "Disk full"}),
            BoxAnswer::kOk);
  EXPECT_EQ(terminal_.written, "Not written.\nSorry.\nCause: Disk full\n[OK]\n");
  EXPECT_EQ(terminal_.typed.size(), 1u) << "nobody waits where nothing is asked";
}

TEST_F(ConsoleDialogsTest, PlaysAMessagesSoundToWhoCanAnswer) {
  for (const int sound : {1, 2, 9, 10, 0, -1}) {
    dialogs_.ShowButtons({"a\x1b[2J\tb\xC2\x9B\re", {"OK"}, "", 0, 0, sound});
  }
  EXPECT_THAT(platform_.sound.played,
              ElementsAre("beep", "alias BuildComplete", "alias Open", "alias "));
  EXPECT_THAT(terminal_.written, StartsWith("a?[2J b?\ne\n")) << "no control characters";
}

TEST_F(ConsoleDialogsTest, FreesTheLineThatProgressOccupies) {
  ConsoleRunView view(terminal_, line_, false);
  view.EnterRunning();
  view.SetProgress(0, 4);
  view.SetMessage("Processing x.xls");
  const std::string bar = terminal_.LastLine();
  terminal_.typed = {"c"};
  AskToStop();
  EXPECT_THAT(terminal_.written, HasSubstr(std::string(20, ' ') + "\rStop Process?\n"));
  view.SetMessage("Processing x.xls");
  EXPECT_EQ(terminal_.LastLine(), bar) << "drawn again below the question";
}

class ConsoleRunViewTest : public testing::Test {
 protected:
  FakeTerminal terminal_;
  ConsoleLine line_{terminal_};
  ConsoleRunView view_{terminal_, line_, false};
};

TEST_F(ConsoleRunViewTest, DrawsOneLineOnATerminalWhileRunning) {
  view_.SetMessage("idle");
  EXPECT_EQ(terminal_.written, "");
  view_.EnterRunning();
  view_.SetMessage("Initializing...");
  EXPECT_EQ(terminal_.LastLine(), "Initializing...");
  view_.SetProgress(2, 12);
  view_.ProcessedFile();
  EXPECT_EQ(terminal_.LastLine(), "[#####---------------]  25%   3 of 12  Initializing...");
  view_.Message("two\nlines");
  view_.SetProgress(99, 12);
  EXPECT_EQ(terminal_.LastLine(), "[####################] 100%  12 of 12  two lines");
  const std::string written = terminal_.written;
  view_.SetMessage("two\nlines");
  EXPECT_EQ(terminal_.written, written) << "nothing has changed";
  view_.LeaveRunning();
  EXPECT_EQ(terminal_.LastLine(), "");
  terminal_.columns = 6;
  view_.EnterRunning();
  view_.ErrorMessage("µµµµµµµµ");
  EXPECT_EQ(terminal_.LastLine(), "µµµµµ") << "cut by characters";
  EXPECT_EQ(terminal_.written.find('\n'), std::string::npos);
}

TEST_F(ConsoleRunViewTest, WritesPlainLinesWithoutATerminalAndNothingWhenQuiet) {
  terminal_.can_redraw = false;
  ConsoleRunView quiet(terminal_, line_, true);
  for (ConsoleRunView* view : {&view_, &quiet}) {
    view->EnterRunning();
    view->SetProgress(0, 2);
    for (const char* message : {"a", "a", "", "b"}) view->SetMessage(message);
    view->ProcessedFile();
    view->LeaveRunning();
  }
  EXPECT_EQ(terminal_.written, "a\nb\n");
}

TEST(ConsoleMessageLoop, PassesOnEachCtrlCOnce) {
  FakeTerminal terminal;
  int stops = 0;
  ConsoleMessageLoop loop(terminal, [&] { ++stops; });
  loop.Yield();
  terminal.interrupted = true;
  loop.Yield();
  loop.Yield();
  EXPECT_EQ(stops, 1);
}

}  // namespace
}  // namespace korvex
