#pragma once

/// The look of the picture, and the little that moves in it.
namespace quorvel::scenario {

inline constexpr const char* kStyle = R"css(
:root { color-scheme: light dark; --ground: #fbfbfa; --panel: #fff; --text: #1d2126; --faint: #5c6670; --rule: #d9dde1;
  --good: #16794c; --bad: #bb2b1c; --line: #1f5fbf; --span: #c9d8ee; --s0: #cfe0f7; --s1: #d9ecd2; --s2: #f6e2c3; --s3: #e8d8f1; }
@media (prefers-color-scheme: dark) { :root { --ground: #14171a; --panel: #1b1f23; --text: #e7eaed; --faint: #a3adb7; --rule: #343b42;
  --good: #5cc994; --bad: #ff8a78; --line: #7db3ff; --span: #2f4a70; --s0: #24405f; --s1: #2b4a2c; --s2: #56431f; --s3: #473355; } }
* { box-sizing: border-box; }
body { margin: 0; padding: 24px; background: var(--ground); color: var(--text); font: 14px/1.4 system-ui, sans-serif; }
h1 { margin: 0; font-size: 22px; } h2 { margin: 20px 0 4px; font-size: 15px; }
.summary { margin: 4px 0 0; color: var(--faint); } .verdict { font-weight: 700; }
.verdict.held { color: var(--good); } .verdict.failed { color: var(--bad); }
.lanes { position: relative; }
.lane { display: grid; grid-template-columns: minmax(160px, 30%) 1fr; gap: 12px; align-items: center; border-top: 1px solid var(--rule);
  background: var(--panel); }
.label { padding: 3px 8px; overflow-wrap: anywhere; font-size: 13px; } .label small { display: block; color: var(--faint); }
.lane.expectation.failed .label { color: var(--bad); font-weight: 600; }
.plot { display: block; width: 100%; overflow: visible; }
.plot text { font-size: 11px; fill: var(--faint); pointer-events: none; } .plot text.inside { fill: var(--text); }
.mark, .entry { stroke: var(--faint); stroke-width: 1; } .entry { stroke-width: 2; opacity: .7; }
.step, .arrival { fill: var(--line); } .arrival { opacity: .7; } .step.failed { fill: var(--bad); }
.span { fill: var(--span); stroke: var(--span); stroke-width: 2; } circle.held { fill: var(--good); } circle.failed { fill: var(--bad); }
.line { fill: none; stroke: var(--line); stroke-width: 2; vector-effect: non-scaling-stroke; pointer-events: none; }
.limit { stroke: var(--faint); stroke-dasharray: 4 4; }
.shade-0 { fill: var(--s0); } .shade-1 { fill: var(--s1); } .shade-2 { fill: var(--s2); } .shade-3 { fill: var(--s3); }
#cursor { position: absolute; top: 0; bottom: 0; width: 1px; background: var(--text); pointer-events: none; display: none; }
#at { position: sticky; bottom: 0; margin: 12px 0 0; padding: 8px; min-height: 84px; max-height: 30vh; overflow: auto;
  background: var(--panel); border: 1px solid var(--rule); white-space: pre-wrap; font: 12px/1.5 ui-monospace, monospace; }
table { border-collapse: collapse; width: 100%; font-size: 13px; }
th, td { text-align: left; vertical-align: top; padding: 2px 8px; border-top: 1px solid var(--rule); overflow-wrap: anywhere; }
td:first-child { white-space: nowrap; font-variant-numeric: tabular-nums; }
summary { cursor: pointer; margin: 16px 0 8px; }
@media (max-width: 700px) { body { padding: 12px; } .lane { grid-template-columns: 1fr; gap: 0; } }
)css";

// A line follows the pointer; below it is what happened last at that time.
inline constexpr const char* kScript = R"js(
"use strict";
(() => {
  const data = JSON.parse(document.getElementById("data").textContent);
  const lanes = document.querySelector(".lanes"), cursor = document.getElementById("cursor"), at = document.getElementById("at");
  const lastOf = (list, time) => list.filter((one) => one[0] <= time).pop();
  lanes.addEventListener("pointermove", (event) => {
    const plot = document.querySelector(".plot").getBoundingClientRect();
    const share = (event.clientX - plot.left) / plot.width;
    cursor.style.display = share >= 0 && share <= 1 ? "block" : "none";
    if (share < 0 || share > 1) return;
    cursor.style.left = `${event.clientX - lanes.getBoundingClientRect().left}px`;
    const time = share * data.end;
    const lines = [`${time.toFixed(3)} s`];
    for (const [path, values] of Object.entries(data.parameters)) {
      const value = lastOf(values, time);
      if (value !== undefined) lines.push(`${path} = ${value[1] === null ? "(cannot be read)" : value[1]}`);
    }
    for (const [mac, values] of Object.entries(data.stations)) {
      const value = lastOf(values, time);
      if (value !== undefined) lines.push(`${mac}: ${value[1] === 0 ? "not associated" : `access point ${value[1]}, ${value[2]} dBm`}`);
    }
    for (const line of data.log.filter((one) => one[0] <= time).slice(-5)) lines.push(`${line[0].toFixed(3)} ${line[1]} ${line[2]}`);
    at.textContent = lines.join("\n");
  });
  lanes.addEventListener("pointerleave", () => { cursor.style.display = "none"; });
})();
)js";

}  // namespace quorvel::scenario
