#include "engine/findings.h"

#include <algorithm>

#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr std::size_t kLongestKey = 200;  // bytes of a key in a line of text

// What a kind means: one thing and several things of it, and what to do. "#" stands for the count.
struct Wording {
  std::string_view name;
  std::string_view one;
  std::string_view several;
  std::string_view advice;
};

// In the order of FindingKind. The names stand in reports for programs and do not change.
constexpr std::array<Wording, kFindingKinds> kWordings = {{
    {"misplaced-replication",
     "The readings of one replication stand under a header that is not their own",
     "The readings of # replications stand under headers that are not their own",
     "the columns moved between the sub-folders. Number the replications without gaps and alike in "
     "all sub-folders, or take the long form, which has a row for every reading"},
    {"overwritten-header", "An additional header was written over the letter of one replication",
     "Additional headers were written over the letters of # replications",
     "the readings below do not belong to it. Number the replications without gaps, or take the "
     "long form, which has a row for every reading"},
    {"unread-rows", "One row below a row with a blank first cell was not read",
     "# rows below rows with a blank first cell were not read",
     "their wells are missing in the output. Fill the first column of every row, or delete the "
     "rows that do not belong to the data"},
    {"repeated-header", "The header row stands more than once in one file",
     "The header row stands more than once in # files",
     "only the rows below the last one were read. Delete the repeated header rows"},
    {"missing-key-column", "A key column is missing in one file",
     "Key columns are missing in the files, # altogether",
     "the keys of such a file were made without it and do not meet those of the other files. Add "
     "the column, or take it out of the key"},
    {"missing-output-column", "An output column is missing in one file",
     "Output columns are missing in the files, # altogether",
     "it is blank in the output for keys that were met there first. Add the column to the file, or "
     "take it out of the output"},
    {"near-equal-keys", "One key differs from another in blanks or leading zeros alone",
     "# keys differ from others in blanks or leading zeros alone",
     "each has a row of its own in the output. Write the key in one form in all files if one well "
     "is meant"},
    {"conflicting-output", "One row names another output value than the key's first row",
     "# output values are not those of the key's first row",
     "the output shows the first alone. Check which file is right"},
    {"incomplete-replication", "One reading is lacking that other keys of its sub-folder have",
     "# readings are lacking that other keys of their sub-folders have",
     "their cells in the output are blank. Check whether the well was measured and the file is "
     "whole"},
    {"not-a-number", "One measured value is no number", "# measured values are no numbers",
     "they stand in the output as they are. Leave them out of calculations, or mend the file"},
    {"number-as-text", "One measured value is a number written as text",
     "# measured values are numbers written as text",
     "they stay texts in the output, which calculations pass over. Store numbers in the file; "
     "where a decimal comma is the only reason, --decimal-comma reads them as numbers"},
    {"skipped-folder", "One folder inside a sub-folder was not read",
     "# folders inside sub-folders were not read",
     "only files that lie directly in a sub-folder are. Move its files up, or make it a sub-folder "
     "of the processing folder"},
    {"rounded-number", "One field of a file name counts as a whole number that it is not",
     "# fields of file names count as whole numbers that they are not",
     "the readings may stand with those of another replication or day. Write whole numbers into "
     "the file names"},
    {"key-outside-plate", "One key names a well that its plate does not have",
     "# keys name wells that their plates do not have",
     "they cannot be placed on a plate. Correct the well in the file"},
}};

std::string TextOf(const Wording& wording, std::size_t count) {
  std::string text(count == 1 ? wording.one : wording.several);
  const std::size_t mark = text.find('#');
  if (mark != std::string::npos) text.replace(mark, 1, GroupedDigits(count));
  return text + ": " + std::string(wording.advice) + ".";
}

}  // namespace

std::string_view NameOf(FindingKind kind) {
  return kWordings[static_cast<std::size_t>(kind)].name;
}

std::string PlaceText(const FindingPlace& place) {
  std::string text;
  const auto add = [&](const char* separator, const char* name, std::string_view value) {
    if (value.empty()) return;
    if (!text.empty()) text += separator;
    text += name;
    text += value;
  };
  // The mark that ends a key would stand before the next mark.
  std::string_view key = place.key;
  if (key.ends_with(';')) key.remove_suffix(1);
  add("", "", place.file);
  add(", ", "row ", place.row > 0 ? std::to_string(place.row) : "");
  add(", ", "column ", place.column);
  add(", ", "key ", Shortened(key, kLongestKey));
  add(": ", "", place.detail);
  return text;
}

bool Findings::IsEmpty() const {
  return std::ranges::all_of(noted_, [](const Noted& noted) { return noted.count == 0; });
}

std::vector<Finding> Findings::All() const {
  // In the order of the kinds, whichever was met first: the reports of several runs can be
  // compared.
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
