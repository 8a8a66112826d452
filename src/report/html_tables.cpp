// What a run did, in words and tables: outcome, counts, settings, problems, findings and inputs.
#include <algorithm>
#include <set>

#include "files/report_paths.h"
#include "platform/services.h"
#include "report/html_sections.h"
#include "report/html_text.h"
#include "text/text.h"

namespace korvex {
namespace {

// What is longer is folded.
constexpr std::size_t kLongTable = 30;
constexpr std::size_t kManyProblems = 100;

struct Verdict {
  const char* of_class;
  const char* text;
};

Verdict VerdictOf(RunRecord::Outcome outcome) {
  switch (outcome) {
    case RunRecord::Outcome::kFinished:
      return {"good", "Finished."};
    case RunRecord::Outcome::kStopped:
      return {"bad", "Stopped by the user."};
    case RunRecord::Outcome::kChecked:
      return {"good", "Checked. A check writes no output."};
    case RunRecord::Outcome::kFailed:
      break;
  }
  return {"bad", "Failed."};
}

void AppendVerdict(const RunRecord& record, std::string& page) {
  Verdict verdict = VerdictOf(record.outcome);
  const std::size_t kinds = record.findings.All().size();
  // A check that found problems ran to its end, but the data cannot be converted as they are.
  if (!record.problems.empty()) {
    verdict.of_class = "bad";
  } else if (kinds > 0 && verdict.of_class == std::string_view("good")) {
    verdict.of_class = "fair";
  }
  Add(page, "<p class=\"verdict ", verdict.of_class, "\"><strong>", verdict.text, "</strong> ",
      GroupedDigits(record.inputs.size()), " of ", Counted(record.input_count, "workbook"),
      " read. ");
  if (!record.problems.empty()) {
    Add(page, "<a href=\"#findings\">", Counted(record.problems.size(), "problem"), "</a>. ");
  }
  if (kinds > 0) {
    Add(page, "<a href=\"#findings\">", kinds == 1 ? "One kind" : std::to_string(kinds) + " kinds",
        " of findings</a>.");
  } else if (!record.problems.empty()) {
    Add(page, "Nothing else looked wrong.");
  } else if (verdict.of_class == std::string_view("good")) {
    Add(page, "Nothing looked wrong.");
  }
  Add(page, "</p>\n");
}

void AppendFact(const char* name, const std::string& fact, std::string& page) {
  if (!fact.empty()) Add(page, "<tr><th scope=\"row\">", name, "</th><td>", fact, "</td></tr>\n");
}

std::string Named(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) Add(text, text.empty() ? "" : ", ", Escaped(name));
  return text.empty() ? "none" : text;
}

std::string Sha256(const std::string& digits) {
  if (digits.empty()) return "";
  // May break in the middle.
  return "<code class=\"sha\">" + Escaped(digits.substr(0, 32)) + "<wbr>" +
         (digits.size() > 32 ? Escaped(digits.substr(32)) : "") + "</code>";
}

std::string FileFact(const std::optional<OutputRecord>& file, const std::string& folder) {
  if (!file) return "";
  std::string fact = Escaped(PathFrom(folder, file->path)) + "<br>" +
                     Counted(static_cast<std::size_t>(file->rows), "row") + ", " +
                     Counted(static_cast<std::size_t>(file->columns), "column") + ", " +
                     Counted(file->size, "byte");
  if (!file->sha256.empty()) fact += "<br>SHA-256 " + Sha256(file->sha256);
  return fact;
}

// "1 to 3" for what has no gaps, else "1, 3".
std::string ReplicationsOf(const std::vector<InputRecord>& inputs) {
  // By their numbers: inputs come in the order of their names, where 10 stands before 2.
  std::set<std::int16_t> met;
  for (const InputRecord& input : inputs) met.insert(input.replication);
  std::string text;
  for (auto it = met.begin(); it != met.end();) {
    auto last = it;
    auto next = std::next(it);
    for (; next != met.end() && *next == *last + 1; ++next) last = next;
    Add(text, text.empty() ? "" : ", ", std::to_string(*it));
    // Two neighbours are a list; a range saves words from three on.
    if (last != it) Add(text, *last == *it + 1 ? ", " : " to ", std::to_string(*last));
    it = next;
  }
  return text;
}

void AppendCounts(const RunRecord& record, std::string& page) {
  std::size_t rows = 0;
  std::size_t unread = 0;
  std::set<int> batches;
  for (const InputRecord& input : record.inputs) {
    rows += static_cast<std::size_t>(input.rows);
    unread += static_cast<std::size_t>(input.unread_rows);
    batches.insert(input.batch);
  }
  Add(page, "<div><h2>What was converted</h2><table class=\"facts\"><tbody>\n");
  // Those that were begun: a run that failed or was stopped has not reached the others.
  std::string workbooks = GroupedDigits(record.inputs.size());
  if (record.sub_folders) Add(workbooks, " in ", Counted(batches.size(), "sub-folder"));
  AppendFact("workbooks read", workbooks, page);
  AppendFact("rows read", GroupedDigits(rows), page);
  AppendFact("rows not read", GroupedDigits(unread), page);
  AppendFact("replications", ReplicationsOf(record.inputs), page);
  if (record.readings) {
    const auto& readings = record.readings->readings;
    const auto count = [&](std::uint32_t text) {
      return static_cast<std::size_t>(std::ranges::count(readings, text, &Reading::text));
    };
    const std::size_t numbers = count(Reading::kNumber);
    const std::size_t missing = count(Reading::kMissing);
    AppendFact("keys", GroupedDigits(record.readings->keys.size()), page);
    const std::size_t others = readings.size() - numbers - missing;
    std::string fact = GroupedDigits(readings.size()) + ": " + Counted(numbers, "number");
    if (others > 0) Add(fact, ", ", GroupedDigits(others), " not a number");
    if (missing > 0) Add(fact, ", ", GroupedDigits(missing), " blank");
    AppendFact("readings", fact, page);
  }
  // A run for the long form alone says nothing of an output workbook; one that wrote neither says
  // so.
  const std::string none = record.output || record.long_form ? "" : "none";
  AppendFact("output", record.output ? FileFact(record.output, record.processing_folder) : none,
             page);
  AppendFact("long form", FileFact(record.long_form, record.processing_folder), page);
  Add(page, "</tbody></table></div>\n");
}

std::string ColumnFact(const std::string& named, const RunRecord& record,
                       std::optional<std::size_t> found) {
  if (!named.empty()) return Escaped(named);
  if (!found) return "";
  return Escaped(record.readings->columns[*found].name) + " (found)";
}

std::string ChoicesFact(const std::vector<ControlChoice>& choices) {
  std::vector<std::string> names;
  for (const ControlChoice& choice : choices) {
    names.push_back(choice.column.empty() ? choice.text : choice.column + "=" + choice.text);
  }
  return names.empty() ? "" : Named(names);
}

void AppendSettings(const RunRecord& record, const ReportOptions& options,
                    const std::optional<PlateLayout>& layout, std::string& page) {
  Add(page, "<div><h2>Settings</h2><table class=\"facts\"><tbody>\n");
  // The last name alone: the way to it holds names of users and machines, and would differ between
  // equal runs.
  AppendFact("processing folder", Escaped(LastName(record.processing_folder)), page);
  AppendFact("processed", record.sub_folders ? "every file of every sub-folder" : "selected files",
             page);
  AppendFact("key columns", Named(record.key_columns), page);
  AppendFact("output columns", Named(record.output_columns), page);
  AppendFact("data column", Escaped(record.data_column), page);
  AppendFact("decimal commas", record.options.decimal_comma ? "texts like 0,110 are numbers" : "",
             page);
  AppendFact(
      "plate column",
      ColumnFact(record.options.plate_column, record, layout ? layout->plate_column : std::nullopt),
      page);
  AppendFact("well column",
             ColumnFact(record.options.well_column, record,
                        layout ? std::optional(layout->well_column) : std::nullopt),
             page);
  AppendFact("low controls", ChoicesFact(options.low), page);
  AppendFact("high controls", ChoicesFact(options.high), page);
  AppendFact("version", std::string("KORVEX ") + kProgramVersion, page);
  Add(page, "</tbody></table></div>\n");
}

std::string Lines(const std::string& text) {
  std::string lines;
  for (const std::string& line : Split(text, kLineBreak)) {
    if (!line.empty()) Add(lines, lines.empty() ? "" : "<br>", Escaped(line));
  }
  return lines;
}

void AppendProblems(const RunRecord& record, std::string& page) {
  if (record.problems.empty()) return;
  // So many are refusals of a check, mostly for one cause: folded, so that the findings below stay
  // in reach.
  const bool is_long = record.problems.size() > kManyProblems;
  Add(page, "<h3>", Counted(record.problems.size(), "problem"), "</h3>\n");
  if (is_long) Add(page, "<details class=\"long\"><summary>All problems</summary>\n");
  for (const Problem& problem : record.problems) {
    Add(page, "<div class=\"problem\"><p>",
        Lines(WithoutFolders(record.processing_folder, problem.text)), "</p>");
    if (!problem.cause.empty()) {
      Add(page, "<p>Cause: ", Lines(WithoutFolders(record.processing_folder, problem.cause)),
          "</p>");
    }
    const std::string place = PlaceText(problem.place);
    if (!place.empty()) Add(page, "<p>", Escaped(place), "</p>");
    Add(page, "</div>\n");
  }
  if (is_long) Add(page, "</details>\n");
}

// A table of those columns that some place has something for.
void AppendPlaces(const Finding& finding, std::string& page) {
  struct Column {
    const char* header;
    std::string (*cell)(const FindingPlace&);
  };
  constexpr Column kColumns[] = {
      {"file", [](const FindingPlace& place) { return place.file; }},
      {"row",
       [](const FindingPlace& place) { return place.row > 0 ? std::to_string(place.row) : ""; }},
      {"column", [](const FindingPlace& place) { return place.column; }},
      {"key", [](const FindingPlace& place) { return place.key; }},
      {"what stands there", [](const FindingPlace& place) { return place.detail; }},
  };
  std::vector<const Column*> columns;
  for (const Column& column : kColumns) {
    // Most kinds know a file and one thing more; columns without a text would push these apart.
    if (std::ranges::any_of(finding.places, [&](const FindingPlace& place) {
          return !column.cell(place).empty();
        })) {
      columns.push_back(&column);
    }
  }
  if (columns.empty()) return;
  Add(page, "<details open><summary>",
      finding.places.size() < finding.count ? "The first " + Counted(finding.places.size(), "place")
                                            : Counted(finding.places.size(), "place"),
      "</summary><div class=\"scroll\"><table class=\"places\"><thead><tr>");
  for (const Column* column : columns) Add(page, "<th>", column->header, "</th>");
  Add(page, "</tr></thead><tbody>\n");
  for (const FindingPlace& place : finding.places) {
    Add(page, "<tr>");
    for (const Column* column : columns) Add(page, "<td>", Escaped(column->cell(place)), "</td>");
    Add(page, "</tr>\n");
  }
  Add(page, "</tbody></table></div></details>\n");
}

}  // namespace

