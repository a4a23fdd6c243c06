import { describe, expect, it } from "vitest";
import { MessageReader, takeToken } from "../../src/stream";

describe("server-sent events", () => {
    it("come in pieces of any size", () => {
        const text = 'event: picture\ndata: {"a":1}\n\n:\n\nevent: update\ndata: 1\ndata: 2\n\nevent: rest';
        for (const size of [1, 2, 7, 1000]) {
            const reader = new MessageReader();
            const all = [];
            for (let at = 0; at < text.length; at += size) all.push(...reader.feed(text.slice(at, at + size)));
            expect(all).toEqual([
                { name: "picture", data: '{"a":1}' },
                { name: "update", data: "1\n2" },
            ]);
        }
    });
});

describe("the link's token", () => {
    const storage = () => {
        const kept = new Map<string, string>();
        return { getItem: (key: string) => kept.get(key) ?? null, setItem: (key: string, value: string) => void kept.set(key, value) };
    };
    it("is taken out of the address and kept for the tab", () => {
        const kept = storage();
        let address = "";
        const history = { replaceState: (_: unknown, __: string, url?: string | URL | null) => void (address = String(url)) };
        const location = { hash: "#token=0123456789abcdef", pathname: "/", search: "" };
        expect(takeToken(location, history, kept)).toBe("0123456789abcdef");
        expect(address).toBe("/");
        expect(takeToken({ ...location, hash: "" }, history, kept)).toBe("0123456789abcdef");
    });
    it("is none where the link has none", () => {
        const history = { replaceState: () => undefined };
        expect(takeToken({ hash: "#stations-title", pathname: "/", search: "" }, history, storage())).toBeNull();
    });
});
