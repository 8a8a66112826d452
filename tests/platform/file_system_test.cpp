// What every file system of a machine has to do.
#include "platform/file_system.h"

#include <tuple>
#include <utility>

#include "tests/platform/file_system_fixture.h"
#include "tests/support/memory_file_system.h"

namespace korvex {
namespace {

using testing::HasSubstr;
using testing::UnorderedElementsAre;

using FileSystemTest = FileSystemFixture;

TEST_F(FileSystemTest, ReadsWholeFiles) {
  const std::string large(300000, 'x');
  EXPECT_EQ(Read(folder_.Put("large.xls", large)), large);
  for (const std::size_t most : {0u, 7u, 300000u, 400000u}) {
    files_.ReadStart(folder_ / "large.xls", most, content_);
    EXPECT_EQ(content_.size(), std::min(most, large.size()));
  }
  EXPECT_EQ(Read(folder_.Put("Größe µ 漢字.xls", "abc")), "abc") << "the buffer is reused";
  EXPECT_EQ(Read(folder_.Put("empty.xls", "")), "");
}

TEST_F(FileSystemTest, RefusesToReadFoldersAndMissingFiles) {
  folder_.PutFolder("folder.xls");
  const std::tuple<const char*, int, const char*> cases[] = {
      {"missing.xls", 53, ": No such file"},
      {"missing/x.xls", 76, ": No such file"},
      {"folder.xls", 75, ": It is a folder."}};
  for (const auto& [name, number, cause] : cases) {
    const Error error = ErrorOf([&] { Read(folder_ / name); });
    EXPECT_EQ(error.Number(), number) << name;
    EXPECT_THAT(error.Description(), HasSubstr(folder_ / name + cause));
  }
}

TEST_F(FileSystemTest, RefusesToWriteFoldersAndProtectedFiles) {
  folder_.PutFolder("folder");
  folder_.PutProtected("protected", "x");
  for (const auto& [name, number] :
       {std::pair{"folder", 75}, {"protected", 70}, {"missing/x", 76}}) {
    const std::string path = folder_ / name;
    EXPECT_EQ(NumberOfAppending(path), number) << name;
    EXPECT_EQ(ErrorOf([&] { files_.CheckWritable(path); }).Number(), number) << name;
    EXPECT_EQ(NumberOfReplacing(path), number) << name;
  }
  EXPECT_EQ(folder_.EntryCount(), 2u);
}

TEST_F(FileSystemTest, AppendsTogetherWithOtherPrograms) {
  const std::string log = folder_ / "KORVEX.LOG";
  files_.OpenForAppending(log)->Write("old\r\n");
  const auto first = files_.OpenForAppending(log);
  const auto second = files_.OpenForAppending(log);
  first->Write("1\n");
  second->Write("2\n");
  first->Write("3\n");
  EXPECT_EQ(Content(log), "old\r\n1\n2\n3\n");
}

TEST_F(FileSystemTest, TreatsAnOfficeProgramsOwnerFileAsInUse) {
  const std::string file = folder_.Put("out.xls", "x");
  std::vector<std::string> names{".~lock.out.xls#"};
  if (files_.Separator() == '\\') names.push_back("~$out.xls");
  for (const std::string& name : names) {
    const std::string owner_file = folder_.Put(name, ",anna,lab1;");
    const Error error = ErrorOf([&] { files_.OpenForAppending(file); });
    EXPECT_EQ(error.Number(), 70);
    EXPECT_THAT(error.Description(), HasSubstr(owner_file));
    files_.DeleteFile(owner_file);
    EXPECT_NO_THROW(files_.OpenForAppending(file));
  }
}

TEST_F(FileSystemTest, ReplacesAFileOnlyOnCommit) {
  const std::string file = folder_.Put("out.xls", "old");
  for (const bool commit : {false, true}) {
    const auto replacement = files_.Replace(file);
    Write(*replacement, "new ");
    Write(*replacement, "content");
    EXPECT_EQ(Content(file), "old");
    if (commit) replacement->Commit();
  }
  EXPECT_EQ(Content(file), "new content");
  files_.Replace(folder_ / "fresh.xls")->Commit();
  EXPECT_EQ(folder_.EntryCount(), 2u);
}

TEST_F(FileSystemTest, NeverReplacesAFileThatIsCommittedAsNew) {
  const std::string file = folder_ / "out.xls";
  files_.CheckWritable(file);
  EXPECT_EQ(folder_.EntryCount(), 0u);
  for (const char* content : {"first", "second"}) {
    const auto replacement = files_.Replace(file);
    Write(*replacement, content);
    const Error error = ErrorOf([&] { replacement->CommitAsNew(); });
    EXPECT_EQ(error.Number(), *content == 'f' ? 0 : error_number::kFileExists);
  }
  EXPECT_EQ(Content(file), "first");
  EXPECT_EQ(folder_.EntryCount(), 1u);
}

TEST_F(FileSystemTest, KnowsAFileByAnyOfItsNames) {
  const std::string file = folder_.Put("x.xls", "x");
  const std::string other = folder_.Put("y.xls", "x");
  const std::string missing = folder_ / "no.xls";
  EXPECT_TRUE(files_.IsOneOf(file, std::vector{missing, other, folder_ / "./x.xls"}));
  EXPECT_FALSE(files_.IsOneOf(file, std::vector{missing, other}));
  EXPECT_FALSE(files_.IsOneOf(missing, std::vector{missing}));
  EXPECT_FALSE(files_.FileExists(file + files_.Separator()));
}

TEST_F(FileSystemTest, ListsWhatAFolderHolds) {
  folder_.PutFolder("run1");
  folder_.Put("µ.xls", "");
  std::vector<std::pair<std::string, bool>> found;
  for (const FolderEntry& entry : files_.List(folder_.Path())) {
    EXPECT_FALSE(entry.is_link || entry.is_hidden) << entry.name;
    found.emplace_back(entry.name, entry.is_folder);
  }
  EXPECT_THAT(found, UnorderedElementsAre(std::pair("run1", true), std::pair("µ.xls", false)));
  for (const char* name : {"missing", "µ.xls"}) {
    EXPECT_EQ(ErrorOf([&] { files_.List(folder_ / name); }).Number(), 76) << name;
  }
}

TEST_F(FileSystemTest, CreatesOneFolderLevelAndDeletesFiles) {
  files_.CreateFolder(folder_ / "a");
  EXPECT_NO_THROW(files_.CreateFolder(folder_ / "a"));
  EXPECT_EQ(ErrorOf([&] { files_.CreateFolder(folder_ / "b/c"); }).Number(), 76);
  const std::string file = folder_.Put("f", "");
  EXPECT_EQ(ErrorOf([&] { files_.CreateFolder(file); }).Number(), 75);
  files_.DeleteFile(file);
  EXPECT_EQ(ErrorOf([&] { files_.DeleteFile(file); }).Number(), 53);
}

TEST_F(FileSystemTest, OffersFoldersToStartFrom) {
  for (const std::string& drive : files_.Drives()) {
    const int number = ErrorOf([&] { files_.List(drive); }).Number();
    EXPECT_TRUE(number == 0 || number == 68 || number == 70) << drive << number;
  }
  EXPECT_TRUE(files_.FolderExists(files_.DefaultFolder()));
}

TEST_F(FileSystemTest, CompletesPathsFromTheCurrentFolder) {
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(PathOf(folder_.Path()));
  EXPECT_EQ(files_.AbsolutePath("run1/x.xls"), folder_ / "run1/x.xls");
  EXPECT_EQ(files_.AbsolutePath("./a/../x"), folder_ / "x");
  EXPECT_EQ(files_.AbsolutePath(""), folder_.Path());
  std::filesystem::current_path(former);
}

// Path, drive, absolute path.
using PathRule = std::tuple<const char*, const char*, const char*>;

void ExpectRules(const FileSystem& files) {
  static constexpr PathRule kLinuxRules[] = {{"/a/./b/../c/", "", "/a/c"},
                                             {"/../..", "", "/"},
                                             {"//a//b", "", "/a/b"},
                                             {"/a/..b", "", "/a/..b"}};
  static constexpr PathRule kWindowsRules[] = {
      {"C:\\a\\.\\b\\..\\c\\", "C:", "C:\\a\\c"},
      {"C:\\..\\..", "C:", "C:\\"},
      {"C:\\\\a\\\\b", "C:", "C:\\a\\b"},
      {"D:/plates/run1", "D:", "D:\\plates\\run1"},
      {"\\\\lab\\plates\\..\\x.xls", "\\\\lab\\plates", "\\\\lab\\plates\\x.xls"},
      {"\\\\lab\\plates", "\\\\lab\\plates", "\\\\lab\\plates\\"},
      {"C:\\a\\..b", "C:", "C:\\a\\..b"},
      {"C:\\Größe µ\\x", "C:", "C:\\Größe µ\\x"}};
  const bool is_linux = files.Separator() == '/';
  for (const auto& [path, drive, absolute] :
       is_linux ? std::span<const PathRule>(kLinuxRules) : kWindowsRules) {
    EXPECT_EQ(files.DriveName(path), drive) << path;
    EXPECT_EQ(files.AbsolutePath(path), absolute) << path;
  }
}

TEST_F(FileSystemTest, AgreesOnPathsWithTheFileSystemInMemory) {
  ExpectRules(files_);
  ExpectRules(MemoryFileSystem(PathStyle::kLinux));
  ExpectRules(MemoryFileSystem(PathStyle::kWindows));
}

}  // namespace
}  // namespace korvex
