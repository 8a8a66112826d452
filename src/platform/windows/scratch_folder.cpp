#include "platform/windows/scratch_folder.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "platform/error.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_error.h"

namespace korvex {
namespace {

constexpr wchar_t kPrefix[] = L"korvex-";

using PathBuffer = std::array<wchar_t, MAX_PATH + 2>;

bool IsPlain(std::wstring_view path) {
  return std::all_of(path.begin(), path.end(), [](wchar_t c) { return c < 0x7F; });
}

}  // namespace

WindowsScratchFolder::WindowsScratchFolder() : owned_name_(kPrefix) {
  PathBuffer parent{};
  GetTempPathW(static_cast<DWORD>(parent.size()), parent.data());
  RemoveLeftovers(parent.data(), kPrefix);
  folder_ = parent.data() + owned_name_.Text();
  if (!CreateDirectoryW(folder_.c_str(), nullptr)) {
    throw SystemError(GetLastError(), "write to", FromWide(parent.data()));
  }
  PathBuffer short_name{};
  const DWORD length = GetShortPathNameW(folder_.c_str(), short_name.data(), MAX_PATH);
  const bool has_short_name = length > 0 && length < MAX_PATH && IsPlain(short_name.data());
  if (!IsPlain(folder_) && !has_short_name) {
    Remove();
    throw Error(error_number::kPathFileAccess,
                "Cannot write to " + FromWide(parent.data()) +
                    ": its name has letters that not every part of Windows knows. Set the "
                    "environment variable TMP to a folder with a plain name.");
  }
  path_ = FromWide(IsPlain(folder_) ? folder_.c_str() : short_name.data());
}

WindowsScratchFolder::~WindowsScratchFolder() {
  Remove();
}

void WindowsScratchFolder::Remove() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

}  // namespace korvex
