import { useState } from "preact/hooks";
import type { Station } from "../api";
import { boardTime, shownStations, type Model } from "../model";
import { bitRate, clock } from "../units";
import { chartSeconds } from "./RadioPanel";
import { Sparkline } from "./Sparkline";

type Column = "station" | "signal" | "rate" | "traffic" | "standard" | "time";

const columns: { id: Column; title: string; key: (station: Station) => number | string }[] = [
    { id: "station", title: "Station", key: (one) => `${String(one.accessPoint).padStart(3, "0")} ${one.mac}` },
    { id: "signal", title: "Signal", key: (one) => -one.rssi },
    { id: "rate", title: "Link rate", key: (one) => -one.downlinkRate },
    { id: "traffic", title: "Traffic", key: (one) => -(one.downlinkTraffic + one.uplinkTraffic) },
    { id: "standard", title: "Standard", key: (one) => one.standard },
    { id: "time", title: "Time", key: (one) => one.since },
];

/** Returns the stations in the order of a column; those that are not associated come last. */
export function ordered(stations: Station[], by: Column, backwards: boolean): Station[] {
    const key = columns.find((one) => one.id === by)?.key ?? ((one: Station) => one.mac);
    const direction = backwards ? -1 : 1;
    return [...stations].sort((a, b) => {
        if (a.associated !== b.associated) return a.associated ? -1 : 1;
        const [x, y] = [key(a), key(b)];
        if (x === y) return a.mac < b.mac ? -1 : 1;
        return (x < y ? -1 : 1) * direction;
    });
}

/** The stations: a row each, those that have just come or gone marked. */
export function StationPanel({ model, now }: { model: Model; now: number }): preact.JSX.Element {
    const [order, setOrder] = useState<{ by: Column; backwards: boolean }>({ by: "station", backwards: false });
    const stations = ordered(shownStations(model), order.by, order.backwards);
    const associated = model.picture.stations.filter((one) => one.associated).length;
    return (
        <section class="panel stations" aria-labelledby="stations-title">
            <header>
                <h2 id="stations-title">Stations</h2>
                <p class="detail">{associated} associated</p>
            </header>
            {stations.length === 0 ? (
                <p class="empty">No station is associated. A row appears here as soon as one joins.</p>
            ) : (
                <div class="scroll" tabIndex={0} role="group" aria-label="Table of stations">
                    <table>
                        <thead>
                            <tr>
                                {columns.map(({ id, title }) => (
                                    <th
                                        key={id}
                                        scope="col"
                                        class={id}
                                        aria-sort={order.by !== id ? undefined : order.backwards ? "descending" : "ascending"}
                                    >
                                        <button
                                            type="button"
                                            onClick={() => setOrder({ by: id, backwards: order.by === id && !order.backwards })}
                                        >
                                            {title}
                                        </button>
                                    </th>
                                ))}
                            </tr>
                        </thead>
                        <tbody>
                            {stations.map((station) => (
                                <StationRow key={station.mac} station={station} model={model} now={now} />
                            ))}
                        </tbody>
                    </table>
                </div>
            )}
            <p class="hidden" role="status">
                {[...model.marks.values()].map((mark) => `Station ${mark.station.mac} ${mark.kind}. `).join("")}
            </p>
        </section>
    );
}

function StationRow({ station, model, now }: { station: Station; model: Model; now: number }): preact.JSX.Element {
    const bss = model.picture.bss.find((one) => one.accessPoint === station.accessPoint);
    const mark = model.marks.get(station.mac);
    const kind = mark?.kind ?? (station.associated ? "" : "refused");
    return (
        <tr class={kind} data-mac={station.mac}>
            <th scope="row" class="station">
                <i class={`swatch radio-${bss?.radio ?? 0}`} aria-hidden="true" />
                <span class="mac">{station.mac}</span>
                {mark !== undefined && <span class={`badge ${mark.kind}`}>{mark.kind}</span>}
                <span class="faint ssid">
                    {bss?.ssid ?? `access point ${station.accessPoint}`}
                    <span class="on-radio">, radio {bss?.radio ?? "?"}</span>
                </span>
            </th>
            {kind === "refused" ? (
                <td colSpan={5} class="refusal">
                    Not let in{station.refusal === undefined ? "" : `: ${station.refusal}`}
                </td>
            ) : (
                <>
                    <td class="signal">
                        <Sparkline
                            time={model.time}
                            values={model.signals.get(station.mac) ?? []}
                            seconds={chartSeconds(model.time)}
                            rssi={station.rssi}
                        />
                    </td>
                    <td class="rate">
                        <Pair down={bitRate(station.downlinkRate * 1000)} up={bitRate(station.uplinkRate * 1000)} />
                    </td>
                    <td class="traffic">
                        <Pair down={bitRate(station.downlinkTraffic * 1000)} up={bitRate(station.uplinkTraffic * 1000)} />
                    </td>
                    <td class="standard">
                        {station.standard}
                        <span class="faint"> {station.bandwidth} MHz</span>
                    </td>
                    <td class="time">{clock(boardTime(model, now) - station.since)}</td>
                </>
            )}
        </tr>
    );
}

function Pair({ down, up }: { down: string; up: string }): preact.JSX.Element {
    return (
        <>
            <span class="way">
                <span aria-hidden="true">↓ </span>
                <span class="hidden">down </span>
                {down}
            </span>{" "}
            <span class="way">
                <span aria-hidden="true">↑ </span>
                <span class="hidden">up </span>
                {up}
            </span>
        </>
    );
}