void AppendHeader(const RunRecord& record, std::string& page) {
  const std::string name = Escaped(LastName(record.processing_folder));
  Add(page, "<header><p class=\"program\">KORVEX ", kProgramVersion,
      " · report of a conversion</p><h1>", name.empty() ? "Report" : name, "</h1>\n");
  AppendVerdict(record, page);
  Add(page, "</header>\n");
}

void AppendSummary(const RunRecord& record, const ReportOptions& options,
                   const std::optional<PlateLayout>& layout, std::string& page) {
  Add(page, "<section class=\"summary\">\n");
  AppendCounts(record, page);
  AppendSettings(record, options, layout, page);
  Add(page, "</section>\n");
}

void AppendFindings(const RunRecord& record, std::string& page) {
  Add(page, "<section id=\"findings\"><h2>Findings</h2>\n");
  AppendProblems(record, page);
  const std::vector<Finding> findings = record.findings.All();
  if (findings.empty()) {
    Add(page, record.problems.empty()
                  ? "<p>Nothing looked wrong in the data.</p>\n"
                  : "<p>Nothing else looked wrong in the data that were read.</p>\n");
  }
  for (const Finding& finding : findings) {
    Add(page, "<div class=\"finding\"><p><code>", std::string(NameOf(finding.kind)), "</code> ",
        GroupedDigits(finding.count), "</p><p>", Escaped(finding.text), "</p>\n");
    AppendPlaces(finding, page);
    Add(page, "</div>\n");
  }
  Add(page, "</section>\n");
}

