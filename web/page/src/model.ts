import type { BoardEvent, History, Picture, Station, Update, Values } from "./api";

/** Seconds of board time that the charts show. */
export const span = 600;
/** Milliseconds for which a station that has come or gone is marked. */
export const markTime = 6000;
const longestFeed = 500;

export interface Mark {
    kind: "joined" | "left";
    until: number;
    station: Station;
}

/** The state of the page. A new object for each change; its members are shared where they did not change. */
export interface Model {
    picture: Picture;
    /** When the picture's board time was taken, on the page's own clock (ms). */
    receivedAt: number;
    time: number[];
    radios: Map<number, Record<string, Values>>;
    traffic: Map<number, Record<string, Values>>;
    signals: Map<string, Values>;
    marks: Map<string, Mark>;
}

/** Returns the model for a first picture, or for the one after a lost connection. */
export function begin(picture: Picture, history: History, now: number): Model {
    return {
        picture: { ...picture, events: latest(picture.events) },
        receivedAt: now,
        time: history.time,
        radios: new Map(history.radios.map((one) => [one.id, one.values])),
        traffic: new Map(history.traffic.map((one) => [one.id, one.values])),
        signals: new Map(history.stations.map((one) => [one.mac, one.rssi])),
        marks: new Map(),
    };
}

/** Returns the model after an update. */
export function apply(model: Model, update: Update, now: number): Model {
    const { events, ...members } = update;
    const picture: Picture = { ...model.picture, ...members };
    if (events !== undefined) picture.events = latest([...model.picture.events, ...events]);
    const next: Model = { ...model, picture, receivedAt: now };
    next.marks = marksAfter(model, picture.stations, now);
    const last = model.time.at(-1);
    // A board that was switched on again begins at 0.
    if (last !== undefined && picture.board.time < last) return { ...next, ...emptyHistory(), ...sampleOf(next, 0) };
    if (picture.board.state === "up" && picture.board.time !== last) return { ...next, ...sampleOf(next, model.time.length) };
    return next;
}

/** Returns the model without marks that are over, or the same one when none is. */
export function forgetMarks(model: Model, now: number): Model {
    const marks = new Map([...model.marks].filter(([, mark]) => mark.until > now));
    return marks.size === model.marks.size ? model : { ...model, marks };
}

/** Returns the board's time now, in seconds: it goes on between updates where the clock runs. */
export function boardTime(model: Model, now: number): number {
    const { state, time, clockRuns } = model.picture.board;
    return state === "up" && clockRuns ? time + Math.max(0, now - model.receivedAt) / 1000 : time;
}

/** Returns the stations to show: those of the picture, and those that have just left. */
export function shownStations(model: Model): Station[] {
    const present = new Set(model.picture.stations.map((station) => station.mac));
    const gone = [...model.marks.values()].filter((mark) => mark.kind === "left" && !present.has(mark.station.mac));
    return [...model.picture.stations, ...gone.map((mark) => mark.station)];
}

function latest(events: BoardEvent[]): BoardEvent[] {
    return events.slice(-longestFeed);
}

function marksAfter(model: Model, stations: Station[], now: number): Map<string, Mark> {
    const before = model.picture.stations;
    if (before === stations) return model.marks;
    const marks = new Map(model.marks);
    const until = now + markTime;
    const had = new Map(before.map((station) => [station.mac, station]));
    const has = new Map(stations.map((station) => [station.mac, station]));
    for (const station of stations) {
        if (!station.associated) continue;
        const old = had.get(station.mac);
        if (old === undefined || !old.associated || old.since !== station.since || old.accessPoint !== station.accessPoint)
            marks.set(station.mac, { kind: "joined", until, station });
    }
    for (const station of before) {
        const now_ = has.get(station.mac);
        if (station.associated && (now_ === undefined || !now_.associated))
            marks.set(station.mac, { kind: "left", until, station });
    }
    return marks;
}

function emptyHistory(): Pick<Model, "time" | "radios" | "traffic" | "signals"> {
    return { time: [], radios: new Map(), traffic: new Map(), signals: new Map() };
}

type Samples = Pick<Model, "time" | "radios" | "traffic" | "signals">;

// The history with the picture's values at its end; what is older than the charts show is cut off. `length` is the number of
// samples that are kept from before.
function sampleOf(model: Model, length: number): Samples {
    const { board, radios, traffic, stations } = model.picture;
    const before: Samples = length === 0 ? emptyHistory() : model;
    const time = [...before.time, board.time];
    const cut = Math.max(0, time.findIndex((one) => one >= board.time - span));
    const append = (values: Values | undefined, value: number | null): Values =>
        [...(values ?? Array<null>(length).fill(null)), value].slice(cut);
    const grown = <Key>(
        all: Map<Key, Record<string, Values>>,
        names: string[],
        found: Map<Key, Record<string, number>>,
    ): Map<Key, Record<string, Values>> =>
        new Map(
            [...new Set([...all.keys(), ...found.keys()])].map((key) => [
                key,
                Object.fromEntries(names.map((name) => [name, append(all.get(key)?.[name], found.get(key)?.[name] ?? null)])),
            ]),
        );
    const signals = new Map<string, Values>();
    const rssi = new Map(stations.filter((one) => one.associated).map((one) => [one.mac, one.rssi]));
    for (const mac of new Set([...before.signals.keys(), ...rssi.keys()])) {
        const values = append(before.signals.get(mac), rssi.get(mac) ?? null);
        if (values.some((value) => value !== null)) signals.set(mac, values);
    }
    return {
        time: time.slice(cut),
        radios: grown(
            before.radios,
            ["utilization", "noise"],
            new Map(radios.map((one) => [one.radio, { utilization: one.utilization, noise: one.noise }])),
        ),
        traffic: grown(
            before.traffic,
            ["sentRate", "receivedRate"],
            new Map(traffic.map((one) => [one.accessPoint, { sentRate: one.sentRate, receivedRate: one.receivedRate }])),
        ),
        signals,
    };
}
