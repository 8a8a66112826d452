#pragma once

namespace korvex {

// Where the file chooser's splitter may stand, in twips from the left edge: the drive box and the
// folder list on its left keep a usable width, and so does the file list, whatever happens to them,
// up to its right edge.
int ClampSplitter(int left, int file_list_right);

}  // namespace korvex
