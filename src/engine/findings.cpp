#include "engine/findings.h"

#include <algorithm>

#include "text/text.h"

namespace korvex {
namespace {

// What a kind means: one thing and several things of it, and what to do. "#" stands for the count.
struct Wording {
  std::string_view name;
  std::string_view one;
  std::string_view several;
  std::string_view advice;
};

constexpr std::array<Wording, kFindingKinds> kWordings = {{
    {"misplaced-replication",
     "The readings of one replication stand under a header that is not its own",
     "The readings of # replications stand under headers that are not their own",
     "because columns moved or took a header over between the sub-folders: number the replications "
     "without gaps and alike in all sub-folders, or take the long form, which has no columns to "
     "misplace."},
    {"overwritten-header", "An additional header was written over the letter of a replication",
     "Additional headers were written over the letters of # replications",
     "and the readings below do not belong to it: number the replications without gaps, or take "
     "the long form, which has no columns to misplace."},
    {"unread-rows", "One row below a row without a first cell was not read",
     "# rows below a row without a first cell were not read",
     "and their wells are missing in the output: fill the first column of every row, or delete the "
     "rows that do not belong to the data."},
    {"repeated-header", "One file holds its header row more than once",
     "# files hold their header row more than once",
     "and only the rows below the last of them are read: delete the repeated header rows."},
    {"missing-key-column", "A key column is missing in one file",
     "Key columns are missing # times in the files",
     "and the keys of these files were built without it, so that their wells do not meet those of "
     "the other files: add the column, or take it out of the key."},
    {"missing-output-column", "An output column is missing in one file",
     "Output columns are missing # times in the files",
     "and keys that were met there first have a blank in it: add the column to the file, or take "
     "it out of the output."},
    {"near-equal-keys", "One key differs from another in blanks or leading zeros alone",
     "# keys differ from others in blanks or leading zeros alone",
     "and stands in a row of its own: write the key in one form in all files if one well is "
     "meant."},
    {"conflicting-output", "One output value differs from that of the key's first replicate",
     "# output values differ from those of the keys' first replicates",
     "and the output shows the first alone: check which of the files is right."},
    {"incomplete-replication", "One key lacks a reading that other keys of its sub-folder have",
     "# readings are lacking that other keys of their sub-folders have",
     "and the cell in the output is blank: check whether the well was measured or the file is "
     "whole."},
    {"not-a-number", "One measured value is no number", "# measured values are no numbers",
     "and stands in the output as it is: leave it out of calculations, or mend it in the file."},
    {"number-as-text", "One measured value is a number written as text",
     "# measured values are numbers written as text",
     "and stays text in the output, which calculations pass over: store numbers in the file, or "
     "convert with --decimal-comma where the comma is the only reason."},
    {"skipped-folder", "One folder inside a sub-folder was not read",
     "# folders inside sub-folders were not read",
     "since only files directly in a sub-folder count: move its files up, or make it a sub-folder "
     "of the processing folder."},
    {"rounded-number", "One field of a file name counts as a whole number that it is not",
     "# fields of file names count as whole numbers that they are not",
     "and its readings may stand with those of another replication or day: write whole numbers "
     "into "
     "the file names."},
    {"key-outside-plate", "One key names a well that its plate does not have",
     "# keys name wells that their plates do not have",
     "and cannot be placed on the plate: correct the well in the file."},
}};

std::string TextOf(const Wording& wording, std::size_t count) {
  std::string text(count == 1 ? wording.one : wording.several);
  const std::size_t mark = text.find('#');
  if (mark != std::string::npos) text.replace(mark, 1, GroupedDigits(count));
  return text + ", " + std::string(wording.advice);
}

}  // namespace

std::string_view NameOf(FindingKind kind) {
  return kWordings[static_cast<std::size_t>(kind)].name;
}

bool Findings::IsEmpty() const {
  return std::ranges::all_of(noted_, [](const Noted& noted) { return noted.count == 0; });
}

std::vector<Finding> Findings::All() const {
  std::vector<Finding> all;
  for (std::size_t i = 0; i < kFindingKinds; ++i) {
    const Noted& noted = noted_[i];
    if (noted.count == 0) continue;
    all.push_back({static_cast<FindingKind>(i), noted.count, TextOf(kWordings[i], noted.count),
                   noted.places});
  }
  return all;
}

}  // namespace korvex
