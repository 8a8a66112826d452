#include "console/console_dialogs.h"

#include <gmock/gmock.h>

#include "console/console_progress.h"
#include "tests/console/fake_terminal.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

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
}

TEST_F(ConsoleDialogsTest, AsksAgainWhenAFirstLetterFitsSeveralCaptions) {
  terminal_.typed = {"s", "ä", "skip"};
  EXPECT_EQ(dialogs_.ShowButtons({"?", {"Stop", "Skip", "Ändern", "Äußern"}, "", 0, 9}), "Skip");
}

TEST_F(ConsoleDialogsTest, TakesTheFirstCaptionWhenNobodyCanAnswer) {
  terminal_.can_ask = false;
  EXPECT_EQ(AskToStop(1), "&Yes, Stop.");
  EXPECT_EQ(terminal_.written,
            "Stop Process?\n[Yes, Stop.] [Continue]\nNobody answered: Yes, Stop.\n");
  EXPECT_THAT(platform_.sound.played, IsEmpty());
}

TEST_F(ConsoleDialogsTest, NeverAgreesToAPlainQuestionByItself) {
  EXPECT_EQ(AskToReplace(), BoxAnswer::kCancel) << "end of input or Ctrl-C";
  terminal_.can_ask = false;
  EXPECT_EQ(AskToReplace(), BoxAnswer::kCancel);
  EXPECT_EQ(dialogs_.ShowPlain({"Again?", BoxButtons::kRetryCancel}), BoxAnswer::kCancel);
  terminal_.can_ask = true;
  terminal_.typed = {"", "c", "r"};
  EXPECT_EQ(AskToReplace(), BoxAnswer::kOk) << "Enter is the default button";
  EXPECT_EQ(AskToReplace(), BoxAnswer::kCancel);
  EXPECT_EQ(dialogs_.ShowPlain({"Again?", BoxButtons::kRetryCancel}), BoxAnswer::kRetry);
}

TEST_F(ConsoleDialogsTest, NeverWaitsForASingleCaption) {
  terminal_.typed = {"unread"};
  EXPECT_EQ(dialogs_.ShowButtons({"Process finished!", {"OK"}, "", 13}), "OK");
  EXPECT_EQ(dialogs_.ShowPlain({.text = "Not written.\r\nSorry.", .cause = "Disk full"}),
            BoxAnswer::kOk);
  EXPECT_EQ(terminal_.written,
            "Process finished!\n[OK]\nNot written.\nSorry.\nCause: Disk full\n[OK]\n");
  EXPECT_EQ(terminal_.typed.size(), 1u);
}

TEST_F(ConsoleDialogsTest, PlaysAMessagesSoundToWhoCanAnswer) {
  for (const int sound : {1, 2, 9, 10, 0, -1}) {
    dialogs_.ShowButtons({"text", {"OK"}, "", 0, 0, sound});
  }
  EXPECT_THAT(platform_.sound.played,
              ElementsAre("beep", "alias BuildComplete", "alias Open", "alias "));
}

TEST_F(ConsoleDialogsTest, KeepsControlCharactersFromTheTerminal) {
  dialogs_.ShowPlain(
      {"a\x1b[2J\x07"
       "b\xC2\x9B"
       "c\td\xFF\re"});
  EXPECT_THAT(terminal_.written, StartsWith("a?[2J?b?c d\xFF\ne\n"));
}

TEST_F(ConsoleDialogsTest, FreesTheLineThatProgressOccupies) {
  ConsoleProgress progress(terminal_, line_, false);
  progress.SetMaximum(4);
  progress.SetMessage("Processing x.xls");
  const std::string bar = terminal_.LastLine();
  terminal_.typed = {"c"};
  AskToStop();
  EXPECT_THAT(terminal_.written, HasSubstr(std::string(20, ' ') + "\rStop Process?\n"));
  progress.SetMessage("Processing x.xls");
  EXPECT_EQ(terminal_.LastLine(), bar) << "drawn again below the question";
}

}  // namespace
}  // namespace korvex
