#include "platform/posix/posix_file_system.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <utility>

#include "tests/platform/posix/temp_folder.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

std::span<const std::byte> Bytes(std::string_view text) {
  return std::as_bytes(std::span(text));
}

// Another program that takes a lock of one kind on a file and keeps it until the end of the test.
class LockHolder {
 public:
  LockHolder(const std::string& path, const std::function<int(int)>& lock) {
    int ready[2];
    if (pipe(ready) != 0) return;
    child_ = fork();
    if (child_ == 0) {
      const int file = open(path.c_str(), O_RDWR);
      const char done = lock(file) == 0 ? 'y' : 'n';
      if (write(ready[1], &done, 1) == 1) pause();
      _exit(0);
    }
    char done = 'n';
    locked_ = read(ready[0], &done, 1) == 1 && done == 'y';
    close(ready[0]);
    close(ready[1]);
  }
  ~LockHolder() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  bool Locked() const { return locked_; }

 private:
  pid_t child_ = -1;
  bool locked_ = false;
};

// Makes writing fail beyond a file size, as a full disk does.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit{bytes, former_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &former_); }

 private:
  rlimit former_{};
};

class PosixFileSystemTest : public testing::Test {
 protected:
  std::string Read(const std::string& path) {
    files_.ReadFile(path, content_);
    return {reinterpret_cast<const char*>(content_.data()), content_.size()};
  }

  PosixFileSystem files_;
  TempFolder folder_;
  std::vector<std::byte> content_;
};

TEST_F(PosixFileSystemTest, ReadsWholeFilesWhateverTheirSizeSays) {
  const std::string large(300000, 'x');
  EXPECT_EQ(Read(folder_.Put("large.xls", large)), large);
  EXPECT_EQ(Read(folder_.Put("small.xls", "abc")), "abc") << "the buffer is reused";
  EXPECT_EQ(Read(folder_.Put("empty.xls", "")), "");
  EXPECT_THAT(Read("/proc/self/status"), HasSubstr("Pid:")) << "stat tells size 0";
}

TEST_F(PosixFileSystemTest, RefusesToReadWhatIsNoFileWithoutWaiting) {
  files_.CreateFolder(folder_ / "folder.xls");
  ASSERT_EQ(mkfifo((folder_ / "pipe.xls").c_str(), 0600), 0);
  const struct {
    const char* path;
    int number;
    const char* says;
  } cases[] = {
      {"missing.xls", 53, "missing.xls: No such file"},
      {"missing/x.xls", 76, "missing/x.xls: No such file"},
      {"folder.xls", 75, "folder.xls: It is a folder."},
      {"pipe.xls", 75, "pipe.xls: It is not an ordinary file."},
  };
  for (const auto& c : cases) {
    const Error error = ErrorOf([&] { Read(folder_ / c.path); });
    EXPECT_EQ(error.Number(), c.number) << c.path;
    EXPECT_THAT(error.Description(), HasSubstr(c.says));
  }
}

TEST_F(PosixFileSystemTest, AppendsToOldAndNewFiles) {
  const std::string log = folder_.Put("KORVEX.LOG", "old\r\n");
  files_.OpenForAppending(log)->Write("new");
  EXPECT_EQ(Content(log), "old\r\nnew");

  const mode_t former_mask = umask(027);
  files_.OpenForAppending(folder_ / "fresh.log");
  umask(former_mask);
  EXPECT_EQ(Permissions(folder_ / "fresh.log"), mode_t{0640});
}

TEST_F(PosixFileSystemTest, RefusesToAppendToWhatIsNotForWriting) {
  folder_.Put("protected", "", 0444);
  files_.CreateFolder(folder_ / "folder");
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  ASSERT_EQ(symlink("nowhere", (folder_ / "dead").c_str()), 0);
  const std::pair<const char*, int> cases[] = {
      {"folder", 75}, {"pipe", 75}, {"dead", 76}, {"protected", 70}, {"missing/x", 76}};
  for (const auto& [name, number] : cases) {
    EXPECT_EQ(ErrorOf([&] { files_.OpenForAppending(folder_ / name); }).Number(), number) << name;
  }
  EXPECT_FALSE(files_.FileExists(folder_ / "nowhere"));
}

