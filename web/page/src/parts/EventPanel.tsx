import type { BoardEvent } from "../api";
import { clock } from "../units";

const shown = 200;

/** The feed of what has happened, the latest first. */
export function EventPanel({ events }: { events: BoardEvent[] }): preact.JSX.Element {
    const latest = events.slice(-shown).reverse();
    return (
        <section class="panel events" aria-labelledby="events-title">
            <header>
                <h2 id="events-title">Events</h2>
            </header>
            {latest.length === 0 ? (
                <p class="empty">Nothing has happened yet.</p>
            ) : (
                <div class="scroll" tabIndex={0} role="group" aria-label="List of events">
                    <ol class="feed">
                        {latest.map((event) => (
                            <li key={event.number} class={tone(event)}>
                                <time>{clock(event.time)}</time>
                                <span class="kind">{event.kind}</span>
                                <span class="text">{event.text}</span>
                            </li>
                        ))}
                    </ol>
                </div>
            )}
        </section>
    );
}

/** Returns how an event is coloured. */
export function tone(event: BoardEvent): string {
    if (event.source === "agent") return "agent";
    switch (event.kind) {
        case "join":
            return "good";
        case "leave":
        case "move":
            return "calm";
        case "refused":
        case "fault":
        case "lost":
        case "silent":
            return "bad";
        case "restart":
        case "reset":
        case "power":
        case "channel":
        case "radio":
            return "notable";
        default:
            return "calm";
    }
}
