// Scans an XML document in one pass: calls a handler with its elements and texts.
//
// Names and values stay where they stand in the window of the input, and are copied only when they
// have to be decoded or the window moves on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/xml_input.h"
#include "spreadsheet/bytes/xml_lexer.h"
#include "spreadsheet/bytes/xml_namespaces.h"
#include "spreadsheet/bytes/xml_parser.h"

namespace korvex {

class XmlScanner : private XmlLexer {
 public:
  // All must outlive the scanner.
  XmlScanner(XmlInput& input, const std::string& part, std::span<const XmlNamespace> namespaces,
             XmlHandler& handler)
      : XmlLexer(input, part), namespaces_(namespaces), handler_(handler) {}

  void Run();

 private:
  struct Prefixed {
    std::size_t attribute;
    XmlRawName name;
    const std::string* uri;
  };
  struct Declaration {
    XmlRawName name;
    std::string_view uri;
    bool is_coded;
  };
  struct OpenElement {
    XmlRawName name;
    char space;
  };

  bool ReadDeclaration();
  void UseEncoding(std::string_view name);
  void ReadOn();

  // Each step reads the piece of the document that begins there and returns its end; null when the
  // window ends in it. Then nothing has changed, and the step is begun again with more bytes.
  const char* Next(const char* p);
  const char* ReadStartTag(const char* start);
  const char* ReadEndTag(const char* start);
  const char* ReadText(const char* p);
  const char* ReadBetween(const char* p);
  const char* ReadOther(const char* p);
  const char* ReadComment(const char* start);
  const char* ReadCdataStart(const char* p);
  const char* ReadDoctype(const char* p);
  const char* ReadInstruction(const char* start);

  const char* ReadAttribute(const char* p);
  const char* OtherEndTag(const char* name, std::string_view wanted);
  void AddRareAttribute(const XmlRawName& name, std::string_view value, bool is_coded);
  void ForgetRare();
  void DeclareNamespaces();
  void ResolvePrefixes();
  void CheckRepeats();
  bool IsRepeated(std::size_t attribute, std::size_t other) const;
  void DecodeValues();
  const XmlNamespaces::Meaning& MeaningOf(const XmlRawName& name);
  void Start(const XmlRawName& name);
  void End();
  void GiveText(std::string_view text, XmlPlace place, bool is_coded);
  void CheckLength(const char* begin, const char* end) {
    if (static_cast<std::size_t>(end - begin) > kLongestPiece) RefuseLength();
  }

  [[noreturn, gnu::cold, gnu::noinline]] void RefuseEnd();
  [[noreturn, gnu::cold, gnu::noinline]] void RefuseLength();
  [[noreturn, gnu::cold, gnu::noinline]] void RefuseDepth();

  static constexpr std::size_t kLongestPiece = 8u << 20;  // of a tag, comment or instruction

  XmlNamespaces namespaces_;
  XmlHandler& handler_;
  const char* at_ = nullptr;  // what stands before it has been read
  int depth_ = 0;
  int unwanted_ = 0;  // depth of the element that is skipped, or 0
  bool has_root_ = false;
  bool is_in_cdata_ = false;
  std::size_t text_size_ = 0;        // since an element that is wanted began
  std::size_t open_names_size_ = 0;  // of the open elements
  std::uint64_t names_size_ = 0;     // of attributes, so far, with their namespaces

  std::vector<OpenElement> open_;
  // By depth, the names of open elements that do not stand in the window any more.
  std::deque<std::string> kept_names_;
  // Of the current tag. Most have none of the rare attributes: those that have to be decoded, have
  // a prefix or declare a namespace.
  std::vector<XmlAttribute> attributes_;
  bool has_rare_ = false;
  std::vector<std::size_t> coded_;
  std::vector<Prefixed> prefixed_;
  std::vector<Declaration> declarations_;
  std::string values_;  // decoded
  std::string text_;    // decoded
};

}  // namespace korvex
