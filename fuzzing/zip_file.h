// Packs documents into zip archives: a fuzzer would hardly ever hit a right check sum.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace korvex::fuzz {

// `parts` are names and contents, which are stored unpacked.
std::string ZipFile(const std::vector<std::pair<std::string, std::string>>& parts);

}  // namespace korvex::fuzz
