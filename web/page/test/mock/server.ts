import { createServer, type ServerResponse } from "node:http";
import { readFileSync } from "node:fs";
import { join, normalize } from "node:path";
import { fileURLToPath } from "node:url";
import type { AddressInfo } from "node:net";
import type { History, Picture, Update } from "../../src/api";

/** The built page. */
export const pageFolder = process.env["QUORVEL_PAGE_OUT"] ?? fileURLToPath(new URL("../../dist", import.meta.url));

const types: Record<string, string> = {
    ".html": "text/html; charset=utf-8",
    ".js": "text/javascript",
    ".css": "text/css",
    ".svg": "image/svg+xml",
};

/** Serves the built page, and a board of the test's making, with the headers of the real server. */
export class MockServer {
    picture: Picture;
    history: History;
    private streams = new Set<ServerResponse>();
    private server = createServer((request, response) => {
        const path = (request.url ?? "/").split("?")[0] ?? "/";
        response.setHeader(
            "Content-Security-Policy",
            "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'",
        );
        if (path === "/api/stream") {
            response.writeHead(200, { "Content-Type": "text/event-stream" });
            this.streams.add(response);
            response.on("close", () => this.streams.delete(response));
            response.write(`event: picture\ndata: ${JSON.stringify(this.picture)}\n\n`);
        } else if (path === "/api/history") {
            response.writeHead(200, { "Content-Type": "application/json" });
            response.end(JSON.stringify(this.history));
        } else {
            const name = path === "/" ? "/index.html" : normalize(path);
            try {
                const body = readFileSync(join(pageFolder, name));
                response.writeHead(200, { "Content-Type": types[name.slice(name.lastIndexOf("."))] ?? "application/octet-stream" });
                response.end(body);
            } catch {
                response.writeHead(404);
                response.end();
            }
        }
    });

    constructor(picture: Picture, history: History) {
        this.picture = picture;
        this.history = history;
    }

    /** Listens on a free port of the loopback; returns the page's address. */
    async start(): Promise<string> {
        await new Promise<void>((resolve) => this.server.listen(0, "127.0.0.1", resolve));
        return `http://127.0.0.1:${(this.server.address() as AddressInfo).port}/`;
    }

    send(update: Update): void {
        Object.assign(this.picture, update);
        for (const stream of this.streams) stream.write(`event: update\ndata: ${JSON.stringify(update)}\n\n`);
    }

    async stop(): Promise<void> {
        for (const stream of this.streams) stream.destroy();
        await new Promise<void>((resolve) => {
            this.server.close(() => resolve());
            this.server.closeAllConnections();
        });
    }
}
