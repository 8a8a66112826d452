#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>

#include "report/report.h"
#include "report/svg_plate.h"
#include "tests/report/campaign_record.h"
#include "tests/support/fakes.h"

namespace korvex {
namespace {

using testing::IsEmpty;

const ReportOptions kControls = {{{"", "tetracycline"}}, {{"compound ID", "DMSO"}}};

std::size_t Count(const std::string& text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

std::vector<std::string> MissingIn(const std::string& page, std::vector<std::string> parts) {
  std::erase_if(parts, [&](const std::string& part) { return page.find(part) != page.npos; });
  return parts;
}

// A regular expression calls itself for every character: long drawings would take all of the stack.
std::string WithShortPaths(const std::string& page) {
  constexpr std::string_view kBegin = " d=\"";
  std::string shorter;
  std::size_t from = 0;
  for (std::size_t at = page.find(kBegin); at != page.npos; at = page.find(kBegin, from)) {
    const std::size_t begin = at + kBegin.size();
    const std::size_t end = page.find_first_not_of("MmHhVvLlZz0123456789 .-", begin);
    shorter += page.substr(from, begin - from);
    from = std::min(end, page.size());
  }
  return shorter + page.substr(from);
}

// Elements nest and end, attributes are quoted, texts hold no bare "<" or "&", identifiers are
// unique, and links within the page lead somewhere. Returns the first fault.
std::string FaultOf(const std::string& whole_page) {
  const std::string page = WithShortPaths(whole_page);
  static const std::regex kTag(
      R"re(<(/?)([a-z][a-z0-9]*)((?: [a-zA-Z-]+(?:="[^"<]*")?)*)(/?)>|<!DOCTYPE html>)re"
      R"re(|<|&(?!(?:amp|lt|gt|quot|shy);))re");
  static const std::regex kLink(R"re((?:^| )(id|href)="#?([^"]*)"|url\(#([^)]*)\))re");
  static const std::set<std::string> kVoid = {"meta", "br", "wbr"};
  std::vector<std::string> open;
  std::set<std::string> ids;
  std::set<std::string> links;
  const std::sregex_iterator end;
  for (std::sregex_iterator tag(page.begin(), page.end(), kTag); tag != end; ++tag) {
    const std::string name = (*tag)[2];
    const std::string attributes = (*tag)[3];
    const std::string where = page.substr(static_cast<std::size_t>(tag->position()), 80);
    if (name.empty()) {
      if (tag->str() != "<!DOCTYPE html>") return "bare character: " + where;
      continue;
    }
    for (std::sregex_iterator link(attributes.begin(), attributes.end(), kLink); link != end;
         ++link) {
      if ((*link)[1] == "id") {
        if (!ids.insert((*link)[2]).second) return "second of its name: " + where;
      } else {
        links.insert((*link)[2].str() + (*link)[3].str());
      }
    }
    if ((*tag)[1].length() > 0) {
      if (open.empty() || open.back() != name) return "ends nothing: " + where;
      open.pop_back();
    } else if ((*tag)[4].length() == 0 && !kVoid.contains(name)) {
      open.push_back(name);
    }
  }
  for (const std::string& link : links) {
    if (!ids.contains(link)) return "link to nowhere: " + link;
  }
  return open.empty() ? "" : "not ended: " + open.back();
}

std::string PageOf(const RunRecord& record, const ReportOptions& options = {}) {
  const TestPlatform platform(record.processing_folder.starts_with('/') ? PathStyle::kLinux
                                                                        : PathStyle::kWindows);
  std::string page = HtmlReport(record, options);
  EXPECT_EQ(FaultOf(page), "");
  EXPECT_EQ(page, HtmlReport(record, options));
  for (const char* never : {"/home", "/ann", "C:\\", "http", "<script", "nan\"", "inf\"", "-inf"}) {
    EXPECT_EQ(page.find(never), page.npos) << never;
  }
  return page;
}

// The classes of the wells in a drawing, by their places; what its paths hold.
std::map<std::pair<int, int>, std::string> WellsIn(const std::string& drawing) {
  static const std::regex kPath(R"re(<path class="(c\d+|nb)" d=")re");
  static const std::regex kMove(R"re([Mm](-?\d+)[ ]?(-?\d+)h(\d+))re");
  std::map<std::pair<int, int>, std::string> wells;
  const std::sregex_iterator end;
  for (std::sregex_iterator path(drawing.begin(), drawing.end(), kPath); path != end; ++path) {
    const auto begin = static_cast<std::size_t>(path->position() + path->length());
    const std::string commands = drawing.substr(begin, drawing.find('"', begin) - begin);
    int x = 0;
    int y = 0;
    for (std::sregex_iterator move(commands.begin(), commands.end(), kMove); move != end; ++move) {
      x += std::stoi((*move)[1]);
      y += std::stoi((*move)[2]);
      for (int run = std::stoi((*move)[3]); run > 0; --run) {
        EXPECT_TRUE(wells.try_emplace({x++, y}, (*path)[1]).second) << x << ' ' << y;
      }
    }
  }
  return wells;
}

// What the bars of a histogram count in all.
int BarsIn(const std::string& page) {
  static const std::regex kBar(R"re(<path class="b[ar]" d="[^"]*"><title>(\d+)</title>)re");
  int all = 0;
  const std::sregex_iterator end;
  for (std::sregex_iterator bar(page.begin(), page.end(), kBar); bar != end; ++bar) {
    all += std::stoi((*bar)[1]);
  }
  return all;
}

TEST(ColourScale, RisesInLightnessFromThe1stToThe99thPercentile) {
  double last = 0;
  for (int i = 0; i < ColourScale::kClasses; ++i) {
    const int colour = std::stoi(ColourScale::Colour(i).substr(1), nullptr, 16);
    const double lightness =
        0.2126 * (colour >> 16) + 0.7152 * (colour >> 8 & 0xFF) + 0.0722 * (colour & 0xFF);
    EXPECT_GT(lightness, last + 2) << i;
    last = lightness;
  }
  std::vector<double> values(101);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(100 - i);
  values[0] = 1e300;
  const ColourScale scale(values);
  EXPECT_EQ(scale.Low(), 1);
  EXPECT_EQ(scale.High(), 99);
  for (const auto& [value, of_class] :
       {std::pair{-1e308, 0}, {1, 0}, {4, 0}, {5, 1}, {50, 16}, {98, 31}, {99, 31}, {1e300, 31}}) {
    EXPECT_EQ(scale.ClassOf(value), of_class) << value;
  }
  EXPECT_EQ(ColourScale({2, 2}).ClassOf(2), ColourScale::kClasses / 2);
  EXPECT_FALSE(ColourScale({}).HasValues());
}

TEST(PlateDrawing, HoldsEachWellOnceInItsColour) {
  for (const PlateFormat& format : kPlateFormats) {
    const Campaign campaign = GrowthCampaign(1, 1, format);
    std::vector<double> values;
    std::vector<DrawnWell> wells;
    for (std::uint32_t map = 0; map < 6; ++map) {
      for (int number = 0; number < format.wells; ++number) {
        const Well well{number / format.columns, number % format.columns};
        const MadeValue made = campaign.value({0, static_cast<int>(map), well});
        if (!made.number && made.text.empty()) continue;
        if (made.number) values.push_back(*made.number);
        wells.push_back({map, well, made.number});
      }
    }
    const ColourScale scale(values);
    const PlateDrawing drawing(format, 6, PlateDrawing::Size::kSmall);
    std::string svg;
    drawing.AppendWells(wells, scale, svg);
    const auto drawn = WellsIn(svg);
    EXPECT_EQ(drawn.size(), wells.size());
    EXPECT_LT(svg.size(), wells.size() * 9);
    const int gap = format.wells == 96 ? 1 : format.wells == 384 ? 2 : 3;
    for (const DrawnWell& well : wells) {
      const auto map = static_cast<int>(well.map);  // four of them a line
      const auto at = drawn.find({gap + map % 4 * (format.columns + gap) + well.well.column,
                                  gap + map / 4 * (format.rows + gap) + well.well.row});
      ASSERT_NE(at, drawn.end());
      EXPECT_EQ(at->second, well.value ? "c" + std::to_string(scale.ClassOf(*well.value)) : "nb");
    }
  }
}

TEST(HtmlReport, ShowsACampaignInAnyFormat) {
  for (const PlateFormat& format : kPlateFormats) {
    const std::string wells = std::to_string(format.wells);
    const std::string few = PageOf(RecordOf(GrowthCampaign(2, 3, format)), kControls);
    EXPECT_THAT(
        MissingIn(few, {"<h1>kinases</h1>", "6 of 6 workbooks read",
                        "<th scope=\"row\">replications</th><td>1 to 3</td>", "kinases.xls<br>",
                        "well (found)", "Plate 1042, 3 replications of " + wells + " wells"}),
        IsEmpty());
    // Each well of both plates can be pointed at.
    EXPECT_EQ(Count(few, "h1v1h-1z\"><title>"), 2 * static_cast<std::size_t>(format.wells));
    EXPECT_EQ(Count(few, "All plates in one colour scale"), 0U);
    const std::string many = PageOf(RecordOf(GrowthCampaign(5, 2, format)), kControls);
    EXPECT_THAT(MissingIn(many, {"All plates in one colour scale", "<a href=\"#plate5\">1045</a>"}),
                IsEmpty());
  }
}

TEST(HtmlReport, TellsKeyAndValuesOfAWell) {
  Campaign campaign = GrowthCampaign(1, 3, kPlateFormats[0]);
  campaign.value = [](const ReadingPlace& place) -> MadeValue {
    if (place.replication == 2) return {{}, "OVRFLW & more"};
    if (place.well == Well{1, 0} && place.replication == 3) return {};
    return {0.123456789 * place.replication, ""};
  };
  campaign.compound = [](const ReadingPlace& place) -> std::string {
    return place.well.row == 0 && place.replication == 3 ? "<script>alert(1)</script>"
                                                         : "DM\"\x01\xFF";
  };
  const std::string page = PageOf(RecordOf(campaign));
  EXPECT_THAT(
      MissingIn(page, {"<title>A01 DM&quot;\uFFFD\uFFFD: 0.123457 &quot;OVRFLW &amp; more&quot; / "
                       "&lt;script&gt;alert(1)&lt;/script&gt;: 0.37037</title>",
                       "<title>B01 DM&quot;\uFFFD\uFFFD: 0.123457 &quot;OVRFLW &amp; more&quot; "
                       "–</title>",
                       "<small>3 replications, 191 numbers, 96 other</small>",
                       "288: 191 numbers, 96 not a number, 1 blank"}),
      IsEmpty());
}

TEST(HtmlReport, ComparesReplications) {
  Campaign campaign = GrowthCampaign(1, 3, kPlateFormats[0]);
  // Replication 3 falls where 1 rises; 2 has the one number.
  campaign.value = [](const ReadingPlace& place) -> MadeValue {
    const double rank = place.well.row * 12 + place.well.column + 1;
    if (place.replication == 2) return rank == 1 ? MadeValue{3.0, ""} : MadeValue{};
    return {place.replication == 1 ? rank : 1000 / rank, ""};
  };
  const std::string page = PageOf(RecordOf(campaign));
  EXPECT_EQ(BarsIn(page), 96);
  EXPECT_THAT(MissingIn(page, {"96 keys<br>Pearson -0.4", "Spearman -1<",
                               "1 key<br>Pearson –<br>Spearman –", "96 keys: median "}),
              IsEmpty());

  campaign.replications = 1;
  EXPECT_THAT(MissingIn(PageOf(RecordOf(campaign)), {"nothing can be compared"}), IsEmpty());
  campaign.value = [](const ReadingPlace&) -> MadeValue { return {{}, "OVRFLW"}; };
  EXPECT_THAT(MissingIn(PageOf(RecordOf(campaign), kControls),
                        {"No measured value is a number", "No well with a number is a control"}),
              IsEmpty());
  campaign.replications = 8;
  campaign.value = [](const ReadingPlace&) -> MadeValue { return {0.5, ""}; };
  const std::string equal = PageOf(RecordOf(campaign), kControls);
  EXPECT_EQ(Count(equal, "96 keys<br>Pearson –"), 15U);
  EXPECT_EQ(Count(equal, "<path class=\"d3\" d=\"M166 108h0\"/>"), 15U);  // all at one spot
  EXPECT_THAT(MissingIn(equal, {"8 replications; the pairs of the first 6 are shown", "median 0 %",
                                "There is no Z'"}),
              IsEmpty());
}

TEST(HtmlReport, JudgesControlsByPlateAndReplication) {
  // The readings of the fixture in statistics_test.cpp, spread over the first rows.
  constexpr double kLow[] = {0.044, 0.041, 0.05, 0.038};
  constexpr double kHigh[] = {0.71, 0.753, 0.694, 0.72, 0.66};
  Campaign campaign = GrowthCampaign(2, 2, kPlateFormats[0]);
  campaign.value = [&](const ReadingPlace& place) -> MadeValue {
    const auto row = static_cast<std::size_t>(place.well.row);
    if (place.well.column == 11 && row < std::size(kLow)) return {kLow[row], ""};
    if (place.well.column == 0 && row < std::size(kHigh)) return {kHigh[row], ""};
    return {};
  };
  RunRecord record = RecordOf(campaign);
  const std::string figures =
      "<td>4</td><td>0.04325</td><td>0.005123</td><td>5</td><td>0.7074</td><td>0.03417</td>"
      "<td>0.8225</td><td>15.99</td>";
  std::string page = PageOf(record, kControls);
  EXPECT_EQ(Count(page, figures), 4U);
  EXPECT_THAT(MissingIn(page, {"<td>1042</td><td>2</td>" + figures,
                               "Low: <b>tetracycline</b> (16 keys). High: <b>compound ID=DMSO"
                               "</b> (16 keys).",
                               "Z' is 0.8225 to 0.8225, median 0.8225; 4 of 4 reach 0.5."}),
              IsEmpty());

  // Without plates, by workbook; with what cannot be found, said so.
  record.options.well_column = "no such column";
  page = PageOf(record, kControls);
  EXPECT_THAT(MissingIn(page, {"<td>Set 1/KIN1042-1-2.xls</td><td>2</td>" + figures,
                               "No plates are drawn. ", "no such column"}),
              IsEmpty());
  page = PageOf(record, {{{"dose", "0"}}, {{"", "dmso"}}});
  EXPECT_THAT(MissingIn(page, {"no key or output column <b>dose</b>",
                               "No well with a number is a control"}),
              IsEmpty());
  page = PageOf(record, {{{"", "DMSO"}}, {{"", " DMSO "}}});
  EXPECT_THAT(MissingIn(page, {"16 keys that would be both left out"}), IsEmpty());
}

TEST(HtmlReport, TellsProblemsAndFindings) {
  RunRecord record;
  record.processing_folder = "C:\\Users\\ann\\kinases";
  record.input_count = 2;
  EXPECT_THAT(MissingIn(PageOf(record), {"<strong>Failed.</strong> 0 of 2 workbooks read",
                                         "No workbook was read", "There are no readings to draw"}),
              IsEmpty());
  record.outcome = RunRecord::Outcome::kChecked;
  record.inputs = {{"Set 1/P<1>-1-1.xls", "", 0, 1, "1", "", 3, 12, 5, 1234567, ""}};
  record.output = {"C:\\Users\\ann\\out.xls", 1, "", 1, 1};
  record.problems = {{"An error occurred\r\nwhile processing",
                      "C:\\Users\\ann\\kinases\\Set 1\\P.xls is damaged",
                      {"Set 1/P.xls", 7, "plate=1;", "OD", "\"<5\""}}};
  for (int row = 3; row < 33; ++row) {
    record.findings.Note(FindingKind::kNotANumber, [&] {
      return FindingPlace{"Set 1/P.xls", row, "well=<A>;", "", "OVRFLW"};
    });
  }
  EXPECT_THAT(
      MissingIn(PageOf(record),
                {"verdict bad\"><strong>Checked.", "One kind of findings",
                 "An error occurred<br>while processing</p><p>Cause: Set 1\\P.xls is damaged</p>"
                 "<p>Set 1/P.xls, row 7, column OD, key plate=1: &quot;&lt;5&quot;</p>",
                 "<code>not-a-number</code> 30</p>", "The first 20 places",
                 "<th>file</th><th>row</th><th>key</th><th>what stands there</th>",
                 "<td>Set 1/P.xls</td><td>22</td><td>well=&lt;A&gt;;</td><td>OVRFLW</td>",
                 "<td>Set 1/P&lt;1&gt;-1-1.xls</td><td>1</td><td>1</td><td>12</td><td>5</td>"
                 "<td></td><td>1,234,567</td>",
                 "<td>../out.xls<br>"}),
      IsEmpty());
}

TEST(HtmlReport, SaysWhatItLeavesOutOfALargeCampaign) {
  Campaign campaign = GrowthCampaign(1001, 2, kPlateFormats[0]);
  const TestPlatform platform;
  const std::string page = HtmlReport(RecordOf(campaign), kControls);
  EXPECT_EQ(Count(page, "<figcaption><a href"), 1000U);
  EXPECT_EQ(Count(page, "<summary>Plate "), 1000U);
  EXPECT_THAT(
      MissingIn(page, {"The first 1,000 of 1,001 plates are drawn.",
                       "the first 1,000 of 1,001 plates are drawn large",
                       "The first 400 of 2,002 are drawn.", "<summary>2,002 workbooks</summary>"}),
      IsEmpty());
  EXPECT_LT(page.size(), 18000000U);
}

}  // namespace
}  // namespace korvex
