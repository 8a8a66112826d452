// Gives a target the saved inputs: replay_TARGET FOLDER...
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzzing/fuzz_target.h"

namespace {

// An input takes milliseconds; machines can be busy.
constexpr std::chrono::seconds kLongest{10};

bool Replay(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(stream), {});
  const auto start = std::chrono::steady_clock::now();
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  if (std::chrono::steady_clock::now() - start < kLongest) return true;
  std::fprintf(stderr, "%s takes too long\n", file.c_str());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  int replayed = 0;
  bool is_good = true;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::fprintf(stderr, "%s\n", entry.path().filename().c_str());
      is_good &= Replay(entry.path());
      ++replayed;
    }
  }
  return is_good && replayed > 0 ? 0 : 1;
}
