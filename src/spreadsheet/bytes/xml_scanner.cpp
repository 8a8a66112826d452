#include "spreadsheet/bytes/xml_scanner.h"

#include <algorithm>
#include <utility>

#include "spreadsheet/bytes/refusal.h"
#include "text/text.h"

namespace korvex {
namespace {

constexpr int kDeepest = 256;
constexpr std::size_t kLongestText = 4u << 20;    // no cell holds a hundredth of it
constexpr std::size_t kLongestNames = 16u << 20;  // of the elements around one
// No program writes documents whose names, with their namespaces spelled out, are longer than three
// times the document.
constexpr std::uint64_t kMostNamesPerByte = 4;
constexpr std::uint64_t kMostNamesAtLeast = 64u << 20;
constexpr std::size_t kFewAttributes = 16;

constexpr std::string_view kDeclares = "xmlns";

constexpr const char* kRepeatedAttribute = "duplicate attribute";
constexpr const char* kBehindRoot = "junk after document element";

// For names, which are short: a call would take longer than they do.
bool IsSame(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a.data()[i] != b.data()[i]) return false;
  }
  return true;
}

const char* ReasonOf(XmlNamespaces::Fault fault) {
  switch (fault) {
    case XmlNamespaces::Fault::kRepeated:
      return kRepeatedAttribute;
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

void XmlScanner::Run() {
  at_ = input_.Begin();
  while (!ReadDeclaration()) at_ = input_.More(at_);
  for (;;) {
    const char* p = at_;
    while (p != nullptr) p = Next(at_ = p);
    if (input_.IsLast()) {
      if (at_ == input_.End() && has_root_ && depth_ == 0) return;
      RefuseEnd();
    }
    CheckLength(at_, input_.End());
    ReadOn();
  }
}

// The names of open elements stand before the place from which on the window is kept.
void XmlScanner::ReadOn() {
  handler_.KeepText();
  kept_names_.resize(open_.size());
  for (std::size_t i = 0; i < open_.size(); ++i) {
    std::string_view& name = open_[i].name.text;
    if (kept_names_[i].data() == name.data()) continue;
    kept_names_[i] = std::string(name);
    name = kept_names_[i];
  }
  at_ = input_.More(at_);
}

// <?xml version="1.0" encoding="UTF-8" standalone="yes"?>, only at the very beginning.
bool XmlScanner::ReadDeclaration() {
  constexpr std::string_view kStart = "<?xml";
  const auto available = static_cast<std::size_t>(input_.End() - at_);
  const std::string_view begin(at_, std::min(available, kStart.size() + 1));
  if (!kStart.starts_with(begin.substr(0, kStart.size()))) return true;
  if (begin.size() <= kStart.size()) return input_.IsLast();
  if (!IsBlank(begin.back()) && begin.back() != '?') return true;
  const char* const start = at_ + kStart.size();
  const char* p = start;
  while (*p != '?' || p[1] != '>') {
    if ((p = AnyCharacter(p)) != nullptr) continue;
    CheckLength(at_, input_.End());
    return input_.IsLast();
  }
  const std::string_view encoding = DeclaredEncoding({start, p});
  at_ = p + 2;
  if (!encoding.empty()) UseEncoding(encoding);
  return true;
}

void XmlScanner::UseEncoding(std::string_view name) {
  switch (input_.Declare(name, at_)) {
    case XmlInput::Encoding::kFits:
      break;
    case XmlInput::Encoding::kUnknown:
      Fail(name.data(), "unknown encoding");
    case XmlInput::Encoding::kContradicts:
      Fail(name.data(), "encoding specified in XML declaration is incorrect");
  }
}

[[gnu::always_inline]] inline const char* XmlScanner::Next(const char* p) {
  if (*p != '<' || is_in_cdata_) return depth_ > 0 ? ReadText(p) : ReadBetween(p);
  if (p[1] == '/') return ReadEndTag(p);
  return p[1] == '?' || p[1] == '!' ? ReadOther(p) : ReadStartTag(p);
}

const char* XmlScanner::ReadOther(const char* p) {
  if (p[1] == '?') return ReadInstruction(p);
  if (p[2] == '-') return ReadComment(p);
  if (p + 2 == input_.End()) return nullptr;
  return depth_ > 0 ? ReadCdataStart(p) : ReadDoctype(p);
}

// Outside of the root there are only blanks.
const char* XmlScanner::ReadBetween(const char* p) {
  const char* const end = SkipBlanks(p);
  if (*end != '<' && end != input_.End()) Fail(end, has_root_ ? kBehindRoot : kXmlBadToken);
  return end == p ? nullptr : end;
}

[[gnu::always_inline]] inline const char* XmlScanner::ReadText(const char* p) {
  const XmlPlace place = is_in_cdata_ ? XmlPlace::kCdata : XmlPlace::kContent;
  bool is_coded = false;
  const char* const end = TextEnd(p, place, is_coded);
  if (end != p) GiveText({p, end}, place, is_coded);
  if (is_in_cdata_ && *end == ']' && end[1] == ']' && end[2] == '>') {
    is_in_cdata_ = false;
    return end + 3;
  }
  return end == p ? nullptr : end;
}

const char* XmlScanner::ReadCdataStart(const char* p) {
  constexpr std::string_view kStart = "<![CDATA[";
  if (!Expect(p, kStart)) return nullptr;
  is_in_cdata_ = true;
  return p + kStart.size();
}

const char* XmlScanner::ReadDoctype(const char* p) {
  if (has_root_) Fail(p, kBehindRoot);
  if (!Expect(p, "<!DOCTYPE")) return nullptr;
  Refuse("is damaged: " + What() + " has a document type declaration, which workbooks do not have");
}

const char* XmlScanner::ReadComment(const char* start) {
  if (!Expect(start, "<!--")) return nullptr;
  const char* p = start + 4;
  while (*p != '-' || p[1] != '-') {
    if ((p = AnyCharacter(p)) == nullptr) return nullptr;
  }
  if (p[2] != '>') return Unexpected(p + 2);
  CheckLength(start, p + 3);
  return p + 3;
}

const char* XmlScanner::ReadInstruction(const char* start) {
  const char* const target = start + 2;
  const char* p = NameEnd(target);
  if (p == nullptr) return nullptr;
  const std::string_view name(target, static_cast<std::size_t>(p - target));
  if (!IsBlank(*p) && *p != '?') return Unexpected(p);
  if (name == "xml") Fail(start, "XML or text declaration not at start of entity");
  if (name.size() == 3 && EqualText(name, "xml")) Fail(target, kXmlBadToken);
  if (*p == '?' && p[1] != '>') return Unexpected(p + 1);
  while (*p != '?' || p[1] != '>') {
    if ((p = AnyCharacter(p)) == nullptr) return nullptr;
  }
  CheckLength(start, p + 2);
  return p + 2;
}

[[gnu::always_inline]] inline const char* XmlScanner::ReadStartTag(const char* start) {
  XmlRawName name;
  const char* p = QualifiedName(start + 1, name);
  if (p == nullptr) return nullptr;
  if (has_root_ && depth_ == 0) Fail(start, kBehindRoot);
  attributes_.clear();
  if (has_rare_) ForgetRare();
  for (;;) {
    const char* const gap = p;
    p = SkipBlanks(p);
    if (*p == '>' || *p == '/') break;
    if (p == gap) return Unexpected(p);
    if ((p = ReadAttribute(p)) == nullptr) return nullptr;
  }
  const bool is_empty = *p == '/';
  if (is_empty && *++p != '>') return Unexpected(p);
  ++p;
  CheckLength(start, p);
  Start(name);
  if (is_empty) End();
  return p;
}

[[gnu::always_inline]] inline const char* XmlScanner::ReadAttribute(const char* p) {
  XmlRawName name;
  if ((p = QualifiedName(p, name)) == nullptr) return nullptr;
  p = SkipBlanks(p);
  if (*p != '=') return Unexpected(p);
  p = SkipBlanks(p + 1);
  if (*p != '"' && *p != '\'') return Unexpected(p);
  const char* const value = p + 1;
  bool is_coded = false;
  const char* const end = ValueEnd(value, *p, is_coded);
  if (end == nullptr) return nullptr;
  const std::string_view text(value, static_cast<std::size_t>(end - value));
  if (is_coded || name.prefix > 0 || name.text == kDeclares) {
    AddRareAttribute(name, text, is_coded);
  } else {
    names_size_ += name.text.size();
    attributes_.push_back({{kNoNamespace, name.text}, text});
  }
  return end + 1;
}

void XmlScanner::AddRareAttribute(const XmlRawName& name, std::string_view value, bool is_coded) {
  has_rare_ = true;
  if ((name.prefix > 0 ? name.Prefix() : name.text) == kDeclares) {
    declarations_.push_back({name, value, is_coded});
    return;
  }
  if (is_coded) coded_.push_back(attributes_.size());
  if (name.prefix > 0) prefixed_.push_back({attributes_.size(), name, nullptr});
  names_size_ += name.text.size();
  attributes_.push_back({{kNoNamespace, name.Local()}, value});
}

void XmlScanner::ForgetRare() {
  has_rare_ = false;
  coded_.clear();
  prefixed_.clear();
  declarations_.clear();
}

// The tag of the element that was opened last, nearly always without blanks.
[[gnu::always_inline]] inline const char* XmlScanner::ReadEndTag(const char* start) {
  if (depth_ == 0) Fail(start, has_root_ ? kBehindRoot : kXmlBadToken);
  const std::string_view wanted = open_.back().name.text;
  const char* p = start + 2;
  if (static_cast<std::size_t>(input_.End() - p) > wanted.size() && p[wanted.size()] == '>' &&
      IsSame({p, wanted.size()}, wanted)) {
    p += wanted.size();
  } else if ((p = OtherEndTag(p, wanted)) == nullptr) {
    return nullptr;
  }
  End();
  return p + 1;
}

// The end of a tag that has another form than most, or another name than it should have.
const char* XmlScanner::OtherEndTag(const char* name, std::string_view wanted) {
  const char* p = NameEnd(name);
  while (p != nullptr && *p == ':') p = NameRest(p + 1);
  if (p == nullptr) return nullptr;
  const std::string_view found(name, static_cast<std::size_t>(p - name));
  p = SkipBlanks(p);
  if (*p != '>') return Unexpected(p);
  if (found != wanted) Fail(name, "mismatched tag");
  return p;
}

void XmlScanner::DeclareNamespaces() {
  for (const Declaration& declaration : declarations_) {
    const XmlRawName& name = declaration.name;
    std::string_view uri = declaration.uri;
    if (declaration.is_coded) {
      values_.clear();
      DecodeXml(uri, XmlPlace::kValue, values_);
      uri = values_;
    }
    const std::string_view prefix = name.prefix > 0 ? name.Local() : std::string_view();
    const XmlNamespaces::Fault fault = namespaces_.Declare(prefix, uri, depth_);
    if (fault == XmlNamespaces::Fault::kTooLong) RefuseLength();
    if (fault != XmlNamespaces::Fault::kNone) Fail(name.text.data(), ReasonOf(fault));
  }
}

void XmlScanner::ResolvePrefixes() {
  for (Prefixed& one : prefixed_) {
    const XmlNamespaces::Meaning& meaning = MeaningOf(one.name);
    attributes_[one.attribute].name.space = meaning.letter;
    one.uri = &meaning.uri;
    names_size_ += meaning.uri.size();
  }
  if (names_size_ > kMostNamesAtLeast + kMostNamesPerByte * input_.Size()) RefuseLength();
}

// Two attributes of one namespace and one name. Tags with many attributes are sorted for it, so
// that a tag made of nothing else takes no time.
void XmlScanner::CheckRepeats() {
  const std::size_t count = attributes_.size();
  if (count > kFewAttributes) {
    std::vector<std::pair<std::string_view, std::string_view>> names(count);
    for (std::size_t i = 0; i < count; ++i) names[i].first = attributes_[i].name.local;
    for (const Prefixed& one : prefixed_) names[one.attribute].second = *one.uri;
    std::sort(names.begin(), names.end());
    const auto twice = std::adjacent_find(names.begin(), names.end());
    if (twice != names.end()) Fail(twice->first.data(), kRepeatedAttribute);
    return;
  }
  for (std::size_t i = 1; i < count; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (IsRepeated(i, j)) Fail(attributes_[i].name.local.data(), kRepeatedAttribute);
    }
  }
}

// Namespaces that no reader knows share a letter.
bool XmlScanner::IsRepeated(std::size_t attribute, std::size_t other) const {
  const XmlName& name = attributes_[attribute].name;
  if (!IsSame(name.local, attributes_[other].name.local)) return false;
  if (name.space != attributes_[other].name.space) return false;
  const auto uri_of = [this](std::size_t wanted) {
    for (const Prefixed& one : prefixed_) {
      if (one.attribute == wanted) return std::string_view(*one.uri);
    }
    return std::string_view();
  };
  return uri_of(attribute) == uri_of(other);
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
    DecodeXml(attributes_[i].value, XmlPlace::kValue, values_);
    attributes_[i].value = {values_.data() + start, values_.size() - start};
  }
}

