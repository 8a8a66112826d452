#include "console/overlay_settings_store.h"

#include <gtest/gtest.h>

#include "tests/support/errors.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

class OverlaySettingsStoreTest : public testing::Test {
 protected:
  OverlaySettingsStoreTest() {
    below_.Save("S", "old", "1");
    below_.Save("S", "given", "2");
    store_.Save("s", "GIVEN", "3");
    store_.Save("S", "new", "4");
    store_.Delete("S", "Old");
  }

  FakeSettingsStore below_;
  OverlaySettingsStore store_{below_};
};

TEST_F(OverlaySettingsStoreTest, ChangesHoldForThisCallAlone) {
  EXPECT_EQ(store_.Get("S", "given"), "3");
  EXPECT_EQ(store_.Get("S", "NEW"), "4");
  EXPECT_EQ(store_.Get("S", "old"), std::nullopt);
  EXPECT_EQ(below_.Get("S", "given"), "2");
  EXPECT_EQ(below_.Get("S", "new"), std::nullopt);
  EXPECT_EQ(below_.Get("S", "old"), "1");
}

TEST_F(OverlaySettingsStoreTest, LetsTheStoreBelowShineThrough) {
  below_.Save("S", "other", "5");
  EXPECT_EQ(store_.Get("S", "other"), "5");
  EXPECT_EQ(ErrorOf([&] { store_.Delete("S", "old"); }).Number(), 5) << "deleted already";
  EXPECT_EQ(ErrorOf([&] { store_.Delete("S", "missing"); }).Number(), 5);
}

TEST_F(OverlaySettingsStoreTest, KeepsItsChangesOnRequest) {
  store_.Save("S", "brief", "6");
  store_.Delete("S", "brief");
  store_.Keep();
  EXPECT_EQ(below_.Get("S", "given"), "3");
  EXPECT_EQ(below_.Get("S", "new"), "4");
  EXPECT_EQ(below_.Get("S", "old"), std::nullopt);
  below_.Save("S", "given", "7");
  EXPECT_EQ(store_.Get("S", "given"), "3") << "another call's choice is none of this one";
}

}  // namespace
}  // namespace korvex
