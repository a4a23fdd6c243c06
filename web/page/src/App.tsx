import { useEffect, useReducer, useState } from "preact/hooks";
import { AirPanel } from "./air/AirPanel";
import type { History, Picture, Update } from "./api";
import { apply, begin, forgetMarks, type Model } from "./model";
import { EventPanel } from "./parts/EventPanel";
import { Header } from "./parts/Header";
import { RadioPanel } from "./parts/RadioPanel";
import { StationPanel } from "./parts/StationPanel";
import { TrafficPanel } from "./parts/TrafficPanel";
import { follow, type Connection } from "./stream";

type News =
    | { kind: "picture"; picture: Picture; history: History; now: number }
    | { kind: "update"; update: Update; now: number }
    | { kind: "time"; now: number };

function reduce(model: Model | null, news: News): Model | null {
    if (news.kind === "picture") return begin(news.picture, news.history, news.now);
    if (model === null) return null;
    return news.kind === "update" ? apply(model, news.update, news.now) : forgetMarks(model, news.now);
}

export function App({ token }: { token: string | null }): preact.JSX.Element {
    const [connection, setConnection] = useState<Connection>("connecting");
    const [model, tell] = useReducer(reduce, null);
    const [now, setNow] = useState(() => performance.now());

    useEffect(
        () =>
            follow(token, {
                onConnection: setConnection,
                onPicture: (picture, history) => tell({ kind: "picture", picture, history, now: performance.now() }),
                onUpdate: (update) => tell({ kind: "update", update, now: performance.now() }),
            }),
        [token],
    );
    useEffect(() => {
        const timer = setInterval(() => {
            setNow(performance.now());
            tell({ kind: "time", now: performance.now() });
        }, 1000);
        return () => clearInterval(timer);
    }, []);
    const name = model?.picture.board.name ?? "";
    useEffect(() => {
        document.title = name === "" ? "Wi-Fi gateway" : `${name} \u2013 Wi-Fi gateway`;
    }, [name]);

    const notice = noticeOf(connection, model);
    // A board that was never seen has nothing to show.
    const board = model !== null && (model.picture.board.state !== "lost" || model.picture.radios.length > 0) ? model : null;
    return (
        <>
            {board !== null && (
                <a class="skip" href="#stations-title">
                    Skip to the stations
                </a>
            )}
            <Header connection={connection} model={model} now={Math.max(now, model?.receivedAt ?? 0)} />
            {notice !== null && (
                <p class="notice" role="alert">
                    {notice}
                </p>
            )}
            {board === null ? (
                <main class="waiting">
                    <p>{model === null ? "Waiting for the first picture of the board." : "No board is up. Start one with: quorvel-wifi up"}</p>
                </main>
            ) : (
                <main class={notice === null ? "board" : "board stale"}>
                    <AirPanel picture={board.picture} />
                    <RadioPanel model={board} />
                    <StationPanel model={board} now={Math.max(now, board.receivedAt)} />
                    <TrafficPanel model={board} />
                    <EventPanel events={board.picture.events} />
                </main>
            )}
        </>
    );
}

/** Returns what a person must know about values that are not live, or null. */
export function noticeOf(connection: Connection, model: Model | null): string | null {
    if (connection === "refused")
        return "The server refuses this page: it needs a token. Open the link that quorvel-wifi web has printed.";
    if (connection === "unreachable")
        return `The server does not answer${model === null ? "" : "; the values below are the last ones"}. Trying again.`;
    if (model === null) return null;
    const { state, reason } = model.picture.board;
    if (state === "up") return null;
    const because = reason === "" ? "" : `: ${reason}`;
    if (state === "silent") return `The board's WLAN manager is silent${because}. Values come back when it answers.`;
    return `The board is lost${because}. The values below are the last ones; the page finds the board again when it is up.`;
}
