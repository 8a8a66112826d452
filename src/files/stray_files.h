// Files that no laboratory made and that still lie among its workbooks, most of them hidden: what a
// system notes about a folder, and the mark that a spreadsheet application leaves beside a workbook
// that is open in it. A run reads every file of a sub-folder, so it meets them; none is a workbook.
#pragma once

#include <string>

#include "platform/error.h"

namespace korvex {

// What the file is and what to do about it, by its name: "… is not a workbook: …", with the path in
// front. Empty for all other names.
std::string StrayFileText(const std::string& path);

// Opens a workbook; where that fails for such a file, the error says what the file is. A workbook
// that only bears such a name is opened.
template <class Open>
decltype(auto) OpenUnlessStray(const std::string& path, Open&& open) {
  try {
    return open();
  } catch (const Error& error) {
    const std::string text = StrayFileText(path);
    if (text.empty()) throw;
    throw Error(error.Number(), text, error.Source());
  }
}

}  // namespace korvex
