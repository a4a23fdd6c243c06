import { useState } from "preact/hooks";
import type { Picture } from "../api";
import { BandStrip } from "./BandStrip";
import { networksOf } from "./networks";
import { bands } from "./spectrum";

/** The air: a strip for each band in which there is a radio or a neighbour. */
export function AirPanel({ picture }: { picture: Picture }): preact.JSX.Element {
    const [chosen, choose] = useState<string | null>(null);
    const networks = networksOf(picture);
    const used = bands.filter((band) => networks.some((one) => one.band === band.name));
    const detail = networks.find((one) => one.key === chosen)?.detail;
    const neighbours = networks.filter((one) => one.radio === null).length;
    return (
        <section class="panel air" aria-labelledby="air-title">
            <header>
                <h2 id="air-title">The air</h2>
                <p class="detail" aria-live="polite">
                    {detail ?? `${neighbours} ${neighbours === 1 ? "neighbour" : "neighbours"}`}
                </p>
                <ul class="legend" aria-hidden="true">
                    {picture.radios.map((radio) => (
                        <li key={radio.radio}>
                            <i class={`swatch radio-${radio.radio}`} />
                            Radio {radio.radio}
                        </li>
                    ))}
                    <li>
                        <i class="swatch neighbour" />
                        Neighbours
                    </li>
                </ul>
            </header>
            {used.length === 0 ? (
                <p class="empty">No radio is up and no neighbour is heard.</p>
            ) : (
                <div class="strips">
                    {used.map((band) => (
                        <BandStrip
                            key={band.name}
                            band={band}
                            radios={picture.radios.filter((radio) => radio.band === band.name && radio.status === "Up")}
                            networks={networks.filter((one) => one.band === band.name)}
                            chosen={chosen}
                            onChoose={choose}
                        />
                    ))}
                </div>
            )}
        </section>
    );
}
