// The page as a whole: its frame, its style sheet and the order of its sections.
#include <string_view>

#include "report/html_sections.h"
#include "report/html_text.h"
#include "report/report.h"
#include "report/svg_plate.h"

namespace korvex {
namespace {

// Everything is in the page itself, so that it can be mailed and kept: no script, no font, no
// picture from elsewhere. What drawings repeat has names of two letters: "hb" and "hl" are ground
// and lines of a hatch, "pl" a plate, "nb" and "nx" a well without a number and its cross, "gl" the
// lines between wells, "lb", "mt" and "rl" labels, titles of maps and letters of rows, "tt"
// tooltips; "ax", "gr" and "eq" axis, grid and line of equality, "d1" to "d3" dots by their number,
// "lo", "hi" and "mn" controls and their means, "ba" and "br" bars and the bar of the rest.
constexpr std::string_view kStyle = R"(
:root { color-scheme: light dark; --text: #1f2629; --faint: #566268; --page: #fff; --panel: #f3f6f7;
  --blank: #f3f6f7;
  --line: #cfd9dc; --hatch: #9aa7ac; --accent: #0f6479; --low: #b3470b; --high: #1c6e8c;
  --good: #1d7a4f; --fair: #a86a00; --bad: #b3261e; }
@media (prefers-color-scheme: dark) {
  :root { --text: #e3e8ea; --faint: #a3b0b5; --page: #16191b; --panel: #20262a;
    --blank: #3a4348; --line: #3d474b;
    --hatch: #8b989f; --accent: #7fcbdc; --low: #f0955a; --high: #74c0dd; --good: #5cc793;
    --fair: #e3b04b; --bad: #f2857c; }
}
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1.5rem 1.25rem 4rem; max-width: 76rem; color: var(--text);
  background: var(--page); font: 0.95rem/1.5 system-ui, "DejaVu Sans", "Segoe UI", sans-serif;
  overflow-wrap: break-word; }
h1, h2, h3 { line-height: 1.25; }
h1 { margin: 0 0 1rem; font-size: 2rem; }
h2 { margin: 0 0 0.75rem; font-size: 1.3rem; }
h3 { margin: 1.75rem 0 0.5rem; font-size: 1.05rem; }
section { margin-top: 2.25rem; padding-top: 1.25rem; border-top: 1px solid var(--line); }
a { color: var(--accent); }
.program { margin: 0; color: var(--faint); }
.caption, figcaption, small, footer { color: var(--faint); font-size: 0.87rem; }
nav { margin-top: 1.5rem; }
nav a { margin-right: 1.25rem; white-space: nowrap; }
.verdict { margin: 0 0 1rem; padding: 0.6rem 1rem; background: var(--panel);
  border-left: 5px solid var(--fair); }
.verdict.good { border-color: var(--good); }
.verdict.bad { border-color: var(--bad); }
.note, .finding, .problem { padding: 0.5rem 1rem; background: var(--panel);
  border-left: 4px solid var(--accent); }
.finding, .problem { margin: 0.75rem 0; }
.finding { border-color: var(--fair); }
.problem { border-color: var(--bad); }
.finding p, .problem p { margin: 0.15rem 0; }
code { font: 0.9em/1.4 "DejaVu Sans Mono", Consolas, monospace; }
.summary { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 24rem), 1fr));
  gap: 1.5rem 3rem; border: 0; margin-top: 1rem; padding: 0; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { padding: 0.22rem 0.9rem 0.22rem 0; text-align: left; vertical-align: top;
  border-bottom: 1px solid var(--line); }
thead th { border-bottom: 2px solid var(--line); vertical-align: bottom; }
td:first-child, .facts td, .places td { overflow-wrap: anywhere; }
.facts { width: 100%; }
.facts th { width: 9.5rem; font-weight: normal; color: var(--faint); }
.scroll { overflow-x: auto; }
.inputs, .figures { font-size: 0.87rem; }
.inputs td:first-child { min-width: 12rem; }
.inputs td:nth-child(n+2):nth-child(-n+7), .inputs th:nth-child(n+2):nth-child(-n+7),
.figures td:nth-child(n+2), .figures th:nth-child(n+2) { text-align: right; }
.inputs td:nth-child(6), .inputs td:nth-child(7), .figures td { white-space: nowrap; }
.sha { font-size: 0.72rem; overflow-wrap: normal; }
.inputs .sha { display: inline-block; width: 32.5ch; }
.places { min-width: 36rem; }
summary { cursor: pointer; padding: 0.25rem 0; }
details > div { margin: 0.25rem 0 1rem; }
svg { display: block; color: inherit; }
svg text { fill: currentColor; font-family: system-ui, "DejaVu Sans", "Segoe UI", sans-serif; }
figure { margin: 0.5rem 0 1rem; }
.patterns { position: absolute; }
.hb { fill: var(--blank); }
.hl { fill: none; stroke: var(--hatch); }
.w path, .legend path { fill: none; }
.overview { display: flex; flex-wrap: wrap; gap: 0.6rem 1rem; }
.overview figure { margin: 0; }
.overview figcaption { line-height: 1.2; padding: 0.1rem 3px; }
.overview svg { shape-rendering: crispEdges; }
.overview svg, figure > .chart { max-width: 100%; height: auto; }
.large { display: grid;
  grid-template-columns: repeat(auto-fill, minmax(min(100%, 21rem), 1fr)); }
.large > details[open] { grid-column: 1 / -1; min-width: 0; }
.maps > svg { max-width: 100%; height: auto; }
.maps .pl { stroke: var(--line); stroke-width: 0.12; }
.nb { stroke: var(--page); }
.nx { fill: none; stroke: var(--bad); stroke-width: 0.16; }
.gl { fill: none; stroke: var(--page); stroke-width: 0.06; }
.lb { text-anchor: middle; }
.lb .mt { text-anchor: start; }
.lb .rl { text-anchor: end; dominant-baseline: central; }
.tt path { fill: none; pointer-events: fill; }
.tt path:hover { stroke: var(--text); stroke-width: 0.14; }
.chart .tt path:hover { stroke-width: 1; }
.legend { display: flex; flex-wrap: wrap; align-items: center; gap: 0.25rem 1.25rem;
  margin: 0.5rem 0; font-size: 0.87rem; }
.legend .key { display: inline-flex; align-items: center; gap: 0.4rem; }
.pairs { display: flex; flex-wrap: wrap; gap: 0.5rem 1.5rem; }
.chart { font-size: 11px; }
.ax, .eq { fill: none; stroke: var(--faint); }
.eq { stroke-dasharray: 4 3; }
.gr { fill: none; stroke: var(--line); }
.d1, .d2, .d3, .lo, .hi { fill: none; stroke: var(--high); stroke-width: 3.5;
  stroke-linecap: round; }
.d1 { opacity: 0.45; }
.d2 { opacity: 0.75; }
.d3 { stroke: var(--text); }
.lo { stroke: var(--low); }
.lo, .hi { stroke-width: 4; opacity: 0.75; }
.mn { fill: none; stroke: var(--text); stroke-width: 1.5; }
figcaption svg { display: inline-block; vertical-align: middle; }
.ba { fill: var(--high); }
.br { fill: var(--faint); }
footer { margin-top: 3rem; border-top: 1px solid var(--line); padding-top: 0.5rem; }
@media screen and (max-width: 50rem) {
  .maps > svg { max-width: none; }
}
@media print {
  body { max-width: none; padding: 0; font-size: 9pt; }
  nav { display: none; }
  a { color: inherit; text-decoration: none; }
  .scroll { overflow: visible; }
  .large, .pairs { display: block; }
  .pairs figure { display: inline-block; margin-right: 1rem; }
  figure, .problem, tr { break-inside: avoid; }
  h2, h3, summary { break-after: avoid; }
  /* What is folded for its length; large maps stay folded. */
  .long::details-content { content-visibility: visible; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
}
)";

void AppendStart(const RunRecord& record, std::string& page) {
  Add(page,
      "<!DOCTYPE html>\n<html lang=\"en-GB\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>",
      Escaped(LastName(record.processing_folder)), ": KORVEX report</title>\n<style>", kStyle);
  PlateDrawing::AppendStyle(page);
  Add(page, "</style>\n</head>\n<body>\n");
  // Once for all drawings: what "url(#...)" names is looked up in the whole page.
  PlateDrawing::AppendPatterns(page);
}

void AppendContents(bool has_readings, const ReportOptions& options, std::string& page) {
  Add(page, "<nav aria-label=\"Contents\"><a href=\"#findings\">Findings</a> ",
      "<a href=\"#inputs\">Input files</a> ");
  if (has_readings) {
    Add(page,
        "<a href=\"#plates\">Plates</a> <a href=\"#agreement\">Agreement of "
        "replications</a> ");
    if (!options.low.empty() || !options.high.empty()) {
      Add(page, "<a href=\"#controls\">Controls</a>");
    }
  }
  Add(page, "</nav>\n");
}

}  // namespace

std::string HtmlReport(const RunRecord& record, const ReportOptions& options) {
  // Found before the first section, since the settings tell which columns were found.
  std::string why_no_layout;
  std::optional<PlateLayout> layout;
  const bool has_readings = record.readings && !record.readings->readings.empty();
  if (has_readings) {
    layout = FindPlateLayout(*record.readings, record.inputs, record.options.plate_column,
                             record.options.well_column, why_no_layout);
  }
  std::string page;
  AppendStart(record, page);
  AppendHeader(record, page);
  Add(page, "<main>\n");
  AppendSummary(record, options, layout, page);
  AppendContents(has_readings, options, page);
  AppendFindings(record, page);
  AppendInputs(record, page);
  if (has_readings) {
    const ReportedReadings reported{record, *record.readings, layout, why_no_layout};
    AppendPlates(reported, page);
    AppendAgreement(reported, page);
    AppendControls(reported, options, page);
  } else {
    Add(page, "<p>There are no readings to draw.</p>\n");
  }
  Add(page,
      "</main>\n<footer>Formulas and rules are explained in the manual of KORVEX, under "
      "\"The report\".</footer>\n</body>\n</html>\n");
  return page;
}

}  // namespace korvex
