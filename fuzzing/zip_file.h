// Makes zip archives of documents, so that a target need not find check sums.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace korvex::fuzz {

// Parts by name, stored as they are.
std::string ZipFile(const std::vector<std::pair<std::string, std::string>>& parts);

}  // namespace korvex::fuzz
