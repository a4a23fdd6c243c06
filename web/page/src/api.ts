/** The values that the server sends; api/openapi.json describes each member. */

export interface Board {
    state: "up" | "silent" | "lost";
    name: string;
    reason: string;
    time: number;
    clockRuns: boolean;
}

export interface Radio {
    radio: number;
    interface: string;
    band: string;
    status: string;
    channel: number;
    bandwidth: number;
    autoChannel: boolean;
    noise: number;
    utilization: number;
    stations: number;
}

export interface Bss {
    accessPoint: number;
    radio: number;
    interface: string;
    ssid: string;
    bssid: string;
    status: string;
    security: string;
    stations: number;
}

export interface Station {
    mac: string;
    accessPoint: number;
    associated: boolean;
    rssi: number;
    standard: string;
    bandwidth: number;
    downlinkRate: number;
    uplinkRate: number;
    downlinkTraffic: number;
    uplinkTraffic: number;
    since: number;
    refusal?: string;
}

export interface Neighbour {
    ssid: string;
    bssid: string;
    channel: number;
    width: number;
    rssi: number;
    security: string;
}

export interface Traffic {
    accessPoint: number;
    ssid: string;
    sent: number;
    received: number;
    sentRate: number;
    receivedRate: number;
}

export interface BoardEvent {
    number: number;
    time: number;
    source: "board" | "agent" | "page";
    kind: string;
    text: string;
}

export interface Agent {
    connected: boolean;
    status: Record<string, unknown>;
}

export interface Picture {
    board: Board;
    radios: Radio[];
    bss: Bss[];
    stations: Station[];
    neighbours: Neighbour[];
    traffic: Traffic[];
    events: BoardEvent[];
    agent: Agent | null;
}

/** Those members of a picture that have changed; `events` has only new ones. */
export type Update = Partial<Picture>;

export type Values = (number | null)[];

export interface History {
    time: number[];
    radios: { id: number; values: Record<string, Values> }[];
    traffic: { id: number; values: Record<string, Values> }[];
    stations: { mac: string; rssi: Values }[];
}
