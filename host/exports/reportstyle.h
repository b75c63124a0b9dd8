#pragma once

#include <string_view>

namespace host {

/// The style sheet of the report.
constexpr std::string_view kReportStyle = R"(
:root {
  color-scheme: light dark;
  --paper: #ffffff; --plot: #f8fafc; --ink: #1b2430; --soft: #5d6b7e; --grid: #e3e8ef; --edge: #d3dae4;
  --gps: #2f6fd0; --dgps: #0f8f86; --sbas: #7a52c7; --float: #d08112; --fixed: #2b9348; --other: #7d8899;
  --none: #d9534f; --height: #2f6fd0; --speed: #0f8f86; --used: #7a52c7; --strength: #b7681b;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #12171f; --plot: #171e28; --ink: #e4e9f0; --soft: #96a3b5; --grid: #263140; --edge: #334054;
    --gps: #6ea4f2; --dgps: #45c1b7; --sbas: #b197f0; --float: #efb155; --fixed: #6cc985; --other: #93a0b3;
    --none: #ee807c; --height: #6ea4f2; --speed: #45c1b7; --used: #b197f0; --strength: #e0a065;
  }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink);
  font: 15px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Helvetica Neue", Arial, sans-serif; }
main { max-width: 1040px; margin: 0 auto; padding: 36px 36px 28px; }
h1 { font-size: 26px; line-height: 1.25; margin: 0; font-weight: 650; overflow-wrap: anywhere; }
h2 { font-size: 17px; margin: 0 0 10px; font-weight: 650; }
header p, footer, .note { color: var(--soft); margin: 4px 0 0; }
footer { font-size: 13px; border-top: 1px solid var(--edge); margin-top: 34px; padding-top: 12px; }
.note { font-size: 13px; }
.figures { display: flex; flex-wrap: wrap; gap: 1px;
  margin: 24px 0 0; background: var(--edge); border: 1px solid var(--edge); border-radius: 8px; overflow: hidden; }
.figures div { flex: 1 1 130px; background: var(--paper); padding: 12px 16px; }
.figures dt { color: var(--soft); font-size: 13px; }
.figures dd { margin: 0; font-size: 22px; font-weight: 600; font-variant-numeric: tabular-nums; white-space: nowrap; }
.figures small { font-size: 14px; font-weight: 400; color: var(--soft); }
.figures dd { letter-spacing: -.2px; }
section { margin-top: 34px; break-inside: avoid; }
.pair { display: grid; grid-template-columns: 444fr 500fr; gap: 28px; align-items: start; }
.legend { display: flex; flex-wrap: wrap; gap: 4px 18px; margin: 0 0 10px; padding: 0; list-style: none;
  font-size: 13px; color: var(--soft); }
.legend i { display: inline-block; width: 18px; height: 4px; border-radius: 2px; margin-right: 7px; vertical-align: middle; }
.legend i.dot { width: 10px; height: 10px; border-radius: 50%; border: 2.5px solid var(--ink); }
.legend i.dot.full { background: var(--ink); }
svg { display: block; width: 100%; height: auto; margin-bottom: 6px; font: 12px system-ui, -apple-system, "Segoe UI", Roboto, Arial, sans-serif; }
.plot { fill: var(--plot); stroke: var(--edge); }
.cut { fill: var(--paper); }
.edge { stroke: var(--edge); stroke-dasharray: 3 3; }
.grid, .ring { stroke: var(--grid); fill: none; }
.tick { fill: var(--soft); font-variant-numeric: tabular-nums; }
.strong { fill: var(--ink); font-weight: 600; }
.axis { fill: var(--soft); font-size: 13px; }
.caption { fill: var(--ink); font-size: 14px; font-weight: 600; }
.curve { fill: none; stroke: currentColor; stroke-width: 1.8; stroke-linejoin: round; stroke-linecap: round; }
.band { fill: currentColor; opacity: .22; }
.way { fill: none; stroke: currentColor; stroke-width: 3; stroke-linejoin: round; stroke-linecap: round; }
.thin { stroke-width: 1.2; }
.span { fill: currentColor; }
.gps { color: var(--gps); } .dgps { color: var(--dgps); } .sbas { color: var(--sbas); } .float { color: var(--float); }
.fixed { color: var(--fixed); } .other { color: var(--other); } .none { color: var(--none); }
.height { color: var(--height); } .speed { color: var(--speed); } .used { color: var(--used); }
.strength { color: var(--strength); }
.legend i.gps, .legend i.dgps, .legend i.sbas, .legend i.float, .legend i.fixed, .legend i.other, .legend i.none { background: currentColor; }
.dots { fill: none; stroke: currentColor; stroke-width: 3.5; stroke-linecap: round; }
.radius { fill: none; stroke: var(--ink); stroke-width: 1.5; stroke-dasharray: 5 4; }
.start { fill: var(--paper); stroke: var(--ink); stroke-width: 2.5; }
.end { fill: var(--ink); stroke: var(--paper); stroke-width: 2; }
.plate { fill: var(--paper); opacity: .85; }
.rule { stroke: var(--ink); stroke-width: 2; }
.trail { fill: none; stroke: var(--gps); stroke-width: 2; opacity: .55; stroke-linecap: round; stroke-linejoin: round; }
.trail.unused { stroke: var(--other); }
.satellite { fill: var(--gps); stroke: var(--paper); stroke-width: 1.5; }
.satellite.unused { fill: var(--paper); stroke: var(--other); }
.number { fill: var(--paper); font-size: 11px; font-weight: 600; }
.number.unused { fill: var(--soft); }
.stem { stroke: var(--grid); stroke-width: 2; }
.bar { fill: var(--gps); opacity: .38; }
.bar.unused { fill: var(--other); }
.mean { fill: var(--gps); }
.mean.unused { fill: var(--other); }
.narrow { max-width: 480px; }
.results th, .results td { padding-left: 14px; } .results th:first-child { padding-left: 0; }
.results thead th { text-align: right; padding-right: 0; }
.tables { display: grid; grid-template-columns: 1fr 1fr; gap: 0 44px; }
table { width: 100%; border-collapse: collapse; font-size: 14px; align-self: start; }
th, td { text-align: left; font-weight: 400; padding: 5px 0; border-bottom: 1px solid var(--grid); vertical-align: top; }
th { color: var(--soft); padding-right: 16px; white-space: nowrap; }
td { text-align: right; overflow-wrap: anywhere; font-variant-numeric: tabular-nums; }
@media screen and (max-width: 760px) { main { padding: 20px 16px; } .pair, .tables { grid-template-columns: 1fr; } }
@media print {
  :root { color-scheme: light; --paper: #ffffff; --plot: #ffffff; --ink: #000000; --soft: #444444; --grid: #dddddd; --edge: #bbbbbb;
    --gps: #2f6fd0; --dgps: #0f8f86; --sbas: #7a52c7; --float: #d08112; --fixed: #2b9348; --other: #7d8899;
    --none: #d9534f; --height: #2f6fd0; --speed: #0f8f86; --used: #7a52c7; --strength: #b7681b; }
  @page { margin: 14mm; }
  body { font-size: 11px; -webkit-print-color-adjust: exact; print-color-adjust: exact; }
  main { max-width: none; padding: 0; }
  h1 { font-size: 20px; }
  h2 { font-size: 14px; }
  table { font-size: 11px; }
  .figures div { flex-basis: 90px; padding: 8px 10px; }
  .figures dd { font-size: 16px; }
  .figures dt, .figures small, .legend, .note, footer { font-size: 11px; }
  section { margin-top: 18px; }
}
)";

}  // namespace host
