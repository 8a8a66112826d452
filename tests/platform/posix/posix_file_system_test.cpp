// What is particular to files of a POSIX system.
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/posix/file_rights.h"
#include "platform/posix/posix_io.h"
#include "platform/posix/temporary_files.h"
#include "settings/ini_settings_store.h"
#include "tests/platform/file_system_fixture.h"

namespace korvex {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

mode_t Permissions(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & mode_t{07777} : mode_t{0};
}

class PosixFileSystemTest : public FileSystemFixture {
 protected:
  void Link(const char* target, const char* name) {
    ASSERT_EQ(symlink(target, (folder_ / name).c_str()), 0);
  }
};

TEST_F(PosixFileSystemTest, ReadsFilesWhoseSizeIsNotTold) {
  EXPECT_GT(Read("/proc/self/status").size(), 100u);
}

TEST_F(PosixFileSystemTest, RefusesWhatIsNoOrdinaryFileWithoutWaiting) {
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  Link("nowhere", "dead");
  Link("loop", "loop");
  const Error error = ErrorOf([&] { Read(folder_ / "pipe"); });
  EXPECT_EQ(error.Number(), 75);
  EXPECT_THAT(error.Description(), HasSubstr("pipe: It is not an ordinary file."));
  EXPECT_EQ(NumberOfAppending(folder_ / "pipe"), 75);
  EXPECT_EQ(NumberOfAppending(folder_ / "dead"), 76);
  EXPECT_THAT(ErrorOf([&] { files_.CheckWritable(folder_ / "dead"); }).Description(),
              HasSubstr("dead: It is a link to " + folder_ / "nowhere, which does not exist"));
  EXPECT_EQ(NumberOfReplacing(folder_ / "loop"), 75);
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
  EXPECT_EQ(NumberOfAppending(folder_ / "link.xls"), 70);
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

// Two runs with one output: what one has just saved must not be what the other has only tried.
TEST_F(PosixFileSystemTest, ChecksAnOutputWithoutTouchingItsName) {
  const Descriptor watch(inotify_init1(IN_NONBLOCK));
  inotify_add_watch(watch.Get(), folder_.Path().c_str(), IN_CREATE | IN_DELETE | IN_MODIFY);
  files_.CheckWritable(folder_ / "new.xls");
  EXPECT_EQ(ErrorOf([&] { files_.CheckWritable(folder_ / std::string(256, 'x')); }).Number(), 75);
  EXPECT_EQ(ErrorOf([&] { files_.CheckWritable(folder_.Path() + "/new/"); }).Number(), 75);
  std::array<char, 4096> buffer;
  const ssize_t size = read(watch.Get(), buffer.data(), buffer.size());
  const std::string events(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  EXPECT_THAT(events, testing::Not(HasSubstr("new.xls")));
}

TEST_F(PosixFileSystemTest, RefusesBeforehandWhatTheFolderWillNotLetHappen) {
  if (geteuid() != 0) GTEST_SKIP() << "only the administrator can make another user's files";
  constexpr uid_t kNobody = 65534;
  const std::pair<const char*, mode_t> folders[] = {{"shared", 01777}, {"closed", 0755}};
  for (const auto& [name, mode] : folders) {
    folder_.PutFolder(name);
    const std::string file = folder_.Put(name + std::string("/out.xls"), "old");
    chmod(file.c_str(), 0666);
    chmod((folder_ / name).c_str(), mode);
    ASSERT_EQ(seteuid(kNobody), 0);
    EXPECT_NO_THROW(files_.CheckWritable(file)) << "the file itself can be written";
    const Error error = ErrorOf([&] { files_.Replace(file); });
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(error.Number(), 70) << name;
    EXPECT_THAT(error.Description(), HasSubstr("in the folder " + folder_ / name));
    EXPECT_EQ(Content(file), "old");
  }
}

struct ListEntry {
  std::uint16_t kind;
  std::uint16_t permissions;
  std::uint32_t id;
};

// User 1000 may write, and so may the mask; the owning group may only read.
const ListEntry kListEntries[] = {
    {0x01, 6, ~0u}, {0x02, 6, 1000}, {0x04, 4, ~0u}, {0x10, 6, ~0u}, {0x20, 0, ~0u}};

std::string AccessList(std::span<const ListEntry> entries) {
  return std::string("\2\0\0\0", 4) +
         std::string(reinterpret_cast<const char*>(entries.data()), entries.size_bytes());
}

std::string Attribute(const std::string& path, const char* name) {
  std::array<char, 256> value;
  const ssize_t size = getxattr(path.c_str(), name, value.data(), value.size());
  return {value.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

TEST_F(PosixFileSystemTest, KeepsAccessListAndAttributesOfTheFormerFile) {
  constexpr char kList[] = "system.posix_acl_access";
  const std::string file = folder_.Put("out.xls", "old");
  const std::string list = AccessList(kListEntries);
  if (setxattr(file.c_str(), kList, list.data(), list.size(), 0) != 0 ||
      setxattr(file.c_str(), "user.note", "plate 7", 7, 0) != 0) {
    GTEST_SKIP() << "the file system has neither";
  }
  files_.Replace(file)->Commit();
  EXPECT_EQ(Attribute(file, kList), list);
  EXPECT_EQ(Attribute(file, "user.note"), "plate 7");

  // The folder's own list for new files is not for one that had none.
  const std::string plain = folder_.Put("plain.xls", "old");
  chmod(plain.c_str(), 0640);
  setxattr(folder_.Path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0);
  files_.Replace(plain)->Commit();
  EXPECT_EQ(Attribute(plain, kList), "");
  EXPECT_EQ(Permissions(plain), mode_t{0640});
}

// The group's bits in the mode of a file with a list are the mask, which is no permission.
TEST_F(PosixFileSystemTest, GrantsNoMoreWhereAListCannotBeKept) {
  const struct {
    std::vector<ListEntry> entries;
    mode_t mode;
  } cases[] = {
      {{std::begin(kListEntries), std::end(kListEntries)}, 0640},
      {{{1, 6, ~0u}, {2, 0, 1000}, {4, 6, ~0u}, {0x10, 6, ~0u}, {0x20, 4, ~0u}}, 0600},
      {{{1, 6, ~0u}, {4, 6, ~0u}, {8, 4, 1000}, {0x10, 6, ~0u}, {0x20, 4, ~0u}}, 0644},
      {{{1, 6, ~0u}, {2, 6, 1000}, {4, 6, ~0u}, {0x10, 4, ~0u}, {0x20, 0, ~0u}}, 0640},
  };
  const std::string file = folder_.Put("out.xls", "old");
  for (const auto& c : cases) {
    const std::string list = AccessList(c.entries);
    if (setxattr(file.c_str(), "system.posix_acl_access", list.data(), list.size(), 0) != 0) {
      GTEST_SKIP() << "the file system has no lists";
    }
    struct stat status {};
    stat(file.c_str(), &status);
    int ends[2];  // of a pipe, which has a mode, and no lists
    ASSERT_EQ(pipe(ends), 0);
    const Descriptor reader(ends[0]);
    const Descriptor writer(ends[1]);
    ASSERT_EQ(FileRights(file, status).GiveTo(writer.Get()), 0);
    fstat(writer.Get(), &status);
    EXPECT_EQ(status.st_mode & mode_t{07777}, c.mode);
  }
}

TEST_F(PosixFileSystemTest, RemovesWhatAKilledProgramHasLeftAndNothingElse) {
  const pid_t child = fork();
  if (child == 0) {
    const std::string path = folder_ / TemporaryName(".korvex-");
    const Descriptor file = OpenFile(path, O_CREAT | O_WRONLY, 0600);
    if (HoldTemporary(file.Get(), path)) raise(SIGKILL);
    _exit(1);
  }
  waitpid(child, nullptr, 0);
  ASSERT_EQ(folder_.EntryCount(), 1u);

  folder_.Put(".korvex-other-machine", "");
  const std::string held_path = folder_ / TemporaryName(".korvex-");
  const Descriptor held = OpenFile(held_path, O_CREAT | O_WRONLY, 0600);
  ASSERT_TRUE(HoldTemporary(held.Get(), held_path));
  files_.Replace(folder_ / "out.xls");
  EXPECT_EQ(folder_.EntryCount(), 2u);
  EXPECT_TRUE(files_.FileExists(held_path));
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
  EXPECT_TRUE(files_.IsOneOf(file, std::vector{folder_ / "first"}));
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
