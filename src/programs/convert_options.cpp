#include "programs/convert_options.h"
#include "programs/spreadsheet_choice.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <span>
#include <string_view>

#include "platform/services.h"
#include "settings/basSettings.h"
#include "text/text.h"

namespace korvex {
namespace {

constexpr int kMostJobs = 256;

// A list of columns is stored as one text and looked up without regard to letter case.
std::string CheckColumnNames(const std::vector<std::string>& names) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (TrimBlanks(names[i]).empty()) return "a column has no name";
    if (names[i].find(basSettings::kListSeparator) != std::string::npos) {
      return "a column name cannot hold \"" + std::string(basSettings::kListSeparator) +
             "\": " + names[i];
    }
    if (ContainsText(std::span(names).first(i), names[i])) {
      return "the column is given twice: " + names[i];
    }
  }
  return {};
}

bool HasEnding(const std::string& name, std::string_view ending) {
  return name.size() > ending.size() &&
         EqualText(std::string_view(name).substr(name.size() - ending.size()), ending);
}

// A quotation mark in a path has come from the end of another argument, by a command processor that
// takes a backslash before it for a part of the mark.
[[maybe_unused]] void CheckQuotationMarks(const ConvertOptions& options) {
  std::vector<std::string> paths = options.files;
  paths.insert(paths.end(), options.reports.begin(), options.reports.end());
  for (const auto* path :
       {&options.folder, &options.output, &options.long_form, &options.settings_file}) {
    if (*path) paths.push_back(**path);
  }
  for (const std::string& path : paths) {
    if (path.find('"') == std::string::npos) continue;
    throw CLI::ValidationError(
        "paths", "a path cannot hold a quotation mark; leave out the backslash before it: " + path);
  }
}

void CheckOptions(const ConvertOptions& options) {
#ifdef _WIN32
  CheckQuotationMarks(options);
#endif
  if (options.folder && !options.files.empty()) {
    throw CLI::ValidationError("FOLDER", "give either a folder or --files, not both");
  }
  if (options.folder == "") throw CLI::ValidationError("FOLDER", "the folder has no name");
  if (std::ranges::count(options.files, "") > 0) {
    throw CLI::ValidationError("--files", "a file has no name");
  }
  for (const std::string& report : options.reports) {
    if (!HasEnding(report, ".html") && !HasEnding(report, ".json")) {
      throw CLI::ValidationError("--report", "a report ends with .html or .json: " + report);
    }
  }
  for (const auto& [option, names] :
       {std::pair{"--key", &options.keys}, std::pair{"--column", &options.columns}}) {
    const std::string complaint = CheckColumnNames(*names);
    if (!complaint.empty()) throw CLI::ValidationError(option, complaint);
  }
}

class UsageOfBothForms : public CLI::Formatter {
  std::string make_usage(const CLI::App*, std::string) const override {
    return "Usage: korvex-convert [options] FOLDER           every file of every sub-folder\n"
           "       korvex-convert [options] --files FILE...  just these workbooks\n";
  }
};

void Describe(CLI::App& app, ConvertOptions& options) {
  // One name for each mention: the argument after it may be the folder.
  const auto each_name = [](CLI::Option* option) {
    return option->type_name("NAME")->allow_extra_args(false)->take_all();
  };
  app.formatter(std::make_shared<UsageOfBothForms>());
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app.add_option("FOLDER", options.folder, "Processing folder")->type_name("");
  app.add_option("--files", options.files, "Workbooks to process")
      ->type_name("FILE...")
      ->take_all();
  each_name(app.add_option("-k,--key", options.keys, "Key column; repeat, in order"));
  each_name(app.add_option("-c,--column", options.columns, "Output column; repeat, in order"));
  app.add_option("-d,--data", options.data, "Data column")->type_name("NAME");
  app.add_option("-o,--output", options.output,
                 "Output workbook (full name; .xls, .xlsx, .csv or .tsv)")
      ->type_name("FILE");
  app.add_option("--long", options.long_form,
                 "Write one row per reading (.csv, .tsv or .xlsx); without -o nothing else")
      ->type_name("FILE");
  each_name(app.add_option("--report", options.reports,
                           "Write the report of the run (.html or .json; repeat for both)"))
      ->type_name("FILE");
  app.add_flag("--check", options.check,
               "Go through everything, report every problem, write no output");
  app.add_flag("--strict", options.strict, "Findings are failures: no output is written");
  app.add_option("--plate", options.plate, "Column that names the plates, for the report")
      ->type_name("NAME");
  app.add_option("--well", options.well, "Column that names the wells, for the report")
      ->type_name("NAME");
  each_name(app.add_option("--low", options.low, "Wells with this text are low controls; repeat"))
      ->type_name("[COLUMN=]TEXT");
  each_name(app.add_option("--high", options.high, "The same for high controls"))
      ->type_name("[COLUMN=]TEXT");
  app.add_flag("--decimal-comma", options.decimal_comma,
               "Texts of the data column like 0,110 are numbers");
  app.add_option("--jobs", options.jobs, "Threads that read ahead (default: the cores)")
      ->type_name("N")
      ->check(CLI::Range(1, kMostJobs));
  app.add_flag("--no-replace", options.no_replace, "Ask before replacing an output file");
  app.add_flag("--open", options.open, "Open the output workbook at the end");
  app.add_option("--settings", options.settings_file,
                 "Use this settings file instead of the per-user one")
      ->type_name("FILE");
  app.add_option("--spreadsheet", options.spreadsheet,
                 "Spreadsheet application: embedded or installed; without it the installed one, "
                 "where there is one and a desktop for it")
      ->type_name("NAME")
      ->check(CLI::IsMember({kEmbedded, kInstalled}));
  app.add_flag("--save-settings", options.save_settings,
               "Keep the choices of this call in the settings");
  app.add_flag("--list-columns", options.list_columns,
               "Print the available columns of the sample file and stop");
  app.add_flag("-q,--quiet", options.quiet, "No progress");
  app.set_version_flag("--version", std::string("korvex-convert ") + kProgramVersion);
  app.footer(
      "What is left out comes from the settings. Exit status: 0 finished, 1 failed, 2 bad "
      "arguments, 130 stopped.");
}

// The arguments, the last one first. CLI11 would take a "--" behind --files for a file, and a file
// behind that for an option where its name begins with "-".
std::vector<std::string> Reversed(std::vector<std::string> arguments) {
  const auto files = std::ranges::find(arguments, "--files");
  const auto mark = std::find(files, arguments.end(), "--");
  if (mark != arguments.end()) {
    for (auto name = mark + 1; name != arguments.end(); ++name) {
      if (name->starts_with('-')) name->insert(0, "./");
    }
    arguments.erase(mark);
  }
  std::ranges::reverse(arguments);
  return arguments;
}

}  // namespace

std::optional<int> ReadArguments(std::vector<std::string> arguments, ConvertOptions& options) {
  CLI::App app("Turns a folder of plate-reader workbooks into one flat workbook.",
               "korvex-convert");
  Describe(app, options);
  try {
    app.parse(Reversed(std::move(arguments)));
    CheckOptions(options);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    return app.exit(error, std::cout, std::cerr) == 0 ? 0 : kBadArguments;
  }
}

}  // namespace korvex
