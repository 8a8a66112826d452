// What a failed call of another program's object model means to this program.
#pragma once

#include <string_view>

#include "platform/error.h"
#include "platform/windows/windows_api.h"

#include <oaidl.h>

namespace korvex {

// Whether the program could not serve the call at this moment and may be asked again.
bool IsBusy(HRESULT result);

// The error of a call that failed without a description of its own; `member` is what was called.
Error AutomationError(HRESULT result, std::string_view member);

// The number in `exception`, whose texts are freed.
HRESULT TakeResult(EXCEPINFO& exception);

// The error that the program described itself, behind the result DISP_E_EXCEPTION. Frees the texts
// of `exception`.
Error AutomationError(EXCEPINFO& exception, std::string_view member);

// "The application is not registered (0x80040154)".
std::string ResultText(HRESULT result);

}  // namespace korvex
