// What is particular to files of a POSIX system.
#include "platform/posix/posix_file_system.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <tuple>
#include <utility>

#include "platform/posix/ini_settings_store.h"
#include "tests/platform/temp_folder.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

mode_t Permissions(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & mode_t{07777} : mode_t{0};
}

void Write(ReplacementFile& file, std::string_view text) {
  file.Write(std::as_bytes(std::span(text)));
}

class PosixFileSystemTest : public testing::Test {
 protected:
  void Link(const char* target, const char* name) {
    ASSERT_EQ(symlink(target, (folder_ / name).c_str()), 0);
  }

  PosixFileSystem files_;
  TempFolder folder_;
};

TEST_F(PosixFileSystemTest, ReadsFilesWhoseSizeIsNotTold) {
  std::vector<std::byte> content;
  files_.ReadFile("/proc/self/status", content);
  EXPECT_GT(content.size(), 100u);
}

TEST_F(PosixFileSystemTest, RefusesWhatIsNoOrdinaryFileWithoutWaiting) {
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  Link("nowhere", "dead");
  Link("loop", "loop");
  std::vector<std::byte> content;
  const Error error = ErrorOf([&] { files_.ReadFile(folder_ / "pipe", content); });
  EXPECT_EQ(error.Number(), 75);
  EXPECT_THAT(error.Description(), HasSubstr("pipe: It is not an ordinary file."));
  EXPECT_EQ(ErrorOf([&] { files_.OpenForAppending(folder_ / "pipe"); }).Number(), 75);
  EXPECT_EQ(ErrorOf([&] { files_.OpenForAppending(folder_ / "dead"); }).Number(), 76);
  EXPECT_EQ(ErrorOf([&] { files_.Replace(folder_ / "loop"); }).Number(), 75);
  EXPECT_FALSE(files_.FileExists(folder_ / "nowhere"));
}

TEST_F(PosixFileSystemTest, TellsThatAFileIsInUseByAnotherProgram) {
  const std::string file = folder_.Put("out.xls", "x");
  for (const bool by_region : {false, true}) {
    const Descriptor other(open(file.c_str(), O_RDWR));
    struct flock region {};
    region.l_type = F_WRLCK;
    ASSERT_EQ(by_region ? fcntl(other.Get(), F_OFD_SETLK, &region) : flock(other.Get(), LOCK_EX),
              0);
    const Error error = ErrorOf([&] { files_.OpenForAppending(file); });
    EXPECT_EQ(error.Number(), 70);
    EXPECT_THAT(error.Description(), HasSubstr(file + ": The file is in use by another program"));
  }
  EXPECT_NO_THROW(files_.OpenForAppending(file)) << "once everybody let go";

  Link("out.xls", "link.xls");
  folder_.Put(".~lock.out.xls#", ",anna,lab1;");
  EXPECT_EQ(ErrorOf([&] { files_.OpenForAppending(folder_ / "link.xls"); }).Number(), 70);
}

TEST_F(PosixFileSystemTest, GivesTheUsersUsualPermissionsOrThoseOfTheFormerFile) {
  const mode_t former_mask = umask(027);
  files_.OpenForAppending(folder_ / "fresh.log");
  files_.Replace(folder_ / "fresh.xls")->Commit();
  chmod(folder_.Put("out.xls", "old").c_str(), 0604);
  files_.Replace(folder_ / "out.xls")->Commit();
  IniSettingsStore(files_, folder_ / "config/korvex.ini").Save("S", "k", "v");
  umask(former_mask);
  EXPECT_EQ(Permissions(folder_ / "fresh.log"), mode_t{0640});
  EXPECT_EQ(Permissions(folder_ / "fresh.xls"), mode_t{0640});
  EXPECT_EQ(Permissions(folder_ / "out.xls"), mode_t{0604});
  EXPECT_EQ(Permissions(folder_ / "config/korvex.ini"), mode_t{0600}) << "private to the user";
  EXPECT_EQ(Permissions(folder_ / "config"), mode_t{0700});
}

TEST_F(PosixFileSystemTest, FollowsLinks) {
  folder_.PutFolder("run1");
  const std::string file = folder_.Put("run1/out.xls", "old");
  Link("second", "first");
  Link("run1/out.xls", "second");
  Link("run1", "to_folder");
  Link("nowhere", "dead");
  using Entry = std::tuple<std::string, bool, bool>;
  std::vector<Entry> found;
  for (const FolderEntry& entry : files_.List(folder_.Path())) {
    found.emplace_back(entry.name, entry.is_folder, entry.is_link);
  }
  EXPECT_THAT(found,
              UnorderedElementsAre(Entry("run1", true, false), Entry("first", false, true),
                                   Entry("second", false, true), Entry("to_folder", true, true),
                                   Entry("dead", false, true)));
  EXPECT_TRUE(files_.IsSameFile(file, folder_ / "first"));
  files_.Replace(folder_ / "first")->Commit();
  EXPECT_EQ(Content(file), "");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "first"));
}

TEST_F(PosixFileSystemTest, LeavesTheFormerFileWhenWritingFails) {
  const std::string file = folder_.Put("out.xls", "old");
  signal(SIGXFSZ, SIG_IGN);
  rlimit former{};
  getrlimit(RLIMIT_FSIZE, &former);
  const rlimit limit{1000, former.rlim_max};
  {
    const auto replacement = files_.Replace(file);
    setrlimit(RLIMIT_FSIZE, &limit);
    const Error error = ErrorOf([&] { Write(*replacement, std::string(5000, 'x')); });
    setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_EQ(error.Number(), 75);
    EXPECT_THAT(error.Description(), AllOf(HasSubstr(file), HasSubstr("File too large")));
  }
  EXPECT_EQ(Content(file), "old");
  EXPECT_EQ(folder_.EntryCount(), 1u);
}

TEST_F(PosixFileSystemTest, LeavesNothingBehindWhenTheProgramIsKilled) {
  const Descriptor probe(open(folder_.Path().c_str(), O_TMPFILE | O_WRONLY, 0600));
  if (!probe.IsOpen()) GTEST_SKIP() << "the file system has no nameless files";
  const pid_t child = fork();
  if (child == 0) {
    const auto replacement = files_.Replace(folder_ / "out.xls");
    Write(*replacement, "half");
    raise(SIGKILL);
  }
  waitpid(child, nullptr, 0);
  EXPECT_EQ(folder_.EntryCount(), 0u);
}

TEST_F(PosixFileSystemTest, FinishesAReplacementBeforeTheProgramIsEnded) {
  const pid_t child = fork();
  if (child == 0) {
    auto file = files_.Replace(folder_ / "x.xls");
    raise(SIGTERM);
    Write(*file, "whole");
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
