#include "spreadsheet/bytes/xml_namespaces.h"

#include <utility>

namespace korvex {
namespace {

constexpr std::string_view kXmlUri = "http://www.w3.org/XML/1998/namespace";
constexpr std::string_view kXmlnsUri = "http://www.w3.org/2000/xmlns/";
// Documents of workbooks have names of at most a hundred letters and some forty of them.
constexpr std::size_t kLongestUri = 1024;
constexpr std::size_t kMostMemory = 16u << 20;

}  // namespace

XmlNamespaces::XmlNamespaces(std::span<const XmlNamespace> known) : known_(known) {
  meanings_["xml"] = {std::string(kXmlUri), kOtherNamespace, 0};
}

// A document that declares a namespace again in each of its elements has these changes taken back
// one by one, so that only those of the elements around are held.
XmlNamespaces::Fault XmlNamespaces::Declare(std::string_view prefix, std::string_view uri,
                                            int depth) {
  if (uri.empty() && !prefix.empty()) return Fault::kNoUri;
  if (prefix == "xmlns") return Fault::kReservedXmlns;
  if ((prefix == "xml") != (uri == kXmlUri)) {
    return prefix == "xml" ? Fault::kReservedXml : Fault::kReservedUri;
  }
  if (uri == kXmlnsUri) return Fault::kReservedUri;
  if (uri.size() > kLongestUri) return Fault::kTooLong;
  auto place = meanings_.find(prefix);
  if (place == meanings_.end()) place = meanings_.emplace(prefix, Meaning()).first;
  if (place->second.depth == depth) return Fault::kRepeated;
  memory_ += sizeof(Change) + sizeof(Meanings::value_type) + prefix.size() + uri.size();
  if (memory_ > kMostMemory) return Fault::kTooLong;
  Meaning meaning{std::string(uri), uri.empty() ? kNoNamespace : kOtherNamespace, depth};
  for (const XmlNamespace& known : known_) {
    if (known.uri == uri) meaning.letter = known.letter;
  }
  changes_.push_back({depth, place, std::exchange(place->second, std::move(meaning))});
  Forget();
  return Fault::kNone;
}

void XmlNamespaces::TakeBack() {
  Change& change = changes_.back();
  const auto place = change.place;
  memory_ -= sizeof(Change) + sizeof(Meanings::value_type) + place->first.size() +
             place->second.uri.size();
  if (change.before.depth == 0 && place->first != "xml") {
    meanings_.erase(place);
  } else {
    place->second = std::move(change.before);
  }
  changes_.pop_back();
  Forget();
}

// A map's entries stay where they are, but not their meanings.
void XmlNamespaces::Forget() {
  recent_ = {};
  const auto place = meanings_.find(std::string_view());
  default_ = place != meanings_.end() ? place->second.letter : kNoNamespace;
}

const XmlNamespaces::Meaning* XmlNamespaces::Find(std::string_view prefix) const {
  const auto ends = static_cast<unsigned char>(prefix.front() * 5 + prefix.back());
  const Meanings::value_type*& recent = recent_[(ends + prefix.size() * 11) % kRecent];
  if (recent == nullptr || recent->first != prefix) {
    const auto place = meanings_.find(prefix);
    if (place == meanings_.end()) return nullptr;
    recent = &*place;
  }
  return &recent->second;
}

}  // namespace korvex
