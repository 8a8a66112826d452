// The stores that settings come from and go to.
#include <gtest/gtest.h>

#include "settings/ini_settings_store.h"
#include "settings/overlay_settings_store.h"
#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

TEST(IniSettingsStore, ParsesItsFileAgainOnlyWhenThatChanged) {
  MemoryFileSystem files(PathStyle::kLinux);
  const std::string path = "/home/user/korvex.ini";
  IniSettingsStore store(files, path);
  for (int round = 1; round <= 3; ++round) {
    const std::string value = std::to_string(round);  // of the same size
    files.AddFile(path, "[S]\nk=" + value + "\n");
    for (int i = 0; i < 4; ++i) EXPECT_EQ(store.Get("S", "k"), value);
    EXPECT_EQ(files.Reads(path), round);
  }
  files.Remove(path);
  EXPECT_EQ(store.Get("S", "k"), std::nullopt);
}

TEST(OverlaySettingsStore, ChangesHoldForThisCallAloneUnlessKept) {
  FakeSettingsStore below;
  OverlaySettingsStore store(below);
  below.Save("S", "old", "1");
  below.Save("S", "given", "2");
  store.Save("s", "GIVEN", "3");
  store.Save("S", "new", "4");
  store.Save("S", "brief", "6");
  store.Delete("S", "brief");
  store.Delete("S", "Old");
  below.Save("S", "other", "5");
  EXPECT_EQ(store.Get("S", "given"), "3");
  EXPECT_EQ(store.Get("S", "NEW"), "4");
  EXPECT_EQ(store.Get("S", "old"), std::nullopt);
  EXPECT_EQ(store.Get("S", "other"), "5") << "the store below shines through";
  EXPECT_EQ(below.Get("S", "given"), "2");
  EXPECT_EQ(below.Get("S", "new"), std::nullopt);
  for (const char* key : {"old", "brief", "missing"}) {
    EXPECT_EQ(ErrorOf([&] { store.Delete("S", key); }).Number(), 5) << key;
  }

  store.Keep();
  EXPECT_EQ(below.Get("S", "given"), "3");
  EXPECT_EQ(below.Get("S", "new"), "4");
  EXPECT_EQ(below.Get("S", "old"), std::nullopt);
  below.Save("S", "given", "7");
  EXPECT_EQ(store.Get("S", "given"), "3") << "another call's choice is none of this one";
}

}  // namespace
}  // namespace korvex
