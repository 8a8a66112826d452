// The tokens of XML, where they stand in the window of an input: names, values, references and
// characters.
//
// Each function reads from `p` on and returns the end of what it read, or null when the window ends
// in it and the document may go on. What no document may hold there is refused, with its line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "spreadsheet/bytes/xml_input.h"
#include "spreadsheet/bytes/xml_names.h"

namespace korvex {

// A name as it stands: "table:table-row".
struct XmlRawName {
  std::string_view text;
  std::size_t prefix = 0;  // its length, 0 when there is none
  std::string_view Prefix() const { return {text.data(), prefix}; }
  std::string_view Local() const {
    const std::size_t skipped = prefix == 0 ? 0 : prefix + 1;
    return {text.data() + skipped, text.size() - skipped};
  }
};

// Where a text stands: what is markup, and what of it stands for something else, differ.
enum class XmlPlace { kContent, kCdata, kValue };

class XmlLexer {
 protected:
  // Both must outlive the lexer. `part` is named by refusals.
  XmlLexer(XmlInput& input, const std::string& part) : input_(input), part_(part) {}

  // Nearly all names are ASCII; they are read here, the others out of line.
  [[gnu::always_inline]] const char* NameEnd(const char* p) {
    if (!IsXmlByte(*p, kXmlNameStart)) return OtherNameEnd(p);
    do {
      ++p;
    } while (IsXmlByte(*p, kXmlNamePart));
    return IsAscii(*p) ? p : NameRest(p);
  }
  // Goes on with a name.
  const char* NameRest(const char* p);
  [[gnu::always_inline]] const char* QualifiedName(const char* p, XmlRawName& name) {
    const char* const start = p;
    if ((p = NameEnd(p)) == nullptr) return nullptr;
    if (*p == ':') {
      name.prefix = static_cast<std::size_t>(p - start);
      if ((p = NameEnd(p + 1)) == nullptr) return nullptr;
      if (*p == ':') return Unexpected(p);
    }
    name.text = {start, static_cast<std::size_t>(p - start)};
    return p;
  }
  // The value of an attribute, up to its closing quote. `is_coded` becomes true when it has to be
  // decoded.
  [[gnu::always_inline]] const char* ValueEnd(const char* p, char quote, bool& is_coded) {
    while (IsXmlByte(*p, kXmlPlainValue)) ++p;
    return *p == quote ? p : OtherValueEnd(p, quote, is_coded);
  }
  // Text up to the next tag, or to the end of its CDATA section. If the window ends before that, up
  // to where more has to be known, which is never null.
  [[gnu::always_inline]] const char* TextEnd(const char* p, XmlPlace place, bool& is_coded) {
    if (place == XmlPlace::kContent) {
      while (IsXmlByte(*p, kXmlPlainText)) ++p;
      if (*p == '<') return p;
    }
    return OtherTextEnd(p, place, is_coded);
  }
  // One character of a comment or an instruction.
  const char* AnyCharacter(const char* p);
  // Null if `p` is the window's end. Else it refuses what stands there.
  const char* Unexpected(const char* p);
  // Whether the literal stands at `p`; like Unexpected for anything else.
  bool Expect(const char* p, std::string_view literal);

  // What a declaration says of its encoding, "" for nothing. `text` is what stands between "<?xml"
  // and "?>".
  std::string_view DeclaredEncoding(std::string_view text);

  // What a message calls the document.
  std::string What() const { return part_.empty() ? "its XML" : "its part " + part_; }
  [[noreturn, gnu::cold, gnu::noinline]] void Fail(const char* place, const char* reason);

  static bool IsBlank(char byte) { return IsXmlByte(byte, kXmlBlank); }
  static bool IsAscii(char byte) { return static_cast<unsigned char>(byte) < 0x80; }
  static const char* SkipBlanks(const char* p) {
    while (IsBlank(*p)) ++p;
    return p;
  }

  XmlInput& input_;
  const std::string& part_;

 private:
  const char* OtherNameEnd(const char* p);
  const char* OtherValueEnd(const char* p, char quote, bool& is_coded);
  const char* OtherTextEnd(const char* p, XmlPlace place, bool& is_coded);
  const char* Reference(const char* p);
  const char* Character(const char* p, char32_t& code);
};

inline constexpr const char* kXmlBadToken = "not well-formed (invalid token)";

// Appends a text that the lexer has read, with references replaced and line ends made one. In a
// value, a blank of any kind is a space. Nothing gets longer by it.
void DecodeXml(std::string_view coded, XmlPlace place, std::string& out);

}  // namespace korvex
