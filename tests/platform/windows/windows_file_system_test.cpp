#include "platform/windows/windows_file_system.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

#include "platform/windows/windows_handle.h"
#include "tests/platform/windows/temp_folder.h"
#include "tests/support/errors.h"
#include "tests/support/memory_file_system.h"

namespace korvex {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

std::span<const std::byte> Bytes(std::string_view text) {
  return std::as_bytes(std::span(text));
}

// Another program that has a file open and shares it like this.
Handle Holder(const std::string& path, DWORD share) {
  return Handle(
      CreateFileW(ToWide(path).c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
}

class WindowsFileSystemTest : public testing::Test {
 protected:
  std::string Read(const std::string& path) {
    files_.ReadFile(path, content_);
    return {reinterpret_cast<const char*>(content_.data()), content_.size()};
  }
  void Save(const std::string& path, std::string_view content) {
    const auto file = files_.Replace(path);
    file->Write(Bytes(content));
    file->Commit();
  }
  void Protect(const std::string& path) {
    SetFileAttributesW(ToWide(path).c_str(), FILE_ATTRIBUTE_READONLY);
  }
  std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const FolderEntry& entry : files_.List(folder)) names.push_back(entry.name);
    return names;
  }

  WindowsFileSystem files_;
  TempFolder folder_;
  std::vector<std::byte> content_;
};

TEST_F(WindowsFileSystemTest, KnowsThePathRulesThatTestsPlayElsewhere) {
  const MemoryFileSystem memory(PathStyle::kWindows);
  const FileSystem* const systems[] = {&files_, &memory};
  const std::pair<const char*, const char*> drives[] = {
      {"C:\\x", "C:"},  {"c:", "c:"}, {"\\\\lab\\plates\\run1", "\\\\lab\\plates"},
      {"\\\\lab", ""},  {"\\x", ""},  {"\\\\lab\\plates", "\\\\lab\\plates"},
      {"x\\y.xls", ""}, {"", ""},
  };
  const std::pair<const char*, const char*> absolute[] = {
      {"C:\\a\\.\\b\\..\\c\\", "C:\\a\\c"},
      {"C:\\..\\..", "C:\\"},
      {"C:", "C:\\"},
      {"C:\\\\a\\\\b", "C:\\a\\b"},
      {"D:/plates/run1", "D:\\plates\\run1"},
      {"\\\\lab\\plates\\..\\x.xls", "\\\\lab\\plates\\x.xls"},
      {"\\\\lab\\plates", "\\\\lab\\plates\\"},
      {"//lab/plates/a", "\\\\lab\\plates\\a"},
      {"C:\\a\\..b", "C:\\a\\..b"},
      {"C:\\Größe µ\\x", "C:\\Größe µ\\x"},
  };
  for (const FileSystem* files : systems) {
    for (const auto& [path, drive] : drives) EXPECT_EQ(files->DriveName(path), drive) << path;
    for (const auto& [path, whole] : absolute) EXPECT_EQ(files->AbsolutePath(path), whole) << path;
  }
}

TEST_F(WindowsFileSystemTest, CompletesPathsFromTheCurrentFolder) {
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(ToWide(folder_.Path()));
  const std::string drive = files_.DriveName(folder_.Path());
  EXPECT_EQ(files_.AbsolutePath("run1/x.xls"), folder_ / "run1\\x.xls");
  EXPECT_EQ(files_.AbsolutePath(""), folder_.Path());
  EXPECT_EQ(files_.AbsolutePath(drive + "x.xls"), folder_ / "x.xls");
  EXPECT_EQ(files_.AbsolutePath("\\x"), drive + "\\x");
  EXPECT_EQ(files_.AbsolutePath("\\\\?\\C:\\a"), "C:\\a");
  EXPECT_EQ(files_.AbsolutePath("\\\\?\\UNC\\lab\\plates\\a"), "\\\\lab\\plates\\a");
  std::filesystem::current_path(former);
}

TEST_F(WindowsFileSystemTest, ReachesEveryFileWhateverItsName) {
  std::string deep = folder_.Path();
  for (int level = 0; level < 8; ++level) {
    deep += "\\" + std::string(60, static_cast<char>('a' + level));
    files_.CreateFolder(deep);
  }
  const std::string names[] = {"x.xls", "Größe µ 漢字 \xF0\x9F\x94\xAC.xls", "run1.", "blank "};
  for (const std::string& name : names) {
    const std::string file = deep + "\\" + name;
    Save(file, "old");
    Save(file, "new");
    files_.OpenForAppending(file)->Write("er");
    EXPECT_EQ(Read(file), "newer") << name;
    EXPECT_TRUE(files_.FileExists(file) && files_.IsSameFile(file, deep + "/.\\" + name)) << name;
    EXPECT_THAT(Names(deep), Contains(name));
    files_.DeleteFile(file);
  }
  EXPECT_THAT(Names(deep), UnorderedElementsAre());
}

TEST_F(WindowsFileSystemTest, RefusesToReadWhatIsNoFile) {
  files_.CreateFolder(folder_ / "folder.xls");
  const struct {
    std::string path;
    int number;
    const char* says;
  } cases[] = {
      {folder_ / "missing.xls", 53, "missing.xls: No such file or directory."},
      {folder_ / "missing\\x.xls", 76, "missing\\x.xls: No such file or directory."},
      {folder_ / "folder.xls", 75, "folder.xls: It is a folder."},
      {folder_ / "a?b.xls", 75, "a?b.xls: Invalid file name."},
      {"NUL", 75, "NUL: It is not an ordinary file."},
      {"", 76, "Cannot read : No such file"},
  };
  for (const auto& c : cases) {
    const Error error = ErrorOf([&] { Read(c.path); });
    EXPECT_EQ(error.Number(), c.number) << c.path;
    EXPECT_THAT(error.Description(), HasSubstr(c.says));
  }
}

TEST_F(WindowsFileSystemTest, ReadsWhatOtherProgramsHaveOpen) {
  const std::string large(300000, 'x');
  const std::string file = folder_.Put("x.xls", large);
  {
    const Handle writer(CreateFileW(ToWide(file).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(Read(file), large);
  }
  const Handle owner = Holder(file, 0);
  const Error error = ErrorOf([&] { Read(file); });
  EXPECT_EQ(error.Number(), 70);
  EXPECT_EQ(error.Description(),
            "Cannot read " + file + ": The file is in use by another program.");
}

TEST_F(WindowsFileSystemTest, RefusesToWriteWhatIsNotForWriting) {
  Protect(folder_.Put("protected.xls", "x"));
  files_.CreateFolder(folder_ / "folder");
  const std::string open = folder_.Put("open.xls", "x");
  const Handle reader = Holder(open, FILE_SHARE_READ);
  const std::pair<std::string, int> cases[] = {{folder_ / "folder", 75},
                                               {folder_ / "protected.xls", 70},
                                               {open, 70},
                                               {folder_ / "missing\\x.xls", 76},
                                               {"NUL", 75}};
  for (const auto& [path, number] : cases) {
    EXPECT_EQ(ErrorOf([&] { files_.OpenForAppending(path); }).Number(), number) << path;
    EXPECT_EQ(ErrorOf([&] { files_.Replace(path); }).Number(), number) << path;
  }
  EXPECT_EQ(folder_.EntryCount(), 3u);
}

TEST_F(WindowsFileSystemTest, TakesAnOfficeProgramsOwnerFileForUse) {
  const std::string file = folder_.Put("out.xls", "x");
  for (const char* name : {"~$out.xls", ".~lock.out.xls#"}) {
    const std::string owner_file = folder_.Put(name, "anna");
    const Error error = ErrorOf([&] { files_.OpenForAppending(file); });
    EXPECT_EQ(error.Number(), 70);
    EXPECT_THAT(error.Description(), HasSubstr(owner_file));
    files_.DeleteFile(owner_file);
  }
  EXPECT_NO_THROW(files_.OpenForAppending(file));
}

TEST_F(WindowsFileSystemTest, AppendsTogetherWithOtherPrograms) {
  const std::string log = folder_.Put("KORVEX.LOG", "old\r\n");
  const auto first = files_.OpenForAppending(log);
  const auto second = files_.OpenForAppending(log);
  first->Write("1\n");
  second->Write("2\n");
  first->Write("3\n");
  EXPECT_EQ(Content(log), "old\r\n1\n2\n3\n");
}

TEST_F(WindowsFileSystemTest, ReplacesAFileOnlyOnCommit) {
  const std::string file = folder_.Put("out.xls", "old");
  {
    const auto abandoned = files_.Replace(file);
    abandoned->Write(Bytes("half"));
    EXPECT_EQ(Content(file), "old");
  }
  EXPECT_EQ(Content(file), "old");
  Save(file, "new content");
  EXPECT_EQ(Content(file), "new content");
  Save(folder_ / "fresh.xls", "new");
  EXPECT_EQ(Content(folder_ / "fresh.xls"), "new");
  EXPECT_EQ(folder_.EntryCount(), 2u);
}

TEST_F(WindowsFileSystemTest, KeepsTheFormerFileThatIsOpenedMeanwhile) {
  const std::string file = folder_.Put("out.xls", "old");
  {
    const auto replacement = files_.Replace(file);
    replacement->Write(Bytes("new"));
    const Handle reader = Holder(file, FILE_SHARE_READ);
    EXPECT_EQ(ErrorOf([&] { replacement->Commit(); }).Number(), 70);
  }
  EXPECT_EQ(Content(file), "old");
  EXPECT_EQ(folder_.EntryCount(), 1u);
}

// Run by the test below, in a process of its own.
TEST(WindowsReplacementFile, DISABLED_IsKilledWhileItWrites) {
  WindowsFileSystem files;
  wchar_t path[MAX_PATH];
  GetEnvironmentVariableW(L"KORVEX_TEST_FILE", path, MAX_PATH);
  const auto replacement = files.Replace(FromWide(path));
  replacement->Write(Bytes("half"));
  TerminateProcess(GetCurrentProcess(), 3);
}

TEST_F(WindowsFileSystemTest, LeavesNothingBehindWhenTheProgramIsKilled) {
  const std::string file = folder_.Put("out.xls", "old");
  SetEnvironmentVariableW(L"KORVEX_TEST_FILE", ToWide(file).c_str());
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  wchar_t command[] =
      L"test --gtest_also_run_disabled_tests --gtest_filter=*.DISABLED_IsKilledWhileItWrites";
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  ASSERT_TRUE(CreateProcessW(program, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                             &process));
  const Handle thread(process.hThread);
  const Handle child(process.hProcess);
  WaitForSingleObject(child.Get(), INFINITE);
  DWORD status = 0;
  GetExitCodeProcess(child.Get(), &status);
  EXPECT_EQ(status, 3u);
  EXPECT_EQ(Content(file), "old");
  EXPECT_EQ(folder_.EntryCount(), 1u);
}

TEST_F(WindowsFileSystemTest, ListsWhatAFolderHolds) {
  files_.CreateFolder(folder_ / "run1");
  folder_.Put("a.xls", "");
  SetFileAttributesW(ToWide(folder_.Put("b.xls", "")).c_str(), FILE_ATTRIBUTE_HIDDEN);
  using Entry = std::tuple<std::string, bool, bool, bool>;
  std::vector<Entry> found;
  for (const auto& [name, is_folder, is_link, is_hidden] : files_.List(folder_.Path() + "/")) {
    found.emplace_back(name, is_folder, is_link, is_hidden);
  }
  EXPECT_THAT(found, UnorderedElementsAre(Entry("run1", true, false, false),
                                          Entry("a.xls", false, false, false),
                                          Entry("b.xls", false, false, true)));
  EXPECT_THAT(Names(folder_ / "run1"), UnorderedElementsAre());
  for (const char* name : {"missing", "a.xls", "missing\\x"}) {
    EXPECT_EQ(ErrorOf([&] { files_.List(folder_ / name); }).Number(), 76) << name;
  }
}

TEST_F(WindowsFileSystemTest, FollowsLinks) {
  files_.CreateFolder(folder_ / "run1");
  const std::string file = folder_.Put("run1\\x.xls", "old");
  const std::tuple<const char*, const char*, DWORD> links[] = {
      {"run1", "to_folder", SYMBOLIC_LINK_FLAG_DIRECTORY},
      {"run1\\x.xls", "to_file", 0},
      {"nowhere", "dead", SYMBOLIC_LINK_FLAG_DIRECTORY}};
  for (const auto& [target, name, flags] : links) {
    const std::wstring link = ToWide(folder_ / name);
    if (!CreateSymbolicLinkW(link.c_str(), ToWide(target).c_str(), flags) ||
        GetFileAttributesW(link.c_str()) == INVALID_FILE_ATTRIBUTES) {
      GTEST_SKIP() << "links need a right that the user has not; Wine makes none";
    }
  }
  std::set<std::string> folders;
  for (const FolderEntry& entry : files_.List(folder_.Path())) {
    EXPECT_EQ(entry.is_link, entry.name != "run1") << entry.name;
    if (entry.is_folder) folders.insert(entry.name);
  }
  EXPECT_EQ(folders, (std::set<std::string>{"run1", "to_folder"}));
  EXPECT_TRUE(files_.IsSameFile(file, folder_ / "to_folder\\x.xls"));
  EXPECT_FALSE(files_.FolderExists(folder_ / "dead"));
  Save(folder_ / "to_file", "new");
  EXPECT_EQ(Content(file), "new");
}

TEST_F(WindowsFileSystemTest, KnowsAFileByAnyOfItsNames) {
  const std::string file = folder_.Put("x.xls", "x");
  const std::string other = folder_.Put("y.xls", "x");
  EXPECT_TRUE(files_.IsSameFile(file, folder_ / "./X.XLS"));
  EXPECT_FALSE(files_.IsSameFile(file, other));
  EXPECT_FALSE(files_.IsSameFile(folder_ / "no.xls", folder_ / "no.xls"));
  EXPECT_FALSE(files_.FileExists(file + "\\"));
}

TEST_F(WindowsFileSystemTest, CreatesOneFolderLevelAndDeletesFiles) {
  files_.CreateFolder(folder_ / "a");
  EXPECT_NO_THROW(files_.CreateFolder(folder_ / "a\\"));
  EXPECT_EQ(ErrorOf([&] { files_.CreateFolder(folder_ / "b\\c"); }).Number(), 76);
  folder_.Put("f", "");
  EXPECT_EQ(ErrorOf([&] { files_.CreateFolder(folder_ / "f"); }).Number(), 75);
  files_.DeleteFile(folder_ / "f");
  EXPECT_EQ(ErrorOf([&] { files_.DeleteFile(folder_ / "f"); }).Number(), 53);
}

TEST_F(WindowsFileSystemTest, OffersTheRootOfEveryDrive) {
  const std::vector<std::string> drives = files_.Drives();
  EXPECT_THAT(drives, Contains(files_.DriveName(folder_.Path()) + "\\"));
  for (const std::string& drive : drives) {
    const int number = ErrorOf([&] { files_.List(drive); }).Number();
    EXPECT_TRUE(number == 0 || number == 68) << drive << number;
  }
  EXPECT_TRUE(files_.FolderExists("C:")) << "the root";
}

}  // namespace
}  // namespace korvex
