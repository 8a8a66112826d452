#include <cstdint>
#include <string_view>
#include <type_traits>

#include "files/report_paths.h"
#include "platform/services.h"
#include "report/report.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

// Raised whenever a program that reads reports would have to change. New fields do not count.
constexpr std::uint64_t kSchemaVersion = 1;

// Writes values of JSON in the order of the calls, one a line. Fields that know no value are null:
// a program finds every field in every report.
class JsonWriter {
 public:
  void Text(std::string_view name, std::string_view text) {
    Begin(name);
    Quote(text);
  }
  void TextOrNull(std::string_view name, std::string_view text) {
    if (text.empty()) return Null(name);
    Text(name, text);
  }
  template <class Number>
  void Count(std::string_view name, Number number) {
    Begin(name);
    json_ += std::to_string(number);
  }
  void Flag(std::string_view name, bool flag) {
    Begin(name);
    json_ += flag ? "true" : "false";
  }
  void Null(std::string_view name) {
    Begin(name);
    json_ += "null";
  }
  // `write` writes the fields.
  template <class Write>
  void Object(std::string_view name, Write&& write) {
    Begin(name);
    Enclose('{', '}', write);
  }
  // `write` takes an element and writes one value, without a name.
  template <class Elements, class Write>
  void List(std::string_view name, const Elements& elements, Write&& write) {
    Begin(name);
    Enclose('[', ']', [&] {
      for (const auto& element : elements) write(element);
    });
  }

  std::string Take() { return std::move(json_) + "\n"; }

 private:
  void Begin(std::string_view name) {
    if (!is_first_) json_ += ',';
    is_first_ = false;
    // The outermost value begins the file; every other one has a line of its own, so that two
    // reports can be compared line by line.
    if (depth_ > 0) StartLine();
    if (name.empty()) return;
    Quote(name);
    json_ += ": ";
  }

  void StartLine() {
    json_ += '\n';
    json_.append(2 * depth_, ' ');
  }

  template <class Write>
  void Enclose(char opening, char closing, Write&& write) {
    json_ += opening;
    ++depth_;
    is_first_ = true;
    write();
    --depth_;
    // An empty list or object stays on its line: "[]".
    if (!is_first_) StartLine();
    is_first_ = false;
    json_ += closing;
  }

  void Quote(std::string_view text) {
    json_ += '"';
    while (!text.empty()) {
      const auto [code, length] = FirstUtf8(text);
      AppendCharacter(code);
      text.remove_prefix(length);
    }
    json_ += '"';
  }

  void AppendCharacter(char32_t code) {
    // Only what JSON demands is escaped (RFC 8259): quote, backslash and controls. All other
    // characters stay UTF-8, and since a JSON text must be valid UTF-8, bytes that are none are
    // replaced.
    constexpr std::string_view kShort = "\"\\\b\f\n\r\t";
    constexpr std::string_view kShortEscapes = "\"\\bfnrt";
    if (code == kInvalidByte) return AppendUtf8(kReplacementCharacter, json_);
    const std::size_t found =
        code < 0x80 ? kShort.find(static_cast<char>(code)) : std::string_view::npos;
    if (found != std::string_view::npos) {
      json_ += '\\';
      json_ += kShortEscapes[found];
    } else if (code < 0x20) {
      json_ += code < 0x10 ? "\\u000" : "\\u001";
      json_ += "0123456789abcdef"[code & 15];
    } else {
      AppendUtf8(code, json_);
    }
  }

  std::string json_;
  std::size_t depth_ = 0;
  bool is_first_ = true;
};

std::string_view NameOf(RunRecord::Outcome outcome) {
  switch (outcome) {
    case RunRecord::Outcome::kFinished:
      return "finished";
    case RunRecord::Outcome::kFailed:
      return "failed";
    case RunRecord::Outcome::kStopped:
      return "stopped";
    case RunRecord::Outcome::kChecked:
      return "checked";
  }
  return "";
}

class RecordWriter {
 public:
  RecordWriter(const RunRecord& record, const ReportOptions& options)
      : record_(record), options_(options) {}

