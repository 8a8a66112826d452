#include "spreadsheet/bytes/xml_parser.h"

#include <expat.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <type_traits>

#include "spreadsheet/bytes/code_page.h"
#include "spreadsheet/bytes/refusal.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr char kSeparator = '\x1F';  // between namespace and name; no XML document can hold it
constexpr int kDeepest = 256;
constexpr std::size_t kLongestText = 4u << 20;  // no cell holds a hundredth of it
// The library spells out every name with its namespace, so that a short prefix can stand for a long
// text and cost time. In documents of workbooks the names are at most three times as long as the
// document.
constexpr std::size_t kLongestNamespace = 1024;
constexpr std::uint64_t kMostNamesPerByte = 4;
constexpr std::uint64_t kMostNamesAtLeast = 64u << 20;
constexpr int kChunk = 64 * 1024;

// The library keeps every name that it has met, so that a document of ever new names would take all
// memory. Its allocations are therefore counted; the size of each block comes before it.
struct alignas(std::max_align_t) Block {
  std::size_t size;
};
constexpr std::size_t kMostMemory = 24u << 20;
std::size_t memory_in_use = 0;

void* Resize(void* memory, std::size_t size) {
  Block* block = memory == nullptr ? nullptr : static_cast<Block*>(memory) - 1;
  const std::size_t before = block == nullptr ? 0 : block->size;
  if (size > kMostMemory || memory_in_use - before + size > kMostMemory) return nullptr;
  block = static_cast<Block*>(std::realloc(block, sizeof(Block) + size));
  if (block == nullptr) return nullptr;
  memory_in_use += size - before;
  block->size = size;
  return block + 1;
}

void* Allocate(std::size_t size) {
  return Resize(nullptr, size);
}

void Free(void* memory) {
  if (memory == nullptr) return;
  Block* const block = static_cast<Block*>(memory) - 1;
  memory_in_use -= block->size;
  std::free(block);
}

// The library gives names as "uri SEPARATOR local", or "local" outside of all namespaces.
XmlName SplitName(std::string_view name, std::span<const XmlNamespace> namespaces) {
  for (const XmlNamespace& known : namespaces) {
    const std::size_t size = known.uri.size();
    if (name.size() > size && name[size] == kSeparator && name.starts_with(known.uri)) {
      return {known.letter, name.substr(size + 1)};
    }
  }
  const std::size_t separator = name.find(kSeparator);
  if (separator == std::string_view::npos) return {kNoNamespace, name};
  return {kOtherNamespace, name.substr(separator + 1)};
}

// Makes the library's table of an encoding: "windows-1252", "cp1252". A document in an unknown code
// page is refused, since its texts would lose what is not ASCII.
int DescribeEncoding(void*, const char* name, XML_Encoding* encoding) {
  std::string_view page(name);
  for (const std::string_view prefix : {"windows-", "cp"}) {
    if (EqualText(page.substr(0, prefix.size()), prefix)) page.remove_prefix(prefix.size());
  }
  std::uint16_t number = 0;
  const char* const end = page.data() + page.size();
  const auto [rest, error] = std::from_chars(page.data(), end, number);
  if (rest != end || error != std::errc()) return XML_STATUS_ERROR;
  const CodePage characters(number);
  if (!characters.IsSingleByte()) return XML_STATUS_ERROR;
  TextArena character;
  for (int code = 0; code < 256; ++code) {
    const std::byte byte{static_cast<std::uint8_t>(code)};
    character.Clear();
    characters.AppendText({&byte, 1}, character);
    encoding->map[code] = static_cast<int>(FirstUtf8(character.Text(character.RangeSince(0))).code);
  }
  return XML_STATUS_OK;
}

class Parser {
 public:
  Parser(const std::string& part, std::span<const XmlNamespace> namespaces, XmlHandler& handler);

  void Parse(const XmlSource& source);

 private:
  struct Release {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  void Start(const char* name, const char* const* attributes);
  void End(const char* name);
  std::string What() const { return part_.empty() ? "its XML" : "its part " + part_; }
  [[noreturn]] void RefuseFailure();
  [[noreturn]] void RefuseLength();
  // Runs a step inside a callback. The library is C code, through which no exception may pass: it
  // is kept, the library is stopped, and Parse throws it again.
  template <typename Step>
  void Guard(Step&& step);

  const std::string& part_;
  std::span<const XmlNamespace> namespaces_;
  XmlHandler& handler_;
  std::unique_ptr<std::remove_pointer_t<XML_Parser>, Release> parser_;
  std::uint64_t size_ = 0;        // so far
  std::uint64_t names_size_ = 0;  // of attributes, so far
  bool is_end_ = false;
  int depth_ = 0;
  std::size_t text_size_ = 0;  // since an element that is wanted began
  int unwanted_ = 0;           // depth of the element that is skipped, or 0
  std::exception_ptr error_;
};

Parser::Parser(const std::string& part, std::span<const XmlNamespace> namespaces,
               XmlHandler& handler)
    : part_(part), namespaces_(namespaces), handler_(handler) {
  static constexpr XML_Memory_Handling_Suite kMemory = {Allocate, Resize, Free};
  static constexpr char kSeparatorText[] = {kSeparator, '\0'};
  parser_.reset(XML_ParserCreate_MM(nullptr, &kMemory, kSeparatorText));
  if (parser_ == nullptr) throw std::bad_alloc();
  XML_SetUserData(parser_.get(), this);
  XML_SetUnknownEncodingHandler(parser_.get(), DescribeEncoding, nullptr);
  XML_SetElementHandler(
      parser_.get(),
      [](void* self, const char* name, const char** attributes) {
        static_cast<Parser*>(self)->Start(name, attributes);
      },
      [](void* self, const char* name) { static_cast<Parser*>(self)->End(name); });
  XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int length) {
    auto* const parser = static_cast<Parser*>(self);
    if (parser->unwanted_ != 0) return;
    parser->text_size_ += static_cast<std::size_t>(length);
    parser->Guard([&] {
      if (parser->text_size_ > kLongestText) parser->RefuseLength();
      parser->handler_.Text({text, static_cast<std::size_t>(length)});
    });
  });
  XML_SetStartNamespaceDeclHandler(parser_.get(), [](void* self, const char*, const char* uri) {
    if (uri == nullptr || std::strlen(uri) <= kLongestNamespace) return;
    auto* const parser = static_cast<Parser*>(self);
    parser->Guard([&] { parser->RefuseLength(); });
  });
  XML_SetStartDoctypeDeclHandler(
      parser_.get(), [](void* self, const char*, const char*, const char*, int) {
        auto* const parser = static_cast<Parser*>(self);
        parser->Guard([&] {
          Refuse("is damaged: " + parser->What() +
                 " has a document type declaration, which workbooks do not have");
        });
      });
}

