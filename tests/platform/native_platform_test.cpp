// What every platform gives a program besides files and settings.
#include "platform/native_platform.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platform/ciphers.h"
#include "platform/desktop.h"
#include "platform/file_system.h"
#include "platform/standard_streams.h"
#include "tests/platform/temp_folder.h"
#include "tests/support/memory_file_system.h"

namespace korvex {
namespace {

// Puts a file in the place of a standard stream for its own lifetime.
class Redirected {
 public:
  Redirected(int stream, const std::string& path) : stream_(stream), former_(dup(stream)) {
    std::fflush(stdout);
    const int file = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    dup2(file, stream);
    close(file);
  }
  ~Redirected() {
    std::fflush(stdout);
    dup2(former_, stream_);
    close(former_);
  }

 private:
  int stream_;
  int former_;
};

TEST(NativePlatform, TellsFoldersTimeAndEnvironment) {
  static char variable[] = "KORVEX_TEST=plates";  // kept by the environment
  putenv(variable);
  const NativePlatform native;
  const Services services = native.Provided();
  EXPECT_TRUE(services.files->FolderExists(services.program_folder));
  for (const std::string& folder :
       {services.program_folder, services.user_folder, services.cache_folder}) {
    EXPECT_EQ(services.files->AbsolutePath(folder), folder) << "no separator at the end";
  }
  const std::time_t before = std::time(nullptr);
  std::tm now = services.clock->Now();
  now.tm_isdst = -1;
  EXPECT_NEAR(std::difftime(std::mktime(&now), before), 0, 5);
  EXPECT_EQ(services.shell->EnvironmentVariable("KORVEX_TEST"), "plates");
  EXPECT_EQ(services.shell->EnvironmentVariable("KORVEX_TEST_MISSING"), "");
}

TEST(NativePlatform, WritesOutputAndErrorsAsTheyAre) {
  const TempFolder folder;
  {
    const Redirected output(1, folder / "output");
    const Redirected errors(2, folder / "errors");
    OccupyStandardStreams();
    WriteOutput("\xC2\xB5\tx\n");
    FlushOutput();
    const auto terminal = OpenTerminal();
    EXPECT_FALSE(terminal->CanRedraw());
    EXPECT_EQ(terminal->Columns(), 80) << "unknown";
    terminal->WriteError("\xC2\xB5g\n");
  }
  EXPECT_EQ(Content(folder / "output"), "\xC2\xB5\tx\n");
  EXPECT_EQ(Content(folder / "errors"), "\xC2\xB5g\n");
}

TEST(NativePlatform, ReadsLinesToTheEndOfInput) {
  const TempFolder folder;
  const Redirected input(0, folder.Put("input", "first\nsecond \xC2\xB5\r\n\nlast"));
  const auto terminal = OpenTerminal();
  EXPECT_FALSE(terminal->CanAsk());
  for (const char* line : {"first", "second \xC2\xB5", "", "last"}) {
    EXPECT_EQ(terminal->ReadLine(), line);
  }
  EXPECT_EQ(terminal->ReadLine(), std::nullopt);
}

TEST(NativePlatform, DigestsFiles) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {std::string(1'000'000, 'a'),
       "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  MemoryFileSystem files(PathStyle::kLinux);
  for (const auto& [content, digest] : cases) {
    files.AddFile("/P1-1-1.xls", content);
    EXPECT_EQ(Sha256OfFile(files, "/P1-1-1.xls"), digest) << content.size();
  }
}

}  // namespace
}  // namespace korvex
