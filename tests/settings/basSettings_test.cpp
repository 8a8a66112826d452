#include "settings/basSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/error.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Settings, ReadTheirDefaultsOnAFreshAccount) {
  const TestPlatform platform(PathStyle::kWindows);
  EXPECT_EQ(basSettings::LastPath(), "");
  EXPECT_EQ(basSettings::LastPathAtStart(), "C:\\");
  EXPECT_EQ(basSettings::OutputFullName(), "");
  EXPECT_EQ(basSettings::OutputFileMethod(), basSettings::kByConstantName);
  EXPECT_EQ(basSettings::ErrorEmailAddress(), "postmaster@localhost");
  EXPECT_EQ(basSettings::DataColumn(), "Delta OD");
  EXPECT_TRUE(basSettings::LaunchOutputFile());
  EXPECT_EQ(basSettings::LaunchOutputFileNumber(), 1);
  EXPECT_TRUE(basSettings::SendEmailOnError());
  EXPECT_TRUE(basSettings::AutoReplaceOutputFiles());
  EXPECT_TRUE(basSettings::ProcessingSubFolders());
  EXPECT_FALSE(basSettings::ProcessingFiles());
  EXPECT_THAT(basSettings::OutputColumns(), IsEmpty());
  EXPECT_THAT(basSettings::KeysColumns(), IsEmpty());
}

TEST(Settings, KeepAnEmptyLastPathThatIsStored) {
  TestPlatform platform(PathStyle::kWindows);
  basSettings::SetLastPath("");
  EXPECT_EQ(basSettings::LastPathAtStart(), "");
}

// Other programs, and earlier releases, find every value where it always was.
TEST(Settings, LieUnderTheirSectionsAndKeys) {
  TestPlatform platform(PathStyle::kWindows);
  const struct {
    void (*write)();
    const char* section;
    const char* key;
    const char* text;
  } cases[] = {
      {[] { basSettings::SetLastPath("D:\\r"); }, "Main Section", "Last Path", "D:\\r"},
      {[] { basSettings::SetOutputFile("a.xls"); }, "Main Section", "Output File", "a.xls"},
      {[] { basSettings::WriteOutputPath("C:\\Out"); }, "Main Section", "Output Path", "C:\\Out\\"},
      {[] { basSettings::WriteOutputPath("C:\\Out\\"); }, "Main Section", "Output Path",
       "C:\\Out\\"},
      {[] { basSettings::SetLaunchOutputFile(true); }, "Main Section", "Launch Output File", "-1"},
      {[] { basSettings::SetLaunchOutputFileNumber(1); }, "Main Section", "Launch Output File",
       "1"},
      {[] { basSettings::SetErrorEmailAddress("a@b"); }, "Main Section", "Error Email Address",
       "a@b"},
      {[] { basSettings::SetSendEmailOnError(false); }, "Main Section", "Send Email on Error", "0"},
      {[] { basSettings::SetOutputFileMethod("m"); }, "Main Section", "Output File Method", "m"},
      {[] { basSettings::SetAutoReplaceOutputFiles(true); }, "Main Section",
       "Auto-Replace Output files", "-1"},
      {[] { basSettings::SetEverySheetRepresents("x"); }, "File Structure",
       "Every Sheet Represents:", "x"},
      {[] {
         basSettings::SetOutputColumns({"Plate", "Well", "Compound ID"});
       },
       "File Structure", "Output Columns", "Plate<-- -->Well<-- -->Compound ID"},
      {[] { basSettings::SetKeysColumns({}); }, "File Structure", "Keys Columns", ""},
      {[] { basSettings::SetDataColumn("OD"); }, "File Structure", "Data Column", "OD"},
  };
  for (const auto& c : cases) {
    c.write();
    EXPECT_EQ(platform.settings.Get(c.section, c.key), c.text) << c.key;
  }
  EXPECT_THAT(basSettings::OutputColumns(), ElementsAre("Plate", "Well", "Compound ID"));
  EXPECT_TRUE(basSettings::ProcessingFiles());
}