void AppendInputs(const RunRecord& record, std::string& page) {
  Add(page, "<section id=\"inputs\"><h2>Input files</h2>\n");
  if (record.inputs.empty()) {
    Add(page, "<p>No workbook was read.</p></section>\n");
    return;
  }
  const bool is_long = record.inputs.size() > kLongTable;
  if (is_long) {
    Add(page, "<details class=\"long\"><summary>", Counted(record.inputs.size(), "workbook"),
        "</summary>\n");
  }
  Add(page,
      "<div class=\"scroll\"><table class=\"inputs\"><thead><tr><th>file</th><th>repli&shy;cation"
      "</th><th>day</th><th>rows</th><th>rows not read</th><th>date in A1</th><th>bytes</th>"
      "<th>SHA-256</th></tr></thead><tbody>\n");
  for (const InputRecord& input : record.inputs) {
    Add(page, "<tr><td>", Escaped(input.path), "</td><td>", std::to_string(input.replication),
        "</td><td>", Escaped(input.day), "</td><td>", std::to_string(input.rows), "</td><td>",
        std::to_string(input.unread_rows), "</td><td>", Escaped(input.date), "</td><td>",
        GroupedDigits(input.size), "</td><td>", Sha256(input.sha256), "</td></tr>\n");
  }
  Add(page, "</tbody></table></div>");
  if (is_long) Add(page, "</details>");
  Add(page, "</section>\n");
}

}  // namespace korvex