TEST_F(PosixFileSystemTest, TellsThatAFileIsInUseByAnotherProgram) {
  const std::string file = folder_.Put("out.xls", "x");
  const std::function<int(int)> locks[] = {
      [](int fd) { return flock(fd, LOCK_EX); },
      [](int fd) {
        struct flock region {};
        region.l_type = F_WRLCK;
        return fcntl(fd, F_SETLK, &region);
      },
      [](int fd) {
        struct flock region {};
        region.l_type = F_WRLCK;
        return fcntl(fd, F_OFD_SETLK, &region);
      },
  };
  for (const auto& lock : locks) {
    const LockHolder holder(file, lock);
    ASSERT_TRUE(holder.Locked());
    const Error error = ErrorOf([&] { files_.OpenForAppending(file); });
    EXPECT_EQ(error.Number(), 70);
    EXPECT_THAT(error.Description(), HasSubstr(file + ": The file is in use by another program"));
  }
  EXPECT_NO_THROW(files_.OpenForAppending(file)) << "once everybody let go";
}

TEST_F(PosixFileSystemTest, TakesAnOfficeProgramsOwnerFileForUse) {
  const std::string file = folder_.Put("out.xls", "x");
  ASSERT_EQ(symlink("out.xls", (folder_ / "link.xls").c_str()), 0);
  const std::string owner_file = folder_.Put(".~lock.out.xls#", ",anna,lab1;");
  for (const std::string& path : {file, folder_ / "link.xls"}) {
    const Error error = ErrorOf([&] { files_.OpenForAppending(path); });
    EXPECT_EQ(error.Number(), 70);
    EXPECT_THAT(error.Description(), HasSubstr(owner_file));
  }
}

TEST_F(PosixFileSystemTest, ReplacesAFileOnlyOnCommit) {
  const std::string file = folder_.Put("out.xls", "old", 0604);
  {
    const auto abandoned = files_.Replace(file);
    abandoned->Write(Bytes("half"));
    EXPECT_EQ(Content(file), "old");
  }
  EXPECT_EQ(Content(file), "old");

  const auto replacement = files_.Replace(file);
  replacement->Write(Bytes("new "));
  replacement->Write(Bytes("content"));
  replacement->Commit();
  EXPECT_EQ(Content(file), "new content");
  EXPECT_EQ(Permissions(file), mode_t{0604});
  EXPECT_EQ(folder_.EntryCount(), 1u);
}

TEST_F(PosixFileSystemTest, GivesANewFileTheUsersUsualPermissions) {
  const mode_t former_mask = umask(027);
  files_.Replace(folder_ / "out.xls")->Commit();
  umask(former_mask);
  EXPECT_EQ(Permissions(folder_ / "out.xls"), mode_t{0640});
}

TEST_F(PosixFileSystemTest, ReplacesTheFileThatALinkLeadsTo) {
  files_.CreateFolder(folder_ / "real");
  folder_.Put("real/out.xls", "old");
  ASSERT_EQ(symlink("second", (folder_ / "first").c_str()), 0);
  ASSERT_EQ(symlink("real/out.xls", (folder_ / "second").c_str()), 0);
  const auto replacement = files_.Replace(folder_ / "first");
  replacement->Write(Bytes("new"));
  replacement->Commit();
  EXPECT_EQ(Content(folder_ / "real/out.xls"), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "first"));
}

TEST_F(PosixFileSystemTest, RefusesToReplaceWhatItMustNot) {
  files_.CreateFolder(folder_ / "folder");
  folder_.Put("protected.xls", "x", 0444);
  ASSERT_EQ(symlink("loop", (folder_ / "loop").c_str()), 0);
  const std::pair<const char*, int> cases[] = {
      {"folder", 75}, {"protected.xls", 70}, {"loop", 75}, {"missing/x.xls", 76}};
  for (const auto& [name, number] : cases) {
    EXPECT_EQ(ErrorOf([&] { files_.Replace(folder_ / name); }).Number(), number) << name;
  }
}

TEST_F(PosixFileSystemTest, LeavesTheFormerFileWhenWritingFails) {
  const std::string file = folder_.Put("out.xls", "old");
  {
    const auto replacement = files_.Replace(file);
    const FileSizeLimit limit(1000);
    const Error error = ErrorOf([&] { replacement->Write(Bytes(std::string(5000, 'x'))); });
    EXPECT_EQ(error.Number(), 75);
    EXPECT_THAT(error.Description(), AllOf(HasSubstr(file), HasSubstr("File too large")));
  }
  EXPECT_EQ(Content(file), "old");
  EXPECT_EQ(folder_.EntryCount(), 1u);
}