// What the handler does not want is skipped with all that is in it. Depth and names are checked in
// there all the same.
[[gnu::always_inline]] inline void XmlScanner::Start(const XmlRawName& name) {
  has_root_ = true;
  ++depth_;
  if (has_rare_) {
    DeclareNamespaces();
    ResolvePrefixes();
  }
  if (attributes_.size() > 1) CheckRepeats();
  const char space = name.prefix == 0 ? namespaces_.Default() : MeaningOf(name).letter;
  if (depth_ > kDeepest) RefuseDepth();
  open_.push_back({name, space});
  open_names_size_ += name.text.size();
  if (open_names_size_ > kLongestNames) RefuseLength();
  if (unwanted_ != 0) return;
  if (has_rare_) DecodeValues();
  if (handler_.StartElement(XmlElement({space, name.Local()}, depth_, attributes_))) {
    text_size_ = 0;
  } else {
    unwanted_ = depth_;
  }
}

const XmlNamespaces::Meaning& XmlScanner::MeaningOf(const XmlRawName& name) {
  const XmlNamespaces::Meaning* const meaning = namespaces_.Find(name.Prefix());
  if (meaning == nullptr) Fail(name.text.data(), "unbound prefix");
  return *meaning;
}

[[gnu::always_inline]] inline void XmlScanner::End() {
  const OpenElement& element = open_.back();
  open_names_size_ -= element.name.text.size();
  if (unwanted_ == 0) {
    handler_.EndElement({element.space, element.name.Local()}, depth_);
  } else if (unwanted_ == depth_) {
    unwanted_ = 0;
  }
  open_.pop_back();
  --depth_;
  namespaces_.LeaveTo(depth_);
}

[[gnu::always_inline]] inline void XmlScanner::GiveText(std::string_view text, XmlPlace place,
                                                        bool is_coded) {
  if (unwanted_ != 0) return;
  if (is_coded) {
    if (!text_.empty()) handler_.KeepText();
    text_.clear();
    DecodeXml(text, place, text_);
    text = text_;
  }
  text_size_ += text.size();
  if (text_size_ > kLongestText) RefuseLength();
  handler_.Text(text);
}

void XmlScanner::RefuseLength() {
  Refuse("is damaged: " + What() + " has names or texts of unusual length");
}

void XmlScanner::RefuseDepth() {
  Refuse("is damaged: the elements of " + What() + " lie more than " + std::to_string(kDeepest) +
         " deep in each other");
}

void XmlScanner::RefuseEnd() {
  Refuse((part_.empty() ? std::string() : "is damaged: " + What() + " ") + "ends after " +
         GroupedDigits(input_.Size()) + " bytes, in the middle of its XML");
}

}  // namespace korvex
