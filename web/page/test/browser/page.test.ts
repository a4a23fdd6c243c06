import { readdirSync, readFileSync } from "node:fs";
import { join } from "node:path";
import { gzipSync } from "node:zlib";
import type { Browser } from "playwright-core";
import { afterAll, beforeAll, describe, expect, it } from "vitest";
import { busyPicture, historyOf } from "../mock/board";
import { MockServer, pageFolder } from "../mock/server";
import { openBrowser, Visit } from "./chromium";

const desk = { viewport: { width: 1440, height: 900 } };
const phone = { viewport: { width: 390, height: 844 } };

let browser: Browser;
let server: MockServer;
let address: string;

beforeAll(async () => {
    browser = await openBrowser();
});
afterAll(async () => browser.close());

/** Serves a busy board, changed by `change`, for one test. */
async function serve(change: (picture: ReturnType<typeof busyPicture>) => void = () => undefined): Promise<void> {
    const picture = busyPicture();
    const history = historyOf(picture);
    change(picture);
    server = new MockServer(picture, history);
    address = await server.start();
}

describe("the page at a desk", () => {
    it.each(["light", "dark"] as const)("fits one %s screen and is accessible", async (colorScheme) => {
        await serve();
        const visit = await Visit.open(browser, address, { ...desk, colorScheme });
        const { page } = visit;
        const scrolls = await page.evaluate(() => [
            document.documentElement.scrollHeight > innerHeight,
            document.documentElement.scrollWidth > innerWidth,
        ]);
        expect(scrolls).toEqual([false, false]);
        expect(await page.locator("h2").allTextContents()).toEqual(["The air", "Radios", "Stations", "Traffic by SSID", "Events"]);
        expect(await page.locator("tbody tr").count()).toBe(9);
        expect(await page.locator(".network").count()).toBe(15);
        expect(await page.locator(".chart canvas").count()).toBe(4);
        expect(await page.locator(".feed li").first().textContent()).toContain("02:5a:00:00:01:08 on access point 19");
        // No column of the table is cut off.
        const overhang = await page.locator(".stations .scroll").evaluate((one) => one.scrollWidth - one.clientWidth);
        expect(overhang).toBe(0);
        expect(await visit.accessibility()).toEqual([]);
        await visit.keep(`desk-${colorScheme}`);
        expect(visit.complaints).toEqual([]);
        await visit.close();
        await server.stop();
    });

    it("is usable by keyboard alone", async () => {
        await serve();
        const visit = await Visit.open(browser, address, desk);
        const { page } = visit;
        const focused = (): Promise<string> => page.evaluate(() => document.activeElement?.textContent ?? "");
        const label = (): Promise<string | null> => page.evaluate(() => document.activeElement?.getAttribute("aria-label") ?? null);
        await page.keyboard.press("Tab");
        expect(await focused()).toBe("Skip to the stations");
        await page.keyboard.press("Tab");
        expect(await label()).toContain("Radio 3: Quorvel-Home, Quorvel-Things on channel 6");
        await page.keyboard.press("ArrowRight");
        expect(await label()).toContain("Neighbour Blue Kitchen on channel 1");
        expect(await page.locator(".air .detail").textContent()).toContain("Neighbour Blue Kitchen on channel 1");
        await page.keyboard.press("ArrowLeft");
        await page.keyboard.press("ArrowLeft");
        expect(await label()).toContain("Old Radio");
        await page.keyboard.press("Tab");
        expect(await label()).toContain("Radio 1: ");
        await page.keyboard.press("Tab");
        expect(await page.evaluate(() => document.activeElement?.className)).toBe("scroll");
        await page.keyboard.press("Tab");
        await page.keyboard.press("Tab");
        expect(await focused()).toBe("Signal");
        await page.keyboard.press("Enter");
        expect(await page.locator("th[aria-sort=ascending]").textContent()).toBe("Signal");
        expect(await page.locator("tbody tr").first().getAttribute("data-mac")).toBe("02:5a:00:00:01:01");
        await page.keyboard.press("Enter");
        expect(await page.locator("th[aria-sort=descending]").textContent()).toBe("Signal");
        expect(await page.locator("tbody tr").first().getAttribute("data-mac")).toBe("02:5a:00:00:01:08");
        expect(visit.complaints).toEqual([]);
        await visit.close();
        await server.stop();
    });

    it("marks a station that joins and one that leaves", async () => {
        await serve();
        const visit = await Visit.open(browser, address, desk);
        const { page } = visit;
        const visitor = { ...server.picture.stations[0]!, mac: "02:00:00:00:00:77", since: 744 };
        server.send({ stations: [...server.picture.stations, visitor], board: { ...server.picture.board, time: 745 } });
        const row = page.locator("tr[data-mac='02:00:00:00:00:77']");
        await row.waitFor();
        expect(await row.locator(".badge").textContent()).toBe("joined");
        expect(await page.locator(".stations [role=status]").textContent()).toContain("Station 02:00:00:00:00:77 joined");
        server.send({ stations: server.picture.stations.filter((one) => one !== visitor) });
        await page.locator("tr.left[data-mac='02:00:00:00:00:77']").waitFor();
        await row.waitFor({ state: "detached", timeout: 15000 });
        await visit.close();
        await server.stop();
    });

    it("keeps still for people who ask for reduced motion", async () => {
        await serve();
        const visit = await Visit.open(browser, address, { ...desk, reducedMotion: "reduce" });
        expect(await visit.page.evaluate(() => document.getAnimations().length)).toBe(0);
        await visit.close();
        const lively = await Visit.open(browser, address, desk);
        expect(await lively.page.evaluate(() => document.getAnimations().length)).toBeGreaterThan(0);
        await lively.close();
        await server.stop();
    });

    it("takes a burst of three hundred stations", async () => {
        await serve((picture) => {
            const one = picture.stations[0]!;
            picture.stations = Array.from({ length: 300 }, (_, i) => ({
                ...one,
                mac: `02:00:00:00:${String(Math.floor(i / 100)).padStart(2, "0")}:${String(i % 100).padStart(2, "0")}`,
            }));
        });
        const visit = await Visit.open(browser, address, desk);
        expect(await visit.page.locator("tbody tr").count()).toBe(300);
        expect(await visit.page.evaluate(() => document.documentElement.scrollHeight > innerHeight)).toBe(false);
        expect(visit.complaints).toEqual([]);
        await visit.close();
        await server.stop();
    });
});

