#include "spreadsheet/bytes/xml_parser.h"

#include <algorithm>
#include <cstring>

#include "spreadsheet/bytes/xml_scanner.h"

namespace korvex {

std::string_view XmlElement::AttributeBeside(std::span<const XmlName> known) const {
  for (const XmlAttribute& attribute : attributes_) {
    const XmlName& name = attribute.name;
    const auto is_it = [&](const XmlName& other) { return name.Is(other.space, other.local); };
    if (name.space != kOtherNamespace && std::none_of(known.begin(), known.end(), is_it)) {
      return name.local;
    }
  }
  return {};
}

bool XmlElement::IsOn(std::string_view local) const {
  const std::string_view value = Attribute(local).value_or("");
  return value == "1" || value == "true";
}

XmlSource SourceOf(std::span<const std::byte> bytes) {
  return [bytes](std::span<char> room) mutable {
    const std::size_t count = std::min(room.size(), bytes.size());
    if (count > 0) std::memcpy(room.data(), bytes.data(), count);
    bytes = bytes.subspan(count);
    return count;
  };
}

void ParseXml(const XmlSource& source, const std::string& part,
              std::span<const XmlNamespace> namespaces, XmlHandler& handler) {
  XmlInput input(source);
  XmlScanner(input, part, namespaces, handler).Run();
}

void ParseXml(std::string_view whole, const std::string& part,
              std::span<const XmlNamespace> namespaces, XmlHandler& handler) {
  XmlInput input(whole);
  XmlScanner(input, part, namespaces, handler).Run();
}

void ParseXmlPart(const ZipArchive& archive, const std::string& part, ReadBudget& budget,
                  std::span<const XmlNamespace> namespaces, XmlHandler& handler) {
  ZipPartReader reader(archive, part, budget);
  if (const std::optional<std::string_view> whole = reader.ReadWhole()) {
    ParseXml(*whole, part, namespaces, handler);
  } else {
    ParseXml([&](std::span<char> room) { return reader.Read(room); }, part, namespaces, handler);
  }
}

}  // namespace korvex
