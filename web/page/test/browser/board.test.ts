import type { Browser } from "playwright-core";
import { afterAll, beforeAll, describe, expect, it } from "vitest";
import { openBrowser, Visit } from "./chromium";
import { LiveBoard, StreamReader, until } from "./live";

const desk = { viewport: { width: 1440, height: 900 } };
const phone = { viewport: { width: 390, height: 844 } };
const visitor = "02:00:00:00:00:77";

let browser: Browser;
let board: LiveBoard;

beforeAll(async () => {
    [browser, board] = await Promise.all([openBrowser(), LiveBoard.start()]);
}, 120000);
afterAll(async () => {
    await browser.close();
    await board.stop();
}, 120000);

describe("the page of a real board", () => {
    it("shows a station that joins by the console within two looks, and one that leaves", async () => {
        const visit = await Visit.open(browser, board.address, desk);
        const { page } = visit;
        const row = page.locator(`tr[data-mac='${visitor}']`);
        expect(await row.count()).toBe(0);
        const stream = new StreamReader(board.address);
        await until(() => stream.events >= 1);
        await board.run("station", "join", visitor, "1", "--rssi", "-55");
        const before = stream.events;
        await row.waitFor();
        // The server looks once a second: two updates are two seconds.
        expect(stream.firstWith(visitor) - before).toBeGreaterThan(0);
        expect(stream.firstWith(visitor) - before).toBeLessThanOrEqual(2);
        expect(await row.locator(".badge").textContent()).toBe("joined");
        expect(await page.locator(".feed").textContent()).toContain(`${visitor} on access point 1`);
        await visit.keep("board");
        await board.run("station", "leave", visitor);
        await page.locator(`tr.left[data-mac='${visitor}']`).waitFor();
        expect(visit.complaints).toEqual([]);
        await stream.close();
        await visit.close();
    });

    it("draws the neighbours that a scan hears", async () => {
        const { networks } = JSON.parse(await board.run("scan", "3", "--json")) as {
            networks: { BSSID: string; Channel: number }[];
        };
        expect(networks.length).toBeGreaterThan(3);
        const visit = await Visit.open(browser, board.address, desk);
        for (const { BSSID, Channel } of networks) {
            const drawn = visit.page.locator(`.network.neighbour[data-key='${BSSID.toLowerCase()}']`);
            expect(await drawn.getAttribute("aria-label")).toContain(` on channel ${Channel}, `);
        }
        await visit.close();
    });

    it.each([
        ["desk", desk, "light"],
        ["desk", desk, "dark"],
        ["phone", phone, "light"],
        ["phone", phone, "dark"],
    ] as const)("is accessible at a %s, %s %s", async (name, view, colorScheme) => {
        const visit = await Visit.open(browser, board.address, { ...view, colorScheme });
        expect(await visit.page.locator(".pill").textContent()).toBe("Live");
        expect(await visit.page.evaluate(() => document.documentElement.scrollWidth > innerWidth)).toBe(false);
        expect(await visit.accessibility()).toEqual([]);
        await visit.keep(`board-${name}-${colorScheme}`);
        expect(visit.complaints).toEqual([]);
        await visit.close();
    });

    it("reaches every network, heading and panel by the keyboard", async () => {
        const visit = await Visit.open(browser, board.address, desk);
        const { page } = visit;
        const reached = new Set<string>();
        for (let i = 0; i < 40; ++i) {
            await page.keyboard.press("Tab");
            const where = await page.evaluate(() => {
                const one = document.activeElement;
                return one === document.body ? "" : `${one?.getAttribute("aria-label") ?? ""}${one?.textContent ?? ""}`;
            });
            if (where === "") break;
            reached.add(where.slice(0, 30));
        }
        const all = [...reached].join("|");
        for (const part of ["Skip to the stations", "Radio 3: ", "Radio 1: ", "Table of stations", "Signal", "Time"])
            expect(all).toContain(part);
        expect(visit.complaints).toEqual([]);
        await visit.close();
    });

    it("costs the board the same for ten browsers as for one", async () => {
        const asked = (): Promise<number> => board.metric('quorvel_wifi_host_requests_total{gateway="tri-band",request="live"}');
        const streams = Array.from({ length: 10 }, () => new StreamReader(board.address));
        await until(() => streams.every((one) => one.events >= 1));
        const [looks, time] = [await asked(), (await board.picture()).board.time];
        await until(async () => (await asked()) >= looks + 5);
        const [more, elapsed] = [(await asked()) - looks, (await board.picture()).board.time - time];
        // At most one look a second, with ten streams as with one; reading the numbers takes a moment on either side.
        expect(more).toBeLessThanOrEqual(elapsed + 2);
        await Promise.all(streams.map((one) => one.close()));
    });

    it("has metrics of the calls that the console has made", async () => {
        const calls = 'quorvel_wifi_plugin_call_duration_seconds_count{gateway="tri-band",call="get"}';
        const before = await board.metric(calls);
        await board.run("get", "Device.WiFi.Radio.");
        await until(async () => (await board.metric(calls)) > before + 20);
        expect(await board.metric('quorvel_wifi_manager_request_duration_seconds_count{gateway="tri-band"')).toBeGreaterThan(0);
        expect(await board.get("metrics")).not.toContain("02:5a:");
    });

    it("says that the board is lost, and finds it again", async () => {
        const visit = await Visit.open(browser, board.address, desk);
        const { page } = visit;
        await board.run("down");
        await page.locator(".notice").waitFor();
        expect(await page.locator(".pill").textContent()).toBe("Board lost");
        await board.run("up");
        await page.locator(".notice").waitFor({ state: "detached", timeout: 30000 });
        expect(await page.locator(".pill").textContent()).toBe("Live");
        expect(visit.complaints).toEqual([]);
        await visit.close();
    });
});
