#include "ui/run_summary.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr int kNothingFoundIcon = 13;
constexpr int kFindingsIcon = 17;

constexpr std::size_t kMostEntries = 8;       // problems and notes together
constexpr std::size_t kNotesBesideMany = 3;   // that problems leave room for
constexpr std::size_t kMostInFull = 3;        // notes that are told with what to do
constexpr std::size_t kLongestProblem = 240;  // characters

std::string Counted(std::size_t count, const std::string& what) {
  return GroupedDigits(count) + " " + what + (count == 1 ? "" : "s");
}

std::string Cut(const std::string& text, std::size_t most_characters) {
  std::string_view rest = text;
  for (std::size_t taken = 0; !rest.empty(); ++taken) {
    if (taken == most_characters) return text.substr(0, text.size() - rest.size()) + "...";
    rest.remove_prefix(FirstUtf8(rest).length);
  }
  return text;
}

// What a message says first: the rest names keys and files once more, or gives advice.
std::string FirstSentence(const std::string& text) {
  const std::string line(TrimBlanks(text.substr(0, text.find(kLineBreak))));
  const std::size_t end = line.find(". ");
  const std::string sentence = line.substr(0, end);
  return end != std::string::npos || !sentence.ends_with('.') ? sentence + "." : sentence;
}

// Problems of one file that begin alike: every row of a copied workbook repeats a key.
struct Alike {
  std::string file;
  std::string sentence;
  std::string cause;  // of the first
  std::size_t count = 0;
};

std::vector<Alike> Grouped(const std::vector<Problem>& problems) {
  std::vector<Alike> groups;
  for (const Problem& problem : problems) {
    const std::string sentence = FirstSentence(problem.text);
    // Problems come in the order of the files.
    const bool is_alike = !groups.empty() && groups.back().file == problem.place.file &&
                          groups.back().sentence == sentence;
    if (!is_alike) groups.push_back({problem.place.file, sentence, problem.cause, 0});
    ++groups.back().count;
  }
  return groups;
}

// "Set 1/KIN01-1-1.xls: Duplicate key in file. Row 5 repeats ... (and 95 more like it)".
std::string LineOf(const Alike& group) {
  std::string line = group.sentence;
  if (line.find(group.file) == std::string::npos) line = group.file + ": " + line;
  if (!group.cause.empty()) line += ' ' + FirstSentence(group.cause);
  line = Cut(line, kLongestProblem);
  if (group.count > 1) line += " (and " + GroupedDigits(group.count - 1) + " more like it)";
  return line;
}

// What is so; what that means and what to do stand in the report.
std::string FirstPart(const std::string& text) {
  const std::size_t end = text.find(": ");
  return end == std::string::npos ? text : text.substr(0, end) + ".";
}

// A heading, the first entries, and how many more there are.
class Text {
 public:
  void Heading(const std::string& heading) {
    if (!text_.empty()) text_ += std::string(kLineBreak) + kLineBreak;
    text_ += heading;
  }
  template <class Entry, class Line>
  void List(const std::vector<Entry>& entries, std::size_t most, const char* what, Line line) {
    std::size_t left_out = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (i < most) {
        Add(line(entries[i]));
      } else {
        left_out += CountOf(entries[i]);
      }
    }
    if (left_out > 0) Add("and " + Counted(left_out, what));
  }
  std::string Take() { return std::move(text_); }

 private:
  static std::size_t CountOf(const Alike& group) { return group.count; }
  static std::size_t CountOf(const Finding&) { return 1; }  // a kind is one note
  void Add(const std::string& line) { text_ += kLineBreak + ("\u2022 " + line); }

  std::string text_;
};

// A stop that the user asked for is reported as an error is, but it is no problem of the data.
std::vector<Problem> ProblemsOf(const RunRecord& record) {
  std::vector<Problem> problems = record.problems;
  if (record.outcome == RunRecord::Outcome::kStopped) {
    std::erase_if(problems, [](const Problem& problem) {
      return problem.text == kStopCause || problem.cause == kStopCause;
    });
  }
  return problems;
}

std::string HeadingOfCheck(const RunRecord& record, std::size_t problems, std::size_t notes) {
  const std::string found = problems + notes == 0
                                ? "nothing was found"
                                : Counted(problems, "problem") + ", " + Counted(notes, "note");
  switch (record.outcome) {
    case RunRecord::Outcome::kStopped:
      return record.inputs.empty()
                 ? "The check was stopped before the first file."
                 : "The check was stopped at file " + GroupedDigits(record.inputs.size()) + " of " +
                       GroupedDigits(record.input_count) + ": " + found + " until then.";
    case RunRecord::Outcome::kChecked:
      return "Checked " + Counted(record.inputs.size(), "file") + ": " + found +
             ". No output was written.";
    case RunRecord::Outcome::kFinished:
    case RunRecord::Outcome::kFailed:
      break;
  }
  return "The check could not be made.";
}

}  // namespace

RunSummary Summary(const RunRecord& record) {
  const std::vector<Finding> notes = record.findings.All();
  Text text;
  if (!record.options.check) {
    if (record.outcome != RunRecord::Outcome::kFinished || notes.empty()) return {};
    text.Heading("The output was written, but the data do not look right:");
  }
  std::vector<Problem> problems;
  if (record.options.check) {
    problems = ProblemsOf(record);
    text.Heading(HeadingOfCheck(record, problems.size(), notes.size()));
  }
  const std::vector<Alike> groups = Grouped(problems);
  if (!groups.empty()) {
    text.Heading("These problems keep a run from finishing:");
    text.List(groups, kMostEntries - std::min(notes.size(), kNotesBesideMany), "more problem",
              LineOf);
  }
  if (record.options.check && !notes.empty()) {
    text.Heading(problems.empty() ? "The data do not look right:"
                                  : "Besides, the data do not look right:");
  }
  const bool in_full = problems.empty() && notes.size() <= kMostInFull;
  const std::size_t room = kMostEntries - std::min(groups.size(), kMostEntries - kNotesBesideMany);
  text.List(notes, room, "more note",
            [&](const Finding& note) { return in_full ? note.text : FirstPart(note.text); });
  return {text.Take(), problems.empty() && notes.empty() ? kNothingFoundIcon : kFindingsIcon};
}

}  // namespace korvex
