// What every settings store has to do.
#pragma once

#include <gtest/gtest.h>

#include "platform/settings_store.h"
#include "tests/support/errors.h"

namespace korvex {

// `store` is empty, and `other` is the same store as another program sees it.
inline void ExpectSettingsStore(SettingsStore& store, SettingsStore& other) {
  EXPECT_EQ(store.Get("S", "missing"), std::nullopt) << "no section";
  EXPECT_EQ(ErrorOf([&] { store.Delete("S", "missing"); }).Number(), 5);

  const std::string values[] = {"",
                                "plain",
                                " blanks ",
                                "\t",
                                "a=b;c#d",
                                ";x",
                                "[x]",
                                "\"q\"",
                                "\"",
                                "%PATH%",
                                "line\r\nbreak\n",
                                "a<-- -->b",
                                "ünï µ 🔬",
                                "100 % %41 ",
                                "C:\\new\\x%41.xls",
                                std::string(5000, 'x')};
  int key = 0;
  for (const std::string& value : values) {
    store.Save("File Structure", "Key " + std::to_string(++key) + ":", value);
  }
  key = 0;
  for (const std::string& value : values) {
    EXPECT_EQ(other.Get("FILE structure", "KEY " + std::to_string(++key) + ":"), value) << key;
  }

  EXPECT_EQ(store.Get("File Structure", "missing"), std::nullopt);
  other.Save("file structure", "key 1:", "changed");
  EXPECT_EQ(store.Get("File Structure", "Key 1:"), "changed");
  other.Delete("File structure", "KEY 1:");
  EXPECT_EQ(store.Get("File Structure", "Key 1:"), std::nullopt);
  EXPECT_EQ(store.Get("File Structure", "Key 2:"), "plain");
  const Error error = ErrorOf([&] { store.Delete("File Structure", "Key 1:"); });
  EXPECT_EQ(error.Number(), 5);
  EXPECT_NE(error.Description().find("There is no setting \"Key 1:\" in "), std::string::npos);
}

}  // namespace korvex
