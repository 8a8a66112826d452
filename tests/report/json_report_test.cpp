#include <gtest/gtest.h>

#include <tuple>

#include "files/report_paths.h"
#include "platform/services.h"
#include "report/report.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

RunRecord FullRecord() {
  RunRecord record;
  record.outcome = RunRecord::Outcome::kFinished;
  record.processing_folder = "/data/screen/";
  record.key_columns = {"plate", "well"};
  record.output_columns = {"compound"};
  record.data_column = "OD";
  record.options.decimal_comma = true;
  record.options.well_column = "well";
  record.input_count = 2;
  InputRecord& input = record.inputs.emplace_back();
  input.path = "Set 1/P1-7-2.xls";
  input.full_name = "/data/screen/Set 1/P1-7-2.xls";
  input.replication = 2;
  input.day = "7";
  input.date = "2024-03-01";
  input.rows = 96;
  input.unread_rows = 3;
  input.size = 5'000'000'000;
  input.sha256 = "ab12";
  record.inputs.emplace_back().path = "Set 2/plain.xls";
  record.findings.Note(FindingKind::kUnreadRows, [] {
    return FindingPlace{"Set 1/P1-7-2.xls", 99, "", "", "3 rows"};
  });
  record.findings.Note(FindingKind::kKeyOutsidePlate, [] {
    return FindingPlace{"Set 1/P1-7-2.xls", 5, "plate=P1;well=Z9;", "well", ""};
  });
  record.problems.push_back({"Cannot read.\r\nCheck it.",
                             "/data/screen/Set 2/plain.xls is damaged",
                             {"Set 2/plain.xls", 0, "", "", ""}});
  record.output = OutputRecord{"/data/screen.xlsx", 4096, "cd34", 97, 5};
  return record;
}

constexpr char kFullReport[] = R"json({
  "schema": "korvex-report",
  "version": 1,
  "program": {
    "name": "KORVEX",
    "version": "@"
  },
  "outcome": "finished",
  "settings": {
    "mode": "sub-folders",
    "key_columns": [
      "plate",
      "well"
    ],
    "output_columns": [
      "compound"
    ],
    "data_column": "OD",
    "decimal_comma": true,
    "plate_column": null,
    "well_column": "well",
    "controls": {
      "low": [
        {
          "column": null,
          "text": "DMSO"
        }
      ],
      "high": [
        {
          "column": "compound",
          "text": "Staurosporine"
        }
      ]
    }
  },
  "input_count": 2,
  "inputs": [
    {
      "path": "Set 1/P1-7-2.xls",
      "size": 5000000000,
      "sha256": "ab12",
      "replication": 2,
      "day": "7",
      "date": "2024-03-01",
      "rows": 96,
      "unread_rows": 3
    },
    {
      "path": "Set 2/plain.xls",
      "size": 0,
      "sha256": null,
      "replication": null,
      "day": null,
      "date": null,
      "rows": 0,
      "unread_rows": 0
    }
  ],
  "output": {
    "path": "../screen.xlsx",
    "size": 4096,
    "sha256": "cd34",
    "rows": 97,
    "columns": 5
  },
  "long_form": null,
  "findings": [
    {
      "kind": "unread-rows",
      "count": 1,
      "text": "@",
      "places": [
        {
          "file": "Set 1/P1-7-2.xls",
          "row": 99,
          "key": null,
          "column": null,
          "detail": "3 rows"
        }
      ]
    },
    {
      "kind": "key-outside-plate",
      "count": 1,
      "text": "@",
      "places": [
        {
          "file": "Set 1/P1-7-2.xls",
          "row": 5,
          "key": "plate=P1;well=Z9;",
          "column": "well",
          "detail": null
        }
      ]
    }
  ],
  "problems": [
    {
      "text": "Cannot read.\nCheck it.",
      "cause": "Set 2/plain.xls is damaged",
      "place": {
        "file": "Set 2/plain.xls",
        "row": null,
        "key": null,
        "column": null,
        "detail": null
      }
    }
  ]
}
)json";

TEST(JsonReport, HoldsTheWholeRecord) {
  const TestPlatform platform(PathStyle::kLinux);
  const RunRecord record = FullRecord();
  ReportOptions options;
  options.low = {{"", "DMSO"}};
  options.high = {{"compound", "Staurosporine"}};

  std::string expected = kFullReport;
  std::vector<std::string> known_elsewhere = {kProgramVersion};
  for (const Finding& finding : record.findings.All()) known_elsewhere.push_back(finding.text);
  for (const std::string& text : known_elsewhere) expected.replace(expected.find('@'), 1, text);
  EXPECT_EQ(JsonReport(record, options), expected);
}

