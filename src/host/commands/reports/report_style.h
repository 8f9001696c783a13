#pragma once

#include <string_view>

namespace orlocal::host {

/// How the page of a report looks.
inline constexpr std::string_view kReportStyle = R"css(
:root { color-scheme: light dark; --page: #fff; --text: #1b1b1f; --faint: #5f6068; --line: #d9dade; --today: #fff3cd;
  --card: #f6f6f8; --hour: 2.6rem; }
@media (prefers-color-scheme: dark) {
  :root { --page: #17181b; --text: #ececf1; --faint: #a2a4ad; --line: #3a3b41; --today: #4a3f15; --card: #222328; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1rem; max-width: 80rem; background: var(--page); color: var(--text);
  font: 1rem/1.4 system-ui, sans-serif; }
h1 { font-size: 1.5rem; margin: 0; } h2 { font-size: 1.2rem; margin: 2rem 0 .5rem; }
header p { color: var(--faint); margin: .2rem 0; }
.key { list-style: none; padding: 0; display: flex; flex-wrap: wrap; gap: .3rem 1rem; margin: .5rem 0; }
.key li::before { content: ""; display: inline-block; width: .8em; height: .8em; border-radius: .2em;
  background: var(--c, var(--faint)); margin-right: .4em; }
nav ul { list-style: none; padding: 0; display: flex; flex-wrap: wrap; gap: .2rem 1rem; }
a { color: inherit; }
table { border-collapse: collapse; width: 100%; table-layout: fixed; }
th { text-align: left; font-weight: 600; color: var(--faint); padding: .2rem .4rem; }
td { border: 1px solid var(--line); vertical-align: top; padding: .2rem; height: 5.5rem; }
td > .name { display: none; font-weight: 600; } td.outside { background: var(--card); } .today { background: var(--today); }
td > time, h3 time { font-weight: 600; } td.outside > time { color: var(--faint); font-weight: 400; }
ul.entries { list-style: none; margin: .2rem 0 0; padding: 0; font-size: .85rem; }
.entries > li { margin: 0 0 .15rem; min-width: 0; }
details { border-left: .25rem solid var(--c, var(--faint)); border-radius: .2rem; background: var(--card); min-width: 0; }
.bar details { background: color-mix(in srgb, var(--c, var(--faint)) 25%, var(--page)); }
summary { cursor: pointer; padding: .05rem .3rem; overflow: hidden; text-overflow: ellipsis; white-space: nowrap;
  list-style: none; }
summary::-webkit-details-marker { display: none; }
summary:focus-visible { outline: 2px solid currentColor; outline-offset: -2px; }
details[open] { position: relative; z-index: 2; box-shadow: 0 .2rem .8rem #0006; min-width: 14rem; width: max-content;
  max-width: min(26rem, 80vw); }
details[open] summary { white-space: normal; font-weight: 600; }
.cancelled summary .title { text-decoration: line-through; }
dl { margin: .2rem .4rem .4rem; display: grid; grid-template-columns: auto 1fr; gap: .1rem .6rem; }
dt { color: var(--faint); } dd { margin: 0; white-space: pre-line; overflow-wrap: anywhere; }
.week { display: grid; grid-template-columns: 3rem repeat(7, minmax(0, 1fr)); border-top: 1px solid var(--line); }
.week h3 { font-size: .95rem; margin: .3rem; } .week section { border-left: 1px solid var(--line); min-width: 0; }
.week .whole { min-height: var(--whole); padding: 0 .2rem; }
.hours { position: relative; height: calc((var(--to) - var(--from)) / 60 * var(--hour)); margin: 0; padding: 0;
  list-style: none; font-size: .85rem;
  background: repeating-linear-gradient(var(--line) 0 1px, transparent 1px var(--hour)); }
.scale { padding-top: calc(2rem + var(--whole)); color: var(--faint); font-size: .8rem; }
.scale .hours { background: none; } .scale .hours li { height: var(--hour); transform: translateY(-.6em); }
.day .hours > li { position: absolute; top: calc((var(--at) - var(--from)) / 60 * var(--hour));
  height: max(1.3rem, calc((var(--until) - var(--at)) / 60 * var(--hour) - 1px));
  left: calc(100% / var(--lanes) * var(--lane)); width: calc(100% / var(--lanes) - 1px); }
.day .hours > li > details { height: 100%; overflow: hidden; } .day .hours summary { white-space: normal; }
.day .hours > li > details[open] { height: auto; overflow: visible; }
.day:nth-last-child(-n+3) details[open] { margin-left: auto; right: 0; }
@media (max-width: 50rem) {
  table, tbody, tr, td { display: block; height: auto; } thead, td.outside, td.empty, .scale { display: none; }
  td > .name { display: inline; } td { border: 0; border-top: 1px solid var(--line); padding: .4rem 0; }
  .week { display: block; } .week section { border: 0; border-top: 1px solid var(--line); padding: .2rem 0; }
  .week .whole { min-height: 0; } .hours { height: auto; background: none; }
  .day .hours > li { position: static; width: auto; height: auto; margin: .15rem .2rem; }
  .week section.empty { display: none; }
  details[open] { width: auto; max-width: none; } }
@media print {
  :root { color-scheme: light; --page: #fff; --text: #000; --faint: #444; --line: #999; --card: #fff; --hour: 1.6rem; }
  body { padding: 0; max-width: none; font-size: 10pt; } nav { display: none; }
  section.sheet { break-before: page; } tr, .week { break-inside: avoid; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; } summary { white-space: normal; } }
)css";

}  // namespace orlocal::host
