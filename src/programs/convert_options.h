// The arguments of korvex-convert.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace korvex {

struct ConvertOptions {
  std::optional<std::string> folder;
  std::vector<std::string> files;  // of --files
  std::vector<std::string> keys;
  std::vector<std::string> columns;
  std::optional<std::string> data;
  std::optional<std::string> output;
  std::optional<std::string> long_form;
  std::vector<std::string> reports;  // .html or .json
  std::optional<std::string> plate;
  std::optional<std::string> well;
  std::vector<std::string> low;  // as given: TEXT or COLUMN=TEXT
  std::vector<std::string> high;
  std::optional<int> jobs;
  std::optional<std::string> settings_file;
  std::optional<std::string> spreadsheet;  // kEmbedded or kInstalled
  bool check = false;
  bool strict = false;
  bool decimal_comma = false;
  bool no_replace = false;
  bool open = false;
  bool save_settings = false;
  bool list_columns = false;
  bool quiet = false;
};

inline constexpr int kBadArguments = 2;

// Reads the arguments, the program's name not among them, into `options`. Returns the exit status
// when the program is to end at once: 0 after --help or --version, kBadArguments after a complaint
// on standard error.
std::optional<int> ReadArguments(std::vector<std::string> arguments, ConvertOptions& options);

}  // namespace korvex
