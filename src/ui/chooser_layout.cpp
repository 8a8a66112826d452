#include "ui/chooser_layout.h"

#include <algorithm>

namespace korvex {
namespace {

constexpr int kLeastLeft = 1320;
constexpr int kLeastFileList = 800;
constexpr int kSplitterAllowance = 30;

}  // namespace

int ClampSplitter(int left, int file_list_right) {
  return std::min(std::max(left, kLeastLeft),
                  file_list_right - kLeastFileList - kSplitterAllowance);
}

}  // namespace korvex
