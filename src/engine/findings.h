// What a run noticed that looks wrong in data which could be converted. A finding changes no cell:
// it is told after the run, written into the report, and makes a strict run fail.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvex {

// In the order in which they are told. Each has a wording in findings.cpp, at the same place.
enum class FindingKind : std::uint8_t {
  kMisplacedReplication,
  kOverwrittenHeader,
  kUnreadRows,
  kRepeatedHeader,
  kMissingKeyColumn,
  kMissingOutputColumn,
  kNearEqualKeys,
  kConflictingOutput,
  kIncompleteReplication,
  kNotANumber,
  kNumberAsText,
  kSkippedFolder,
  kRoundedNumber,
  kKeyOutsidePlate,
};
inline constexpr std::size_t kFindingKinds = 14;

// The name of a kind for programs: "misplaced-replication".
std::string_view NameOf(FindingKind kind);

// Where something was noticed. What does not apply is empty, or 0 for the row.
struct FindingPlace {
  std::string file;  // relative to the processing folder, with "/" between the names
  int row = 0;       // of that file's sheet "data", one-based
  std::string key;
  std::string column;
  std::string detail;  // what stands there, in a few words
};
// "Set 1/KIN01-1-1.xls, row 12, column Delta OD, key well=D07: detail". Empty for no place.
std::string PlaceText(const FindingPlace& place);

// All places of one kind. `text` is one sentence: what is so, what it means for the output, and
// what to do.
struct Finding {
  FindingKind kind;
  std::size_t count = 0;
  std::string text;
  std::vector<FindingPlace> places;  // the first ones
};

// Collects the findings of one run. Memory is bounded: of each kind the first places are kept, the
// others are counted.
class Findings {
 public:
  static constexpr std::size_t kPlacesKept = 20;

  // `make_place` returns a FindingPlace; it is called only while places are kept.
  template <class MakePlace>
  void Note(FindingKind kind, MakePlace&& make_place) {
    Noted& noted = Of(kind);
    if (noted.places.size() < kPlacesKept) noted.places.push_back(make_place());
    ++noted.count;
  }

  // Whether nothing was noted: what a strict run asks.
  bool IsEmpty() const;
  // In the order of the kinds.
  std::vector<Finding> All() const;

 private:
  struct Noted {
    std::size_t count = 0;
    std::vector<FindingPlace> places;
  };

  Noted& Of(FindingKind kind) { return noted_[static_cast<std::size_t>(kind)]; }

  std::array<Noted, kFindingKinds> noted_;
};

}  // namespace korvex
