// What is particular to files of Windows.
#include "platform/windows/windows_file_system.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <thread>
#include <tuple>
#include <utility>

#include "platform/windows/replacement_file.h"
#include "platform/windows/temporary_files.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_handle.h"
#include "platform/windows/windows_path.h"
#include "tests/platform/file_system_fixture.h"

#include <sddl.h>  // after windows.h

namespace korvex {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

// Another program that has a file open and shares it like this.
Handle Holder(const std::string& path, DWORD share, DWORD access = GENERIC_READ) {
  return Handle(
      CreateFileW(ToWide(path).c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr));
}

using WindowsFileSystemTest = FileSystemFixture;

TEST_F(WindowsFileSystemTest, KnowsDrivesSharesAndVerbatimPaths) {
  const std::pair<const char*, const char*> drives[] = {
      {"c:", "c:"}, {"\\\\lab", ""}, {"\\x", ""}, {"x\\y.xls", ""}, {"", ""}};
  for (const auto& [path, drive] : drives) EXPECT_EQ(files_.DriveName(path), drive) << path;
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(PathOf(folder_.Path()));
  const std::string drive = files_.DriveName(folder_.Path());
  const std::pair<std::string, std::string> paths[] = {
      {"C:", "C:\\"},
      {drive + "x.xls", folder_ / "x.xls"},
      {"\\x", drive + "\\x"},
      {"//lab/plates/a", "\\\\lab\\plates\\a"},
      {"\\\\?\\C:\\a", "C:\\a"},
      {"\\\\.\\C:\\a", "C:\\a"},
      {"\\\\?\\Volume{1}\\a", "\\\\?\\Volume{1}\\a"},
      {"\\\\?\\unc\\lab\\plates\\a", "\\\\lab\\plates\\a"}};
  for (const auto& [path, whole] : paths) EXPECT_EQ(files_.AbsolutePath(path), whole) << path;
  std::filesystem::current_path(former);
  EXPECT_THAT(files_.Drives(), Contains(drive + "\\"));
  EXPECT_TRUE(files_.FolderExists("C:")) << "the root";
}

TEST_F(WindowsFileSystemTest, ReachesEveryFileWhateverItsName) {
  std::string deep = folder_.Path();
  for (const char letter : {'a', 'b', 'c', 'd', 'e'}) {
    deep += "\\" + std::string(60, letter);
    files_.CreateFolder(deep);
  }
  for (const char* name : {"x.xls", "Größe µ 漢字 🔬.xls", "run1.", "blank "}) {
    const std::string file = deep + "\\" + name;
    // As programs of other systems leave them.
    Handle(
        CreateFileW(SystemPath(file).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    Save(file, "new");
    files_.OpenForAppending(file)->Write("er");
    EXPECT_EQ(Read(file), "newer") << name;
    EXPECT_TRUE(files_.FileExists(file) && files_.IsOneOf(file, std::vector{deep + "/.\\" + name}))
        << name;
    EXPECT_THAT(Names(deep), Contains(name));
    files_.DeleteFile(file);
  }
  EXPECT_THAT(Names(deep), IsEmpty());
  for (; deep != folder_.Path(); deep.erase(deep.rfind('\\'))) {
    RemoveDirectoryW(SystemPath(deep).c_str());
  }
}

TEST_F(WindowsFileSystemTest, RefusesNamesThatNoFileHas) {
  const std::tuple<std::string, int, const char*> cases[] = {
      {folder_ / "a?b.xls", 75, "a?b.xls: Invalid file name."},
      {"NUL", 75, "NUL: It is not an ordinary file."},
      {"", 76, "Cannot read : No such file"}};
  for (const auto& [path, number, says] : cases) {
    const Error error = ErrorOf([&] { Read(path); });
    EXPECT_EQ(error.Number(), number) << path;
    EXPECT_THAT(error.Description(), HasSubstr(says));
  }
  for (const char* name : {"NUL", "x.xls.", "x ", "x:y.xls"}) {
    const std::string file = folder_.Path() + "\\" + name;
    EXPECT_EQ(NumberOfReplacing(file), 75) << name;
    EXPECT_EQ(NumberOfAppending(file), 75) << name;
  }
}

TEST_F(WindowsFileSystemTest, SharesAFileWithAnotherProgramAsFarAsThatAllows) {
  const std::string file = folder_.Put("x.xls", "old");
  {
    const Handle writer = Holder(file, FILE_SHARE_READ, GENERIC_WRITE);
    EXPECT_EQ(Read(file), "old");
    EXPECT_EQ(NumberOfAppending(file), 70);
    EXPECT_EQ(NumberOfReplacing(file), 70);
  }
  {
    WindowsReplacementFile replacement(file, WindowsReplacementFile::Keep::kAttributes,
                                       std::chrono::milliseconds(50));
    Write(replacement, "new");
    const Handle reader = Holder(file, FILE_SHARE_READ);  // opened meanwhile
    EXPECT_EQ(ErrorOf([&] { replacement.Commit(); }).Number(), 70);
  }
  EXPECT_EQ(Content(file), "old");
  EXPECT_EQ(folder_.EntryCount(), 1u);
  {
    const auto replacement = files_.Replace(file);
    Write(*replacement, "new");
    // A scanner that takes its time.
    std::thread scanner([held = Holder(file, FILE_SHARE_READ)] {
      std::this_thread::sleep_for(std::chrono::milliseconds(700));
    });
    EXPECT_EQ(ErrorOf([&] { replacement->Commit(); }).Number(), 0);
    scanner.join();
  }
  EXPECT_EQ(Content(file), "new");
  const Handle owner = Holder(file, 0);
  EXPECT_EQ(ErrorOf([&] { Read(file); }).Description(),
            "Cannot read " + file + ": The file is in use by another program.");
}

// Run by the test below, in a process of its own.
TEST(WindowsReplacementFile, DISABLED_IsKilledWhileItWrites) {
  wchar_t path[MAX_PATH];
  GetEnvironmentVariableW(L"KORVEX_TEST_FILE", path, MAX_PATH);
  const auto replacement = WindowsFileSystem().Replace(FromWide(path));
  replacement->Write(std::as_bytes(std::span("half")));
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

// One file of a program that was killed between two steps, and one of a program that still runs.
TEST_F(WindowsFileSystemTest, RemovesLeftoversThatNobodyOwns) {
  std::wstring left;
  {
    const TemporaryName name(L".korvex-");
    left = name.Text();
  }
  folder_.Put(FromWide(left), "half");
  const TemporaryName owned(L".korvex-");
  folder_.Put(FromWide(owned.Text()), "mine");
  files_.CheckWritable(folder_ / "out.xls");
  EXPECT_THAT(Names(folder_.Path()), testing::ElementsAre(FromWide(owned.Text())));
}

// In the notation of security descriptors, without the owner.
std::wstring AccessListOf(const std::wstring& file) {
  std::array<std::byte, 4096> descriptor;
  DWORD size = 0;
  LPWSTR text = nullptr;
  if (!GetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(),
                        static_cast<DWORD>(descriptor.size()), &size) ||
      !ConvertSecurityDescriptorToStringSecurityDescriptorW(
          descriptor.data(), SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr)) {
    return L"?";
  }
  const std::wstring list = text;
  LocalFree(text);
  return list;
}

TEST_F(WindowsFileSystemTest, KeepsTheAccessListOfTheFormerFile) {
  const std::wstring file = ToWide(folder_.Put("out.xls", "old"));
  PSECURITY_DESCRIPTOR wanted = nullptr;
  // A protected list takes nothing from the folder.
  ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
      L"D:P(A;;FA;;;BA)(A;;FR;;;WD)", SDDL_REVISION_1, &wanted, nullptr));
  SetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                   wanted);
  LocalFree(wanted);
  const std::wstring former = AccessListOf(file);
  Save(FromWide(file), "new");
  EXPECT_EQ(AccessListOf(file), former);
  EXPECT_EQ(Content(FromWide(file)), "new");
}

TEST_F(WindowsFileSystemTest, TellsHiddenFilesAndIgnoresLetterCase) {
  const std::string file = folder_.Put("b.xls", "");
  SetFileAttributesW(ToWide(file).c_str(), FILE_ATTRIBUTE_HIDDEN);
  EXPECT_TRUE(files_.List(folder_.Path() + "/").at(0).is_hidden);
  EXPECT_TRUE(files_.IsOneOf(file, std::vector{folder_ / "B.XLS"}));
}

}  // namespace
}  // namespace korvex
