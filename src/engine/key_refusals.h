// The refusals of keys that collide. Both tell the user, with the row that had the key first as the
// cause, and raise error 17.
#pragma once

#include <optional>
#include <string>

#include "engine/data_sheet.h"

namespace korvex {

// A row whose key is there already.
struct CollidingRow {
  // The sheet and the key must outlive it.
  const DataSheet& sheet;
  int row = 0;
  const std::string& key;
  // Full name of the file that had the key first and its row; none where nobody knows.
  std::string first_file;
  int first_row = 0;
  bool is_logged = true;  // not in a check, which only looks
};

// The key stands twice in one sheet.
[[noreturn]] void RefuseDuplicate(const CollidingRow& row);
// The reading's place is taken by that of another file. `explanation` follows the key.
[[noreturn]] void RefuseOverwriting(const CollidingRow& row, const std::string& explanation);

}  // namespace korvex
