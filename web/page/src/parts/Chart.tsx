import { useEffect, useRef } from "preact/hooks";
import uPlot from "uplot";
import type { Values } from "../api";
import { useSize } from "./useSize";

export interface Line {
    name: string;
    /** A custom property of the page's style sheet, such as "--radio-1". */
    colour: string;
    values: Values;
    scale: string;
    filled?: boolean;
    dashed?: boolean;
}

export interface Axis {
    scale: string;
    side: "left" | "right";
    range: (low: number, high: number) => [number, number];
    format: (value: number) => string;
    /** Pixels. */
    size: number;
}

interface Props {
    label: string;
    time: number[];
    /** Seconds that the chart spans. */
    seconds: number;
    lines: Line[];
    axes: Axis[];
}

/** A chart of the last minutes. It is a picture to assistive technology: `label` says in words what it shows. */
export function Chart({ label, time, seconds, lines, axes }: Props): preact.JSX.Element {
    const [element, width, height] = useSize<HTMLDivElement>();
    const plot = useRef<uPlot | null>(null);
    const shape = lines.map((line) => `${line.name}|${line.colour}|${line.scale}`).join(";");
    const drawnShape = useRef("");
    const now = time.at(-1) ?? 0;
    const window_ = useRef<[number, number]>([0, 0]);
    window_.current = [now - seconds, now];

    useEffect(() => {
        const at = element.current;
        if (at === null || width === 0 || height === 0) return;
        const data = [time, ...lines.map((line) => line.values)] as uPlot.AlignedData;
        if (plot.current === null || drawnShape.current !== shape) {
            plot.current?.destroy();
            plot.current = new uPlot(options(at, width, height, lines, axes, window_), data, at);
            drawnShape.current = shape;
            return;
        }
        if (plot.current.width !== width || plot.current.height !== height) plot.current.setSize({ width, height });
        plot.current.setData(data);
    });
    useEffect(() => {
        // The colours are the style sheet's, which follows the system.
        const dark = matchMedia("(prefers-color-scheme: dark)");
        const redraw = (): void => plot.current?.redraw(false, true);
        dark.addEventListener("change", redraw);
        return () => {
            dark.removeEventListener("change", redraw);
            plot.current?.destroy();
        };
    }, []);

    return <div class="chart" ref={element} role="img" aria-label={label} />;
}

function options(
    element: HTMLElement,
    width: number,
    height: number,
    lines: Line[],
    axes: Axis[],
    window_: { current: [number, number] },
): uPlot.Options {
    const colour = (name: string): string => getComputedStyle(element).getPropertyValue(name).trim();
    const font = `11px ${getComputedStyle(element).fontFamily}`;
    const text = (): string => colour("--muted");
    const grid = { stroke: (): string => colour("--line"), width: 1 };
    return {
        width,
        height,
        padding: [6, axes.some((axis) => axis.side === "right") ? 0 : 8, 0, 0],
        legend: { show: false },
        cursor: { show: false },
        scales: {
            x: { time: false, range: () => window_.current },
            ...Object.fromEntries(
                axes.map((axis) => [
                    axis.scale,
                    { range: (_: uPlot, low: number | null, high: number | null): [number, number] => axis.range(low ?? 0, high ?? 0) },
                ]),
            ),
        },
        series: [
            {},
            ...lines.map((line): uPlot.Series => ({
                label: line.name,
                scale: line.scale,
                stroke: () => colour(line.colour),
                width: line.dashed === true ? 1 : 1.6,
                points: { show: false },
                spanGaps: false,
                ...(line.dashed === true ? { dash: [3, 3] } : {}),
                ...(line.filled === true ? { fill: () => `${colour(line.colour)}26` } : {}),
            })),
        ],
        axes: [
            {
                stroke: text,
                font,
                grid: { show: false },
                ticks: { ...grid, size: 3 },
                size: 20,
                gap: 2,
                splits: (self) => {
                    const [low, high] = window_.current;
                    const room = Math.max(1, Math.floor(self.width / 75));
                    const step = [15, 30, 60, 120, 180, 300].find((one) => (high - low) / one <= room + 1) ?? 300;
                    const all: number[] = [];
                    for (let at = high - step; at > low; at -= step) all.push(at);
                    return all;
                },
                values: (_, splits) =>
                    splits.map((at) => {
                        const ago = Math.round(window_.current[1] - at);
                        return ago % 60 === 0 ? `\u2212${ago / 60} min` : `\u2212${ago} s`;
                    }),
            },
            ...axes.map((axis): uPlot.Axis => ({
                scale: axis.scale,
                side: axis.side === "left" ? 3 : 1,
                stroke: text,
                font,
                grid: axis.side === "left" ? grid : { show: false },
                ticks: { show: false },
                size: axis.size,
                gap: 3,
                space: 22,
                values: (_, splits) => splits.map(axis.format),
            })),
        ],
    };
}
