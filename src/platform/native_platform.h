// The machine that a program runs on. Every platform has one implementation of this header.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/services.h"
#include "platform/terminal.h"

namespace korvex {

// Owns the services that the machine provides.
class NativePlatform {
 public:
  // The settings live in `settings_file` (a missing file holds none), or in the per-user store.
  explicit NativePlatform(const std::optional<std::string>& settings_file = std::nullopt);
  ~NativePlatform();
  NativePlatform(const NativePlatform&) = delete;
  NativePlatform& operator=(const NativePlatform&) = delete;

  // Without spreadsheet application, dialogs, message loop and main window, which the program
  // chooses.
  // Valid as long as this object.
  Services Provided() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

// The terminal behind standard input and standard error; at most one at a time.
std::unique_ptr<Terminal> OpenTerminal();

// What the program was called with, in UTF-8, its own name left out.
std::vector<std::string> ProgramArguments(int argc, char** argv);

}  // namespace korvex
