import type { History, Picture, Update } from "./api";

/** The state of the connection to the server. */
export type Connection = "connecting" | "live" | "unreachable" | "refused";

export interface Listener {
    onConnection(connection: Connection): void;
    onPicture(picture: Picture, history: History): void;
    onUpdate(update: Update): void;
}

/** One server-sent event. */
export interface Message {
    name: string;
    data: string;
}

/**
 * Takes server-sent events out of a text that arrives in pieces. Lines end in LF, as the server sends them; comments are
 * passed over.
 */
export class MessageReader {
    private pending = "";

    /** Returns the events that `piece` completes. */
    feed(piece: string): Message[] {
        this.pending += piece;
        const blocks = this.pending.split("\n\n");
        this.pending = blocks.pop() ?? "";
        return blocks.map(readBlock).filter((message): message is Message => message !== null);
    }
}

function readBlock(block: string): Message | null {
    let name = "message";
    const data: string[] = [];
    for (const line of block.split("\n")) {
        if (line.startsWith("event: ")) name = line.slice(7);
        if (line.startsWith("data: ")) data.push(line.slice(6));
    }
    return data.length === 0 ? null : { name, data: data.join("\n") };
}

const firstPause = 500;
const longestPause = 5000;
// The server sends a comment every 15 seconds; a longer silence is a lost connection.
const patience = 40000;

/**
 * Follows the server until the returned function is called; connects again whenever the connection ends. EventSource cannot
 * send the Authorization header, so the stream is read with fetch.
 */
export function follow(token: string | null, listener: Listener): () => void {
    let ended = false;
    let pause = firstPause;
    let wake: (() => void) | null = null;
    let abort = new AbortController();
    const headers: Record<string, string> = token === null ? {} : { Authorization: `Bearer ${token}` };

    // Follows one connection to its end. Returns whether the server refuses this page.
    async function connectOnce(): Promise<boolean> {
        abort = new AbortController();
        let watchdog = setTimeout(() => abort.abort(), patience);
        try {
            const response = await fetch("api/stream", { headers, signal: abort.signal, cache: "no-store" });
            if (response.status === 401 || response.status === 403) return true;
            if (!response.ok || response.body === null) throw new Error(`status ${response.status}`);
            const reader = response.body.getReader();
            const decoder = new TextDecoder();
            const messages = new MessageReader();
            for (;;) {
                const { done, value } = await reader.read();
                if (done) return false;
                clearTimeout(watchdog);
                watchdog = setTimeout(() => abort.abort(), patience);
                for (const message of messages.feed(decoder.decode(value, { stream: true }))) {
                    if (message.name === "picture") {
                        const past = await fetch("api/history", { headers, signal: abort.signal, cache: "no-store" });
                        if (!past.ok) throw new Error(`status ${past.status}`);
                        listener.onPicture(JSON.parse(message.data) as Picture, (await past.json()) as History);
                        listener.onConnection("live");
                        pause = firstPause;
                    } else if (message.name === "update") {
                        listener.onUpdate(JSON.parse(message.data) as Update);
                    }
                }
            }
        } finally {
            clearTimeout(watchdog);
            abort.abort();
        }
    }

    async function run(): Promise<void> {
        listener.onConnection("connecting");
        while (!ended) {
            const refused = await connectOnce().catch(() => false);
            if (ended) return;
            listener.onConnection(refused ? "refused" : "unreachable");
            await new Promise<void>((resolve) => {
                wake = resolve;
                setTimeout(resolve, refused ? longestPause : pause);
            });
            pause = Math.min(pause * 2, longestPause);
        }
    }

    void run();
    return () => {
        ended = true;
        abort.abort();
        wake?.();
    };
}

/**
 * Returns the token that the page was opened with, as a link ends in `#token=...`. It is kept for this tab and taken out of
 * the address, so that it is neither sent, nor in the history, nor in a copied link.
 */
export function takeToken(
    location: Pick<Location, "hash" | "pathname" | "search">,
    address: Pick<globalThis.History, "replaceState">,
    storage: Pick<Storage, "getItem" | "setItem">,
): string | null {
    const match = /^#token=([A-Za-z0-9._~+/=-]+)$/.exec(location.hash);
    if (match?.[1] !== undefined) {
        storage.setItem("token", match[1]);
        address.replaceState(null, "", location.pathname + location.search);
    }
    return storage.getItem("token");
}
