#pragma once

/// The style sheet of the report. Colours of the categories keep apart for the colour-blind (after Okabe and
/// Ito, 2008); dark pages get brighter ones.
constexpr const char* reportStyle = R"(
:root { color-scheme: light dark;
  --page: #f6f7f9; --card: #ffffff; --text: #1c2129; --soft: #5b6472; --line: #dde1e7; --track: #e8ebef;
  --good: #1a7f4b; --warn: #9a6700; --bad: #c0293a; --info: #0b69a3; --on: #ffffff;
  --c0: #0072b2; --c1: #b84f00; --c2: #007a5c; --c3: #9b4d84; --c4: #7a6a00; --c5: #3f6fd1; --c6: #a8464a;
  --c7: #4f7d2b; --c8: #6b7280; }
@media (prefers-color-scheme: dark) { :root {
  --page: #12151a; --card: #1b2027; --text: #e6e9ee; --soft: #9aa4b2; --line: #2d343e; --track: #2a313a;
  --good: #4cc38a; --warn: #e2b340; --bad: #ff7b86; --info: #6cb8f0; --on: #0d1014;
  --c0: #56b4e9; --c1: #f08a4b; --c2: #35c79b; --c3: #d88cc2; --c4: #d9c84a; --c5: #8fb0ff; --c6: #f0888c;
  --c7: #9ccc65; --c8: #a3acb9; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--text);
  font: 15px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Helvetica Neue", sans-serif; }
main { max-width: 72rem; margin: 0 auto; padding: 1.5rem 1rem 3rem; display: grid; gap: 1rem;
  grid-template-columns: minmax(0, 1fr); }
h1 { margin: 0; font-size: 1.6rem; overflow-wrap: anywhere; }
h2 { margin: 0 0 .75rem; font-size: 1.05rem; }
h3 { margin: 1rem 0 .25rem; font-size: .95rem; }
p { margin: .25rem 0; }
.soft { color: var(--soft); }
.card { background: var(--card); border: 1px solid var(--line); border-radius: .6rem; padding: 1rem 1.1rem; }
.tiles { display: grid; gap: .75rem; grid-template-columns: repeat(auto-fit, minmax(9rem, 1fr)); }
.tile b { display: block; font-size: 1.25rem; overflow-wrap: anywhere; }
.facts { display: grid; grid-template-columns: minmax(6rem, max-content) minmax(0, 1fr); gap: .2rem 1rem; margin: 0; }
.facts dt { color: var(--soft); }
.facts dd { margin: 0; overflow-wrap: anywhere; }
.mono { font-family: ui-monospace, "SFMono-Regular", Menlo, Consolas, monospace; font-size: .85em;
  overflow-wrap: anywhere; }
.bar { display: grid; grid-template-columns: 4rem minmax(0, 1fr) 12rem; gap: .75rem; align-items: center;
  margin: .4rem 0; }
.bar svg { width: 100%; height: 14px; display: block; border-radius: 7px; }
.bar span:last-child { text-align: right; }
.track { fill: var(--track); } .fill-good { fill: var(--good); } .fill-warn { fill: var(--warn); }
.fill-bad { fill: var(--bad); }
.map { width: 100%; height: auto; display: block; } .map text { fill: var(--on); font-size: 12px; }
.narrow { display: none; }
.legend { display: flex; flex-wrap: wrap; gap: .3rem 1rem; margin: .75rem 0 0; padding: 0; list-style: none; }
.legend svg { width: .8em; height: .8em; margin-right: .4em; }
.c0 { fill: var(--c0); } .c1 { fill: var(--c1); } .c2 { fill: var(--c2); } .c3 { fill: var(--c3); }
.c4 { fill: var(--c4); } .c5 { fill: var(--c5); } .c6 { fill: var(--c6); } .c7 { fill: var(--c7); }
.c8 { fill: var(--c8); }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; }
th, td { text-align: left; padding: .35rem .75rem .35rem 0; border-bottom: 1px solid var(--line); vertical-align: top; }
th { color: var(--soft); font-weight: 600; } td.number, th.number { text-align: right; white-space: nowrap; }
td { overflow-wrap: anywhere; }
.badge { display: inline-block; border: 1px solid currentColor; border-radius: 1rem; padding: 0 .55rem;
  font-size: .8rem; white-space: nowrap; }
.good { color: var(--good); } .error { color: var(--bad); } .warning { color: var(--warn); }
.notice { color: var(--info); }
.finding { border-top: 1px solid var(--line); padding: .6rem 0; } .finding:first-of-type { border-top: 0; }
.tree, .tree ul { list-style: none; margin: 0; padding-left: 1.1rem; border-left: 1px solid var(--line); }
.tree { padding-left: .6rem; } .tree li { padding: .15rem 0; overflow-wrap: anywhere; }
summary { cursor: pointer; color: var(--soft); margin-top: .75rem; }
@media (max-width: 40rem) { .wide { display: none; } .narrow { display: block; }
  .bar { grid-template-columns: 3.5rem minmax(0, 1fr); } .bar span:last-child { grid-column: 2; text-align: left; } }
@media print { body { background: none; } .card { break-inside: avoid; } }
)";
