/** Where channels lie on the air; frequencies in MHz. */

export type BandName = "2.4GHz" | "5GHz" | "6GHz";

export interface Segment {
    from: number;
    to: number;
}

export interface Band {
    name: BandName;
    label: string;
    /** Pieces of the band in ascending order; what lies between them is not used. */
    segments: Segment[];
    /** Channels that the axis names. */
    marks: number[];
}

export const bands: Band[] = [
    { name: "2.4GHz", label: "2.4 GHz", segments: [{ from: 2397, to: 2489 }], marks: [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13] },
    {
        name: "5GHz",
        label: "5 GHz",
        segments: [
            { from: 5165, to: 5335 },
            { from: 5485, to: 5735 },
            { from: 5735, to: 5840 },
        ],
        marks: [36, 44, 52, 60, 100, 108, 116, 124, 132, 140, 149, 157, 165],
    },
    { name: "6GHz", label: "6 GHz", segments: [{ from: 5940, to: 7130 }], marks: [1, 33, 65, 97, 129, 161, 193, 225] },
];

/** Returns the centre frequency of a 20 MHz channel. */
export function frequency(band: BandName, channel: number): number {
    switch (band) {
        case "2.4GHz":
            return channel === 14 ? 2484 : 2407 + 5 * channel;
        case "5GHz":
            return 5000 + 5 * channel;
        case "6GHz":
            return 5950 + 5 * channel;
    }
}

/** Returns the band of a channel where no band is given: channels above 14 lie in 5 GHz. */
export function bandOf(channel: number): BandName {
    return channel <= 14 ? "2.4GHz" : "5GHz";
}

const firstOfBlock: Record<number, number[]> = {
    40: [36, 44, 52, 60, 100, 108, 116, 124, 132, 140, 149, 157],
    80: [36, 52, 100, 116, 132, 149],
    160: [36, 100],
};

/** Returns what a network with this primary channel occupies. `width` is in MHz. */
export function occupied(band: BandName, channel: number, width: number): Segment {
    const around = (centre: number): Segment => ({ from: centre - width / 2, to: centre + width / 2 });
    const primary = frequency(band, channel);
    if (width <= 20) return { from: primary - 10, to: primary + 10 };
    // The second 20 MHz lie above a low primary channel and below a high one.
    if (band === "2.4GHz") return around(primary + (channel <= 7 ? 10 : -10));
    if (band === "6GHz") {
        const first = 1 + Math.floor((channel - 1) / (width / 5)) * (width / 5);
        return around(frequency(band, first) - 10 + width / 2);
    }
    const channels = width / 5;
    const first = (firstOfBlock[width] ?? []).find((one) => channel >= one && channel < one + channels);
    return around(first === undefined ? primary : frequency(band, first) - 10 + width / 2);
}

/** Maps frequencies of a band to positions from 0 to `length`; unused pieces become narrow gaps. */
export class Scale {
    readonly segments: { from: number; to: number; start: number; end: number }[] = [];

    constructor(band: Band, length: number, gap: number) {
        const used = band.segments.reduce((sum, one) => sum + one.to - one.from, 0);
        // Segments that follow each other without a hole have no gap between them.
        const holes = band.segments.filter((one, i) => i > 0 && band.segments[i - 1]?.to !== one.from).length;
        const perMegahertz = (length - holes * gap) / used;
        let at = 0;
        band.segments.forEach((one, i) => {
            if (i > 0 && band.segments[i - 1]?.to !== one.from) at += gap;
            const end = at + (one.to - one.from) * perMegahertz;
            this.segments.push({ from: one.from, to: one.to, start: at, end });
            at = end;
        });
    }

    /** Returns the position; a frequency outside of all pieces is taken to the nearest edge. */
    at(frequency: number): number {
        let nearest = 0;
        let distance = Infinity;
        for (const one of this.segments) {
            const inside = Math.min(Math.max(frequency, one.from), one.to);
            if (Math.abs(inside - frequency) < distance) {
                distance = Math.abs(inside - frequency);
                nearest = one.start + ((inside - one.from) / (one.to - one.from)) * (one.end - one.start);
            }
        }
        return nearest;
    }
}
