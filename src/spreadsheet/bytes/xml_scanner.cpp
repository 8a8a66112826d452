#include "spreadsheet/bytes/xml_scanner.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/bytes/unicode.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr int kDeepest = 256;
constexpr std::size_t kLongestText = 4u << 20;    // no cell holds a hundredth of it
constexpr std::size_t kLongestPiece = 8u << 20;   // of a tag, comment or instruction
constexpr std::size_t kLongestNames = 16u << 20;  // of the elements around one
// No program writes documents whose names, with their namespaces spelled out, are longer than three
// times the document.
constexpr std::uint64_t kMostNamesPerByte = 4;
constexpr std::uint64_t kMostNamesAtLeast = 64u << 20;
constexpr std::size_t kFewAttributes = 16;

constexpr const char* kBadToken = "not well-formed (invalid token)";
constexpr const char* kBadNumber = "reference to invalid character number";
constexpr const char* kBadDeclaration = "XML declaration not well-formed";

bool IsBlank(char byte) {
  return IsXmlByte(byte, kXmlBlank);
}

bool IsAscii(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

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

// Appends the text with references replaced and line ends made one. In a value, a blank of any kind
// is a space.
void Decode(std::string_view coded, bool is_value, std::string& out) {
  for (std::size_t i = 0; i < coded.size(); ++i) {
    const char byte = coded[i];
    if (byte == '&') {
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
      out += is_value && IsBlank(byte) ? ' ' : byte;
    }
  }
}

const char* ReasonOf(XmlNamespaces::Fault fault) {
  switch (fault) {
    case XmlNamespaces::Fault::kRepeated:
      return "duplicate attribute";
    case XmlNamespaces::Fault::kNoUri:
      return "must not undeclare prefix";
    case XmlNamespaces::Fault::kReservedXml:
      return "reserved prefix (xml) must not be undeclared or bound to another namespace name";
    case XmlNamespaces::Fault::kReservedXmlns:
      return "reserved prefix (xmlns) must not be declared or undeclared";
    default:
      return "prefix must not be bound to one of the reserved namespace names";
  }
}

}  // namespace

// Nearly all names are ASCII; they are read here, the others out of line.
[[gnu::always_inline]] inline const char* XmlScanner::NameEnd(const char* p) {
  if (!IsXmlByte(*p, kXmlNameStart)) return OtherNameEnd(p);
  do {
    ++p;
  } while (IsXmlByte(*p, kXmlNamePart));
  return IsAscii(*p) ? p : NameRest(p);
}

