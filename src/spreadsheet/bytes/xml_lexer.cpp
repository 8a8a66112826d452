#include "spreadsheet/bytes/xml_lexer.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

#include "spreadsheet/bytes/refusal.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr const char* kBadNumber = "reference to invalid character number";
constexpr const char* kBadDeclaration = "XML declaration not well-formed";
constexpr std::string_view kBlanks = " \t\r\n";

struct Entity {
  std::string_view name;
  char character;
};
constexpr Entity kEntities[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

const Entity* FindEntity(std::string_view name) {
  const auto* const found = std::find_if(std::begin(kEntities), std::end(kEntities),
                                         [&](const Entity& entity) { return entity.name == name; });
  return found == std::end(kEntities) ? nullptr : found;
}

// The code of "#65" or "#x41"; 0 for a number that is no character.
char32_t CodeOf(std::string_view number) {
  const bool is_hex = number[1] == 'x';
  number.remove_prefix(is_hex ? 2 : 1);
  std::uint32_t code = 0;
  const char* const end = number.data() + number.size();
  const auto error = std::from_chars(number.data(), end, code, is_hex ? 16 : 10).ec;
  const bool is_control = code < 0x20 && code != '\t' && code != '\n' && code != '\r';
  const bool is_surrogate = code >= 0xD800 && code < 0xE000;
  const bool is_none = code == 0xFFFE || code == 0xFFFF || code > 0x10FFFF;
  return error != std::errc() || is_control || is_surrogate || is_none ? 0 : code;
}

// The name="value" pairs of a declaration, of which each has a blank in front.
class Pairs {
 public:
  explicit Pairs(std::string_view text) : left(text) {}

  // Takes the next one; false at the end and where none stands.
  bool Take() {
    const std::size_t size = left.size();
    SkipBlanks();
    if (left.empty()) return false;
    if (left.size() == size) return is_sound = false;
    name = left.substr(0, std::min(left.find_first_of("= \t\r\n"), left.size()));
    left.remove_prefix(name.size());
    SkipBlanks();
    if (name.empty() || !left.starts_with('=')) return is_sound = false;
    left.remove_prefix(1);
    SkipBlanks();
    if (!left.starts_with('"') && !left.starts_with('\'')) return is_sound = false;
    const std::size_t close = left.find(left[0], 1);
    if (close == std::string_view::npos) return is_sound = false;
    value = left.substr(1, close - 1);
    is_sound = std::all_of(value.begin(), value.end(),
                           [](char letter) { return IsXmlByte(letter, kXmlNamePart); });
    if (is_sound) left.remove_prefix(close + 1);
    return is_sound;
  }

  std::string_view left;
  std::string_view name;
  std::string_view value;
  bool is_sound = true;

 private:
  void SkipBlanks() { left.remove_prefix(std::min(left.find_first_not_of(kBlanks), left.size())); }
};

bool IsLetter(char byte) {
  return (byte | 0x20) >= 'a' && (byte | 0x20) <= 'z';
}

}  // namespace

// The version comes first, then the encoding, then whether the document stands alone.
std::string_view XmlLexer::DeclaredEncoding(std::string_view text) {
  Pairs pairs(text);
  std::string_view encoding;
  bool is_sound = pairs.Take() && pairs.name == "version";
  bool has_more = is_sound && pairs.Take();
  if (has_more && pairs.name == "encoding") {
    encoding = pairs.value;
    is_sound = !encoding.empty() && IsLetter(encoding[0]);
    has_more = is_sound && pairs.Take();
  }
  if (has_more) {
    is_sound = pairs.name == "standalone" && (pairs.value == "yes" || pairs.value == "no") &&
               !pairs.Take();
  }
  if (!is_sound || !pairs.is_sound) Fail(pairs.left.data(), kBadDeclaration);
  return encoding;
}

const char* XmlLexer::OtherNameEnd(const char* p) {
  if (IsAscii(*p)) return Unexpected(p);
  char32_t code = 0;
  const char* const next = Character(p, code);
  if (next == nullptr) return nullptr;
  return IsXmlNameStart(code) ? NameRest(next) : Unexpected(p);
}

const char* XmlLexer::NameRest(const char* p) {
  for (;;) {
    while (IsXmlByte(*p, kXmlNamePart)) ++p;
    if (IsAscii(*p)) return p;
    char32_t code = 0;
    const char* const next = Character(p, code);
    if (next == nullptr) return nullptr;
    if (!IsXmlNamePart(code)) return Unexpected(p);
    p = next;
  }
}

