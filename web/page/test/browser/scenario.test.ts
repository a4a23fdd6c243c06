import { execFile } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import type { Browser } from "playwright-core";
import { afterAll, beforeAll, describe, expect, it } from "vitest";
import { openBrowser, Visit } from "./chromium";
import { builtConsole } from "./live";

let browser: Browser;
let folder: string;
let address: string;

beforeAll(async () => {
    folder = mkdtempSync(join(tmpdir(), "quorvel-picture-"));
    const file = join(folder, "course.html");
    const played = new Promise<void>((resolve, reject) => {
        execFile(builtConsole(), ["play", "band-steering", "--html", file], (error, out) => (error === null ? resolve() : reject(new Error(out))));
    });
    [browser] = await Promise.all([openBrowser(), played]);
    address = pathToFileURL(file).href;
}, 120000);
afterAll(async () => {
    await browser.close();
    rmSync(folder, { recursive: true, force: true });
});

describe("the picture of a scenario", () => {
    it.each(["light", "dark"] as const)("opens without a network and is accessible, %s", async (colorScheme) => {
        const view = { viewport: { width: 1280, height: 800 }, colorScheme, offline: true };
        const visit = await Visit.open(browser, address, view, ".lane.station");
        const { page } = visit;
        expect(await page.locator(".verdict").textContent()).toBe("Passed");
        expect(await page.locator(".lane.expectation").count()).toBeGreaterThan(3);
        expect(await page.locator(".lane.expectation").count()).toBe(await page.locator(".lane.expectation.held").count());
        expect(await page.locator(".lane.number, .lane.text").count()).toBeGreaterThan(0);
        expect(await page.evaluate(() => document.documentElement.scrollWidth > innerWidth)).toBe(false);
        expect(await visit.accessibility()).toEqual([]);
        // The panel follows the window, which a picture of the whole page does not have.
        await page.evaluate(() => document.getElementById("at")?.remove());
        await visit.keep(`scenario-${colorScheme}`, true);
        expect(visit.complaints).toEqual([]);
        await visit.close();
    });

    it("tells what was seen last at the time under the pointer", async () => {
        const visit = await Visit.open(browser, address, { viewport: { width: 1280, height: 800 } }, ".lane.station");
        const plot = (await visit.page.locator(".plot").first().boundingBox())!;
        await visit.page.mouse.move(plot.x + plot.width - 1, plot.y + 5);
        const text = (await visit.page.locator("#at").textContent())!;
        expect(text).toMatch(/^\d+\.\d{3} s\n/);
        expect(text).toMatch(/access point \d+, -\d+ dBm/);
        await visit.close();
    });
});