[[gnu::always_inline]] inline const char* XmlScanner::QualifiedName(const char* p, RawName& name) {
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

void XmlScanner::Run() {
  at_ = input_.Begin();
  end_ = input_.End();
  while (!ReadDeclaration()) {
    at_ = input_.More(at_);
    end_ = input_.End();
  }
  for (;;) {
    while (Next()) {
    }
    if (input_.IsLast()) {
      if (at_ == end_ && has_root_ && depth_ == 0) return;
      RefuseEnd();
    }
    CheckLength(end_);
    at_ = input_.More(at_);
    end_ = input_.End();
  }
}

bool XmlScanner::Next() {
  if (is_in_cdata_) return ReadCdata();
  if (*at_ != '<') return depth_ > 0 ? ReadText() : ReadBetween();
  switch (at_[1]) {
    case '/':
      return ReadEndTag();
    case '?':
      return ReadInstruction();
    case '!':
      if (at_[2] == '-') return ReadComment();
      if (at_ + 2 == end_) return Unexpected(end_) != nullptr;
      return depth_ > 0 ? ReadCdataStart() : ReadDoctype();
    default:
      return ReadStartTag();
  }
}

// <?xml version="1.0" encoding="UTF-8" standalone="yes"?>, only at the very beginning.
bool XmlScanner::ReadDeclaration() {
  constexpr std::string_view kStart = "<?xml";
  const auto available = static_cast<std::size_t>(end_ - at_);
  const std::string_view begin(at_, std::min(available, kStart.size() + 1));
  if (!kStart.starts_with(begin.substr(0, kStart.size()))) return true;
  if (begin.size() <= kStart.size()) return input_.IsLast();
  if (!IsBlank(begin.back()) && begin.back() != '?') return true;
  const char* p = at_ + kStart.size();
  while (*p != '?' || p[1] != '>') {
    if ((p = AnyCharacter(p)) != nullptr) continue;
    CheckLength(end_);
    return input_.IsLast();
  }
  const char* rest = p + 2;
  std::string_view left(at_ + kStart.size(), static_cast<std::size_t>(p - at_) - kStart.size());
  const auto fail = [&] { Fail(left.data(), kBadDeclaration); };
  // Takes the next name="value"; false at the end.
  std::string_view name;
  std::string_view value;
  const auto take = [&] {
    const auto skip_blanks = [&] {
      while (!left.empty() && IsBlank(left[0])) left.remove_prefix(1);
    };
    const std::size_t size = left.size();
    skip_blanks();
    if (left.empty()) return false;
    if (left.size() == size) fail();
    name = left.substr(0, std::min(left.find_first_of("= \t\r\n"), left.size()));
    left.remove_prefix(name.size());
    skip_blanks();
    if (name.empty() || left.empty() || left[0] != '=') fail();
    left.remove_prefix(1);
    skip_blanks();
    if (left.empty() || (left[0] != '"' && left[0] != '\'')) fail();
    const std::size_t close = left.find(left[0], 1);
    if (close == std::string_view::npos) fail();
    value = left.substr(1, close - 1);
    for (const char letter : value) {
      if (!IsXmlByte(letter, kXmlNamePart)) fail();
    }
    left.remove_prefix(close + 1);
    return true;
  };
  if (!take() || name != "version") fail();
  bool has_more = take();
  std::string_view encoding;
  if (has_more && name == "encoding") {
    encoding = value;
    if (encoding.empty() || (encoding[0] | 0x20) < 'a' || (encoding[0] | 0x20) > 'z') fail();
    has_more = take();
  }
  if (has_more && (name != "standalone" || (value != "yes" && value != "no") || take())) fail();
  if (!encoding.empty()) {
    switch (input_.Declare(encoding, rest)) {
      case XmlInput::Encoding::kFits:
        break;
      case XmlInput::Encoding::kUnknown:
        Fail(encoding.data(), "unknown encoding");
      case XmlInput::Encoding::kContradicts:
        Fail(encoding.data(), "encoding specified in XML declaration is incorrect");
    }
  }
  at_ = rest;
  end_ = input_.End();
  return true;
}

// Outside of the root there are only blanks.
bool XmlScanner::ReadBetween() {
  while (IsBlank(*at_)) ++at_;
  if (*at_ == '<') return true;
  if (at_ != end_) Fail(at_, has_root_ ? "junk after document element" : kBadToken);
  return false;
}

bool XmlScanner::ReadText() {
  const char* p = at_;
  bool is_coded = false;
  for (;;) {
    while (IsXmlByte(*p, kXmlPlainText)) ++p;
    if (*p == '<') break;
    const char* next = p + 1;
    if (*p == '&') {
      is_coded = true;
      next = Reference(p);
    } else if (*p == ']') {
      if (p[1] == ']' && p[2] == '>') Fail(p, kBadToken);
      // What follows may still make it the end of a CDATA section.
      if (p + 1 == end_ || (p[1] == ']' && p + 2 == end_)) next = Unexpected(end_);
    } else if (*p == '\r') {
      is_coded = true;
      if (next == end_) next = Unexpected(end_);
    } else {
      next = AnyCharacter(p);
    }
    if (next == nullptr) break;
    p = next;
  }
  GiveText({at_, p}, is_coded);
  at_ = p;
  return *p == '<';
}

bool XmlScanner::ReadCdata() {
  const char* p = at_;
  bool is_coded = false;
  for (;;) {
    while (IsXmlByte(*p, kXmlPlainText) || *p == '<' || *p == '&') ++p;
    const char* next = p + 1;
    if (*p == ']') {
      if (p[1] == ']' && p[2] == '>') break;
      if (p + 1 == end_ || (p[1] == ']' && p + 2 == end_)) next = Unexpected(end_);
    } else if (*p == '\r') {
      is_coded = true;
      if (next == end_) next = Unexpected(end_);
    } else {
      next = AnyCharacter(p);
    }
    if (next == nullptr) break;
    p = next;
  }
  const std::string_view piece(at_, static_cast<std::size_t>(p - at_));
  if (is_coded) {
    text_.clear();
    for (std::size_t i = 0; i < piece.size(); ++i) {
      if (piece[i] != '\r') text_ += piece[i];
      if (piece[i] == '\r' && (i + 1 == piece.size() || piece[i + 1] != '\n')) text_ += '\n';
    }
    GiveText(text_, false);
  } else {
    GiveText(piece, false);
  }
  at_ = p;
  if (*p != ']' || p[1] != ']' || p[2] != '>') return false;
  at_ += 3;
  is_in_cdata_ = false;
  return true;
}

bool XmlScanner::ReadCdataStart() {
  constexpr std::string_view kStart = "<![CDATA[";
  if (!Expect(at_, kStart)) return false;
  at_ += kStart.size();
  return is_in_cdata_ = true;
}

bool XmlScanner::ReadDoctype() {
  if (has_root_) Fail(at_, "junk after document element");
  if (!Expect(at_, "<!DOCTYPE")) return false;
  Refuse("is damaged: " + What() + " has a document type declaration, which workbooks do not have");
}

bool XmlScanner::ReadComment() {
  if (!Expect(at_, "<!--")) return false;
  const char* p = at_ + 4;
  while (*p != '-' || p[1] != '-') {
    if ((p = AnyCharacter(p)) == nullptr) return false;
  }
  if (p[2] != '>') return Unexpected(p + 2) != nullptr;
  at_ = p + 3;
  CheckLength(at_);
  return true;
}

bool XmlScanner::ReadInstruction() {
  const char* const target = at_ + 2;
  const char* p = NameEnd(target);
  if (p == nullptr) return false;
  const std::string_view name(target, static_cast<std::size_t>(p - target));
  if (!IsBlank(*p) && *p != '?') return Unexpected(p) != nullptr;
  if (name == "xml") Fail(at_, "XML or text declaration not at start of entity");
  if (name.size() == 3 && EqualText(name, "xml")) Fail(target, kBadToken);
  if (*p == '?' && p[1] != '>') return Unexpected(p + 1) != nullptr;
  while (*p != '?' || p[1] != '>') {
    if ((p = AnyCharacter(p)) == nullptr) return false;
  }
  at_ = p + 2;
  CheckLength(at_);
  return true;
}

bool XmlScanner::ReadStartTag() {
  RawName name;
  const char* p = QualifiedName(at_ + 1, name);
  if (p == nullptr) return false;
  if (has_root_ && depth_ == 0) Fail(at_, "junk after document element");
  attributes_.clear();
  coded_.clear();
  prefixed_.clear();
  declarations_.clear();
  for (;;) {
    const char* const gap = p;
    while (IsBlank(*p)) ++p;
    if (*p == '>') {
      Start(name, p + 1, false);
      return true;
    }
    if (*p == '/') {
      if (p[1] != '>') return Unexpected(p + 1) != nullptr;
      Start(name, p + 2, true);
      return true;
    }
    if (p == gap) return Unexpected(p) != nullptr;
    RawName attribute;
    if ((p = QualifiedName(p, attribute)) == nullptr) return false;
    while (IsBlank(*p)) ++p;
    if (*p != '=') return Unexpected(p) != nullptr;
    ++p;
    while (IsBlank(*p)) ++p;
    if (*p != '"' && *p != '\'') return Unexpected(p) != nullptr;
    const char* const value = p + 1;
    bool is_coded = false;
    if ((p = Value(value, *p, is_coded)) == nullptr) return false;
    AddAttribute(attribute, {value, static_cast<std::size_t>(p - value)}, is_coded);
    ++p;
  }
}

// The end of a value, where its closing quote stands.
const char* XmlScanner::Value(const char* p, char quote, bool& is_coded) {
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

// The tag of the element that was opened last, nearly always without blanks.
bool XmlScanner::ReadEndTag() {
  if (depth_ == 0) Fail(at_, has_root_ ? "junk after document element" : kBadToken);
  const std::string_view wanted = std::string_view(names_).substr(open_.back().name_at);
  const char* const name = at_ + 2;
  const char* p = name;
  if (static_cast<std::size_t>(end_ - p) > wanted.size() && p[wanted.size()] == '>' &&
      std::equal(wanted.begin(), wanted.end(), p)) {
    p += wanted.size();
  } else {
    if ((p = NameEnd(p)) == nullptr) return false;
    while (*p == ':') {
      if ((p = NameRest(p + 1)) == nullptr) return false;
    }
    const std::string_view found(name, static_cast<std::size_t>(p - name));
    while (IsBlank(*p)) ++p;
    if (*p != '>') return Unexpected(p) != nullptr;
    if (found != wanted) Fail(name, "mismatched tag");
  }
  at_ = p + 1;
  End();
  return true;
}

// What may stand in an element, a comment or an instruction.
const char* XmlScanner::AnyCharacter(const char* p) {
  char32_t code = 0;
  if (!IsAscii(*p)) return Character(p, code);
  return IsXmlByte(*p, kXmlPlainText) || IsBlank(*p) || *p == '<' || *p == '&' || *p == ']'
             ? p + 1
             : Unexpected(p);
}

// A character that is not ASCII.
const char* XmlScanner::Character(const char* p, char32_t& code) {
  const auto available = static_cast<std::size_t>(end_ - p);
  const Utf8Character character = FirstUtf8({p, std::min(available, kLongestUtf8)});
  if (character.code == kInvalidByte) {
    const auto lead = static_cast<unsigned char>(*p);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    const bool is_cut = lead >= 0xC2 && lead <= 0xF4 && available < length;
    return Unexpected(is_cut ? end_ : p);
  }
  code = character.code;
  return code == 0xFFFE || code == 0xFFFF ? Unexpected(p) : p + character.length;
}

const char* XmlScanner::OtherNameEnd(const char* p) {
  if (IsAscii(*p)) return Unexpected(p);
  char32_t code = 0;
  const char* const next = Character(p, code);
  if (next == nullptr) return nullptr;
  return IsXmlNameStart(code) ? NameRest(next) : Unexpected(p);
}

const char* XmlScanner::NameRest(const char* p) {
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

// "&amp;", "&#65;", "&#x41;": without a document type there are no other entities.
const char* XmlScanner::Reference(const char* p) {
  const char* const start = p++;
  if (*p == '#') {
    const bool is_hex = p[1] == 'x';
    p += is_hex ? 2 : 1;
    const char* const digits = p;
    const auto is_digit = [is_hex](char byte) {
      return (byte >= '0' && byte <= '9') ||
             (is_hex && (byte | 0x20) >= 'a' && (byte | 0x20) <= 'f');
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

const char* XmlScanner::Unexpected(const char* p) {
  if (p != end_) Fail(p, kBadToken);
  return nullptr;
}

bool XmlScanner::Expect(const char* p, std::string_view literal) {
  for (const char letter : literal) {
    if (*p != letter) return Unexpected(p) != nullptr;
    ++p;
  }
  return true;
}

void XmlScanner::AddAttribute(const RawName& name, std::string_view value, bool is_coded) {
  constexpr std::string_view kDeclares = "xmlns";
  const std::string_view first = name.prefix > 0 ? name.Prefix() : name.text;
  if (first == kDeclares) {
    declarations_.push_back({name, value, is_coded});
    return;
  }
  if (is_coded) coded_.push_back(attributes_.size());
  if (name.prefix > 0) prefixed_.push_back({attributes_.size(), name, nullptr});
  names_size_ += name.text.size();
  attributes_.push_back({{kNoNamespace, name.Local()}, value});
}

void XmlScanner::DeclareNamespaces() {
  for (const Declaration& declaration : declarations_) {
    const RawName& name = declaration.name;
    std::string_view uri = declaration.uri;
    if (declaration.is_coded) {
      text_.clear();
      Decode(uri, true, text_);
      uri = text_;
    }
    const std::string_view prefix = name.prefix > 0 ? name.Local() : std::string_view();
    const XmlNamespaces::Fault fault = namespaces_.Declare(prefix, uri, depth_);
    if (fault == XmlNamespaces::Fault::kTooLong) RefuseLength();
    if (fault != XmlNamespaces::Fault::kNone) Fail(name.text.data(), ReasonOf(fault));
  }
}

void XmlScanner::Resolve() {
  for (Prefixed& one : prefixed_) {
    const XmlNamespaces::Meaning* const meaning = namespaces_.Find(one.name.Prefix());
    if (meaning == nullptr) Fail(one.name.text.data(), "unbound prefix");
    attributes_[one.attribute].name.space = meaning->letter;
    one.uri = &meaning->uri;
    names_size_ += meaning->uri.size();
  }
  if (names_size_ > kMostNamesAtLeast + kMostNamesPerByte * input_.Size()) RefuseLength();
}

// Two attributes of one namespace and one name. Tags with many attributes are sorted for it, so
// that a tag made of nothing else takes no time.
void XmlScanner::CheckRepeats() {
  constexpr const char* kRepeated = "duplicate attribute";
  const std::size_t count = attributes_.size();
  if (count > kFewAttributes) {
    std::vector<std::pair<std::string_view, std::string_view>> names(count);
    for (std::size_t i = 0; i < count; ++i) names[i].first = attributes_[i].name.local;
    for (const Prefixed& one : prefixed_) names[one.attribute].second = *one.uri;
    std::sort(names.begin(), names.end());
    const auto twice = std::adjacent_find(names.begin(), names.end());
    if (twice != names.end()) Fail(twice->first.data(), kRepeated);
    return;
  }
  for (std::size_t i = 1; i < count; ++i) {
    const XmlName& name = attributes_[i].name;
    for (std::size_t j = 0; j < i; ++j) {
      const XmlName& other = attributes_[j].name;
      if (name.space != other.space || name.local != other.local) continue;
      // Namespaces that no reader knows share a letter.
      const auto uri_of = [this](std::size_t attribute) {
        for (const Prefixed& one : prefixed_) {
          if (one.attribute == attribute) return std::string_view(*one.uri);
        }
        return std::string_view();
      };
      if (uri_of(i) == uri_of(j)) Fail(name.local.data(), kRepeated);
    }
  }
}

// Coded values move to a block of their own, which never grows while they refer to it: decoding
// makes no text longer.
void XmlScanner::DecodeValues() {
  std::size_t size = 0;
  for (const std::size_t i : coded_) size += attributes_[i].value.size();
  values_.clear();
  values_.reserve(size);
  for (const std::size_t i : coded_) {
    const std::size_t start = values_.size();
    Decode(attributes_[i].value, true, values_);
    attributes_[i].value = {values_.data() + start, values_.size() - start};
  }
}

// What the handler does not want is skipped with all that is in it. Depth and names are checked in
// there all the same.
void XmlScanner::Start(const RawName& name, const char* end, bool is_empty) {
  CheckLength(end);
  has_root_ = true;
  ++depth_;
  if (!declarations_.empty()) DeclareNamespaces();
  if (!prefixed_.empty()) Resolve();
  if (attributes_.size() > 1) CheckRepeats();
  char space = namespaces_.Default();
  if (name.prefix > 0) {
    const XmlNamespaces::Meaning* const meaning = namespaces_.Find(name.Prefix());
    if (meaning == nullptr) Fail(name.text.data(), "unbound prefix");
    space = meaning->letter;
  }
  if (depth_ > kDeepest) {
    Refuse("is damaged: the elements of " + What() + " lie more than " + std::to_string(kDeepest) +
           " deep in each other");
  }
  const std::size_t name_at = names_.size();
  open_.push_back({name_at, name_at + (name.prefix > 0 ? name.prefix + 1 : 0), space});
  names_ += name.text;
  if (names_.size() > kLongestNames) RefuseLength();
  if (unwanted_ == 0) {
    if (!coded_.empty()) DecodeValues();
    if (handler_.StartElement(XmlElement({space, name.Local()}, depth_, attributes_))) {
      text_size_ = 0;
    } else {
      unwanted_ = depth_;
    }
  }
  at_ = end;
  if (is_empty) End();
}

void XmlScanner::End() {
  const OpenElement element = open_.back();
  if (unwanted_ == 0) {
    const std::string_view local = std::string_view(names_).substr(element.local_at);
    handler_.EndElement({element.space, local}, depth_);
  } else if (unwanted_ == depth_) {
    unwanted_ = 0;
  }
  names_.resize(element.name_at);
  open_.pop_back();
  --depth_;
  namespaces_.LeaveTo(depth_);
}

void XmlScanner::GiveText(std::string_view text, bool is_coded) {
  if (text.empty() || unwanted_ != 0) return;
  if (is_coded) {
    text_.clear();
    Decode(text, false, text_);
    text = text_;
  }
  text_size_ += text.size();
  if (text_size_ > kLongestText) RefuseLength();
  handler_.Text(text);
}

void XmlScanner::CheckLength(const char* end) {
  if (static_cast<std::size_t>(end - at_) > kLongestPiece) RefuseLength();
}

void XmlScanner::RefuseLength() {
  Refuse("is damaged: " + What() + " has names or texts of unusual length");
}

void XmlScanner::RefuseEnd() {
  Refuse((part_.empty() ? std::string() : "is damaged: " + What() + " ") + "ends after " +
         GroupedDigits(input_.Size()) + " bytes, in the middle of its XML");
}

void XmlScanner::Fail(const char* place, const char* reason) {
  Refuse("is damaged: " + What() + " is not sound XML in line " +
         GroupedDigits(input_.Line(place)) + " (" + reason + ")");
}

}  // namespace korvex
