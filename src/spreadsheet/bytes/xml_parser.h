// Streaming XML: a document goes in piece by piece, its elements come out.
//
// Document type declarations, and with them entities, are refused; so are documents that nest too
// deep or whose names take too much memory. Encodings: UTF-8, UTF-16, ISO-8859-1, US-ASCII and the
// single-byte code pages of Windows.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace korvex {

// A namespace that a reader knows, by a letter of its own choice. Several may share one.
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

// Views that live as long as the call that got them.
class XmlElement {
 public:
  XmlElement(XmlName name, int depth, const char* const* attributes,
             std::span<const XmlNamespace> namespaces)
      : name_(name), depth_(depth), attributes_(attributes), namespaces_(namespaces) {}

  const XmlName& Name() const { return name_; }
  bool Is(char space, std::string_view local) const { return name_.Is(space, local); }
  int Depth() const { return depth_; }  // 1 for the root
  // Null when there is no such attribute. Attributes without a prefix have no namespace.
  const char* Attribute(std::string_view local) const;
  const char* Attribute(char space, std::string_view local) const;
  // "1" or "true".
  bool IsOn(std::string_view local) const;
  // The first attribute of a namespace that the reader knows, or of none, that is not in `known`;
  // empty when there is none.
  std::string_view AttributeBeside(std::span<const XmlName> known) const;

 private:
  XmlName name_;
  int depth_;
  const char* const* attributes_;  // names and values in turn, a null at the end
  std::span<const XmlNamespace> namespaces_;
};

class XmlHandler {
 public:
  virtual ~XmlHandler() = default;

  // Whether the handler wants what is in the element; else nothing more is heard of it, its end
  // included.
  virtual bool StartElement(const XmlElement& element) = 0;
  virtual void EndElement(const XmlName&, int /*depth*/) {}
  // The texts of elements that were wanted, in pieces.
  virtual void Text(std::string_view) {}
};

// Fills the front of the room with what comes next of a document; 0 at its end.
using XmlSource = std::function<std::size_t(std::span<char>)>;
// A document that is in memory.
XmlSource SourceOf(std::span<const std::byte> bytes);

// Reads a document to its end. `part` names the part of the file that it is, "" when it is all of
// the file. Refusals are Errors 1004 and predicates (refusal.h); errors of source and handler pass
// through.
void ParseXml(const XmlSource& source, const std::string& part,
              std::span<const XmlNamespace> namespaces, XmlHandler& handler);

}  // namespace korvex
