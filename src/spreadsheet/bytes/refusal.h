// How the readers refuse a file.
//
// Readers work on bytes and do not know whose they are: their causes are predicates ("is empty (0
// bytes)"), and the one place that knows the file puts its path in front.
#pragma once

#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/error.h"

namespace korvex {

// Throws Error 1004 with the predicate as its description.
[[noreturn]] inline void Refuse(const std::string& predicate) {
  throw Error(error_number::kAutomation, predicate);
}

// The same for what is no workbook; `what` stands behind "it is".
[[noreturn]] inline void RefuseAs(std::string_view what) {
  Refuse("is not a workbook: it is " + std::string(what));
}

[[noreturn]] inline void RefuseForMemory(const std::string& file) {
  throw Error(error_number::kOutOfMemory, file + " needs more memory than there is");
}

// Runs a step of reading `file` and puts its path in front of a refusal. Memory that runs out
// becomes Error 7, which names the file, too.
template <typename Step>
decltype(auto) NamingFile(const std::string& file, Step&& step) {
  try {
    return step();
  } catch (const Error& error) {
    if (error.Number() != error_number::kAutomation) throw;
    throw Error(error.Number(), file + " " + error.Description(), error.Source());
  } catch (const std::bad_alloc&) {
    RefuseForMemory(file);
  } catch (const std::length_error&) {  // of a container that cannot grow so far
    RefuseForMemory(file);
  }
}

}  // namespace korvex
