#include "platform/posix/ini_settings_store.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>

#include "tests/platform/posix/temp_folder.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

class IniSettingsStoreTest : public testing::Test {
 protected:
  PosixFileSystem files_;
  TempFolder folder_;
  std::string path_ = folder_ / "korvex.ini";
  IniSettingsStore store_{files_, path_};
};

TEST_F(IniSettingsStoreTest, HoldsNothingWithoutAFile) {
  EXPECT_FALSE(store_.Get("Main Section", "Output File"));
  EXPECT_EQ(ErrorOf([&] { store_.Delete("Main Section", "Output File"); }).Number(), 5);
  EXPECT_FALSE(files_.FileExists(path_)) << "reading creates nothing";
}

TEST_F(IniSettingsStoreTest, BringsBackAnyText) {
  const std::string values[] = {
      "",      "plain",           " blanks ",   "\t",        "a=b;c#d",           ";x", "[x]",
      "\"q\"", "line\r\nbreak\n", "100 % %41 ", "ünï µg/mL", "C:\\new\\x%41.xls", "\"", "a<-- -->b",
      "\xFF"};
  const std::string names[] = {"Every Sheet Represents:", "a=b", "[x", ";c", " blank ", "µ]", ""};
  std::vector<std::array<std::string, 3>> saved;
  for (const std::string& value : values) saved.push_back({"S", "key " + value, value});
  for (const std::string& name : names) saved.push_back({name, name, "value of " + name});
  for (const auto& [section, key, value] : saved) store_.Save(section, key, value);
  IniSettingsStore other(files_, path_);
  for (const auto& [section, key, value] : saved) EXPECT_EQ(other.Get(section, key), value) << key;
}

TEST_F(IniSettingsStoreTest, WritesWhatAUserCanEdit) {
  store_.Save("Main Section", "Output File", "all.xls");
  store_.Save("File Structure", "Every Sheet Represents:", "x");
  store_.Save("Main Section", "Output Path", "/data/runs/");
  EXPECT_EQ(Content(path_),
            "[Main Section]\nOutput File=all.xls\nOutput Path=/data/runs/\n"
            "\n[File Structure]\nEvery Sheet Represents:=x\n");
}

TEST_F(IniSettingsStoreTest, KeepsWhatAUserWrote) {
  folder_.Put("korvex.ini",
              "\xEF\xBB\xBF; mine\r\n[MAIN section]\r\n  output FILE = \"C:\\new\\a.xls\"  \r\n"
              "nonsense\r\n\r\n# next\r\n[Other]\r\nOutput File=2");
  EXPECT_EQ(store_.Get("Main Section", "Output File"), "C:\\new\\a.xls");
  EXPECT_EQ(store_.Get("Other", "Output File"), "2");
  store_.Save("Main Section", "Output File", "b.xls");
  store_.Save("Main Section", "Last Path", "/x");
  store_.Save("other", "New", "n");
  store_.Delete("OTHER", "output file");
  EXPECT_EQ(Content(path_),
            "\xEF\xBB\xBF; mine\r\n[MAIN section]\r\nOutput File=b.xls\r\nLast Path=/x\r\n"
            "nonsense\r\n\r\n# next\r\n[Other]\r\nNew=n\r\n");
}

TEST_F(IniSettingsStoreTest, SeesEveryChangeOfTheFile) {
  for (const char* value : {"a", "b", "c"}) {
    folder_.Put("korvex.ini", std::string("[S]\nk=") + value + "\n");  // same file, same size
    EXPECT_EQ(store_.Get("S", "k"), value);
  }
  IniSettingsStore other(files_, path_);
  other.Save("S", "k", "d");
  EXPECT_EQ(store_.Get("S", "k"), "d");
  files_.DeleteFile(path_);
  EXPECT_FALSE(store_.Get("S", "k"));
}

TEST_F(IniSettingsStoreTest, DeletesEveryLineOfAName) {
  folder_.Put("korvex.ini", "[S]\nk=1\nK=2\n[s]\nk=3\nother=4\n");
  EXPECT_EQ(store_.Get("s", "k"), "1");
  store_.Delete("S", "k");
  EXPECT_FALSE(store_.Get("s", "k"));
  EXPECT_EQ(ErrorOf([&] { store_.Delete("S", "k"); }).Number(), 5);
  EXPECT_EQ(store_.Get("S", "other"), "4");
}

TEST_F(IniSettingsStoreTest, KeepsSettingsPrivateToTheUser) {
  IniSettingsStore deep(files_, folder_ / "config/korvex/korvex.ini");
  deep.Save("S", "k", "v");
  EXPECT_EQ(Permissions(folder_ / "config/korvex/korvex.ini"), mode_t{0600});
  EXPECT_EQ(Permissions(folder_ / "config/korvex"), mode_t{0700});
}

TEST_F(IniSettingsStoreTest, LosesNothingWhenProgramsSaveAtOnce) {
  constexpr int kPrograms = 4;
  constexpr int kSaves = 10;
  for (int program = 0; program < kPrograms; ++program) {
    if (fork() != 0) continue;
    for (int i = 0; i < kSaves; ++i) {
      store_.Save("Section " + std::to_string(program), "key " + std::to_string(i), "x");
    }
    _exit(0);
  }
  for (int program = 0; program < kPrograms; ++program) wait(nullptr);
  for (int program = 0; program < kPrograms; ++program) {
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
  IniSettingsStore read_only(files_, folder_.Put("protected.ini", "[S]\nk=1\n", 0444));
  EXPECT_EQ(ErrorOf([&] { read_only.Save("S", "k", "v"); }).Number(), 70);
  EXPECT_EQ(read_only.Get("S", "k"), "1") << "what was not stored does not count";
}

}  // namespace
}  // namespace korvex
