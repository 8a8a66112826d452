// The scanner of XML against expat: both take a document, with the same elements, attributes and
// texts, or both refuse it.
//
// The first byte says how the document reaches the scanner (whole, or in pieces of how many bytes)
// and which elements its reader does not want; the rest is the document.
#include <expat.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <string_view>

#include "fuzzing/fuzz_target.h"
#include "platform/error.h"
#include "spreadsheet/bytes/code_page.h"
#include "spreadsheet/bytes/xml_parser.h"
#include "text/text.h"
#include "text/utf8.h"

using namespace korvex;

namespace {

constexpr char kSeparator = '\x1F';  // no document can hold it
constexpr int kDeepest = 256;
constexpr std::size_t kLongestUri = 1024;
constexpr XmlNamespace kNamespaces[] = {
    {"http://schemas.openxmlformats.org/spreadsheetml/2006/main", 'm'},
    {"urn:oasis:names:tc:opendocument:xmlns:table:1.0", 't'},
    {"urn:oasis:names:tc:opendocument:xmlns:office:1.0", 'o'},
    {"urn:schemas-microsoft-com:office:spreadsheet", 's'},
    {"a", 'a'},
};

// What was read, as a text; texts are joined, however they are cut.
struct Account {
  bool is_refused = false;
  std::string events;
  std::string refusal;
};

// Which elements a reader does not want.
bool IsWanted(std::string_view local, int depth, unsigned choice) {
  return choice == 0 || (local.size() * 7 + static_cast<unsigned>(depth)) % (choice + 2) != 0;
}

void AddName(Account& account, char space, std::string_view local) {
  account.events += '{';
  account.events += space == kNoNamespace ? '-' : space;
  account.events += '}';
  account.events += local;
}

class Recorder : public XmlHandler {
 public:
  explicit Recorder(unsigned choice) : choice_(choice) {}

  bool StartElement(const XmlElement& element) override {
    TakeText();
    account.events += "\n<" + std::to_string(element.Depth());
    AddName(account, element.Name().space, element.Name().local);
    for (const XmlAttribute& attribute : element.Attributes()) {
      account.events += "\n ";
      AddName(account, attribute.name.space, attribute.name.local);
      account.events += '=';
      account.events += attribute.value;
    }
    account.events += "\n|";
    return IsWanted(element.Name().local, element.Depth(), choice_);
  }
  void EndElement(const XmlName& name, int depth) override {
    TakeText();
    account.events += "\n>" + std::to_string(depth);
    AddName(account, name.space, name.local);
    account.events += "\n|";
  }
  void Text(std::string_view text) override { text_.Append(text); }
  void KeepText() override { text_.Keep(); }

  Account account;

 private:
  // As late as a reader may.
  void TakeText() {
    account.events += text_.View();
    text_.Clear();
  }

  unsigned choice_;
  XmlText text_;
};

Account Scan(std::string_view document, unsigned piece, unsigned choice) {
  Recorder recorder(choice);
  const std::string copy(document);  // with a NUL behind it
  std::size_t at = 0;
  const XmlSource source = [&](std::span<char> room) {
    const std::size_t count = copy.copy(room.data(), std::min<std::size_t>(room.size(), piece), at);
    at += count;
    return count;
  };
  try {
    if (piece == 0) {
      ParseXml(std::string_view(copy), "", kNamespaces, recorder);
    } else {
      ParseXml(source, "", kNamespaces, recorder);
    }
  } catch (const Error& error) {
    recorder.account.is_refused = true;
    recorder.account.refusal = error.Description();
  }
  return std::move(recorder.account);
}

// expat, with the rules that are our own on top: no document types, and limits.
class Judge {
 public:
  explicit Judge(unsigned choice)
      : choice_(choice), parser_(XML_ParserCreateNS(nullptr, kSeparator)) {
    XML_SetUserData(parser_, this);
    XML_SetUnknownEncodingHandler(parser_, DescribeEncoding, nullptr);
    XML_SetElementHandler(
        parser_,
        [](void* self, const char* name, const char** attributes) {
          static_cast<Judge*>(self)->Start(name, attributes);
        },
        [](void* self, const char* name) { static_cast<Judge*>(self)->End(name); });
    XML_SetCharacterDataHandler(parser_, [](void* self, const char* text, int length) {
      auto* const judge = static_cast<Judge*>(self);
      if (judge->unwanted_ == 0) {
        judge->account_.events.append(text, static_cast<std::size_t>(length));
      }
    });
    XML_SetStartNamespaceDeclHandler(parser_, [](void* self, const char*, const char* uri) {
      if (uri != nullptr && std::strlen(uri) > kLongestUri) static_cast<Judge*>(self)->Stop();
    });
    XML_SetStartDoctypeDeclHandler(parser_, [](void* self, const char*, const char*, const char*,
                                               int) { static_cast<Judge*>(self)->Stop(); });
  }
  ~Judge() { XML_ParserFree(parser_); }
  Judge(const Judge&) = delete;
  Judge& operator=(const Judge&) = delete;

