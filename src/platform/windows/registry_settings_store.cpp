#include "platform/windows/registry_settings_store.h"

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_error.h"

namespace korvex {
namespace {

// A value that a user typed may name environment variables; they are not replaced.
constexpr DWORD kTexts = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;

DWORD Bytes(std::size_t letters) {
  return static_cast<DWORD>(letters * sizeof(wchar_t));
}

bool IsMissing(LSTATUS status) {
  return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
}

Error RegistryError(LSTATUS status, std::string_view action, const std::string& section_key) {
  return SystemError(static_cast<DWORD>(status), action, "HKEY_CURRENT_USER\\" + section_key);
}

}  // namespace

std::string RegistrySettingsStore::SectionKey(std::string_view section) const {
  return key_ + "\\" + std::string(section);
}

std::optional<std::string> RegistrySettingsStore::Get(std::string_view section,
                                                      std::string_view key) {
  const std::string section_key = SectionKey(section);
  const std::wstring wide_section = ToWide(section_key);
  const std::wstring name = ToWide(key);
  std::wstring value(128, L'\0');
  for (;;) {
    DWORD bytes = Bytes(value.size());
    const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, wide_section.c_str(), name.c_str(),
                                        kTexts, nullptr, value.data(), &bytes);
    // The system ends every text with a null here, even one that was stored without.
    if (status == ERROR_SUCCESS) return FromWide(value.c_str());
    if (IsMissing(status)) return std::nullopt;
    if (status != ERROR_MORE_DATA) {
      throw RegistryError(status, "read", section_key + "\\" + std::string(key));
    }
    // It may grow again before the next look, so this is a loop.
    value.resize(bytes / sizeof(wchar_t) + 1);
  }
}

void RegistrySettingsStore::Save(std::string_view section, std::string_view key,
                                 std::string_view value) {
  const std::string section_key = SectionKey(section);
  const std::wstring text = ToWide(value);
  const LSTATUS status =
      RegSetKeyValueW(HKEY_CURRENT_USER, ToWide(section_key).c_str(), ToWide(key).c_str(), REG_SZ,
                      text.c_str(), Bytes(text.size() + 1));
  if (status != ERROR_SUCCESS) throw RegistryError(status, "write to", section_key);
}

void RegistrySettingsStore::Delete(std::string_view section, std::string_view key) {
  const std::string section_key = SectionKey(section);
  const LSTATUS status =
      RegDeleteKeyValueW(HKEY_CURRENT_USER, ToWide(section_key).c_str(), ToWide(key).c_str());
  if (IsMissing(status)) {
    throw Error(error_number::kInvalidCall, "There is no setting \"" + std::string(key) +
                                                "\" in HKEY_CURRENT_USER\\" + section_key + ".");
  }
  if (status != ERROR_SUCCESS) throw RegistryError(status, "write to", section_key);
}

}  // namespace korvex