const char* XmlLexer::OtherValueEnd(const char* p, char quote, bool& is_coded) {
  for (;;) {
    while (IsXmlByte(*p, kXmlPlainValue)) ++p;
    if (*p == quote) return p;
    if (*p == '"' || *p == '\'') {
      ++p;
    } else if (IsBlank(*p)) {
      is_coded = true;
      ++p;
    } else if (*p == '&') {
      is_coded = true;
      p = Reference(p);
    } else {
      p = *p == '<' ? Unexpected(p) : AnyCharacter(p);
    }
    if (p == nullptr) return nullptr;
  }
}

const char* XmlLexer::OtherTextEnd(const char* p, XmlPlace place, bool& is_coded) {
  const bool is_cdata = place == XmlPlace::kCdata;
  const XmlByte plain = is_cdata ? kXmlPlainCdata : kXmlPlainText;
  const char* const end = input_.End();
  for (;;) {
    while (IsXmlByte(*p, plain)) ++p;
    const char* next = p + 1;
    switch (*p) {
      case '<':
        return p;
      case '&':
        is_coded = true;
        next = Reference(p);
        break;
      case '\r':
        // A line feed behind it belongs to the same line end.
        is_coded = true;
        if (next == end) return p;
        break;
      case ']':
        // "]]>" ends a CDATA section and stands nowhere else.
        if (p[1] == ']' && p[2] == '>') return is_cdata ? p : Unexpected(p);
        if (next == end || (p[1] == ']' && p + 2 == end)) return p;
        break;
      default:
        next = AnyCharacter(p);
    }
    if (next == nullptr) return p;
    p = next;
  }
}

// "&amp;", "&#65;", "&#x41;": without a document type there are no other entities.
const char* XmlLexer::Reference(const char* p) {
  const char* const start = p++;
  if (*p == '#') {
    const bool is_hex = p[1] == 'x';
    p += is_hex ? 2 : 1;
    const char* const digits = p;
    const auto is_digit = [is_hex](char byte) {
      return IsAsciiDigit(byte) || (is_hex && (byte | 0x20) >= 'a' && (byte | 0x20) <= 'f');
    };
    while (is_digit(*p)) ++p;
    if (p == digits || *p != ';') return Unexpected(p);
    if (CodeOf({start + 1, p}) == 0) Fail(start, kBadNumber);
    return p + 1;
  }
  if ((p = NameEnd(p)) == nullptr) return nullptr;
  if (*p != ';') return Unexpected(p);
  if (FindEntity({start + 1, p}) == nullptr) Fail(start, "undefined entity");
  return p + 1;
}

const char* XmlLexer::AnyCharacter(const char* p) {
  char32_t code = 0;
  if (!IsAscii(*p)) return Character(p, code);
  return IsXmlByte(*p, kXmlPlainCdata) || *p == '\r' || *p == ']' ? p + 1 : Unexpected(p);
}

// A character that is not ASCII.
const char* XmlLexer::Character(const char* p, char32_t& code) {
  const char* const end = input_.End();
  const auto available = static_cast<std::size_t>(end - p);
  const Utf8Character character = FirstUtf8({p, std::min(available, kLongestUtf8)});
  if (character.code == kInvalidByte) {
    const auto lead = static_cast<unsigned char>(*p);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    const bool is_cut = lead >= 0xC2 && lead <= 0xF4 && available < length;
    return Unexpected(is_cut ? end : p);
  }
  code = character.code;
  return code == 0xFFFE || code == 0xFFFF ? Unexpected(p) : p + character.length;
}

const char* XmlLexer::Unexpected(const char* p) {
  if (p != input_.End()) Fail(p, kXmlBadToken);
  return nullptr;
}

bool XmlLexer::Expect(const char* p, std::string_view literal) {
  for (const char letter : literal) {
    if (*p != letter) return Unexpected(p) != nullptr;
    ++p;
  }
  return true;
}

void XmlLexer::Fail(const char* place, const char* reason) {
  Refuse("is damaged: " + What() + " is not sound XML in line " +
         GroupedDigits(input_.Line(place)) + " (" + reason + ")");
}

void DecodeXml(std::string_view coded, XmlPlace place, std::string& out) {
  const bool is_value = place == XmlPlace::kValue;
  for (std::size_t i = 0; i < coded.size(); ++i) {
    const char byte = coded[i];
    if (byte == '&' && place != XmlPlace::kCdata) {
      const std::size_t end = coded.find(';', i);
      const std::string_view name = coded.substr(i + 1, end - i - 1);
      if (name[0] == '#') {
        AppendUtf8(CodeOf(name), out);
      } else {
        out += FindEntity(name)->character;
      }
      i = end;
    } else if (byte == '\r') {
      if (i + 1 < coded.size() && coded[i + 1] == '\n') ++i;
      out += is_value ? ' ' : '\n';
    } else {
      out += is_value && IsXmlByte(byte, kXmlBlank) ? ' ' : byte;
    }
  }
}

}  // namespace korvex
