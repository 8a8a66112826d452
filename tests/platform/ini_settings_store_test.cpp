// The settings file that a program is given.
#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "platform/file_system.h"
#include "platform/native_platform.h"
#include "tests/platform/settings_store_contract.h"
#include "tests/platform/temp_folder.h"

namespace korvex {
namespace {

class IniSettingsStoreTest : public testing::Test {
 protected:
  TempFolder folder_;
  std::string path_ = folder_ / "korvex.ini";
  NativePlatform native_{path_};
  SettingsStore& store_ = *native_.Provided().settings;
};

TEST_F(IniSettingsStoreTest, IsASettingsStore) {
  EXPECT_EQ(store_.Get("S", "k"), std::nullopt);
  EXPECT_EQ(folder_.EntryCount(), 0u) << "reading creates nothing";
  const NativePlatform other(path_);
  ExpectSettingsStore(store_, *other.Provided().settings);
  EXPECT_EQ(folder_.EntryCount(), 1u) << "no lock is left";
}

TEST_F(IniSettingsStoreTest, KeepsNamesThatLookLikeSomethingElse) {
  const std::string names[] = {"Every Sheet Represents:", "a=b", "[x", ";c", " blank ", "µ]", ""};
  for (const std::string& name : names) store_.Save(name, name, "value of " + name);
  for (const std::string& name : names) EXPECT_EQ(store_.Get(name, name), "value of " + name);
}

TEST_F(IniSettingsStoreTest, WritesWhatAUserCanEdit) {
  const NativePlatform deep(folder_ / "config/lab 1/korvex.ini");
  SettingsStore& store = *deep.Provided().settings;
  store.Save("Main Section", "Output File", "all.xls");
  store.Save("File Structure", "Every Sheet Represents:", "x");
  store.Save("Main Section", "Output Path", "/data/runs/");
  EXPECT_EQ(Content(folder_ / "config/lab 1/korvex.ini"),
            "[Main Section]\nOutput File=all.xls\nOutput Path=/data/runs/\n"
            "\n[File Structure]\nEvery Sheet Represents:=x\n");
}

TEST_F(IniSettingsStoreTest, KeepsWhatAUserWrote) {
  folder_.Put("korvex.ini",
              "\xEF\xBB\xBF; mine\r\n[MAIN section]\r\n  output FILE = \"C:\\new\\a.xls\"  \r\n"
              "nonsense\r\n\r\n# next\r\n[Other]\r\nOutput File=2\r\nOUTPUT file=3");
  EXPECT_EQ(store_.Get("Main Section", "Output File"), "C:\\new\\a.xls");
  EXPECT_EQ(store_.Get("Other", "Output File"), "2");
  store_.Save("Main Section", "Output File", "b.xls");
  store_.Save("Main Section", "Last Path", "/x");
  store_.Save("other", "New", "n");
  store_.Delete("OTHER", "output file");  // both of them
  EXPECT_EQ(Content(path_),
            "\xEF\xBB\xBF; mine\r\n[MAIN section]\r\nOutput File=b.xls\r\nLast Path=/x\r\n"
            "nonsense\r\n\r\n# next\r\n[Other]\r\nNew=n\r\n");
}

TEST_F(IniSettingsStoreTest, SeesEveryChangeOfTheFile) {
  for (const char* value : {"a", "b", "c"}) {
    folder_.Put("korvex.ini", std::string("[S]\nk=") + value + "\n");  // same file, same size
    EXPECT_EQ(store_.Get("S", "k"), value);
  }
  std::filesystem::remove(PathOf(path_));
  EXPECT_FALSE(store_.Get("S", "k"));
}

TEST_F(IniSettingsStoreTest, LosesNothingWhenProgramsSaveAtOnce) {
  const auto key = [](int i) { return "key " + std::to_string(i); };
  std::array<std::thread, 4> programs;
  for (std::size_t number = 0; number < programs.size(); ++number) {
    programs[number] = std::thread([&, section = std::to_string(number)] {
      const NativePlatform program(path_);
      for (int i = 0; i < 10; ++i) {
        const Error error =
            ErrorOf([&] { program.Provided().settings->Save(section, key(i), "x"); });
        EXPECT_EQ(error.Number(), 0) << error.Description();
      }
    });
  }
  for (std::thread& program : programs) program.join();
  for (std::size_t number = 0; number < programs.size(); ++number) {
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(store_.Get(std::to_string(number), key(i))) << i;
  }
}

TEST_F(IniSettingsStoreTest, RaisesTheFileSystemsErrors) {
  folder_.PutFolder("korvex.ini");
  EXPECT_EQ(ErrorOf([&] { store_.Get("S", "k"); }).Number(), 75);
  EXPECT_EQ(ErrorOf([&] { store_.Save("S", "k", "v"); }).Number(), 75);
  const NativePlatform read_only(folder_.PutProtected("protected.ini", "[S]\nk=1\n"));
  SettingsStore& store = *read_only.Provided().settings;
  EXPECT_EQ(ErrorOf([&] { store.Save("S", "k", "v"); }).Number(), 70);
  EXPECT_EQ(store.Get("S", "k"), "1") << "what was not stored does not count";
}

}  // namespace
}  // namespace korvex
