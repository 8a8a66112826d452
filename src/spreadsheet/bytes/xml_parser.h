// Reads XML as a stream: a document goes in piece by piece, its elements come out.
//
// Refused are document type declarations, and with them entities, documents that nest too deep, and
// names or texts that take too much memory. Encodings: UTF-8, UTF-16, ISO-8859-1, US-ASCII and the
// single-byte code pages of Windows.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

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

// Views that are valid during the call that got them.
class XmlElement {
 public:
  XmlElement(XmlName name, int depth, const char* const* attributes,
             std::span<const XmlNamespace> namespaces)
      : name_(name), depth_(depth), attributes_(attributes), namespaces_(namespaces) {}

  const XmlName& Name() const { return name_; }
  bool Is(char space, std::string_view local) const { return name_.Is(space, local); }
  int Depth() const { return depth_; }  // 1 for the root
  // UTF-8, or null when there is no such attribute. Attributes without a prefix have no namespace.
  const char* Attribute(std::string_view local) const;
  const char* Attribute(char space, std::string_view local) const;
  // Whether the attribute is "1" or "true".
  bool IsOn(std::string_view local) const;
  // The first attribute that is not in `known`, of those in a namespace that the reader knows or in
  // none; empty when all are in it.
  std::string_view AttributeBeside(std::span<const XmlName> known) const;

 private:
  XmlName name_;
  int depth_;
  const char* const* attributes_;  // names and values in turn, a null at the end
  std::span<const XmlNamespace> namespaces_;
};

// What a reader does with a document. Exceptions pass through the parser.
class XmlHandler {
 public:
  virtual ~XmlHandler() = default;

  // Returns whether the handler wants what is in the element. If not, its content and its end are
  // skipped.
  virtual bool StartElement(const XmlElement& element) = 0;
  virtual void EndElement(const XmlName&, int /*depth*/) {}
  // The texts of wanted elements; one text may come in several pieces.
  virtual void Text(std::string_view) {}
};

// Fills the front of the buffer with the next bytes of a document and returns their number; 0 at
// the end.
using XmlSource = std::function<std::size_t(std::span<char>)>;
// A document that is in memory.
XmlSource SourceOf(std::span<const std::byte> bytes);

// Reads a document to its end. `part` is its name in the archive, "" when it is the whole file;
// refusals name it.
void ParseXml(const XmlSource& source, const std::string& part,
              std::span<const XmlNamespace> namespaces, XmlHandler& handler);

}  // namespace korvex
