import { useRef } from "preact/hooks";
import type { Radio } from "../api";
import { signed } from "../units";
import { useSize } from "../parts/useSize";
import { place, type Box } from "./labels";
import type { Network } from "./networks";
import { frequency, occupied, Scale, type Band } from "./spectrum";

const strongest = -22;
const weakest = -96;
const top = 22;
const axis = 20;
const left = 30;
const right = 6;
const gap = 22;
const labelHeight = 14;
const characterWidth = 6.3;

interface Props {
    band: Band;
    radios: Radio[];
    networks: Network[];
    chosen: string | null;
    onChoose(key: string | null): void;
}

/** One band: channels from left to right, signal upwards, and behind each of our channels how busy it is. */
export function BandStrip({ band, radios, networks, chosen, onChoose }: Props): preact.JSX.Element {
    const [element, width, height] = useSize<HTMLDivElement>();
    const list = useRef<SVGGElement>(null);
    const scale = new Scale(band, Math.max(1, width - left - right), gap);
    const x = (megahertz: number): number => left + scale.at(megahertz);
    const base = height - axis;
    const y = (rssi: number): number => {
        const share = (Math.min(strongest, Math.max(weakest, rssi)) - weakest) / (strongest - weakest);
        return base - share * (base - top);
    };
    // Ours are drawn last, above the others.
    const drawn = [...networks].reverse();
    const labels = placeLabels(networks, x, y, base, width);
    const step = (by: number): void => {
        const at = networks.findIndex((one) => one.key === chosen);
        const next = networks[(at + by + networks.length) % networks.length];
        if (next === undefined) return;
        onChoose(next.key);
        list.current?.querySelector<SVGElement>(`[data-key="${next.key}"]`)?.focus();
    };
    const onKeyDown = (event: KeyboardEvent): void => {
        if (event.key === "ArrowRight" || event.key === "ArrowDown") step(1);
        else if (event.key === "ArrowLeft" || event.key === "ArrowUp") step(-1);
        else if (event.key === "Escape") onChoose(null);
        else return;
        event.preventDefault();
    };
    const entry = networks.some((one) => one.key === chosen) ? chosen : networks[0]?.key;
    const narrow = width < 560;
    return (
        <div class={`strip band-${band.name.replace(".", "-")}`} ref={element}>
            {width > 0 && (
                <svg width={width} height={height} role="group" aria-label={`${band.label} band`}>
                    {scale.segments.map((one) => (
                        <rect key={one.from} class="field" x={left + one.start} y={top} width={one.end - one.start} height={base - top} />
                    ))}
                    {radios.map((radio) => {
                        const span = occupied(band.name, radio.channel, radio.bandwidth);
                        const tall = ((base - top) * radio.utilization) / 100;
                        return (
                            <g key={radio.radio} class={`busy radio-${radio.radio}`}>
                                <rect class="range" x={x(span.from)} y={top} width={x(span.to) - x(span.from)} height={base - top} />
                                <rect class="share" x={x(span.from)} y={base - tall} width={x(span.to) - x(span.from)} height={tall} />
                                <text x={Math.max((x(span.from) + x(span.to)) / 2, 82)} y={top - 8} text-anchor="middle">
                                    {narrow ? `${radio.utilization} %` : `${radio.utilization} % in use`}
                                </text>
                            </g>
                        );
                    })}
                    {[-30, -50, -70, -90].map((rssi) => (
                        <g key={rssi} class="level" aria-hidden="true">
                            <line x1={left} x2={width - right} y1={y(rssi)} y2={y(rssi)} />
                            <text x={left - 5} y={y(rssi) + 4} text-anchor="end">
                                {signed(rssi)}
                            </text>
                        </g>
                    ))}
                    <text class="band-name" x={0} y={top - 8}>
                        {band.label}
                    </text>
                    <g class="marks" aria-hidden="true">
                        {marksThatFit(band, x).map((channel) => (
                            <text key={channel} x={x(frequency(band.name, channel))} y={height - 6} text-anchor="middle">
                                {channel}
                            </text>
                        ))}
                    </g>
                    <g
                        ref={list}
                        class={networks.some((one) => one.key === chosen) ? "networks choosing" : "networks"}
                        role="listbox"
                        aria-label={`Networks in the ${band.label} band`}
                        onKeyDown={onKeyDown}
                        onMouseLeave={() => onChoose(null)}
                    >
                        {drawn.map((one) => (
                            <path
                                key={one.key}
                                data-key={one.key}
                                class={`network ${one.radio === null ? "neighbour" : `own radio-${one.radio}`} ${one.key === chosen ? "chosen" : ""}`}
                                d={outline(x(one.span.from), x(one.span.to), y(one.rssi), base)}
                                role="option"
                                aria-selected={one.key === chosen}
                                aria-label={one.detail}
                                tabindex={one.key === entry ? 0 : -1}
                                onMouseEnter={() => onChoose(one.key)}
                                onFocus={() => onChoose(one.key)}
                                onBlur={() => onChoose(null)}
                            />
                        ))}
                    </g>
                    <g class="labels" aria-hidden="true">
                        {labels.map(({ network, box, text }) => (
                            <text
                                key={network.key}
                                class={`${network.radio === null ? "neighbour" : `own radio-${network.radio}`} ${network.key === chosen ? "chosen" : ""}`}
                                x={box.x + box.width / 2}
                                y={box.y + labelHeight - 3}
                                text-anchor="middle"
                            >
                                {text}
                            </text>
                        ))}
                    </g>
                </svg>
            )}
        </div>
    );
}

// The channels that have room for their number.
function marksThatFit(band: Band, x: (megahertz: number) => number): number[] {
    let free = -Infinity;
    return band.marks.filter((channel) => {
        const half = String(channel).length * 4;
        const at = x(frequency(band.name, channel));
        if (at - half < free) return false;
        free = at + half + 6;
        return true;
    });
}

// A network's shape: a flat top with the shoulders of a transmission mask.
function outline(from: number, to: number, peak: number, base: number): string {
    const shoulder = Math.min((to - from) * 0.16, 16);
    return (
        `M${from} ${base}C${from + shoulder * 0.6} ${base} ${from + shoulder * 0.3} ${peak} ${from + shoulder} ${peak}` +
        `L${to - shoulder} ${peak}C${to - shoulder * 0.3} ${peak} ${to - shoulder * 0.6} ${base} ${to} ${base}Z`
    );
}

interface Label {
    network: Network;
    box: Box;
    text: string;
}

// Finds places for the names, the strongest networks first; a name without a free place is shown when its network is chosen.
function placeLabels(
    networks: Network[],
    x: (megahertz: number) => number,
    y: (rssi: number) => number,
    base: number,
    width: number,
): Label[] {
    const taken: Box[] = [];
    const labels: Label[] = [];
    for (const network of networks) {
        const own = network.radio !== null;
        const room = Math.max(x(network.span.to) - x(network.span.from), own ? 112 : 84);
        const most = Math.max(4, Math.floor(room / characterWidth));
        const text = network.label.length > most ? `${network.label.slice(0, most - 1)}\u2026` : network.label;
        const wide = text.length * characterWidth + 4;
        const centre = (x(network.span.from) + x(network.span.to)) / 2;
        const at = Math.min(Math.max(left, centre - wide / 2), width - right - wide);
        const line = own ? y(network.rssi) + 3 : y(network.rssi) - labelHeight;
        const box = place({ x: at, y: line, width: wide, height: labelHeight }, taken, top, base);
        if (box === null) continue;
        taken.push(box);
        labels.push({ network, box, text });
    }
    return labels;
}
