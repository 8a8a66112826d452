#include "platform/native_platform.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/desktop.h"
#include "platform/file_system.h"

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

}  // namespace
}  // namespace korvex
