import type { BoardEvent, History, Picture, Values } from "../../src/api";

/** A picture as the server sends it for a busy board with three radios. */
export function busyPicture(): Picture {
    const bss = (accessPoint: number, radio: number, ssid: string, status: string, stations: number) => ({
        accessPoint,
        radio,
        interface: accessPoint === (radio - 1) * 8 + 1 ? `wl${radio - 1}` : `wl${radio - 1}.${(accessPoint - 1) % 8}`,
        ssid,
        bssid: `02:51:76:10:0${radio - 1}:1${(accessPoint - 1) % 8}`,
        status,
        security: "psk2",
        stations,
    });
    const station = (
        last: string,
        accessPoint: number,
        rssi: number,
        standard: string,
        bandwidth: number,
        rate: number,
        traffic: [number, number],
        since: number,
    ) => ({
        mac: `02:5a:00:00:01:${last}`,
        accessPoint,
        associated: true,
        rssi,
        standard,
        bandwidth,
        downlinkRate: rate,
        uplinkRate: Math.round(rate * 0.9),
        downlinkTraffic: traffic[0],
        uplinkTraffic: traffic[1],
        since,
    });
    const events: [number, BoardEvent["source"], string, string][] = [
        [0, "board", "power", "on, board tri-band"],
        [0, "board", "join", "02:5a:00:00:01:01 on access point 1"],
        [41, "board", "join", "02:5a:00:00:01:03 on access point 2"],
        [95, "board", "set", "Radio 2: channel 149"],
        [180.2, "board", "leave", "02:5a:00:00:01:07 from access point 19"],
        [183.5, "board", "join", "02:5a:00:00:01:07 on access point 19"],
        [301, "board", "refused", "02:5a:00:00:01:0a on access point 1: the passphrase does not match"],
        [420, "board", "restart", "SSID 1 was changed; its stations come back"],
        [512.7, "agent", "usp", "GET from controller: Device.WiFi.Radio.*.Channel, 3 values"],
        [598, "board", "scan", "radio 3 hears 6 networks"],
        [640, "board", "neighbour", "Harbour 12 (02:6e:62:00:00:05) on channel 11"],
        [700, "board", "join", "02:5a:00:00:01:08 on access point 19"],
    ];
    return {
        board: { state: "up", name: "tri-band", reason: "", time: 744, clockRuns: false },
        radios: [
            { radio: 1, interface: "wl0", band: "5GHz", status: "Up", channel: 36, bandwidth: 80, autoChannel: false, noise: -92, utilization: 62, stations: 3 },
            { radio: 2, interface: "wl1", band: "5GHz", status: "Up", channel: 149, bandwidth: 80, autoChannel: true, noise: -92, utilization: 9, stations: 2 },
            { radio: 3, interface: "wl2", band: "2.4GHz", status: "Up", channel: 6, bandwidth: 20, autoChannel: false, noise: -88, utilization: 81, stations: 4 },
        ],
        bss: [
            bss(1, 1, "Quorvel-Home", "Up", 2),
            bss(2, 1, "Quorvel-Guest", "Up", 1),
            bss(3, 1, "Quorvel-Office", "Down", 0),
            bss(9, 2, "Quorvel-Home", "Up", 2),
            bss(10, 2, "Quorvel-Guest", "Down", 0),
            bss(17, 3, "Quorvel-Home", "Up", 1),
            bss(19, 3, "Quorvel-Things", "Up", 3),
        ],
        stations: [
            station("01", 1, -48, "ac", 80, 866680, [9000, 1200], 0),
            station("02", 1, -63, "ac", 80, 628343, [2500, 300], 0),
            station("03", 2, -71, "n", 40, 157500, [400, 60], 41),
            station("04", 9, -55, "ac", 80, 780000, [14200, 900], 0),
            station("05", 9, -77, "ac", 80, 97500, [120, 40], 12),
            station("06", 17, -58, "n", 20, 144400, [800, 90], 0),
            station("07", 19, -66, "n", 20, 72200, [12, 8], 183.5),
            station("08", 19, -82, "g", 20, 11000, [2, 2], 700),
            {
                ...station("0a", 1, -60, "ac", 80, 0, [0, 0], 0),
                associated: false,
                refusal: "the passphrase does not match",
            },
        ],
        neighbours: [
            { ssid: "Blue Kitchen", bssid: "02:6e:62:00:00:01", channel: 1, width: 20, rssi: -58, security: "WPA2-Personal" },
            { ssid: "Attic", bssid: "02:6e:62:00:00:02", channel: 6, width: 20, rssi: -71, security: "WPA2-Personal" },
            { ssid: "Attic-5", bssid: "02:6e:62:00:00:03", channel: 36, width: 80, rssi: -77, security: "WPA2-Personal" },
            { ssid: "Bakery Guests", bssid: "02:6e:62:00:00:04", channel: 6, width: 40, rssi: -66, security: "None" },
            { ssid: "Harbour 12", bssid: "02:6e:62:00:00:05", channel: 11, width: 20, rssi: -83, security: "WPA-WPA2-Personal" },
            { ssid: "Old Radio", bssid: "02:6e:62:00:00:06", channel: 11, width: 20, rssi: -88, security: "WEP-64" },
            { ssid: "Studio", bssid: "02:6e:62:00:00:07", channel: 44, width: 40, rssi: -64, security: "WPA2-Personal" },
            { ssid: "", bssid: "02:6e:62:00:00:08", channel: 52, width: 80, rssi: -74, security: "WPA2-Personal" },
            { ssid: "Workshop", bssid: "02:6e:62:00:00:09", channel: 100, width: 40, rssi: -69, security: "WPA2-Personal" },
            { ssid: "Roof", bssid: "02:6e:62:00:00:0a", channel: 116, width: 80, rssi: -80, security: "WPA2-Personal" },
            { ssid: "Cellar-5G", bssid: "02:6e:62:00:00:0b", channel: 157, width: 20, rssi: -59, security: "WPA2-Personal" },
            { ssid: "Harbour 12 5G", bssid: "02:6e:62:00:00:0c", channel: 149, width: 80, rssi: -72, security: "WPA2-Personal" },
        ],
        traffic: [
            [1, "Quorvel-Home", 11_500_000, 1_500_000],
            [2, "Quorvel-Guest", 400_000, 60_000],
            [9, "Quorvel-Home", 14_300_000, 940_000],
            [17, "Quorvel-Home", 800_000, 90_000],
            [19, "Quorvel-Things", 14_000, 10_000],
        ].map((one) => ({
            accessPoint: one[0] as number,
            ssid: one[1] as string,
            sent: (one[2] as number) * 90,
            received: (one[3] as number) * 90,
            sentRate: one[2] as number,
            receivedRate: one[3] as number,
        })),
        events: events.map(([time, source, kind, text], i) => ({ number: i + 1, time, source, kind, text })),
        agent: { connected: true, status: { endpoint: "os::025176-100010" } },
    };
}

