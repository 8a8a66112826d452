// Scans an XML document in one pass: calls a handler with its elements and texts.
//
// Names and values stay where they stand in the window of the input, and are copied only when they
// have to be decoded. Each step begins at `at_` and either reads one piece of the document, or
// finds that the window ends in it: then nothing has changed, and it is begun again with more
// bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/xml_input.h"
#include "spreadsheet/bytes/xml_names.h"
#include "spreadsheet/bytes/xml_namespaces.h"
#include "spreadsheet/bytes/xml_parser.h"

namespace korvex {

class XmlScanner {
 public:
  // All must outlive the scanner.
  XmlScanner(XmlInput& input, const std::string& part, std::span<const XmlNamespace> namespaces,
             XmlHandler& handler)
      : input_(input), part_(part), namespaces_(namespaces), handler_(handler) {}

  void Run();

 private:
  // A name as it stands: "table:table-row".
  struct RawName {
    std::string_view text;
    std::size_t prefix = 0;  // its length, 0 when there is none
    std::string_view Prefix() const { return text.substr(0, prefix); }
    std::string_view Local() const { return text.substr(prefix == 0 ? 0 : prefix + 1); }
  };
  struct Prefixed {
    std::size_t attribute;
    RawName name;
    const std::string* uri;
  };
  struct Declaration {
    RawName name;
    std::string_view uri;
    bool is_coded;
  };
  struct OpenElement {
    std::size_t name_at;  // in names_
    std::size_t local_at;
    char space;
  };

  // The steps. False when the window ends before they do.
  bool Next();
  bool ReadDeclaration();
  bool ReadBetween();
  bool ReadText();
  bool ReadCdata();
  bool ReadStartTag();
  bool ReadEndTag();
  bool ReadComment();
  bool ReadCdataStart();
  bool ReadDoctype();
  bool ReadInstruction();

  // Each reads from `p` on and returns the end of what it read; null when the window ends in it.
  const char* NameEnd(const char* p);
  const char* OtherNameEnd(const char* p);
  const char* NameRest(const char* p);
  const char* QualifiedName(const char* p, RawName& name);
  const char* Value(const char* p, char quote, bool& is_coded);
  const char* Reference(const char* p);
  const char* Character(const char* p, char32_t& code);
  const char* AnyCharacter(const char* p);
  // Null if `p` is the window's end and the document goes on. Else it refuses what stands there.
  const char* Unexpected(const char* p);
  // Whether the literal stands at `p`; like Unexpected for anything else.
  bool Expect(const char* p, std::string_view literal);

  void AddAttribute(const RawName& name, std::string_view value, bool is_coded);
  void DeclareNamespaces();
  void Resolve();
  void CheckRepeats();
  void Start(const RawName& name, const char* end, bool is_empty);
  void End();
  void DecodeValues();
  void GiveText(std::string_view text, bool is_coded);
  void CheckLength(const char* end);

  std::string What() const { return part_.empty() ? "its XML" : "its part " + part_; }
  [[noreturn]] void Fail(const char* place, const char* reason);
  [[noreturn]] void RefuseEnd();
  [[noreturn]] void RefuseLength();

  XmlInput& input_;
  const std::string& part_;
  XmlNamespaces namespaces_;
  XmlHandler& handler_;
  const char* at_ = nullptr;
  const char* end_ = nullptr;
  int depth_ = 0;
  int unwanted_ = 0;  // depth of the element that is skipped, or 0
  bool has_root_ = false;
  bool is_in_cdata_ = false;
  std::size_t text_size_ = 0;     // since an element that is wanted began
  std::uint64_t names_size_ = 0;  // of attributes, so far, with their namespaces

  std::string names_;  // of the open elements, one behind the other
  std::vector<OpenElement> open_;
  // Of the current tag.
  std::vector<XmlAttribute> attributes_;
  std::vector<std::size_t> coded_;  // attributes that have to be decoded
  std::vector<Prefixed> prefixed_;
  std::vector<Declaration> declarations_;
  std::string values_;  // decoded
  std::string text_;    // decoded
};

}  // namespace korvex
