#include <gmock/gmock.h>

#include <array>
#include <thread>

#include "platform/windows/ini_settings_store.h"
#include "platform/windows/registry_settings_store.h"
#include "platform/windows/windows_handle.h"
#include "tests/platform/windows/temp_folder.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

class RegistrySettingsStoreTest : public testing::Test {
 protected:
  ~RegistrySettingsStoreTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, ToWide(key_).c_str()); }

  std::string key_ = "Software\\KORVEX tests\\" + std::to_string(GetCurrentProcessId());
  RegistrySettingsStore store_{key_};
};

TEST_F(RegistrySettingsStoreTest, TellsAMissingSettingFromAnEmptyOne) {
  EXPECT_EQ(store_.Get("Main Section", "Output File"), std::nullopt) << "no section";
  store_.Save("Main Section", "Last Path", "");
  EXPECT_EQ(store_.Get("Main Section", "Output File"), std::nullopt);
  EXPECT_EQ(store_.Get("Main Section", "Last Path"), "");
}

TEST_F(RegistrySettingsStoreTest, BringsBackAnyText) {
  const std::string values[] = {"plain",         " blanks ",
                                "line\r\nbreak", "ünï µg/mL \xF0\x9F\x94\xAC",
                                "%PATH%",        std::string(5000, 'x')};
  for (const std::string& value : values) {
    store_.Save("File Structure", "Every Sheet Represents:", value);
    EXPECT_EQ(RegistrySettingsStore(key_).Get("FILE structure", "every sheet represents:"), value);
  }
}

TEST_F(RegistrySettingsStoreTest, DeletesASettingOnce) {
  EXPECT_EQ(ErrorOf([&] { store_.Delete("S", "k"); }).Number(), 5) << "no section";
  store_.Save("S", "k", "v");
  store_.Save("S", "other", "o");
  store_.Delete("s", "K");
  EXPECT_EQ(store_.Get("S", "k"), std::nullopt);
  EXPECT_EQ(store_.Get("S", "other"), "o");
  EXPECT_THAT(ErrorOf([&] { store_.Delete("S", "k"); }).Description(),
              testing::HasSubstr("There is no setting \"k\" in HKEY_CURRENT_USER\\"));
}

TEST_F(RegistrySettingsStoreTest, RefusesWhatIsNoText) {
  const DWORD number = 7;
  RegSetKeyValueW(HKEY_CURRENT_USER, ToWide(key_ + "\\S").c_str(), L"k", REG_DWORD, &number,
                  sizeof number);
  EXPECT_EQ(ErrorOf([&] { store_.Get("S", "k"); }).Number(), 75);
}

class IniSettingsStoreTest : public testing::Test {
 protected:
  WindowsFileSystem files_;
  TempFolder folder_;
  std::string path_ = folder_ / "korvex.ini";
  IniSettingsStore store_{files_, path_};
};

TEST_F(IniSettingsStoreTest, HoldsNothingWithoutAFile) {
  for (const std::string& path : {path_, folder_ / "missing\\korvex.ini"}) {
    IniSettingsStore store(files_, path);
    EXPECT_EQ(store.Get("Main Section", "Output File"), std::nullopt);
    EXPECT_EQ(ErrorOf([&] { store.Delete("Main Section", "Output File"); }).Number(), 5);
  }
  EXPECT_EQ(folder_.EntryCount(), 0u) << "reading creates nothing";
}

TEST_F(IniSettingsStoreTest, SharesAFileWithOtherPrograms) {
  IniSettingsStore other(files_, folder_ / "./KORVEX.INI");
  store_.Save("S", "k", "1");
  EXPECT_EQ(other.Get("S", "k"), "1");
  folder_.Put("korvex.ini", "; mine\r\n[S]\r\nk=2\r\n");
  EXPECT_EQ(store_.Get("s", "K"), "2");
  other.Save("S", "k", "3");
  store_.Save("S", "Output", "C:\\new\\µ.xls");
  EXPECT_EQ(Content(path_), "; mine\r\n[S]\r\nk=3\r\nOutput=C:\\new\\µ.xls\r\n");
  other.Delete("S", "k");
  EXPECT_EQ(ErrorOf([&] { store_.Delete("S", "k"); }).Number(), 5);
  EXPECT_EQ(folder_.EntryCount(), 1u) << "no lock is left";
}

TEST_F(IniSettingsStoreTest, CreatesTheFoldersOfItsFile) {
  IniSettingsStore deep(files_, folder_ / "config\\lab 1\\korvex.ini");
  deep.Save("S", "k", "v");
  EXPECT_EQ(Content(folder_ / "config\\lab 1\\korvex.ini"), "[S]\nk=v\n");
}

TEST_F(IniSettingsStoreTest, LosesNothingWhenProgramsSaveAtOnce) {
  constexpr int kSaves = 10;
  std::array<std::thread, 4> programs;
  for (std::size_t program = 0; program < programs.size(); ++program) {
    programs[program] = std::thread([this, program] {
      WindowsFileSystem files;
      IniSettingsStore store(files, path_);
      for (int i = 0; i < kSaves; ++i) {
        const Error error = ErrorOf([&] {
          store.Save("Section " + std::to_string(program), "key " + std::to_string(i), "x");
          store.Get("Section 0", "key 0");
        });
        EXPECT_EQ(error.Number(), 0) << error.Description();
      }
    });
  }
  for (std::thread& program : programs) program.join();
  for (std::size_t program = 0; program < programs.size(); ++program) {
    for (int i = 0; i < kSaves; ++i) {
      EXPECT_TRUE(store_.Get("Section " + std::to_string(program), "key " + std::to_string(i)))
          << program << " " << i;
    }
  }
}

TEST_F(IniSettingsStoreTest, RaisesTheFileSystemsErrors) {
  files_.CreateFolder(path_);
  EXPECT_EQ(ErrorOf([&] { store_.Get("S", "k"); }).Number(), 75);
  EXPECT_EQ(ErrorOf([&] { store_.Save("S", "k", "v"); }).Number(), 75);
  const std::string file = folder_.Put("protected.ini", "[S]\nk=1\n");
  SetFileAttributesW(ToWide(file).c_str(), FILE_ATTRIBUTE_READONLY);
  IniSettingsStore read_only(files_, file);
  EXPECT_EQ(ErrorOf([&] { read_only.Save("S", "k", "v"); }).Number(), 70);
  EXPECT_EQ(read_only.Get("S", "k"), "1");
}

}  // namespace
}  // namespace korvex
