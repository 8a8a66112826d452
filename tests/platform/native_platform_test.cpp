#include "platform/native_platform.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/ciphers.h"
#include "platform/desktop.h"
#include "tests/support/memory_file_system.h"

namespace korvex {
namespace {

TEST(NativePlatform, NamesFoldersWithoutATrailingSeparator) {
  const NativePlatform native;
  const Services services = native.Provided();
  EXPECT_TRUE(services.files->FolderExists(services.program_folder));
  EXPECT_EQ(services.files->AbsolutePath(services.program_folder), services.program_folder);
  EXPECT_EQ(services.files->AbsolutePath(services.user_folder), services.user_folder);
}

TEST(NativePlatform, TellsTheLocalTime) {
  const NativePlatform native;
  const std::time_t before = std::time(nullptr);
  std::tm now = native.Provided().clock->Now();
  now.tm_isdst = -1;
  EXPECT_NEAR(std::difftime(std::mktime(&now), before), 0, 5);
}

TEST(NativePlatform, ReadsVariablesOfTheEnvironment) {
  static char variable[] = "KORVEX_TEST=plates";  // kept by the environment
  putenv(variable);
  const NativePlatform native;
  EXPECT_EQ(native.Provided().shell->EnvironmentVariable("KORVEX_TEST"), "plates");
  EXPECT_EQ(native.Provided().shell->EnvironmentVariable("KORVEX_TEST_MISSING"), "");
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
