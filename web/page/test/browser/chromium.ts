import { mkdirSync } from "node:fs";
import { join } from "node:path";
import { fileURLToPath } from "node:url";
import { readFileSync } from "node:fs";
import { chromium, type Browser, type BrowserContextOptions, type Page } from "playwright-core";

/** Where screenshots are kept. */
const artefacts = process.env["QUORVEL_PICTURES"] ?? fileURLToPath(new URL("../../pictures", import.meta.url));

/** Starts the system's Chromium with a profile of its own that is gone afterwards. */
export async function openBrowser(): Promise<Browser> {
    return chromium.launch({
        executablePath: process.env["QUORVEL_CHROMIUM"] ?? "/usr/bin/chromium",
        headless: true,
        args: [
            "--no-sandbox",
            "--disable-gpu",
            "--disable-quic",
            "--no-first-run",
            "--disable-background-networking",
            "--disable-component-update",
            "--disable-sync",
        ],
    });
}

/** A page under test, and what it has done that it should not have. */
export class Visit {
    readonly complaints: string[] = [];
    private constructor(
        readonly page: Page,
        readonly address: string,
    ) {}

    /** Opens `address` and waits for its first picture, or for `until`. Console errors and requests elsewhere are noted. */
    static async open(browser: Browser, address: string, options: BrowserContextOptions, until = ".board"): Promise<Visit> {
        const context = await browser.newContext(options);
        const page = await context.newPage();
        const visit = new Visit(page, address);
        const origin = new URL(address).origin;
        page.on("console", (message) => {
            if (message.type() === "error" || message.type() === "warning") visit.complaints.push(message.text());
        });
        page.on("pageerror", (error) => visit.complaints.push(String(error)));
        page.on("request", (request) => {
            if (new URL(request.url()).origin !== origin) visit.complaints.push(`request to ${request.url()}`);
        });
        await page.goto(address);
        await page.waitForSelector(until);
        return visit;
    }

    /** Returns what axe-core finds wrong, one line each. */
    async accessibility(): Promise<string[]> {
        const axe = readFileSync(fileURLToPath(new URL("../../node_modules/axe-core/axe.min.js", import.meta.url)), "utf8");
        // Evaluated by the debugger: the page's policy forbids it to the page.
        await this.page.evaluate(axe);
        return this.page.evaluate(async () => {
            const { axe: tool } = globalThis as unknown as {
                axe: { run(): Promise<{ violations: { id: string; nodes: { html: string; failureSummary?: string }[] }[] }> };
            };
            const result = await tool.run();
            return result.violations.flatMap((one) => one.nodes.map((node) => `${one.id}: ${node.html} ${node.failureSummary ?? ""}`));
        });
    }

    /** Keeps a screenshot for people to look at. */
    async keep(name: string, fullPage = false): Promise<void> {
        mkdirSync(artefacts, { recursive: true });
        await this.page.screenshot({ path: join(artefacts, `${name}.png`), fullPage });
    }

    async close(): Promise<void> {
        await this.page.context().close();
    }
}
