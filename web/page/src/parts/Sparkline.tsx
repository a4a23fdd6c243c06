import type { Values } from "../api";
import { signed, strength } from "../units";

const width = 76;
const height = 22;
const low = -95;
const high = -30;

/** A station's signal over the last minutes, and now. */
export function Sparkline({ time, values, seconds, rssi }: { time: number[]; values: Values; seconds: number; rssi: number }): preact.JSX.Element {
    const end = time.at(-1) ?? 0;
    const y = (value: number): number => height - 2 - ((Math.min(high, Math.max(low, value)) - low) / (high - low)) * (height - 4);
    let path = "";
    let drawing = false;
    values.forEach((value, i) => {
        if (value === null) {
            drawing = false;
            return;
        }
        const x = width - ((end - (time[i] ?? end)) / seconds) * width;
        path += `${drawing ? "L" : "M"}${x.toFixed(1)} ${y(value).toFixed(1)}`;
        drawing = true;
    });
    return (
        <span class={`signal ${strength(rssi)}`}>
            <svg class="spark" width={width} height={height} viewBox={`0 0 ${width} ${height}`} aria-hidden="true">
                <path d={path} />
                {drawing && <circle cx={width - 2} cy={y(rssi)} r="2" />}
            </svg>
            <span class="number">
                {signed(rssi)}
                <span class="unit"> dBm</span>
            </span>
            <span class="hidden">, {strength(rssi)}</span>
        </span>
    );
}
