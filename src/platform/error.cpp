#include "platform/error.h"

#include <new>
#include <utility>

#include "platform/shown_text.h"
#include "text/text.h"

namespace korvex {

std::string StandardErrorText(int number) {
  switch (number) {
    case 0:
      return "";
    case error_number::kInvalidCall:
      return "Invalid procedure call or argument";
    case error_number::kOverflow:
      return "Overflow";
    case error_number::kOutOfMemory:
      return "Out of memory";
    case error_number::kSubscript:
      return "Subscript out of range";
    case error_number::kTypeMismatch:
      return "Type mismatch";
    case error_number::kCannotPerform:
      return "Can't perform requested operation";
    case error_number::kUserInterrupt:
      return "User interrupt occurred";
    case error_number::kInternal:
      return "Internal error";
    case error_number::kFileNotFound:
      return "File not found";
    case error_number::kDeviceIo:
      return "Device I/O error";
    case error_number::kFileExists:
      return "File already exists";
    case error_number::kDiskFull:
      return "Disk full";
    case error_number::kDeviceUnavailable:
      return "Device unavailable";
    case error_number::kPermissionDenied:
      return "Permission denied";
    case error_number::kPathFileAccess:
      return "Path/File access error";
    case error_number::kPathNotFound:
      return "Path not found";
    case error_number::kObjectNotSet:
      return "Object variable or With block variable not set";
    case error_number::kNoSuchApplication:
      return "ActiveX component can't create object";
    case error_number::kNoSuchMember:
      return "Object doesn't support this property or method";
    case error_number::kDuplicateKey:
      return "This key is already associated with an element of this collection";
    default:
      return "Application-defined or object-defined error";
  }
}

Error::Error(int number) : Error(number, StandardErrorText(number)) {}

Error::Error(int number, std::string description, std::string source)
    : number_(number), source_(std::move(source)), description_(Shown(std::move(description))) {}

Error Error::WithHeading(std::string_view heading) const {
  Error error = *this;
  // Not through the constructor, which would escape the line break.
  error.description_ = std::string(heading) + kLineBreak + description_;
  return error;
}

Error PendingError() {
  const std::exception_ptr pending = std::current_exception();
  if (!pending) return Error(0, "", "");
  try {
    // Rethrowing is the only way to ask an exception for its type.
    std::rethrow_exception(pending);
  } catch (const Error& error) {
    return error;
  } catch (const std::bad_alloc&) {
    return Error(error_number::kOutOfMemory);
  } catch (const std::exception& error) {
    return Error(error_number::kInternal, error.what());
  } catch (...) {
    return Error(error_number::kInternal);
  }
}

}  // namespace korvex
