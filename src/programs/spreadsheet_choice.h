// The spreadsheet applications that a program can choose from: the embedded one, and on Windows the
// installed one, where there is one.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace korvex {

class FileSystem;
class SpreadsheetProgram;

inline constexpr char kEmbedded[] = "embedded";
inline constexpr char kInstalled[] = "installed";

// Owns the applications. `files` must outlive it.
class SpreadsheetChoice {
 public:
  // The embedded application reads ahead on `jobs` threads, on one for each core without a number.
  // `stop_is_asked` may be called on any thread, by an application that does not return.
  explicit SpreadsheetChoice(FileSystem& files, std::optional<int> jobs = std::nullopt,
                             const std::function<bool()>& stop_is_asked = {});
  ~SpreadsheetChoice();

  // The one of that name; without a name the installed one, where there is one and a desktop for
  // it: in a service or a scheduled job it may wait for ever. Error 429 when the installed one is
  // asked for and there is none, and for any other name.
  SpreadsheetProgram& Choose(const std::optional<std::string>& name = std::nullopt);

 private:
  std::unique_ptr<SpreadsheetProgram> embedded_;
  std::unique_ptr<SpreadsheetProgram> installed_;  // null where there is none
  bool prefers_installed_ = false;
};

}  // namespace korvex
