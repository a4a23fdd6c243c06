import { describe, expect, it } from "vitest";
import { place } from "../../src/air/labels";
import { networksOf } from "../../src/air/networks";
import { bands, occupied, Scale } from "../../src/air/spectrum";
import { busyPicture } from "../mock/board";

describe("a network's place on the air", () => {
    it.each([
        ["2.4GHz", 6, 20, 2427, 2447],
        ["2.4GHz", 6, 40, 2427, 2467],
        ["2.4GHz", 11, 40, 2432, 2472],
        ["5GHz", 36, 20, 5170, 5190],
        ["5GHz", 44, 40, 5210, 5250],
        ["5GHz", 48, 80, 5170, 5250],
        ["5GHz", 149, 80, 5735, 5815],
        ["5GHz", 64, 160, 5170, 5330],
        ["6GHz", 37, 80, 6105, 6185],
    ] as const)("%s channel %i, %i MHz", (band, channel, width, from, to) => {
        expect(occupied(band, channel, width)).toEqual({ from, to });
    });

    it("lies within its band's strip", () => {
        for (const band of bands) {
            const scale = new Scale(band, 500, 20);
            expect(scale.segments[0]?.start).toBe(0);
            expect(scale.segments.at(-1)?.end).toBeCloseTo(500);
            expect(scale.at(0)).toBe(0);
            expect(scale.at(99999)).toBeCloseTo(500);
        }
    });

    it("says in words what the picture shows", () => {
        const networks = networksOf(busyPicture());
        expect(networks.length).toBe(15);
        expect(networks[0]?.detail).toBe(
            "Radio 1: Quorvel-Home, Quorvel-Guest on channel 36, 80 MHz, 62 % in use, noise \u221292 dBm",
        );
        expect(networks.find((one) => one.key === "02:6e:62:00:00:08")?.label).toBe("(hidden)");
    });

    it("leaves a radio out that is down", () => {
        const picture = busyPicture();
        picture.radios[0]!.status = "Down";
        expect(networksOf(picture).some((one) => one.radio === 1)).toBe(false);
    });
});

describe("a label's place", () => {
    const box = { x: 0, y: 50, width: 40, height: 10 };
    it("is its own where that is free", () => expect(place(box, [], 0, 100)).toEqual(box));
    it("is a line above where it is taken", () => expect(place(box, [box], 0, 100)?.y).toBe(40));
    it("is none where everything is taken", () => expect(place(box, [{ x: 0, y: 0, width: 99, height: 99 }], 0, 99)).toBeNull());
});
