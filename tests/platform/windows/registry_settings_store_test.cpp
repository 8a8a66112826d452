#include "platform/windows/registry_settings_store.h"

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "tests/platform/settings_store_contract.h"

namespace korvex {
namespace {

TEST(RegistrySettingsStore, IsASettingsStoreOfTextsOnly) {
  const std::string key = "Software\\KORVEX tests\\" + std::to_string(GetCurrentProcessId());
  RegistrySettingsStore store(key);
  RegistrySettingsStore other(key);
  ExpectSettingsStore(store, other);

  const DWORD number = 7;
  RegSetKeyValueW(HKEY_CURRENT_USER, ToWide(key + "\\S").c_str(), L"k", REG_DWORD, &number,
                  sizeof number);
  EXPECT_EQ(ErrorOf([&] { store.Get("S", "k"); }).Number(), 75);
  RegDeleteTreeW(HKEY_CURRENT_USER, ToWide(key).c_str());
}

}  // namespace
}  // namespace korvex