  Account Parse(std::string_view document) {
    const auto status =
        XML_Parse(parser_, document.data(), static_cast<int>(document.size()), XML_TRUE);
    if (status != XML_STATUS_OK) {
      account_.is_refused = true;
      account_.refusal = "line " + GroupedDigits(XML_GetCurrentLineNumber(parser_)) + " (" +
                         XML_ErrorString(XML_GetErrorCode(parser_)) + ")";
    }
    return std::move(account_);
  }

 private:
  static int DescribeEncoding(void*, const char* name, XML_Encoding* encoding) {
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
      encoding->map[code] =
          static_cast<int>(FirstUtf8(character.Text(character.RangeSince(0))).code);
    }
    return XML_STATUS_OK;
  }

  void AddExpanded(std::string_view name) {
    const std::size_t separator = name.find(kSeparator);
    if (separator == std::string_view::npos) return AddName(account_, kNoNamespace, name);
    char letter = kOtherNamespace;
    for (const XmlNamespace& known : kNamespaces) {
      if (known.uri == name.substr(0, separator)) letter = known.letter;
    }
    AddName(account_, letter, name.substr(separator + 1));
  }
  void Start(const char* name, const char** attributes) {
    if (++depth_ > kDeepest) Stop();
    if (unwanted_ != 0) return;
    account_.events += "\n<" + std::to_string(depth_);
    AddExpanded(name);
    for (; *attributes != nullptr; attributes += 2) {
      account_.events += "\n ";
      AddExpanded(attributes[0]);
      account_.events += std::string("=") + attributes[1];
    }
    account_.events += "\n|";
    const std::string_view full(name);
    const std::size_t separator = full.find(kSeparator);
    const std::string_view local =
        separator == std::string_view::npos ? full : full.substr(separator + 1);
    if (!IsWanted(local, depth_, choice_)) unwanted_ = depth_;
  }
  void End(const char* name) {
    const int depth = depth_--;
    if (unwanted_ == 0) {
      account_.events += "\n>" + std::to_string(depth);
      AddExpanded(name);
      account_.events += "\n|";
    } else if (unwanted_ == depth) {
      unwanted_ = 0;
    }
  }
  void Stop() { XML_StopParser(parser_, XML_FALSE); }

  unsigned choice_;
  XML_Parser parser_;
  Account account_;
  int depth_ = 0;
  int unwanted_ = 0;
};

// expat joins a high surrogate to whatever follows it. The scanner refuses it.
bool HasLoneSurrogates(std::string_view document) {
  if (document.size() < 2) return false;
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(document[at]); };
  const bool is_big = byte(0) == 0 || (byte(0) == 0xFE && byte(1) == 0xFF);
  const bool is_little = byte(1) == 0 || (byte(0) == 0xFF && byte(1) == 0xFE);
  if (!is_big && !is_little) return false;
  for (std::size_t i = 0; i + 1 < document.size(); i += 2) {
    const auto high = [&](std::size_t at) { return is_big ? byte(at) : byte(at + 1); };
    if ((high(i) & 0xFC) != 0xD8) continue;
    if (i + 3 >= document.size() || (high(i + 2) & 0xFC) != 0xDC) return true;
    i += 2;
  }
  return false;
}

void Differ(std::string_view document, const Account& ours, const Account& judged) {
  std::cerr << "Document:\n"
            << document << "\nScanner: " << ours.refusal << ours.events
            << "\nexpat: " << judged.refusal << judged.events << '\n';
  std::abort();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const unsigned choice = data[0] >> 5u;
  const unsigned piece = data[0] & 0x1Fu;
  const std::string_view document(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (HasLoneSurrogates(document)) return 0;
  const fuzz::MemoryPromise promise(size);
  const Account judged = Judge(choice).Parse(document);
  const Account ours = Scan(document, piece, choice);
  const bool is_same =
      ours.is_refused == judged.is_refused && (ours.is_refused || ours.events == judged.events);
  if (!is_same) Differ(document, ours, judged);
  return 0;
}