template <typename Step>
void Parser::Guard(Step&& step) {
  // The library may make a few more calls after it was stopped.
  if (error_ != nullptr) return;
  try {
    step();
  } catch (...) {
    error_ = std::current_exception();
    XML_StopParser(parser_.get(), XML_FALSE);
  }
}

// What the handler does not want is skipped with all that is in it. Depth and names are counted in
// there all the same: they cost time and memory, whoever reads them.
void Parser::Start(const char* name, const char* const* attributes) {
  ++depth_;
  Guard([&] {
    if (depth_ > kDeepest) {
      Refuse("is damaged: the elements of " + What() + " lie more than " +
             std::to_string(kDeepest) + " deep in each other");
    }
    for (const char* const* at = attributes; *at != nullptr; at += 2)
      names_size_ += std::strlen(*at);
    if (names_size_ > kMostNamesAtLeast + kMostNamesPerByte * size_) RefuseLength();
    if (unwanted_ != 0) return;
    const XmlElement element(SplitName(name, namespaces_), depth_, attributes, namespaces_);
    if (handler_.StartElement(element)) {
      text_size_ = 0;
    } else {
      unwanted_ = depth_;
    }
  });
}

void Parser::End(const char* name) {
  const int depth = depth_--;
  if (unwanted_ == 0) {
    Guard([&] { handler_.EndElement(SplitName(name, namespaces_), depth); });
  } else if (unwanted_ == depth) {
    unwanted_ = 0;
  }
}

// The source writes into the library's own buffer, which saves a copy of every byte.
void Parser::Parse(const XmlSource& source) {
  while (!is_end_) {
    void* const room = XML_GetBuffer(parser_.get(), kChunk);
    if (room == nullptr) RefuseFailure();
    const std::size_t count = source({static_cast<char*>(room), kChunk});
    size_ += count;
    is_end_ = count == 0;
    const XML_Status status =
        XML_ParseBuffer(parser_.get(), static_cast<int>(count), is_end_ ? XML_TRUE : XML_FALSE);
    if (error_ != nullptr) std::rethrow_exception(error_);
    if (status != XML_STATUS_OK) RefuseFailure();
  }
}

void Parser::RefuseLength() {
  Refuse("is damaged: " + What() + " has names or texts of unusual length");
}

void Parser::RefuseFailure() {
  const XML_Error error = XML_GetErrorCode(parser_.get());
  // The limit of Resize looks to the library like a machine without memory.
  if (error == XML_ERROR_NO_MEMORY) RefuseLength();
  if (is_end_) {
    Refuse((part_.empty() ? std::string() : "is damaged: " + What() + " ") + "ends after " +
           GroupedDigits(size_) + " bytes, in the middle of its XML");
  }
  Refuse("is damaged: " + What() + " is not sound XML in line " +
         GroupedDigits(XML_GetCurrentLineNumber(parser_.get())) + " (" + XML_ErrorString(error) +
         ")");
}

}  // namespace

const char* XmlElement::Attribute(std::string_view local) const {
  for (const char* const* name = attributes_; *name != nullptr; name += 2) {
    if (std::strncmp(*name, local.data(), local.size()) == 0 && (*name)[local.size()] == '\0') {
      return name[1];
    }
  }
  return nullptr;
}

// Compares the end first: splitting off the namespace takes longer.
const char* XmlElement::Attribute(char space, std::string_view local) const {
  for (const char* const* name = attributes_; *name != nullptr; name += 2) {
    const std::string_view full(*name);
    if (full.ends_with(local) && SplitName(full, namespaces_).Is(space, local)) return name[1];
  }
  return nullptr;
}

std::string_view XmlElement::AttributeBeside(std::span<const XmlName> known) const {
  for (const char* const* at = attributes_; *at != nullptr; at += 2) {
    const XmlName name = SplitName(*at, namespaces_);
    const auto is_it = [&](const XmlName& other) { return name.Is(other.space, other.local); };
    if (name.space != kOtherNamespace && std::none_of(known.begin(), known.end(), is_it)) {
      return name.local;
    }
  }
  return {};
}

bool XmlElement::IsOn(std::string_view local) const {
  const char* const value = Attribute(local);
  if (value == nullptr) return false;
  const std::string_view text(value);
  return text == "1" || text == "true";
}

// Copies, because the parser reads from a buffer of its own.
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
  Parser(part, namespaces, handler).Parse(source);
}

}  // namespace korvex
