#include "PageStyle.h"

namespace Station {

// All text has a contrast of 4.5 or more to what is behind it, in both schemes.
const char* const sPAGE_STYLE = R"(
:root {
  color-scheme: light dark;
  --page: #f4f6f8; --card: #ffffff; --edge: #d5dbe1; --text: #1b242d; --muted: #55616e;
  --bar: #2f6fb5; --grid: #e3e8ed; --passed: #17693a; --failed: #b3261e; --zone: #b3261e1a;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --page: #12161b; --card: #1b2128; --edge: #38424d; --text: #e5eaf0; --muted: #a6b1bd;
    --bar: #69a7e8; --grid: #2d3640; --passed: #6fd097; --failed: #ff9a8f; --zone: #ff9a8f21;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 1.5rem 1rem 3rem; max-width: 75rem;
  background: var(--page); color: var(--text);
  font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: anywhere;
}
h1 { margin: 0; font-size: 1.5rem; line-height: 1.25; }
h2 { margin: 0; font-size: 1.125rem; }
p { margin: .25rem 0 0; }
.moment, .samples { color: var(--muted); }
.counts { display: flex; flex-wrap: wrap; gap: .5rem; margin: 1rem 0; padding: 0; list-style: none; }
.counts li { padding: .125rem .75rem; border: 1px solid currentColor; border-radius: 1rem; }
.passed, .failed { font-weight: 600; }
.passed { color: var(--passed); }
.failed { color: var(--failed); }
.unjudged { color: var(--muted); }
.passed::before { content: "\2713\A0"; }
.failed::before { content: "\2717\A0"; }
.unjudged::before { content: "\2013\A0"; }
.series, .box, .refusals {
  background: var(--card); border: 1px solid var(--edge); border-radius: .5rem;
}
.box { overflow-x: auto; }
table { width: 100%; border-spacing: 0; font-variant-numeric: tabular-nums; }
th, td { padding: .5rem .625rem; text-align: right; overflow-wrap: normal; }
th { font-weight: 600; }
thead th { vertical-align: bottom; color: var(--muted); font-size: .875rem; }
tbody th, tbody td { border-top: 1px solid var(--edge); }
th:first-child, th:last-child, td:last-child { text-align: left; }
tbody th, td:last-child { white-space: nowrap; }
th:last-child, td:last-child { position: sticky; right: 0; background: var(--card); }
.all { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 26rem), 1fr)); gap: 1rem; margin-top: 1rem; }
.series { padding: 1rem 2rem .5rem 1rem; }
.title { display: flex; flex-wrap: wrap; justify-content: space-between; gap: 0 1rem; margin-right: -1rem; }
.picture { margin: .75rem 0 0 2.5rem; }
svg { display: block; overflow: visible; }
text { fill: var(--muted); font-size: 12px; }
.value, .tolerance { text-anchor: middle; }
.count, .end { text-anchor: end; }
.start { text-anchor: start; }
.counts-title { transform: translateX(-2.5rem); }
.tolerance { fill: var(--failed); font-weight: 600; }
.grid { stroke: var(--grid); }
.axis { stroke: var(--muted); }
.bar { fill: var(--bar); stroke: var(--card); stroke-width: 1px; }
.zone { fill: var(--zone); }
.limit { stroke: var(--failed); stroke-width: 2px; }
.off { stroke-dasharray: 3 4; }
.arrow { fill: var(--failed); }
.refusals { margin-top: 1rem; padding: 1rem; }
.refusals ul { margin: .5rem 0 0; padding-left: 1.25rem; }
@media screen and (max-width: 52rem) {
  table, thead, tbody, tr, th, td { display: block; }
  .box { background: none; border: none; }
  thead { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }
  tbody { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 19rem), 1fr)); gap: .75rem; }
  tbody tr {
    display: grid; grid-template-columns: repeat(6, 1fr); align-content: start; padding: .5rem 0;
    background: var(--card); border: 1px solid var(--edge); border-radius: .5rem;
  }
  tbody th, tbody td { grid-column: span 3; padding: .125rem 1rem; border: none; text-align: left; }
  tbody th { order: -2; grid-column: span 4; white-space: normal; }
  tbody td:last-child { order: -1; grid-column: span 2; padding-left: 0; position: static; text-align: right; }
  tbody td:not(:last-child)::before {
    content: attr(data-label); display: block; color: var(--muted); font-size: .8125rem;
  }
}
@media print {
  :root { --page: #ffffff; }
  body { max-width: none; padding: 0; font-size: 10pt; }
  .series, tr { break-inside: avoid; }
  .box { overflow: visible; }
  table, thead th { font-size: 8pt; }
  th, td { padding: .25rem; }
  th:last-child, td:last-child { position: static; }
  .bar, .zone { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
}
)";

}  // namespace Station
