#include "util/basGeneral.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/error.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;

TEST(TempFolder, ComesFromTheEnvironmentBeforeThePlatform) {
  TestPlatform platform(PathStyle::kWindows);
  platform.shell.environment = {{"TEMP", "E:\\t\\"}, {"TMP", "E:\\u"}};
  EXPECT_EQ(GetTempFolder(false), "E:\\t\\");
  EXPECT_EQ(GetTempFolder(true), "E:\\t\\\\");  // kept: nobody looks for the separator there is
  platform.shell.environment = {{"TEMP", ""}, {"TMP", "E:\\u"}};
  EXPECT_EQ(GetTempFolder(true), "E:\\u\\");
}

TEST(TempFolder, IsCreatedOrNamedAsTheDiskSpellsIt) {
  TestPlatform platform(PathStyle::kWindows);
  EXPECT_EQ(GetTempFolder(false), "C:\\TEMP");
  EXPECT_TRUE(platform.files.FolderExists("C:\\TEMP"));
  platform.files.Remove("C:\\TEMP");
  platform.files.AddFolder("C:\\Temp");
  EXPECT_EQ(GetTempFolder(true), "C:\\Temp\\");

  const TestPlatform linux_platform(PathStyle::kLinux);
  EXPECT_EQ(GetTempFolder(true), "/tmp/");
}

TEST(BrowseFolder, EndsInASeparatorUnlessCancelled) {
  TestPlatform platform(PathStyle::kWindows);
  platform.dialogs.folder_answers = {"D:\\Runs", "D:\\", ""};
  EXPECT_EQ(SharedFileSys().BrowseFolder(nullptr), "D:\\Runs\\");
  EXPECT_EQ(SharedFileSys().BrowseFolder(nullptr), "D:\\");
  EXPECT_EQ(SharedFileSys().BrowseFolder(nullptr), "");
  EXPECT_EQ(platform.dialogs.browse_prompts.front(), "Choose a directory from the list.");
}

TEST(OpenFile, HandsTheDocumentToTheShell) {
  TestPlatform platform;
  SharedFileSys().OpenFile("/a b/out.xls");
  ShellOpen("/help.html");
  EXPECT_THAT(platform.shell.opened, ElementsAre("/a b/out.xls", "/help.html"));
}

TEST(MessageBox, ReducesADefaultButtonInTheCallersVariable) {
  const struct {
    int passed;
    int shown;
  } cases[] = {{0, 0}, {1, 0}, {2, 1}, {-1, -1}};
  for (const auto& c : cases) {
    TestPlatform platform;
    int default_button = c.passed;
    ShowMessageBox("?", {"&Yes", "No"}, "T", 3, default_button, 0);
    EXPECT_EQ(default_button, c.shown) << c.passed;
    EXPECT_EQ(platform.dialogs.buttons.at(0).default_button, c.shown) << c.passed;
  }
}

TEST(MessageBox, ReturnsTheCaptionAndFillsInWhatIsLeftOut) {
  TestPlatform platform;
  platform.dialogs.button_answers = {"&No"};
  EXPECT_EQ(ShowMessageBox("Go on?", {"&Yes", "&No"}), "&No");
  const ButtonMessage& shown = platform.dialogs.buttons.at(0);
  EXPECT_EQ(shown.title, "Message");
  EXPECT_EQ(shown.icon, 0);
  EXPECT_EQ(shown.default_button, 0);
  EXPECT_EQ(shown.sound, 1);
  ShowMessageBox("", {"OK"}, "");
  EXPECT_EQ(platform.dialogs.buttons.at(1).title, "");  // empty is not missing
}

}  // namespace
}  // namespace korvex