/** Ten minutes that end in `picture`, a sample every five seconds, the same at every call. */
export function historyOf(picture: Picture): History {
    const count = 121;
    const time = Array.from({ length: count }, (_, i) => picture.board.time - (count - 1 - i) * 5);
    const wander = (seed: number, end: number, swing: number, low: number, high: number): Values =>
        time.map((_, i) => {
            const calm = (count - 1 - i) / 12;
            const wave = Math.sin(i / (5 + (seed % 7)) + seed) + 0.6 * Math.sin(i / (2.3 + (seed % 3)) + 2 * seed);
            return Math.round(Math.min(high, Math.max(low, end + swing * wave * Math.min(1, calm))));
        });
    return {
        time,
        radios: picture.radios.map((one) => ({
            id: one.radio,
            values: { utilization: wander(one.radio, one.utilization, 9, 0, 100), noise: wander(one.radio + 3, one.noise, 0.8, -100, -70) },
        })),
        traffic: picture.traffic.map((one) => ({
            id: one.accessPoint,
            values: {
                sentRate: wander(one.accessPoint, one.sentRate, one.sentRate / 4, 0, 1e9),
                receivedRate: wander(one.accessPoint + 1, one.receivedRate, one.receivedRate / 4, 0, 1e9),
            },
        })),
        stations: picture.stations
            .filter((one) => one.associated)
            .map((one, i) => ({
                mac: one.mac,
                rssi: wander(i + 2, one.rssi, 2.5, -95, -30).map((value, k) => ((time[k] ?? 0) < one.since ? null : value)),
            })),
    };
}
