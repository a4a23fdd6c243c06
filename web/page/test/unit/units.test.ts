import { describe, expect, it } from "vitest";
import { bitRate, clock, signed, strength } from "../../src/units";

describe("units", () => {
    it.each([
        [0, "0 bit/s"],
        [999, "999 bit/s"],
        [999.6, "1.0 kbit/s"],
        [8000, "8.0 kbit/s"],
        [866680000, "867 Mbit/s"],
        [2401000000, "2.4 Gbit/s"],
        [9.4e13, "94000 Gbit/s"],
    ])("%d is %s", (value, text) => expect(bitRate(value)).toBe(text));

    it.each([
        [0, "0:00"],
        [67.9, "1:07"],
        [3729, "1:02:09"],
        [-3, "0:00"],
    ])("%d seconds are %s", (value, text) => expect(clock(value)).toBe(text));

    it("has a real minus sign", () => {
        expect(signed(-48)).toBe("\u221248");
        expect(signed(3)).toBe("3");
    });

    it.each([
        [-60, "good"],
        [-61, "fair"],
        [-72, "fair"],
        [-73, "weak"],
    ] as const)("%d dBm is %s", (value, word) => expect(strength(value)).toBe(word));
});
