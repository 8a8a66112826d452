#include "files/folder_paths.h"

#include <gmock/gmock.h>

#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(FolderPaths, FindTheNearestMountPointAboveAFolder) {
  const TestPlatform platform(PathStyle::kLinux);
  const std::vector<std::string> drives{"/", "/data", "/data/screens"};
  EXPECT_EQ(DriveOf("/data/screens/run1", drives), "/data/screens");
  EXPECT_EQ(DriveOf("/data/screens", drives), "/data/screens");
  EXPECT_EQ(DriveOf("/data/screens2", drives), "/data");
  EXPECT_EQ(DriveOf("/DATA", drives), "/");
}

TEST(FolderPaths, TakeTheShareOfANetworkFolderForItsDrive) {
  const TestPlatform platform(PathStyle::kWindows);
  EXPECT_EQ(DriveOf("c:\\plates", {"A:\\", "C:\\"}), "C:\\");
  EXPECT_EQ(DriveOf("\\\\lab\\plates\\run1", {"C:\\"}), "\\\\lab\\plates");
}

TEST(FolderPaths, NameTheWayDown) {
  const TestPlatform platform(PathStyle::kWindows);
  EXPECT_THAT(NamesBelow("C:\\", "c:\\plates\\run1"), ElementsAre("plates", "run1"));
  EXPECT_THAT(NamesBelow("\\\\lab\\plates", "\\\\lab\\plates\\run1"), ElementsAre("run1"));
  EXPECT_THAT(NamesBelow("C:\\plates", "C:\\plates2"), IsEmpty());
}

TEST(FolderPaths, ClimbToAFolderThatExists) {
  TestPlatform platform(PathStyle::kWindows);
  platform.files.AddFolder("C:\\plates");
  EXPECT_EQ(NearestExistingFolder("C:\\plates\\gone\\run1"), "C:\\plates");
  EXPECT_EQ(NearestExistingFolder("C:\\gone"), "C:\\");
  EXPECT_EQ(NearestExistingFolder("E:\\stick"), "C:\\");
}

}  // namespace
}  // namespace korvex
