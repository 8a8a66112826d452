// Reads XML as a stream: a document goes in piece by piece, its elements come out.
//
// Refused are document type declarations, and with them entities, documents that nest too deep, and
// names or texts that take too much memory; and whatever is not sound by XML 1.0 (up to its fourth
// edition) and its namespaces. Encodings: xml_input.h.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "spreadsheet/bytes/xml_input.h"
#include "spreadsheet/bytes/zip_archive.h"

namespace korvex {

// A namespace that a reader knows, and the letter that the reader gives it. Versions of a namespace
// share a letter.
struct XmlNamespace {
  std::string_view uri;
  char letter;
};
inline constexpr char kNoNamespace = '\0';
inline constexpr char kOtherNamespace = '?';

struct XmlName {
  char space;  // a letter of XmlNamespace, or one of the two above
  std::string_view local;

  bool Is(char wanted_space, std::string_view wanted) const {
    return space == wanted_space && local == wanted;
  }
};

// Attributes without a prefix have no namespace. Values are UTF-8.
struct XmlAttribute {
  XmlName name;
  std::string_view value;
};

// Views that are valid during the call that got them.
class XmlElement {
 public:
  XmlElement(XmlName name, int depth, std::span<const XmlAttribute> attributes)
      : name_(name), depth_(depth), attributes_(attributes) {}

  const XmlName& Name() const { return name_; }
  bool Is(char space, std::string_view local) const { return name_.Is(space, local); }
  int Depth() const { return depth_; }  // 1 for the root
  std::span<const XmlAttribute> Attributes() const { return attributes_; }
  std::optional<std::string_view> Attribute(std::string_view local) const {
    return Attribute(kNoNamespace, local);
  }
  std::optional<std::string_view> Attribute(char space, std::string_view local) const {
    for (const XmlAttribute& attribute : attributes_) {
      if (attribute.name.Is(space, local)) return attribute.value;
    }
    return {};
  }
  // Whether the attribute is "1" or "true".
  bool IsOn(std::string_view local) const;
  // The first attribute that is not in `known`, of those in a namespace that the reader knows or in
  // none; empty when all are in it.
  std::string_view AttributeBeside(std::span<const XmlName> known) const;

 private:
  XmlName name_;
  int depth_;
  std::span<const XmlAttribute> attributes_;
};

// What a reader does with a document. Exceptions pass through the parser.
class XmlHandler {
 public:
  virtual ~XmlHandler() = default;

  // Returns whether the handler wants what is in the element. If not, its content and its end are
  // skipped.
  virtual bool StartElement(const XmlElement& element) = 0;
  virtual void EndElement(const XmlName&, int /*depth*/) {}
  // The texts of wanted elements; one text may come in several pieces, each valid until the next
  // call of KeepText.
  virtual void Text(std::string_view) {}
  virtual void KeepText() {}
};

// A document that is in memory.
XmlSource SourceOf(std::span<const std::byte> bytes);

// A text that a handler collects. Its only piece stays where it is as long as it is valid there.
class XmlText {
 public:
  std::string_view View() const { return text_; }
  void Clear() { text_ = {}; }
  void Append(std::string_view piece) {
    if (text_.empty()) {
      text_ = piece;
    } else {
      Join(piece);
    }
  }
  // For XmlHandler::KeepText.
  void Keep() {
    if (text_.data() == kept_.data()) return;
    kept_ = text_;
    text_ = kept_;
  }

 private:
  void Join(std::string_view piece) {
    Keep();
    kept_ += piece;
    text_ = kept_;
  }

  std::string_view text_;
  std::string kept_;
};

// Reads a document to its end. `part` is its name in the archive, "" when it is the whole file;
// refusals name it.
void ParseXml(const XmlSource& source, const std::string& part,
              std::span<const XmlNamespace> namespaces, XmlHandler& handler);
// The same for a document in memory that has a NUL behind it.
void ParseXml(std::string_view whole, const std::string& part,
              std::span<const XmlNamespace> namespaces, XmlHandler& handler);
// The same for a part of an archive.
void ParseXmlPart(const ZipArchive& archive, const std::string& part, ReadBudget& budget,
                  std::span<const XmlNamespace> namespaces, XmlHandler& handler);

}  // namespace korvex
