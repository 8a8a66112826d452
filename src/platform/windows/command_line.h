// What a Windows program was called with. The system hands over one text, which every program takes
// apart by itself.
#pragma once

#include <string>
#include <vector>

namespace korvex {

// The arguments of a command line, in UTF-8, without the program's own name. They are parted by the
// rules of the C library, but for one: the backslash at the end of a folder's name does not take
// the quotation mark away that ends the argument ("C:\plates\"), as command processors complete it.
//
// An argument with "*" or "?" outside of quotation marks stands for the files and folders of that
// name, in ascending order and without hidden ones, where there are any: no command processor of
// Windows does this for its programs. Only the last name of a path can have them.
std::vector<std::string> CommandLineArguments(const std::wstring& command_line);

}  // namespace korvex
