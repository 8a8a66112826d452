// How a reader refuses a file: Error 1004, whose description is a predicate.
//
// Readers work on bytes and do not know the name of the file. They say what it is or does ("is
// empty (0 bytes)"), and the one place that knows the file puts its path in front: NamingFile.
// Wherever a header in spreadsheet/ says that something is refused, it is refused like this. An
// exception from memory that runs out passes through the readers; NamingFile makes Error 7 of it.
#pragma once

#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/error.h"

namespace korvex {

[[noreturn]] inline void Refuse(const std::string& predicate) {
  throw Error(error_number::kAutomation, predicate);
}

// For a file that is no workbook: `what` comes after "it is".
[[noreturn]] inline void RefuseAs(std::string_view what) {
  Refuse("is not a workbook: it is " + std::string(what));
}

[[noreturn]] inline void RefuseForMemory(const std::string& file) {
  throw Error(error_number::kOutOfMemory, file + " needs more memory than there is");
}

// Runs a step of reading the file of that path. Other errors than the two above pass through.
template <typename Step>
decltype(auto) NamingFile(const std::string& file, Step&& step) {
  try {
    return step();
  } catch (const Error& error) {
    if (error.Number() != error_number::kAutomation) throw;
    throw Error(error.Number(), file + " " + error.Description(), error.Source());
  } catch (const std::bad_alloc&) {
    RefuseForMemory(file);
  } catch (const std::length_error&) {  // a container cannot grow so far
    RefuseForMemory(file);
  }
}

}  // namespace korvex
