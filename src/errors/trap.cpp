#include "errors/trap.h"

#include "errors/basFuncs.h"
#include "settings/basSettings.h"
#include "util/attempt.h"

namespace korvex {

void TrappedError::Report(const std::optional<std::string>& message) const {
  bool send_mail = false;
  Attempt([&] { send_mail = basSettings::SendEmailOnError(); });
  ReportError(location_, message, true, true, true, send_mail);
}

}  // namespace korvex
