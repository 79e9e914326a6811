// Light and dark by the reader's setting, light on paper. Colours of states keep dark writing
// readable in both.
#include "zopctl/page.h"

namespace zopctl::page {

const char PAGE_STYLE[] = R"(
:root { color-scheme: light dark; --back: #f3f5f8; --card: #fff; --ink: #18202c; --soft: #5a6676;
  --rule: #e1e5eb; --link: #1d5fd1; --on: #10161f; --rssi: #1f66e0; --rscp: #0c8f7c;
  --ecio: #8a3ddb; --power: #b45f06; --lost: #e5484d; --good: #8fd6b0; --warn: #f5cf78;
  --bad: #f2a09a; --none: #d9dee5; --s0: #a8c6fa; --s1: #f7c793; --s2: #96dbd2; --s3: #d4b8f0;
  --s4: #f7b6cb; --s5: #cfd893; --s6: #b7c6dc; --s7: #e2bd9f; --q0: #e8edf5; --q1: #c6d8f5;
  --q2: #94bdf2; --q3: #5f9bea; --q4: #2f74d4; --q5: #144f9f; }
@media screen and (prefers-color-scheme: dark) { :root { --back: #11151b; --card: #1a2029;
  --ink: #e7ebf1; --soft: #9aa6b6; --rule: #2c3542; --link: #83b2ff; --rssi: #6aa5ff;
  --rscp: #3fcfb4; --ecio: #bf8cff; --power: #f0a04b; --lost: #ff6b6b; --good: #5fb98a;
  --warn: #d9ae4e; --bad: #dd7a74; --none: #566173; --s0: #7fa8ec; --s1: #d9a061; --s2: #62b9ad;
  --s3: #b08fd6; --s4: #d98ba5; --s5: #a9b45f; --s6: #8d9db5; --s7: #bf9574; --q0: #243040;
  --q1: #27446b; --q2: #2b5c9c; --q3: #3a7bd0; --q4: #66a3f2; --q5: #a9cefe; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1.5rem 1.25rem 3rem; max-width: 84rem; background: var(--back);
  color: var(--ink); font: 15px/1.45 system-ui, "Segoe UI", Roboto, "DejaVu Sans", sans-serif; }
h1, h2, h3, h4, p { margin: 0; }
h1 { font-size: 1rem; font-weight: 600; color: var(--soft); }
h2 { font-size: 1.7rem; line-height: 1.2; overflow-wrap: anywhere; }
h3 { font-size: 1.1rem; margin-bottom: .75rem; }
h4 { font-size: .95rem; margin-bottom: .35rem; }
a { color: var(--link); }
nav ul { list-style: none; margin: .25rem 0 0; padding: 0; display: flex; flex-wrap: wrap;
  gap: .25rem 1.5rem; }
nav ul ul { display: inline-flex; gap: .25rem .8rem; margin: 0 0 0 .8rem; font-size: .9em; }
article { margin-top: 1.75rem; }
article + article { border-top: 2px solid var(--rule); padding-top: 1.75rem; }
.extent { color: var(--soft); overflow-wrap: anywhere; }
.block, .tile, .notes, .card { background: var(--card); border: 1px solid var(--rule);
  border-radius: 10px; }
.block { padding: 1rem 1.1rem; margin-top: 1rem; }
.tiles { display: grid; grid-template-columns: repeat(auto-fill, minmax(12.2rem, 1fr)); gap: .7rem;
  margin-top: 1rem; }
.tile { padding: .6rem .8rem; display: flex; flex-direction: column; }
.what, .more, .unit, .meaning, .unknown { color: var(--soft); font-size: .84rem; }
.value { font-size: 1.3rem; font-weight: 600; line-height: 1.35; overflow-wrap: anywhere; }
.icon { height: 1.05em; width: auto; vertical-align: -.1em; }
.icon .full { fill: var(--rscp); }
.icon .hollow { fill: var(--rule); }
.notes { list-style: none; margin: .7rem 0 0; padding: .6rem .9rem; display: grid;
  grid-template-columns: repeat(auto-fill, minmax(23rem, 1fr)); gap: .15rem 1.5rem; }
.notes li::before { content: ""; display: inline-block; width: .6em; height: .6em;
  border-radius: 50%; margin-right: .6em; background: var(--s6); }
.notes li.bad { font-weight: 600; }
.notes li.bad::before { background: var(--lost); }
.row { display: grid; grid-template-columns: 8rem minmax(0, 1fr); gap: 0 2.4rem;
  break-inside: avoid; }
.row + .row { margin-top: .35rem; }
.label { display: flex; flex-wrap: wrap; align-content: flex-start; gap: 0 .6rem;
  font-size: .88rem; padding-top: .1rem; }
.label .name { width: 100%; font-weight: 600; overflow-wrap: anywhere; }
.plot svg { display: block; width: 100%; overflow: hidden; }
.plot > svg.graph { height: 150px; overflow: visible; margin: .3rem 0; }
.plot > svg.graph.low { height: 60px; }
svg.strip { height: 20px; border-radius: 4px; background: var(--back); }
svg.clock { height: 18px; }
svg.events { height: 22px; }
svg text { font-size: 11px; fill: var(--soft); }
svg .scale-text { text-anchor: end; font-variant-numeric: tabular-nums; }
svg .name text { fill: var(--on); font-size: 11.5px; }
.plot rect { shape-rendering: crispEdges; }
.grid { stroke: var(--rule); stroke-width: 1; }
.line { fill: none; stroke-width: 1.8; stroke-linejoin: round; stroke-linecap: round;
  vector-effect: non-scaling-stroke; }
.dense { stroke-width: 1; opacity: .75; }
.dot { stroke-width: 5; }
path.rssi { stroke: var(--rssi); } path.rscp { stroke: var(--rscp); }
path.ecio { stroke: var(--ecio); } path.power { stroke: var(--power); }
.lost { fill: var(--lost); opacity: .18; }
.probe { fill: transparent; }
.probe:hover { fill: var(--soft); opacity: .25; }
.event line { stroke: var(--soft); stroke-width: 1; }
.event circle { fill: var(--warn); stroke: var(--ink); stroke-width: 1; }
.event:hover circle { fill: var(--lost); }
.b0 { fill: var(--lost); } .b1, .b2 { fill: var(--warn); }
.b3, .b4, .b5 { fill: var(--good); }
.good { fill: var(--good); } .warn { fill: var(--warn); } .bad { fill: var(--bad); }
.none { fill: var(--none); }
.s0 { fill: var(--s0); } .s1 { fill: var(--s1); } .s2 { fill: var(--s2); } .s3 { fill: var(--s3); }
.s4 { fill: var(--s4); } .s5 { fill: var(--s5); } .s6 { fill: var(--s6); } .s7 { fill: var(--s7); }
.q0 { fill: var(--q0); } .q1 { fill: var(--q1); } .q2 { fill: var(--q2); } .q3 { fill: var(--q3); }
.q4 { fill: var(--q4); } .q5 { fill: var(--q5); }
.strip .active-cell { fill: var(--power); y: 15px; height: 5px; }
.shares { display: flex; flex-wrap: wrap; gap: 0 1rem; color: var(--soft); font-size: .82rem;
  padding: .05rem 0 .2rem; }
.key::before { content: ""; display: inline-block; width: .75em; height: .75em; border-radius: 3px;
  margin-right: .4em; background: var(--key); }
.label .key::before { height: .25em; vertical-align: .25em; width: 1.1em; }
.key.rssi { --key: var(--rssi); } .key.rscp { --key: var(--rscp); } .key.ecio { --key: var(--ecio); }
.key.power { --key: var(--power); } .key.good { --key: var(--good); }
.key.warn { --key: var(--warn); } .key.bad { --key: var(--bad); } .key.none { --key: var(--none); }
.key.s0 { --key: var(--s0); } .key.s1 { --key: var(--s1); } .key.s2 { --key: var(--s2); }
.key.s3 { --key: var(--s3); } .key.s4 { --key: var(--s4); } .key.s5 { --key: var(--s5); }
.key.s6 { --key: var(--s6); } .key.s7 { --key: var(--s7); } .key.q0 { --key: var(--q0); }
.key.q1 { --key: var(--q1); } .key.q2 { --key: var(--q2); } .key.q3 { --key: var(--q3); }
.key.q4 { --key: var(--q4); } .key.q5 { --key: var(--q5); }
.key.active-key { --key: var(--power); }
table { border-collapse: collapse; width: 100%; }
caption { text-align: left; color: var(--soft); font-size: .84rem; padding-bottom: .3rem; }
th, td { text-align: left; vertical-align: top; padding: .22rem .6rem .22rem 0;
  border-top: 1px solid var(--rule); unicode-bidi: isolate; }
th { font-weight: 500; }
thead th { color: var(--soft); font-size: .84rem; border-top: 0; }
td { overflow-wrap: anywhere; }
td.number { white-space: nowrap; font-variant-numeric: tabular-nums; }
td.wrong { color: var(--lost); font-weight: 600; }
.cells { max-width: 46rem; margin-bottom: .6rem; }
.cells th { white-space: nowrap; }
td.meter { width: 55%; vertical-align: middle; padding-right: 0; }
svg.meter { display: block; width: 100%; height: 12px; }
.scale { fill: var(--back); }
.set { border-radius: 99px; padding: .05rem .55rem; font-size: .84rem; color: var(--on); }
.set0 { background: var(--good); } .set1 { background: var(--s0); } .set2 { background: var(--none); }
.cards { columns: 3 22rem; column-gap: .9rem; }
.card { break-inside: avoid; padding: .7rem .9rem; margin-bottom: .9rem; }
.card th { width: 44%; }
.card td { font-variant-numeric: tabular-nums; white-space: pre-wrap; }
.meaning { display: block; font-weight: 400; line-height: 1.2; }
.unknown { margin-top: .35rem; overflow-wrap: anywhere; }
summary { cursor: pointer; }
footer { margin-top: 2rem; color: var(--soft); font-size: .84rem; }
@media screen and (max-width: 46rem) {
  body { padding: 1rem .7rem 2rem; }
  .block { padding: .8rem .7rem; }
  .row { grid-template-columns: minmax(0, 1fr); }
  .row + .row { margin-top: .6rem; }
  .label .name { width: auto; }
  .plot { margin-left: 1.9rem; }
  .tiles { grid-template-columns: repeat(2, minmax(0, 1fr)); }
  .notes { grid-template-columns: minmax(0, 1fr); }
  svg .minor { display: none; }
  td.meter { width: 38%; }
}
@media print {
  body { max-width: none; padding: 0; background: #fff; font-size: 10.5pt; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  nav, .probe { display: none; }
  article + article { break-before: page; border: 0; }
  h3 { break-after: avoid; }
}
)";

}  // namespace zopctl::page
