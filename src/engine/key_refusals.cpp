#include "engine/key_refusals.h"

#include "errors/clsAppLog.h"
#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "platform/error.h"
#include "platform/shown_text.h"
#include "text/text.h"

namespace korvex {
namespace {

std::string CauseOf(const CollidingRow& row) {
  if (row.first_row == 0) return {};
  // The whole path, where the file has gone or cannot be looked at any more.
  std::string first_file = Shown(row.first_file);
  Attempt([&] { first_file = GetDisplayPath(row.first_file); });
  return "Row " + std::to_string(row.row) + " repeats what row " + std::to_string(row.first_row) +
         " of " + first_file + " held first.";
}

// A refusal is no error that somebody has to look into: the log gets a line of text.
[[noreturn]] void Refuse(const CollidingRow& row, const std::string& message) {
  const std::string cause = CauseOf(row);
  // A log that cannot be written keeps nobody from being told.
  if (row.is_logged) {
    Attempt([&] {
      AppLog().AddText(
          "The key " + Shown(row.key) + " was refused in " + row.sheet.DisplayPath() + ". " + cause,
          {}, true, 1, false);
    });
  }
  TellAndFail(message, cause);
}

}  // namespace

void RefuseDuplicate(const CollidingRow& row) {
  Refuse(row, std::string("Duplicate key in file ") + kLineBreak + "'" + row.sheet.DisplayPath() +
                  "'" + kLineBreak + kLineBreak + "Key name:   " + Shown(row.key));
}

void RefuseOverwriting(const CollidingRow& row, const std::string& explanation) {
  Refuse(row, std::string("The same key, with the same replication number was found in ") +
                  "different files, and data would be overwritten. Please check that all key " +
                  "fields are truely unique." + kLineBreak + kLineBreak +
                  "Current file: " + row.sheet.DisplayPath() + kLineBreak + kLineBreak +
                  "Key name:   " + Shown(row.key) + explanation);
}

}  // namespace korvex
