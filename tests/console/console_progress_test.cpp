#include "console/console_progress.h"

#include <gtest/gtest.h>

#include "console/console_message_loop.h"
#include "tests/console/fake_terminal.h"

namespace korvex {
namespace {

class ConsoleProgressTest : public testing::Test {
 protected:
  FakeTerminal terminal_;
  ConsoleLine line_{terminal_};
  ConsoleProgress progress_{terminal_, line_, false};
};

TEST_F(ConsoleProgressTest, DrawsOneLineOnATerminal) {
  progress_.SetMessage("Initializing...");
  EXPECT_EQ(terminal_.LastLine(), "Initializing...");
  progress_.SetMaximum(12);
  progress_.SetValue(3);
  EXPECT_EQ(terminal_.LastLine(), "[#####---------------]  25%   3 of 12  Initializing...");
  progress_.SetMessage("x");
  progress_.SetValue(99);
  EXPECT_EQ(terminal_.LastLine(), "[####################] 100%  12 of 12  x");
  progress_.Finish();
  EXPECT_EQ(terminal_.LastLine(), "");
  EXPECT_EQ(terminal_.written.find('\n'), std::string::npos);
}

TEST_F(ConsoleProgressTest, CutsTheLineByCharacters) {
  terminal_.columns = 6;
  progress_.SetMessage("µµµµµµµµ");
  EXPECT_EQ(terminal_.LastLine(), "µµµµµ");
  progress_.SetMessage("two\nlines");
  EXPECT_EQ(terminal_.LastLine().substr(0, 5), "two l");
}

TEST_F(ConsoleProgressTest, WritesOnlyWhatChanged) {
  progress_.SetMaximum(1000);
  progress_.SetMessage("x");
  const int writes = terminal_.writes;
  progress_.SetMessage("x");
  progress_.SetValue(0);
  EXPECT_EQ(terminal_.writes, writes);
}

TEST_F(ConsoleProgressTest, WritesPlainLinesWithoutATerminal) {
  terminal_.can_redraw = false;
  progress_.SetMaximum(2);
  for (const char* message : {"a", "a", "", "b"}) progress_.SetMessage(message);
  progress_.SetValue(1);
  progress_.Finish();
  EXPECT_EQ(terminal_.written, "a\nb\n");
}

TEST_F(ConsoleProgressTest, SaysNothingWhenQuiet) {
  for (const bool can_redraw : {true, false}) {
    terminal_.can_redraw = can_redraw;
    ConsoleProgress quiet(terminal_, line_, true);
    quiet.SetMaximum(2);
    quiet.SetValue(1);
    quiet.SetMessage("a");
    quiet.Finish();
  }
  EXPECT_EQ(terminal_.written, "");
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
