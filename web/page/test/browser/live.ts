import { execFile, spawn, type ChildProcess } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";
import type { Picture } from "../../src/api";

/** Returns the console that was built; without it there is nothing to test. */
export function builtConsole(): string {
    const program = process.env["QUORVEL_PROGRAM"];
    if (program === undefined) throw new Error("QUORVEL_PROGRAM must name the console; script/test-page sets it");
    return program;
}

/** How long anything may take that another process does. Nothing is measured by it. */
const patience = 60000;

/** A board in a state folder of its own, and the live page's server, started as a person starts them. */
export class LiveBoard {
    private constructor(
        private readonly folder: string,
        private readonly server: ChildProcess,
        readonly address: string,
    ) {}

    static async start(...options: string[]): Promise<LiveBoard> {
        const folder = mkdtempSync(join(tmpdir(), "quorvel-page-"));
        const server = spawn(builtConsole(), ["web", "--state", folder, "--listen", "127.0.0.1:0", ...options], {
            stdio: ["ignore", "pipe", "inherit"],
        });
        const lines = createInterface({ input: server.stdout! });
        const address = await new Promise<string>((resolve, reject) => {
            const timer = setTimeout(() => reject(new Error("the server printed no address")), patience);
            lines.once("line", (line) => {
                clearTimeout(timer);
                resolve(line);
            });
            server.once("exit", (status) => reject(new Error(`the server ended with status ${status}`)));
        }).catch((error: unknown) => {
            server.kill();
            throw error;
        });
        return new LiveBoard(folder, server, address);
    }

    /** Runs a command of the console on the board; returns what it prints. */
    async run(...words: string[]): Promise<string> {
        return new Promise((resolve, reject) => {
            execFile(builtConsole(), [...words, "--state", this.folder], { timeout: patience }, (error, out, complaint) => {
                if (error === null) resolve(out);
                else reject(new Error(`${words.join(" ")}: ${complaint}`));
            });
        });
    }

    async get(path: string): Promise<string> {
        const response = await fetch(new URL(path, this.address));
        if (!response.ok) throw new Error(`${path}: status ${response.status}`);
        return response.text();
    }

    async picture(): Promise<Picture> {
        return JSON.parse(await this.get("api/live")) as Picture;
    }

    /** Returns the value of a metric's series, or the sum of all that begin so. */
    async metric(series: string): Promise<number> {
        const lines = (await this.get("metrics")).split("\n").filter((line) => line.startsWith(series));
        return lines.reduce((sum, line) => sum + Number(line.slice(line.lastIndexOf(" ") + 1)), 0);
    }

    /** Ends the server, and with it the board that it has started. */
    async stop(): Promise<void> {
        const ended = new Promise<void>((resolve) => this.server.once("exit", () => resolve()));
        this.server.kill("SIGTERM");
        await ended;
        rmSync(this.folder, { recursive: true, force: true });
    }
}

/** Follows the server's stream as a page does, and counts what comes. */
export class StreamReader {
    private readonly abort = new AbortController();
    private text = "";
    private readonly done: Promise<void>;

    constructor(address: string) {
        this.done = this.read(new URL("api/stream", address));
    }

    /** Returns how many events have come so far. */
    get events(): number {
        return this.all.length;
    }

    /** Returns the number, from 1, of the first event that holds `text`; 0 when none has come. */
    firstWith(text: string): number {
        return this.all.findIndex((event) => event.includes(text)) + 1;
    }

    // The last piece is not complete yet.
    private get all(): string[] {
        return this.text.split("\n\n").slice(0, -1).filter((event) => event.startsWith("event: "));
    }

    async close(): Promise<void> {
        this.abort.abort();
        await this.done;
    }

    private async read(address: URL): Promise<void> {
        try {
            const response = await fetch(address, { signal: this.abort.signal });
            const decoder = new TextDecoder();
            for await (const piece of response.body as unknown as AsyncIterable<Uint8Array>) {
                this.text += decoder.decode(piece, { stream: true });
            }
        } catch {
            // The test has ended the stream.
        }
    }
}

/** Waits until `condition` holds, at most as long as patience allows. */
export async function until(condition: () => Promise<boolean> | boolean): Promise<void> {
    const end = Date.now() + patience;
    while (!(await condition())) {
        if (Date.now() > end) throw new Error("waited in vain");
        await new Promise((resolve) => setTimeout(resolve, 50));
    }
}
