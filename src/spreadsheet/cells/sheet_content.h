// A sheet as the writers of all formats get it.
#pragma once

#include <string>

namespace korvex {

class CellStore;

// Not owned. `name` is UTF-8.
struct SheetContent {
  std::string name;
  const CellStore* cells = nullptr;
  bool selected = false;
};

}  // namespace korvex
