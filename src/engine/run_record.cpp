#include "engine/run_record.h"

#include "text/text.h"

namespace korvex {

void RunRecord::AddProblem(Problem problem) {
  if (problems.empty() || problems.back().place.file != problem.place.file) alike_.clear();
  if (!problems.empty()) {
    const Problem& last = problems.back();
    if (last.text == problem.text && last.cause == problem.cause &&
        last.place.file == problem.place.file) {
      return;
    }
  }
  // A message names its kind in its first line, and the key in a later one.
  const std::string kind = problem.text.substr(0, problem.text.find(kLineBreak));
  Alike& alike = alike_[kind];
  if (++alike.count <= kMostAlike) {
    problems.push_back(std::move(problem));
    return;
  }
  if (alike.count == kMostAlike + 1) {
    alike.rest = problems.size();
    problems.push_back({{}, {}, {problem.place.file, 0, {}, {}, {}}});
  }
  problems[alike.rest].text =
      "And " + GroupedDigits(alike.count - kMostAlike) + " more in this file: " + kind;
}

}  // namespace korvex
