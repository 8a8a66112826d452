#include "platform/posix/sendmail_mail.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

#include "platform/error.h"
#include "platform/posix/posix_io.h"
#include "platform/posix/process.h"
#include "platform/shown_text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

// A mail system may refuse lines of more than 998 bytes.
constexpr std::size_t kMaxLine = 900;
// What fits, encoded, into one encoded word beside the header's name (at most 76 characters).
constexpr std::size_t kMaxWord = 39;

std::string Base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string result;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = i; j < i + 3; ++j) {
      group = group << 8 | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0u);
    }
    for (unsigned digit = 0; digit < 4; ++digit) {
      result += i + digit <= bytes.size() ? kDigits[group >> (18 - 6 * digit) & 63] : '=';
    }
  }
  return result;
}

// Cuts a text between characters into pieces of at most `size` bytes.
std::vector<std::string> Pieces(std::string_view text, std::size_t size) {
  std::vector<std::string> pieces(1);
  while (!text.empty()) {
    const Utf8Character character = FirstUtf8(text);
    if (pieces.back().size() + character.length > size) pieces.emplace_back();
    pieces.back() += character.code == kInvalidByte ? "?" : text.substr(0, character.length);
    text.remove_prefix(character.length);
  }
  return pieces;
}

// The value of an unstructured header: as it stands when that is safe, else as encoded words.
std::string HeaderText(std::string text) {
  // A line break would begin another header.
  std::ranges::replace_if(text, IsAsciiControl, ' ');
  // "=?" begins an encoded word: a text that holds it would be decoded.
  const bool ascii = std::ranges::all_of(text, [](char c) { return c >= ' '; });
  if (ascii && text.size() <= 2 * kMaxWord && text.find("=?") == std::string::npos) return text;
  std::string result;
  for (const std::string& piece : Pieces(text, kMaxWord)) {
    if (!result.empty()) result += "\n ";
    result += "=?UTF-8?B?" + Base64(piece) + "?=";
  }
  return result;
}

// Line ends of this system, no line too long, nothing but text.
std::string BodyText(std::string_view text) {
  std::string lines;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\r') {
      if (i + 1 == text.size() || text[i + 1] != '\n') lines += '\n';
    } else {
      lines += IsAsciiControl(c) && c != '\n' && c != '\t' ? '?' : c;
    }
  }
  std::string result;
  for (std::size_t start = 0; start < lines.size();) {
    const std::size_t end = std::min(lines.find('\n', start), lines.size());
    for (const std::string& piece : Pieces(lines.substr(start, end - start), kMaxLine)) {
      result += piece + "\n";
    }
    start = end + 1;
  }
  return result;
}

// A file in memory instead of a pipe: a slow reader does not make us wait, and one that exits early
// raises no signal.
Descriptor InMemory(const std::string& content) {
  Descriptor file(memfd_create("message", MFD_CLOEXEC));
  if (!file.IsOpen()) throw Error(error_number::kDeviceIo, "Cannot hold the message to be mailed.");
  WriteAll(file.Get(), std::as_bytes(std::span(content)), "the message to be mailed");
  lseek(file.Get(), 0, SEEK_SET);
  return file;
}

}  // namespace

void SendmailMail::SignOn() {
  // Neither folder is in a usual user's PATH.
  program_ = FindProgram("sendmail", {"/usr/sbin", "/usr/lib"});
}

void SendmailMail::Compose() {
  subject_.clear();
  text_.clear();
  recipient_.clear();
}

void SendmailMail::ResolveName() {
  CheckMailAddress(recipient_, kMaxLine);
}

void SendmailMail::Send() {
  if (program_.empty()) return;
  ResolveName();
  ForgetEnded();
  const Descriptor message = InMemory(Message());
  const pid_t sendmail = StartProgram({program_, "-t", "-i"}, message.Get());
  if (sendmail < 0) throw Error(error_number::kDeviceIo, "Cannot start " + program_ + ".");
  const std::optional<int> status = WaitForProgram(sendmail, patience_);
  if (!status) {
    // It goes on by itself. It is only waited for later, so that no finished process stays behind.
    unfinished_.push_back(sendmail);
  } else if (*status != 0) {
    throw Error(error_number::kDeviceIo, program_ + " did not accept the message.");
  }
}

void SendmailMail::ForgetEnded() {
  std::erase_if(unfinished_, [](pid_t program) {
    return WaitForProgram(program, std::chrono::milliseconds(0)).has_value();
  });
}

std::string SendmailMail::Message() const {
  return "To: " + recipient_ + "\nSubject: " + HeaderText(subject_) +
         "\nMIME-Version: 1.0"
         "\nContent-Type: text/plain; charset=UTF-8"
         "\nContent-Transfer-Encoding: 8bit"
         "\nAuto-Submitted: auto-generated\n\n" +
         BodyText(text_);
}

}  // namespace korvex
