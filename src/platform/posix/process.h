// Other programs, started without a shell in between: an argument is one argument whatever it
// holds. Each gets a session of its own (Ctrl-C in the terminal does not reach it), the usual
// signal handling, and /dev/null as standard output and standard error.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace korvex {

// Full path of an executable file from the absolute folders of PATH, then from `further_folders`;
// empty when there is none.
std::string FindProgram(const std::string& name,
                        std::initializer_list<const char*> further_folders = {});

// Starts the program arguments[0] (a full path) with a descriptor as its standard input, or
// /dev/null for -1. Returns its process id, -1 when it cannot be started.
pid_t StartProgram(const std::vector<std::string>& arguments, int standard_input);

// Starts a program that nobody waits for; it leaves no finished process behind.
void StartDetached(const std::vector<std::string>& arguments);

// The wait status of a started program, none when it does not end within `patience`.
std::optional<int> WaitForProgram(pid_t program, std::chrono::milliseconds patience);

}  // namespace korvex
