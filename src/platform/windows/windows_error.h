// The errors that a system call's error code stands for.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/error.h"

namespace korvex {

// What a missing name means to the operation that failed on it: error 53 when a file was looked for
// in a folder that exists, 76 when a folder was.
enum class Missing { kFile, kFolder };

// What Windows says about an error code or an HRESULT, without a full stop.
std::string SystemText(std::uint32_t code);

// "Cannot read C:\data\x.xls: Permission denied." `code` is of GetLastError, `action` is the verb
// ("read"). Causes that every system knows read the same on all of them; the rest comes in the
// words of Windows.
Error SystemError(std::uint32_t code, std::string_view action, const std::string& path,
                  Missing missing = Missing::kFolder);

// Error 70 for a file that cannot be written now; `witness` is what is known about the other one.
Error InUse(const std::string& path, const std::string& witness = {});

}  // namespace korvex
