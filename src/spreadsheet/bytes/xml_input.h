// The bytes of an XML document as UTF-8, a window of them at a time.
//
// Encodings: UTF-8, UTF-16, ISO-8859-1, US-ASCII and the single-byte code pages of Windows. A byte
// that is no character becomes one that no document may hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex {

// Fills the front of the buffer with the next bytes of a document and returns their number; 0 at
// the end.
using XmlSource = std::function<std::size_t(std::span<char>)>;

// A window is a range of memory that holds a part of the document, with a NUL behind it: a scanner
// need look for the window's end only where it meets a NUL.
class XmlInput {
 public:
  // `whole` is a document in memory with a NUL behind it: it is the window, unless it has to be
  // converted. Document and source must outlive the input.
  explicit XmlInput(std::string_view whole) : whole_(whole) {}
  explicit XmlInput(const XmlSource& source) : source_(&source) {}

  // Makes the first window; finds out whether the document is UTF-16. Returns the document's
  // beginning, behind a byte order mark.
  const char* Begin();
  const char* End() const { return end_; }
  // Whether the document ends with the window.
  bool IsLast() const { return is_last_; }
  // Reads on. What stands before `kept` is dropped, the rest moves; returns its new place. If the
  // source fills what it is given, each call at least doubles what is kept, so that scanning it
  // again costs linear time.
  const char* More(const char* kept);

  // What an XML declaration says of the encoding. If it fits, what follows the declaration is read
  // anew; `rest` is its place.
  enum class Encoding { kFits, kUnknown, kContradicts };
  Encoding Declare(std::string_view name, const char*& rest);

  // The line of a place in the window, from 1, and the bytes read so far.
  std::uint64_t Line(const char* place);
  std::uint64_t Size() const { return size_; }

 private:
  enum class Form { kUtf8, kUtf16Little, kUtf16Big, kTable };

  const char* Restart(const char* rest, Form form);
  std::size_t Fetch(std::span<char> room);
  void Fill(std::size_t kept);
  void Convert(bool is_end);
  std::size_t ConvertUtf16(bool is_end);
  bool MakeTable(std::string_view name);
  void CountLines(const char* end);

  std::string_view whole_;
  const XmlSource* source_ = nullptr;
  Form form_ = Form::kUtf8;
  std::vector<std::string> table_;  // by byte: its character
  std::string unread_;              // was fetched before the encoding was known
  std::size_t unread_at_ = 0;
  std::string packed_;  // was fetched and is to be converted
  std::string buffer_;  // the window, unless that is the whole document
  const char* begin_ = nullptr;
  const char* end_ = nullptr;
  bool is_last_ = false;
  std::uint64_t size_ = 0;
  std::uint64_t lines_ = 0;  // before the window
  bool is_after_return_ = false;
};

}  // namespace korvex
