import type { Values } from "../api";
import { type Model } from "../model";
import { bitRate } from "../units";
import { Chart } from "./Chart";
import { chartSeconds } from "./RadioPanel";

interface Sum {
    ssid: string;
    values: Values;
    now: number;
}

const mostLines = 5;

/** Returns the traffic of each network name, both directions and all radios together, the busiest first. */
export function sums(model: Model): Sum[] {
    const byName = new Map<string, Sum>();
    const up = new Set(model.picture.bss.filter((bss) => bss.status === "Up").map((bss) => bss.accessPoint));
    for (const one of model.picture.traffic) {
        if (!up.has(one.accessPoint)) continue;
        const sum = byName.get(one.ssid) ?? { ssid: one.ssid, values: [], now: 0 };
        sum.now += one.sentRate + one.receivedRate;
        const past = model.traffic.get(one.accessPoint);
        sum.values = model.time.map((_, i) => {
            const parts = [sum.values[i] ?? null, past?.["sentRate"]?.[i] ?? null, past?.["receivedRate"]?.[i] ?? null];
            const known = parts.filter((part): part is number => part !== null);
            return known.length === 0 ? null : known.reduce((a, b) => a + b, 0);
        });
        byName.set(one.ssid, sum);
    }
    return [...byName.values()].sort((a, b) => a.ssid.localeCompare(b.ssid)).slice(0, mostLines);
}

/** Traffic of each SSID over time. */
export function TrafficPanel({ model }: { model: Model }): preact.JSX.Element {
    const all = sums(model);
    return (
        <section class="panel traffic" aria-labelledby="traffic-title">
            <header>
                <h2 id="traffic-title">Traffic by SSID</h2>
            </header>
            {all.length === 0 ? (
                <p class="empty">No network is up.</p>
            ) : (
                <>
                    <ul class="legend now">
                        {all.map((one, i) => (
                            <li key={one.ssid}>
                                <i class={`swatch line-${i + 1}`} aria-hidden="true" />
                                {one.ssid} <b>{bitRate(one.now)}</b>
                            </li>
                        ))}
                    </ul>
                    <Chart
                        label={`Traffic over the last minutes; now ${all.map((one) => `${one.ssid} ${bitRate(one.now)}`).join(", ")}`}
                        time={model.time}
                        seconds={chartSeconds(model.time)}
                        lines={all.map((one, i) => ({ name: one.ssid, colour: `--line-${i + 1}`, values: one.values, scale: "rate" }))}
                        axes={[
                            {
                                scale: "rate",
                                side: "left",
                                range: (_, high) => [0, Math.max(1000, high * 1.15)],
                                format: (value) => (value === 0 ? "0" : bitRate(value)),
                                size: 62,
                            },
                        ]}
                    />
                </>
            )}
        </section>
    );
}
