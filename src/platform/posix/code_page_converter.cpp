#include "platform/code_page_converter.h"

#include <iconv.h>

#include <cerrno>
#include <utility>

namespace korvex {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::uint16_t kMacRoman = 10000;
constexpr std::string_view kDelta = "\xCE\x94";          // U+0394
constexpr std::string_view kIncrement = "\xE2\x88\x86";  // U+2206

// The C library knows pages of Windows and DOS by their number, those of the Macintosh by name.
std::string NameOf(std::uint16_t number) {
  static constexpr struct {
    std::uint16_t number;
    const char* name;
  } kMacintosh[] = {
      {kMacRoman, "MACINTOSH"}, {10001, "SJIS"},   {10002, "BIG5"},   {10003, "EUC-KR"},
      {10007, "MAC-CYRILLIC"},  {10008, "EUC-CN"}, {10017, "MAC-UK"}, {10029, "MAC-CENTRALEUROPE"},
      {10079, "MAC-IS"}};
  for (const auto& page : kMacintosh) {
    if (page.number == number) return page.name;
  }
  return "CP" + std::to_string(number);
}

class IconvConverter : public CodePageConverter {
 public:
  IconvConverter(iconv_t converter, std::uint16_t page)
      : converter_(converter), page_(page), has_pairs_(IsDoubleBytePage(page)) {}
  ~IconvConverter() override { iconv_close(converter_); }
  IconvConverter(const IconvConverter&) = delete;
  IconvConverter& operator=(const IconvConverter&) = delete;

  void Append(std::string_view bytes, std::string& utf8) override {
    const std::size_t start = utf8.size();
    // The text before may have ended within a character; forget that.
    iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size();
    while (left > 0) {
      if (Convert(&in, &left, utf8)) break;
      const std::size_t taken = UndecodableLength({in, left});
      Convert(nullptr, nullptr, utf8);
      utf8 += kReplacement;
      in += taken;
      left -= taken;
    }
    // Pages with combining marks hold the last letter back until they know what follows.
    Convert(nullptr, nullptr, utf8);
    if (page_ == kMacRoman) MendIncrement(start, utf8);
  }

 private:
  // The library takes the increment sign of Mac Roman for the Greek letter, which that page lacks.
  static void MendIncrement(std::size_t start, std::string& utf8) {
    for (std::size_t at = utf8.find(kDelta, start); at != std::string::npos;
         at = utf8.find(kDelta, at)) {
      utf8.replace(at, kDelta.size(), kIncrement);
    }
  }

  // False at a byte that stands for no character.
  bool Convert(char** in, std::size_t* left, std::string& utf8) {
    char room[512];
    for (;;) {
      char* out = room;
      std::size_t room_left = sizeof room;
      const bool is_done = iconv(converter_, in, left, &out, &room_left) != kFailed;
      const int error = errno;
      utf8.append(room, out);
      if (is_done) return true;
      if (error != E2BIG) return false;
    }
  }

  // Both bytes of a pair that is not assigned: the second one would be read as the first of the
  // next pair, and all that follows be spoilt.
  std::size_t UndecodableLength(std::string_view bytes) const {
    const auto is_high = [&](std::size_t i) {
      return static_cast<unsigned char>(bytes[i]) >= 0x80;
    };
    return has_pairs_ && bytes.size() > 1 && is_high(0) && is_high(1) ? 2 : 1;
  }

  static constexpr std::size_t kFailed = static_cast<std::size_t>(-1);

  iconv_t converter_;
  std::uint16_t page_;
  bool has_pairs_;
};

}  // namespace

std::unique_ptr<CodePageConverter> OpenCodePage(std::uint16_t number) {
  const iconv_t converter = iconv_open("UTF-8", NameOf(number).c_str());
  if (converter == reinterpret_cast<iconv_t>(-1)) return nullptr;
  return std::make_unique<IconvConverter>(converter, number);
}

}  // namespace korvex