describe("the page on a phone", () => {
    it.each(["light", "dark"] as const)("is one %s column without sideways scrolling, and accessible", async (colorScheme) => {
        await serve();
        const visit = await Visit.open(browser, address, { ...phone, colorScheme });
        expect(await visit.page.evaluate(() => document.documentElement.scrollWidth > innerWidth)).toBe(false);
        expect(await visit.page.locator("tbody tr").count()).toBe(9);
        expect(await visit.accessibility()).toEqual([]);
        await visit.keep(`phone-${colorScheme}`);
        expect(visit.complaints).toEqual([]);
        await visit.close();
        await server.stop();
    });
});

describe("what is not there has a state of its own", () => {
    it("a lost board keeps its last values, and is found again", async () => {
        await serve();
        const visit = await Visit.open(browser, address, desk);
        const { page } = visit;
        const board = server.picture.board;
        server.send({ board: { ...board, state: "lost", reason: "no board is up" } });
        await page.locator(".notice").waitFor();
        expect(await page.locator(".notice").textContent()).toContain("The board is lost: no board is up.");
        expect(await page.locator(".pill").textContent()).toBe("Board lost");
        expect(await page.locator("tbody tr").count()).toBe(9);
        expect(await visit.accessibility()).toEqual([]);
        await visit.keep("board-lost");
        server.send({ board });
        await page.locator(".notice").waitFor({ state: "detached" });
        expect(await page.locator(".pill").textContent()).toBe("Live");
        await visit.close();
        await server.stop();
    });

    it("a silent WLAN manager is named", async () => {
        await serve((picture) => (picture.board = { ...picture.board, state: "silent", reason: "it is stopped" }));
        const visit = await Visit.open(browser, address, desk);
        expect(await visit.page.locator(".notice").textContent()).toContain("WLAN manager is silent: it is stopped");
        await visit.close();
        await server.stop();
    });

    it("a board that was never up says how to start one", async () => {
        await serve((picture) => {
            picture.board = { ...picture.board, state: "lost", reason: "no board is up", name: "" };
            picture.radios = [];
        });
        const visit = await Visit.open(browser, address, desk, ".waiting");
        expect(await visit.page.locator("main").textContent()).toContain("quorvel-wifi up");
        expect(await visit.accessibility()).toEqual([]);
        await visit.close();
        await server.stop();
    });

    it("empty tables say so", async () => {
        await serve((picture) => {
            picture.stations = [];
            picture.events = [];
            picture.neighbours = [];
            picture.traffic = [];
        });
        const visit = await Visit.open(browser, address, desk);
        expect(await visit.page.locator(".empty").allTextContents()).toEqual([
            "No station is associated. A row appears here as soon as one joins.",
            "No network is up.",
            "Nothing has happened yet.",
        ]);
        expect(await visit.accessibility()).toEqual([]);
        await visit.keep("empty");
        await visit.close();
        await server.stop();
    });

    it("a server that is gone is named", async () => {
        await serve();
        const visit = await Visit.open(browser, address, desk);
        await server.stop();
        await visit.page.locator(".notice").waitFor();
        expect(await visit.page.locator(".pill").textContent()).toBe("Server gone");
        await visit.close();
    });
});

describe("the page's budget", () => {
    it("is 150 KiB, gzipped", () => {
        let total = 0;
        for (const entry of readdirSync(pageFolder, { recursive: true, withFileTypes: true })) {
            if (entry.isFile()) total += gzipSync(readFileSync(join(entry.parentPath ?? entry.path, entry.name))).length;
        }
        expect(total).toBeGreaterThan(10 * 1024);
        expect(total).toBeLessThanOrEqual(150 * 1024);
    });
});
