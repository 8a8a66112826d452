#include "platform/native_platform.h"

#include <gmock/gmock.h>

#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/settings_store.h"
#include "platform/windows/windows_api.h"
#include "tests/platform/windows/temp_folder.h"

namespace korvex {
namespace {

TEST(NativePlatform, KeepsSettingsInTheFileThatItIsGiven) {
  const TempFolder folder;
  const NativePlatform native(folder / "korvex.ini");
  native.Provided().settings->Save("S", "k", "v");
  EXPECT_EQ(Content(folder / "korvex.ini"), "[S]\nk=v\n");
}

TEST(NativePlatform, NamesTheFoldersOfProgramAndUser) {
  SetEnvironmentVariableW(L"LOCALAPPDATA", L"C:\\users\\Größe\\AppData");
  const NativePlatform native;
  const Services services = native.Provided();
  EXPECT_EQ(services.user_folder,
            "C:\\users\\Gr\xC3\xB6\xC3\x9F"
            "e\\AppData\\KORVEX");
  SetEnvironmentVariableW(L"LOCALAPPDATA", nullptr);
  EXPECT_THAT(native.Provided().user_folder, testing::EndsWith("\\KORVEX"));
  EXPECT_TRUE(services.files->FolderExists(services.program_folder));
  EXPECT_FALSE(services.program_folder.ends_with('\\'));
}

TEST(NativePlatform, TellsTheLocalTime) {
  const NativePlatform native;
  const std::tm now = native.Provided().clock->Now();
  std::tm copy = now;
  EXPECT_NE(mktime(&copy), -1);
  EXPECT_EQ(copy.tm_wday, now.tm_wday) << "year, month and day belong together";
}

}  // namespace
}  // namespace korvex
