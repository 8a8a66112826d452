// The sample campaign that comes with the program, for somebody who tries the program out: a copy
// in the user's documents, and the settings that it is converted with.
#pragma once

#include <string>

namespace korvex::sample_campaign {

// The folder of the samples that were installed with the program, or that the program was built
// with; error 76 when there is none.
std::string InstalledFolder();

// Copies what the user's copy lacks of the campaign in `samples`: workbooks that are there already
// stay as they are. Returns the processing folder.
std::string Copy(const std::string& samples);

// Whether the columns and the output file of `samples` would take the place of other ones that the
// user has chosen.
bool WouldReplaceSettings(const std::string& samples);
// Stores them.
void TakeSettings(const std::string& samples);

}  // namespace korvex::sample_campaign