  std::string Write() {
    json_.Object("", [&] {
      // First, so that a reader knows from the first line what it has before it.
      json_.Text("schema", "korvex-report");
      json_.Count("version", kSchemaVersion);
      json_.Object("program", [&] {
        json_.Text("name", kProgramTitle);
        json_.Text("version", kProgramVersion);
      });
      json_.Text("outcome", NameOf(record_.outcome));
      Settings();
      json_.Count("input_count", record_.input_count);
      json_.List("inputs", record_.inputs, [&](const InputRecord& input) { Input(input); });
      Output("output", record_.output);
      Output("long_form", record_.long_form);
      json_.List("findings", record_.findings.All(), [&](const Finding& finding) {
        json_.Object("", [&] {
          json_.Text("kind", korvex::NameOf(finding.kind));
          json_.Count("count", finding.count);
          Prose("text", finding.text);
          json_.List("places", finding.places,
                     [&](const FindingPlace& place) { Place("", place); });
        });
      });
      json_.List("problems", record_.problems, [&](const Problem& problem) {
        json_.Object("", [&] {
          Prose("text", problem.text);
          Prose("cause", problem.cause);
          Place("place", problem.place);
        });
      });
    });
    return json_.Take();
  }

 private:
  void Settings() {
    json_.Object("settings", [&] {
      json_.Text("mode", record_.sub_folders ? "sub-folders" : "selected-files");
      Texts("key_columns", record_.key_columns);
      Texts("output_columns", record_.output_columns);
      json_.Text("data_column", record_.data_column);
      json_.Flag("decimal_comma", record_.options.decimal_comma);
      // As the user named them: found columns may change with the data and are no settings.
      json_.TextOrNull("plate_column", record_.options.plate_column);
      json_.TextOrNull("well_column", record_.options.well_column);
      json_.Object("controls", [&] {
        Controls("low", options_.low);
        Controls("high", options_.high);
      });
    });
  }

  void Texts(std::string_view name, const std::vector<std::string>& texts) {
    json_.List(name, texts, [&](const std::string& text) { json_.Text("", text); });
  }

  void Controls(std::string_view name, const std::vector<ControlChoice>& controls) {
    json_.List(name, controls, [&](const ControlChoice& control) {
      json_.Object("", [&] {
        json_.TextOrNull("column", control.column);
        json_.Text("text", control.text);
      });
    });
  }

  void Input(const InputRecord& input) {
    json_.Object("", [&] {
      json_.Text("path", input.path);
      json_.Count("size", input.size);
      json_.TextOrNull("sha256", input.sha256);
      CountOrNull("replication", input.replication);
      json_.TextOrNull("day", input.day);
      json_.TextOrNull("date", input.date);
      json_.Count("rows", input.rows);
      json_.Count("unread_rows", input.unread_rows);
    });
  }

  void Output(std::string_view name, const std::optional<OutputRecord>& output) {
    if (!output) return json_.Null(name);
    json_.Object(name, [&] {
      // Relative, as in the page: equal runs give equal reports wherever the campaign lies.
      json_.Text("path", PathFrom(record_.processing_folder, output->path));
      json_.Count("size", output->size);
      json_.TextOrNull("sha256", output->sha256);
      json_.Count("rows", output->rows);
      json_.Count("columns", output->columns);
    });
  }

  void Place(std::string_view name, const FindingPlace& place) {
    json_.Object(name, [&] {
      json_.TextOrNull("file", place.file);
      CountOrNull("row", place.row);
      json_.TextOrNull("key", place.key);
      json_.TextOrNull("column", place.column);
      TextOrNullWithoutFolders("detail", place.detail);
    });
  }

  // Sentences of ours, in lines as a text file has them.
  void Prose(std::string_view name, std::string_view text) {
    TextOrNullWithoutFolders(name, Join(Split(text, kLineBreak), "\n"));
  }

  void TextOrNullWithoutFolders(std::string_view name, std::string_view text) {
    json_.TextOrNull(name, WithoutFolders(record_.processing_folder, text));
  }

  void CountOrNull(std::string_view name, int count) {
    // Rows and replications count from 1: 0 means that there is none.
    if (count == 0) return json_.Null(name);
    json_.Count(name, count);
  }

  const RunRecord& record_;
  const ReportOptions& options_;
  JsonWriter json_;
};

}  // namespace

std::string JsonReport(const RunRecord& record, const ReportOptions& options) {
  return RecordWriter(record, options).Write();
}

}  // namespace korvex
