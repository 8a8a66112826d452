#include "platform/windows/windows_sound.h"

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

// After the header of the system, which it needs.
#include <mmsystem.h>

namespace korvex {
namespace {
constexpr UINT kPlainBeep = 0xFFFFFFFF;
}

void WindowsSound::Beep() {
  MessageBeep(kPlainBeep);
}

void WindowsSound::PlayAlias(const std::string& alias) {
  PlaySoundW(ToWide(alias).c_str(), nullptr, SND_ALIAS | SND_ASYNC | SND_NOWAIT);
}

}  // namespace korvex
