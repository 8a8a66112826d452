// The namespaces that are declared where a scanner of XML stands.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/bytes/xml_parser.h"

namespace korvex {

class XmlNamespaces {
 public:
  // What a prefix stands for.
  struct Meaning {
    std::string uri;
    char letter = kNoNamespace;
    int depth = 0;  // of the element that declares it
  };
  enum class Fault {
    kNone,
    kRepeated,
    kNoUri,
    kReservedXml,
    kReservedXmlns,
    kReservedUri,
    kTooLong
  };

  explicit XmlNamespaces(std::span<const XmlNamespace> known);

  // Declares a prefix, or with "" the namespace of elements without one, for the element at this
  // depth and what is in it.
  Fault Declare(std::string_view prefix, std::string_view uri, int depth);
  // Call it when an element has ended.
  void LeaveTo(int depth) {
    while (!changes_.empty() && changes_.back().depth > depth) TakeBack();
  }

  // The letter of elements without a prefix.
  char Default() const { return default_; }
  // Null for a prefix that is not declared. Valid until the next declaration or its end.
  const Meaning* Find(std::string_view prefix) const;

 private:
  using Meanings = std::map<std::string, Meaning, std::less<>>;
  struct Change {
    int depth;
    Meanings::iterator place;
    Meaning before;
  };
  void TakeBack();
  void Forget();

  std::span<const XmlNamespace> known_;
  Meanings meanings_;
  std::vector<Change> changes_;
  std::size_t memory_ = 0;  // of what changes_ took back
  char default_ = kNoNamespace;
  // The last prefixes that were looked up, by their ends: most elements use one of few.
  static constexpr std::size_t kRecent = 64;
  mutable std::array<const Meanings::value_type*, kRecent> recent_{};
};

}  // namespace korvex
