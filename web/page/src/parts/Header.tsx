import type { Connection } from "../stream";
import { boardTime, type Model } from "../model";
import { clock } from "../units";

/** The words of the pill in the header; its colour comes from the class of the same name. */
export function stateOf(connection: Connection, model: Model | null): { name: string; text: string } {
    switch (connection) {
        case "connecting":
            return { name: "waiting", text: "Connecting" };
        case "refused":
            return { name: "bad", text: "Token needed" };
        case "unreachable":
            return { name: "bad", text: "Server gone" };
        case "live":
            break;
    }
    switch (model?.picture.board.state) {
        case undefined:
            return { name: "waiting", text: "Connecting" };
        case "up":
            return { name: "good", text: "Live" };
        case "silent":
            return { name: "bad", text: "Manager silent" };
        case "lost":
            return { name: "bad", text: "Board lost" };
    }
}

export function Header({ connection, model, now }: { connection: Connection; model: Model | null; now: number }): preact.JSX.Element {
    const state = stateOf(connection, model);
    const stations = model?.picture.stations.filter((one) => one.associated).length ?? 0;
    return (
        <header class="top">
            <h1>
                <img src="./icon.svg" alt="" width="24" height="24" />
                {model === null || model.picture.board.name === "" ? "Wi-Fi gateway" : model.picture.board.name}
            </h1>
            <p class={`pill ${state.name}`} role="status">
                <i aria-hidden="true" />
                {state.text}
            </p>
            {model !== null && (
                <dl>
                    <div>
                        <dt>Stations</dt>
                        <dd>{stations}</dd>
                    </div>
                    <div>
                        <dt>Up</dt>
                        <dd>{clock(boardTime(model, now))}</dd>
                    </div>
                    {model.picture.agent !== null && (
                        <div>
                            <dt>USP agent</dt>
                            <dd>{model.picture.agent.connected ? "connected" : "not connected"}</dd>
                        </div>
                    )}
                </dl>
            )}
        </header>
    );
}