TEST_F(PosixFileSystemTest, LeavesNothingBehindWhenTheProgramIsKilled) {
  const std::string file = folder_.Put("out.xls", "old");
  const pid_t child = fork();
  if (child == 0) {
    const auto replacement = files_.Replace(file);
    replacement->Write(Bytes("half"));
    raise(SIGKILL);
  }
  waitpid(child, nullptr, 0);
  const int probe = open(folder_.Path().c_str(), O_TMPFILE | O_WRONLY, 0600);
  if (probe < 0) GTEST_SKIP() << "the file system has no nameless files";
  close(probe);
  EXPECT_EQ(folder_.EntryCount(), 1u);
}

TEST_F(PosixFileSystemTest, FinishesAReplacementBeforeTheProgramIsEnded) {
  const pid_t child = fork();
  if (child == 0) {
    auto file = files_.Replace(folder_ / "x.xls");
    raise(SIGTERM);
    file->Write(Bytes("whole"));
    file->Commit();
    file.reset();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
  EXPECT_EQ(Content(folder_ / "x.xls"), "whole");
  EXPECT_EQ(folder_.EntryCount(), 1u);
}

TEST_F(PosixFileSystemTest, KnowsAFileByAnyOfItsNames) {
  const std::string file = folder_.Put("x.xls", "x");
  const std::string other = folder_.Put("y.xls", "x");
  ASSERT_EQ(symlink("x.xls", (folder_ / "link.xls").c_str()), 0);
  EXPECT_TRUE(files_.IsSameFile(file, folder_ / "./link.xls"));
  EXPECT_FALSE(files_.IsSameFile(file, other));
  EXPECT_FALSE(files_.IsSameFile(folder_ / "no.xls", folder_ / "no.xls"));
}

TEST_F(PosixFileSystemTest, ListsLinksAsWhatTheyLeadTo) {
  files_.CreateFolder(folder_ / "run1");
  folder_.Put("a.xls", "");
  const std::pair<const char*, const char*> links[] = {
      {"run1", "to_folder"}, {"a.xls", "to_file"}, {"nowhere", "dead"}};
  for (const auto& [target, name] : links) ASSERT_EQ(symlink(target, (folder_ / name).c_str()), 0);
  using Entry = std::tuple<std::string, bool, bool>;
  std::vector<Entry> found;
  for (const FolderEntry& entry : files_.List(folder_.Path())) {
    found.emplace_back(entry.name, entry.is_folder, entry.is_link);
  }
  EXPECT_THAT(found,
              UnorderedElementsAre(Entry("run1", true, false), Entry("a.xls", false, false),
                                   Entry("to_folder", true, true), Entry("to_file", false, true),
                                   Entry("dead", false, true)));
  EXPECT_EQ(ErrorOf([&] { files_.List(folder_ / "missing"); }).Number(), 76);
  EXPECT_EQ(ErrorOf([&] { files_.List(folder_ / "a.xls"); }).Number(), 76);
}

TEST_F(PosixFileSystemTest, MakesPathsAbsoluteWithoutLookingAtTheDisk) {
  const std::filesystem::path here = std::filesystem::current_path();
  const std::pair<const char*, std::string> cases[] = {
      {"/a/./b/../c/", "/a/c"},
      {"/../..", "/"},
      {"//a//b", "/a/b"},
      {"", here.string()},
      {"x/y.xls", (here / "x/y.xls").string()},
      {"./x", (here / "x").string()},
      {"/a/..b", "/a/..b"},
  };
  for (const auto& [path, absolute] : cases) EXPECT_EQ(files_.AbsolutePath(path), absolute) << path;
}

TEST_F(PosixFileSystemTest, CreatesOneFolderLevelAndDeletesFiles) {
  files_.CreateFolder(folder_ / "a");
  EXPECT_NO_THROW(files_.CreateFolder(folder_ / "a"));
  EXPECT_EQ(ErrorOf([&] { files_.CreateFolder(folder_ / "b/c"); }).Number(), 76);
  folder_.Put("f", "");
  EXPECT_EQ(ErrorOf([&] { files_.CreateFolder(folder_ / "f"); }).Number(), 75);
  files_.DeleteFile(folder_ / "f");
  EXPECT_EQ(ErrorOf([&] { files_.DeleteFile(folder_ / "f"); }).Number(), 53);
}

TEST_F(PosixFileSystemTest, StartsInTheHomeFolder) {
  const char* former = getenv("HOME");
  const std::string home = former ? former : "";
  setenv("HOME", "/home/anna/", 1);
  EXPECT_EQ(files_.DefaultFolder(), "/home/anna");
  unsetenv("HOME");
  EXPECT_TRUE(files_.DefaultFolder().starts_with('/'));
  if (former) setenv("HOME", home.c_str(), 1);
}

}  // namespace
}  // namespace korvex
