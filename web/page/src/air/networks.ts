import type { Picture } from "../api";
import { signed } from "../units";
import { bandOf, occupied, type BandName, type Segment } from "./spectrum";

/** A network as the strip draws it: one of ours (all of a radio's names together), or somebody else's. */
export interface Network {
    key: string;
    radio: number | null;
    band: BandName;
    span: Segment;
    rssi: number;
    label: string;
    /** Everything that is known of it, for a person. */
    detail: string;
}

// Our own networks are drawn as a station beside the gateway hears them.
const ownSignal = -30;

/** Returns the networks of a picture, ours first, each group from the strongest to the weakest. */
export function networksOf(picture: Picture): Network[] {
    const own = picture.radios
        .filter((radio) => radio.status === "Up")
        .map((radio): Network => {
            const names = picture.bss.filter((bss) => bss.radio === radio.radio && bss.status === "Up").map((bss) => bss.ssid);
            const band = radio.band as BandName;
            return {
                key: `radio ${radio.radio}`,
                radio: radio.radio,
                band,
                span: occupied(band, radio.channel, radio.bandwidth),
                rssi: ownSignal,
                label: names.length === 0 ? `Radio ${radio.radio}` : names.join(", "),
                detail:
                    `Radio ${radio.radio}: ${names.length === 0 ? "no network up" : names.join(", ")} on channel ` +
                    `${radio.channel}, ${radio.bandwidth} MHz, ${radio.utilization} % in use, noise ${signed(radio.noise)} dBm`,
            };
        });
    const others = picture.neighbours
        .map((one): Network => {
            const band = bandOf(one.channel);
            const name = one.ssid === "" ? "(hidden)" : one.ssid;
            return {
                key: one.bssid,
                radio: null,
                band,
                span: occupied(band, one.channel, one.width),
                rssi: one.rssi,
                label: name,
                detail: `Neighbour ${name} on channel ${one.channel}, ${one.width} MHz, ${signed(one.rssi)} dBm, ${one.security}`,
            };
        })
        .sort((a, b) => b.rssi - a.rssi);
    return [...own, ...others];
}