TEST(Settings, ReadFlagsAsNumbers) {
  TestPlatform platform;
  const struct {
    const char* stored;
    bool flag;
    int error;
  } cases[] = {
      {"0", false, 0},
      {"-1", true, 0},
      {" 2 ", true, 0},
      {"0.5", false, 0},  // rounds to the even 0
      {"", false, error_number::kTypeMismatch},
      {"yes", false, error_number::kTypeMismatch},
      {"70000", false, error_number::kOverflow},
  };
  for (const auto& c : cases) {
    platform.settings.Save("Main Section", "Send Email on Error", c.stored);
    bool flag = false;
    const Error error = ErrorOf([&] { flag = basSettings::SendEmailOnError(); });
    EXPECT_EQ(error.Number(), c.error) << c.stored;
    EXPECT_EQ(flag, c.flag) << c.stored;
    if (c.error != 0) {
      EXPECT_THAT(error.Description(), HasSubstr("\"Send Email on Error\""));
    }
  }
}

TEST(Settings, FormTheOutputNameByTheMethodChosen) {
  TestPlatform platform(PathStyle::kWindows);
  platform.main_window.processing_folder = "D:\\Runs\\Day1";
  basSettings::WriteOutputFullName("C:\\Out\\all.xls");
  EXPECT_EQ(basSettings::OutputPath(), "C:\\Out\\");
  EXPECT_EQ(basSettings::OutputFullName(), "C:\\Out\\all.xls");
  basSettings::SetOutputFileMethod(basSettings::kByFolder);
  EXPECT_EQ(basSettings::OutputFullName(), "D:\\Runs\\Day1\\all.xls");
  basSettings::SetOutputFileMethod("output file by folder");
  EXPECT_EQ(basSettings::OutputFullName(), "");
}

TEST(Settings, PassOnTheErrorsOfTheStore) {
  TestPlatform platform;
  platform.settings.failure = error_number::kPermissionDenied;
  EXPECT_EQ(ErrorOf([] { basSettings::DataColumn(); }).Number(), error_number::kPermissionDenied);
  EXPECT_EQ(ErrorOf([] { basSettings::SetDataColumn("x"); }).Number(),
            error_number::kPermissionDenied);
}

TEST(DeleteAllSettings, TriesEveryKeyInOrderAndComplainsOnce) {
  TestPlatform platform;
  basSettings::SetDataColumn("OD");
  basSettings::DeleteAllSettings();

  const std::string main = "Main Section";
  const std::string structure = "File Structure";
  using Key = std::pair<std::string, std::string>;
  EXPECT_THAT(
      platform.settings.deletes,
      ElementsAre(Key{main, "Last Path"}, Key{main, "Output File"}, Key{main, "Output Path"},
                  Key{main, "Launch Output File"}, Key{main, "Error Email Address"},
                  Key{main, "Send Email on Error"}, Key{main, "Output File Method"},
                  Key{main, "Output File by Folder"}, Key{main, "Output File by constant name"},
                  Key{main, "Auto-Replace Output files"}, Key{structure, "Every Sheet Represents:"},
                  Key{structure, "Output Columns"}, Key{structure, "Keys Columns"},
                  Key{structure, "Data Column"}));
  EXPECT_EQ(basSettings::DataColumn(), "Delta OD");
  ASSERT_THAT(platform.dialogs.texts, ElementsAre("Errors while deleting registry settings."));
  EXPECT_EQ(platform.dialogs.plain.at(0).icon, BoxIcon::kExclamation);
  EXPECT_EQ(platform.dialogs.plain.at(0).title, "KORVEX");
}

TEST(DeleteAllSettings, NeverFailsAndStaysSilentWhenAllAreGone) {
  TestPlatform platform;
  platform.settings.failure = error_number::kPermissionDenied;
  platform.dialogs.failure = error_number::kOutOfMemory;
  EXPECT_EQ(ErrorOf([] { basSettings::DeleteAllSettings(); }).Number(), 0);
  EXPECT_EQ(platform.dialogs.texts.size(), 1u);

  platform.settings.failure = 0;
  for (const auto& [section, key] : platform.settings.deletes)
    platform.settings.Save(section, key, "");
  basSettings::DeleteAllSettings();
  EXPECT_EQ(platform.dialogs.texts.size(), 1u);
}

}  // namespace
}  // namespace korvex
