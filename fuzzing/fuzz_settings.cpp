// Settings files, which users edit by hand. The input is a file; its last two lines are a key and a
// value to set.
#include <string_view>

#include "fuzzing/fuzz_target.h"
#include "settings/ini_document.h"

using namespace korvex;

namespace {

constexpr std::string_view kSection = "Main Section";

std::string_view TakeLastLine(std::string_view& text) {
  const std::size_t end = text.rfind('\n');
  const std::size_t start = end == std::string_view::npos ? 0 : end + 1;
  const std::string_view line = text.substr(start);
  text = text.substr(0, end == std::string_view::npos ? 0 : end);
  return line;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryPromise promise(size);
  std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::string_view value = TakeLastLine(text);
  const std::string_view key = TakeLastLine(text);
  IniDocument document(text);
  fuzz::Require(document.Text() == text, "a file that is not changed stays as it is");
  document.Set(kSection, key, value);
  fuzz::Require(document.Get(kSection, key) == value, "a value is what was set");
  const IniDocument again(document.Text());
  fuzz::Require(again.Get(kSection, key) == value, "a value survives in the file");
  document.Remove(kSection, key);
  fuzz::Require(!document.Get(kSection, key), "a value that is removed is gone");
  return 0;
}
