#pragma once

#include "platform/sound.h"

namespace korvex {

// Plays a message box's sound by its number: 1 the beep, 2 to 9 a system event, any number above
// the default sound; 0 and below are silent.
void PlayMessageSound(Sound& sound, int number);

}  // namespace korvex
