#include "platform/standard_streams.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <cstdlib>

#include "platform/windows/windows_api.h"
#include "platform/windows/windows_error.h"

namespace korvex {
namespace {

constexpr char kOutput[] = "standard output";

UINT former_code_page = 0;

// The code page belongs to the console, which outlives the program.
void RestoreCodePage() {
  SetConsoleOutputCP(former_code_page);
}

// What the streams of C and C++ write is UTF-8.
void WriteUtf8ToConsole() {
  former_code_page = GetConsoleOutputCP();
  if (former_code_page == 0 || former_code_page == CP_UTF8) return;
  SetConsoleOutputCP(CP_UTF8);
  std::atexit(RestoreCodePage);
}

Error OutputError() {
  const auto code = static_cast<DWORD>(_doserrno);
  return SystemError(code != ERROR_SUCCESS ? code : DWORD{ERROR_WRITE_FAULT}, "write to", kOutput);
}

}  // namespace

// A program can be started with handles that are not open. The next file would get their values.
void OccupyStandardStreams() {
  for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
    SetLastError(ERROR_SUCCESS);
    if (GetFileType(GetStdHandle(stream)) == FILE_TYPE_UNKNOWN && GetLastError() != ERROR_SUCCESS) {
      SetStdHandle(stream, INVALID_HANDLE_VALUE);
    }
  }
  // The lines of a result end as on every platform.
  for (FILE* stream : {stdout, stderr}) {
    if (_fileno(stream) >= 0) _setmode(_fileno(stream), _O_BINARY);
  }
  WriteUtf8ToConsole();
}

void WriteOutput(std::string_view text) {
  _doserrno = ERROR_SUCCESS;
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) throw OutputError();
}

void FlushOutput() {
  _doserrno = ERROR_SUCCESS;
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) throw OutputError();
}

}  // namespace korvex
