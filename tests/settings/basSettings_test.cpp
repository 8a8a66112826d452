#include "settings/basSettings.h"

#include <gmock/gmock.h>

#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Settings, ReadTheirDefaultsOnAFreshAccount) {
  TestPlatform platform(PathStyle::kWindows);
  EXPECT_EQ(basSettings::LastPathAtStart(), "C:\\");
  EXPECT_EQ(basSettings::OutputFullName(), "");
  EXPECT_TRUE(basSettings::LaunchOutputFile());
  EXPECT_TRUE(basSettings::AutoReplaceOutputFiles());
  EXPECT_TRUE(basSettings::ProcessingSubFolders());
  EXPECT_THAT(basSettings::KeysColumns(), IsEmpty());
  basSettings::SetLastPath("");
  EXPECT_EQ(basSettings::LastPathAtStart(), "") << "stored, though empty";
}

// Other programs, and earlier releases, find every value where it always was.
TEST(Settings, LieUnderTheirSectionsAndKeysUntilAllAreDeleted) {
  TestPlatform platform(PathStyle::kWindows);
  basSettings::SetLastPath("D:\\r");
  basSettings::SetOutputFile("a.xls");
  basSettings::WriteOutputPath("C:\\Out");
  basSettings::SetLaunchOutputFile(true);
  basSettings::SetErrorEmailAddress("a@b");
  basSettings::SetSendEmailOnError(false);
  basSettings::SetOutputFileMethod("m");
  basSettings::SetAutoReplaceOutputFiles(true);
  basSettings::SetEverySheetRepresents("x");
  basSettings::SetOutputColumns({"Plate", "Well", "Compound ID"});
  basSettings::SetKeysColumns({});
  basSettings::SetDataColumn("OD");
  EXPECT_THAT(basSettings::OutputColumns(), ElementsAre("Plate", "Well", "Compound ID"));
  EXPECT_TRUE(basSettings::ProcessingFiles());

  using Key = std::pair<std::string, std::string>;
  const std::string main = "MAIN SECTION";
  const std::string structure = "FILE STRUCTURE";
  const std::map<Key, std::string> expected = {
      {{main, "LAST PATH"}, "D:\\r"},
      {{main, "OUTPUT FILE"}, "a.xls"},
      {{main, "OUTPUT PATH"}, "C:\\Out\\"},
      {{main, "LAUNCH OUTPUT FILE"}, "-1"},
      {{main, "ERROR EMAIL ADDRESS"}, "a@b"},
      {{main, "SEND EMAIL ON ERROR"}, "0"},
      {{main, "OUTPUT FILE METHOD"}, "m"},
      {{main, "AUTO-REPLACE OUTPUT FILES"}, "-1"},
      {{structure, "EVERY SHEET REPRESENTS:"}, "x"},
      {{structure, "OUTPUT COLUMNS"}, "Plate<-- -->Well<-- -->Compound ID"},
      {{structure, "KEYS COLUMNS"}, ""},
      {{structure, "DATA COLUMN"}, "OD"}};
  EXPECT_EQ(platform.settings.values, expected);

  const auto delete_all = [&] {
    platform.dialogs.texts.clear();
    EXPECT_EQ(ErrorOf([] { basSettings::DeleteAllSettings(); }).Number(), 0);
    return platform.dialogs.texts;
  };
  const auto complaint = ElementsAre("Errors while deleting registry settings.");
  EXPECT_THAT(delete_all(), complaint) << "two of old releases were not there";
  EXPECT_THAT(platform.settings.values, IsEmpty());
  platform.settings.values = expected;
  platform.settings.values[{main, "OUTPUT FILE BY FOLDER"}] = "";
  platform.settings.values[{main, "OUTPUT FILE BY CONSTANT NAME"}] = "";
  EXPECT_THAT(delete_all(), IsEmpty());

  platform.settings.failure = error_number::kPermissionDenied;
  platform.dialogs.failure = error_number::kOutOfMemory;
  EXPECT_THAT(delete_all(), complaint);
  EXPECT_EQ(ErrorOf([] { basSettings::DataColumn(); }).Number(), error_number::kPermissionDenied);
}

TEST(Settings, ReadFlagsAsNumbers) {
  TestPlatform platform;
  const auto flag = [&](const char* stored) {
    platform.settings.Save("Main Section", "Send Email on Error", stored);
    return basSettings::SendEmailOnError();
  };
  for (const char* on : {"-1", " 2 "}) EXPECT_TRUE(flag(on)) << on;
  for (const char* off : {"0", "0.5"}) EXPECT_FALSE(flag(off)) << off;  // rounds to the even 0
  for (const auto& [stored, number] : {std::pair{"", error_number::kTypeMismatch},
                                       {"yes", error_number::kTypeMismatch},
                                       {"70000", error_number::kOverflow}}) {
    const Error error = ErrorOf([&, text = stored] { flag(text); });
    EXPECT_EQ(error.Number(), number) << stored;
    EXPECT_THAT(error.Description(), HasSubstr("\"Send Email on Error\""));
  }
}

TEST(Settings, FormTheOutputNameByTheMethodChosen) {
  TestPlatform platform(PathStyle::kWindows);
  platform.main_window.processing_folder = "D:\\Runs\\Day1";
  basSettings::WriteOutputFullName("C:\\Out\\all.xls");
  EXPECT_EQ(basSettings::OutputFullName(), "C:\\Out\\all.xls");
  basSettings::SetOutputFileMethod(basSettings::kByFolder);
  EXPECT_EQ(basSettings::OutputFullName(), "D:\\Runs\\Day1\\all.xls");
  basSettings::SetOutputFileMethod("output file by folder");
  EXPECT_EQ(basSettings::OutputFullName(), "");
}

}  // namespace
}  // namespace korvex
