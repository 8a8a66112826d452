#include "platform/code_page_converter.h"

#include <algorithm>
#include <cstddef>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace korvex {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

// What the system gives for bytes that its page leaves open: control characters and some of those
// for private use.
bool IsPlaceholder(wchar_t unit) {
  return (unit >= 0x80 && unit < 0xA0) || (unit >= 0xF8C0 && unit <= 0xF8FF);
}

class SystemConverter : public CodePageConverter {
 public:
  explicit SystemConverter(std::uint16_t number) : page_(number) {}

  void Append(std::string_view bytes, std::string& utf8) override {
    std::wstring wide;
    // Almost every text converts as a whole; only a damaged one is taken character by character.
    if (!AppendWide(bytes, wide)) AppendOneByOne(bytes, wide);
    std::replace_if(wide.begin(), wide.end(), IsPlaceholder, kReplacement);
    utf8 += FromWide(wide);
  }

 private:
  // False, with nothing appended, when some of the bytes stand for no character.
  bool AppendWide(std::string_view bytes, std::wstring& wide) const {
    const auto size = static_cast<int>(bytes.size());
    const int count =
        MultiByteToWideChar(page_, MB_ERR_INVALID_CHARS, bytes.data(), size, nullptr, 0);
    if (count <= 0) return false;
    const std::size_t start = wide.size();
    wide.resize(start + static_cast<std::size_t>(count));
    MultiByteToWideChar(page_, MB_ERR_INVALID_CHARS, bytes.data(), size, wide.data() + start,
                        count);
    return true;
  }

  void AppendOneByOne(std::string_view bytes, std::wstring& wide) const {
    while (!bytes.empty()) {
      const bool is_pair =
          bytes.size() > 1 && IsDBCSLeadByteEx(page_, static_cast<BYTE>(bytes.front()));
      std::size_t length = is_pair ? 2 : 1;
      if (!AppendWide(bytes.substr(0, length), wide)) {
        // An ASCII character behind half a pair is one of its own.
        if (is_pair && static_cast<unsigned char>(bytes[1]) < 0x80) length = 1;
        wide += kReplacement;
      }
      bytes.remove_prefix(length);
    }
  }

  UINT page_;
};

}  // namespace

std::unique_ptr<CodePageConverter> OpenCodePage(std::uint16_t number) {
  if (!IsValidCodePage(number)) return nullptr;
  return std::make_unique<SystemConverter>(number);
}

}  // namespace korvex
