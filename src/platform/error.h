// The one exception type of the program, and the errors that the program tells apart by number.
#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace korvex {

// Numbers that code raises or tests. Every number has a standard text (`StandardErrorText`).
namespace error_number {
inline constexpr int kInvalidCall = 5;
inline constexpr int kOverflow = 6;
inline constexpr int kOutOfMemory = 7;
inline constexpr int kSubscript = 9;
inline constexpr int kTypeMismatch = 13;
inline constexpr int kCannotPerform = 17;  // deliberate: the user has been told already
inline constexpr int kUserInterrupt = 18;  // a stop that the user confirmed
inline constexpr int kInternal = 51;
inline constexpr int kFileNotFound = 53;
inline constexpr int kDeviceIo = 57;
inline constexpr int kFileExists = 58;
inline constexpr int kDiskFull = 61;
inline constexpr int kDeviceUnavailable = 68;
inline constexpr int kPermissionDenied = 70;
inline constexpr int kPathFileAccess = 75;
inline constexpr int kPathNotFound = 76;
inline constexpr int kObjectNotSet = 91;
inline constexpr int kNoSuchApplication = 429;
inline constexpr int kNoSuchMember = 438;
inline constexpr int kDuplicateKey = 457;
inline constexpr int kAutomation = 1004;  // whatever a spreadsheet application refuses
}  // namespace error_number

// The standard English text of a number; "Application-defined or object-defined error" for a
// number that has none, and an empty text for 0.
std::string StandardErrorText(int number);

// Carries number, source and description up to the procedure that traps it. The source names the
// unit that raised the error; raised without one, it is the program's title. A description is one
// line: control characters of the names in it are escaped (`Shown`). `WithHeading` alone makes
// lines of it.
class Error : public std::exception {
 public:
  // With the standard text of the number.
  explicit Error(int number);
  Error(int number, std::string description, std::string source = "KORVEX");
  // The same error with a line above its description.
  Error WithHeading(std::string_view heading) const;

  int Number() const { return number_; }
  const std::string& Source() const { return source_; }
  const std::string& Description() const { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

 private:
  int number_;
  std::string source_;
  std::string description_;
};

// The exception being handled, as an Error: number 0 with empty texts when none is, 7 for exhausted
// memory, 51 with its own text for any other foreign exception.
Error PendingError();

// Runs a step whose failure must not keep the caller from going on. Swallows every exception and
// returns false then.
template <class Step>
bool Attempt(Step&& step) {
  try {
    step();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace korvex
