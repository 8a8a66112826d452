#include "platform/code_page_converter.h"

namespace korvex {

bool IsDoubleBytePage(std::uint16_t number) {
  switch (number) {
    case 932:    // Shift-JIS
    case 936:    // GBK
    case 949:    // Korean
    case 950:    // Big5
    case 1361:   // Johab
    case 10001:  // the same scripts on the Macintosh
    case 10002:
    case 10003:
    case 10008:
      return true;
    default:
      return false;
  }
}

}  // namespace korvex