TEST(JsonReport, IsWholeWithoutAnything) {
  const TestPlatform platform(PathStyle::kLinux);
  const std::string report = JsonReport(RunRecord(), {});
  for (const char* const field :
       {"\"outcome\": \"failed\"", "\"key_columns\": []", "\"low\": []", "\"inputs\": []",
        "\"output\": null", "\"findings\": []", "\"problems\": []\n}\n"}) {
    EXPECT_NE(report.find(field), std::string::npos) << field;
  }
}

TEST(JsonReport, EscapesTexts) {
  const std::pair<std::string, const char*> cases[] = {
      {"\"a\\b/\"", R"(\"a\\b/\")"},
      {"\b\f\n\r\t", R"(\b\f\n\r\t)"},
      {std::string("\0\x01\x1F\x7F", 4), "\\u0000\\u0001\\u001f\x7F"},
      {"µ<script>λ😀", "µ<script>λ😀"},
      {"caf\xE9\xC3", "caf\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // half of a surrogate pair
  };
  const TestPlatform platform(PathStyle::kLinux);
  RunRecord record;
  for (const auto& [text, escaped] : cases) {
    record.data_column = text;
    const std::string field = "\"data_column\": \"" + std::string(escaped) + "\",\n";
    EXPECT_NE(JsonReport(record, {}).find(field), std::string::npos) << field;
  }
}

TEST(ReportPaths, BeginAtTheProcessingFolder) {
  const std::tuple<PathStyle, const char*, const char*, const char*> cases[] = {
      {PathStyle::kLinux, "/data/a/", "/data/a/out.xls", "out.xls"},
      {PathStyle::kLinux, "/data/a", "/data/ab/out.xls", "../ab/out.xls"},
      {PathStyle::kLinux, "/data/a", "/mnt/x/out.xls", "../../mnt/x/out.xls"},
      {PathStyle::kLinux, "/home/eva/a", "/home/eva/b/out.xls", "../b/out.xls"},
      {PathStyle::kLinux, "/home/eva/a", "/home/tom/out.xls", "out.xls"},
      {PathStyle::kLinux, "/data/a", "/home/eva/out.xls", "out.xls"},
      {PathStyle::kLinux, "", "/data/out.xls", "out.xls"},
      {PathStyle::kWindows, "C:\\Data\\A\\", "c:\\data\\B\\out.xls", "../B/out.xls"},
      {PathStyle::kWindows, "C:\\Data", "D:\\out.xls", "out.xls"},
      {PathStyle::kWindows, "C:\\Data", "C:\\users\\eva\\out.xls", "out.xls"},
      {PathStyle::kWindows, "\\\\lab\\s\\a", "\\\\lab\\s\\out.xls", "../out.xls"},
  };
  for (const auto& [style, folder, path, shown] : cases) {
    const TestPlatform platform(style);
    EXPECT_EQ(PathFrom(folder, path), shown) << folder << " " << path;
  }
}

TEST(ReportPaths, LeaveFoldersAndUsersOutOfTexts) {
  const std::tuple<PathStyle, const char*, const char*, const char*> cases[] = {
      {PathStyle::kLinux, "/home/eva/a/", "/home/eva/a/S 1/x.xls is damaged: /home/eva/a/S 1/y.xls",
       "S 1/x.xls is damaged: S 1/y.xls"},
      {PathStyle::kLinux, "/home/eva/a", "Cannot list /home/eva/a: no access",
       "Cannot list .: no access"},
      {PathStyle::kLinux, "/home/eva/a", "/home/eva/ab/x.xls (/home/eva)", "~/ab/x.xls (~)"},
      {PathStyle::kLinux, "/a", "/data/home/eva/a/x.xls, /ab", "/data/home/eva/a/x.xls, /ab"},
      {PathStyle::kLinux, "/", "a/b", "a/b"},
      {PathStyle::kLinux, "/a", "ends:/home/eva/a", "ends:~/a"},
      {PathStyle::kWindows, "D:\\a\\", "\"C:\\users\\Eva Maria\\x.xls\" D:\\a\\S\\y.xls",
       "\"~\\x.xls\" S\\y.xls"},
  };
  for (const auto& [style, folder, text, shown] : cases) {
    const TestPlatform platform(style);
    EXPECT_EQ(WithoutFolders(folder, text), shown) << text;
  }
}

}  // namespace
}  // namespace korvex
