import { describe, expect, it } from "vitest";
import { apply, begin, boardTime, forgetMarks, markTime, shownStations, span } from "../../src/model";
import { busyPicture, historyOf } from "../mock/board";

const start = () => {
    const picture = busyPicture();
    return begin(picture, historyOf(picture), 1000);
};

describe("the model", () => {
    it("marks a station that has joined, and forgets the mark", () => {
        const model = start();
        const visitor = { ...model.picture.stations[0]!, mac: "02:00:00:00:00:77", since: 750 };
        const after = apply(model, { stations: [...model.picture.stations, visitor] }, 2000);
        expect(after.marks.get(visitor.mac)?.kind).toBe("joined");
        expect(after.marks.size).toBe(1);
        expect(forgetMarks(after, 2000 + markTime - 1)).toBe(after);
        expect(forgetMarks(after, 2000 + markTime).marks.size).toBe(0);
    });

    it("shows a station that has left until its mark is over", () => {
        const model = start();
        const gone = model.picture.stations[2]!;
        const after = apply(model, { stations: model.picture.stations.filter((one) => one !== gone) }, 2000);
        expect(after.marks.get(gone.mac)?.kind).toBe("left");
        expect(shownStations(after)).toContain(gone);
        expect(shownStations(forgetMarks(after, 9000))).not.toContain(gone);
    });

    it("marks nothing when a station's values change", () => {
        const model = start();
        const stations = model.picture.stations.map((one) => ({ ...one, rssi: one.rssi - 3 }));
        expect(apply(model, { stations }, 2000).marks.size).toBe(0);
    });

    it("keeps members that an update does not have", () => {
        const model = start();
        const after = apply(model, { board: { ...model.picture.board, time: 745 } }, 2000);
        expect(after.picture.radios).toBe(model.picture.radios);
        expect(after.picture.events).toEqual(model.picture.events);
    });

    it("adds new events behind the others", () => {
        const model = start();
        const event = { number: 99, time: 745, source: "board" as const, kind: "move", text: "x" };
        const after = apply(model, { events: [event] }, 2000);
        expect(after.picture.events.length).toBe(model.picture.events.length + 1);
        expect(after.picture.events.at(-1)).toEqual(event);
    });

    it("keeps ten minutes, every list as long as the time", () => {
        let model = start();
        for (let i = 1; i <= 700; ++i) model = apply(model, { board: { ...model.picture.board, time: 744 + i } }, 2000 + i);
        expect(model.time.at(-1)).toBe(1444);
        expect(model.time[0]).toBeGreaterThanOrEqual(1444 - span);
        for (const values of [...model.radios.values(), ...model.traffic.values()].flatMap((one) => Object.values(one)))
            expect(values.length).toBe(model.time.length);
        for (const values of model.signals.values()) expect(values.length).toBe(model.time.length);
    });

    it("has nothing known for a station before it came", () => {
        const model = start();
        const visitor = { ...model.picture.stations[0]!, mac: "02:00:00:00:00:77", since: 750 };
        const update = { board: { ...model.picture.board, time: 745 }, stations: [...model.picture.stations, visitor] };
        const signal = apply(model, update, 2000).signals.get(visitor.mac)!;
        expect(signal.at(-1)).toBe(visitor.rssi);
        expect(signal.slice(0, -1).every((value) => value === null)).toBe(true);
    });

    it("begins anew with a board that was switched on again", () => {
        const model = start();
        const after = apply(model, { board: { ...model.picture.board, time: 1 } }, 2000);
        expect(after.time).toEqual([1]);
        expect(after.radios.get(1)?.["utilization"]).toEqual([62]);
    });

    it("lets the clock go on only where it runs", () => {
        const model = start();
        expect(boardTime(model, 6000)).toBe(744);
        const running = { ...model.picture.board, clockRuns: true };
        expect(boardTime(apply(model, { board: running }, 2000), 6000)).toBe(748);
        const lost = { ...running, state: "lost" as const };
        expect(boardTime(apply(model, { board: lost }, 2000), 6000)).toBe(744);
    });
});
