import type { Radio } from "../api";
import { span, type Model } from "../model";
import { signed } from "../units";
import { Chart } from "./Chart";

/** Seconds that the charts show: all that is known, from one minute to ten. */
export function chartSeconds(time: number[]): number {
    return Math.min(span, Math.max(60, (time.at(-1) ?? 0) - (time[0] ?? 0)));
}

/** The radios, each with its last ten minutes. */
export function RadioPanel({ model }: { model: Model }): preact.JSX.Element {
    const radios = model.picture.radios;
    return (
        <section class="panel radios" aria-labelledby="radios-title">
            <header>
                <h2 id="radios-title">Radios</h2>
                <ul class="legend" aria-hidden="true">
                    <li>
                        <i class="stroke" />
                        in use, %
                    </li>
                    <li>
                        <i class="stroke dashed" />
                        noise, dBm
                    </li>
                </ul>
            </header>
            {radios.length === 0 ? (
                <p class="empty">This board has no radio.</p>
            ) : (
                <ul class="cards">
                    {radios.map((radio) => (
                        <RadioCard key={radio.radio} radio={radio} model={model} />
                    ))}
                </ul>
            )}
        </section>
    );
}

function RadioCard({ radio, model }: { radio: Radio; model: Model }): preact.JSX.Element {
    const values = model.radios.get(radio.radio);
    const up = radio.status === "Up";
    const name = `Radio ${radio.radio}`;
    return (
        <li class={`card radio-${radio.radio}`}>
            <div class="facts">
                <h3>
                    <i class={`swatch radio-${radio.radio}`} aria-hidden="true" />
                    {name}
                    <span class="faint">{radio.band.replace("GHz", " GHz")}</span>
                </h3>
                {up ? (
                    <p class="now">
                        <strong>{radio.utilization} %</strong> in use
                    </p>
                ) : (
                    <p class="now off">
                        <strong>{radio.status}</strong>
                    </p>
                )}
                <p class="faint">
                    Channel <b>{radio.channel}</b>
                    {radio.autoChannel ? " (auto)" : ""}, {radio.bandwidth} MHz
                    <br />
                    Noise <b>{signed(radio.noise)} dBm</b>
                    <br />
                    {radio.stations} {radio.stations === 1 ? "station" : "stations"}
                </p>
            </div>
            <Chart
                label={`${name}: utilisation and noise over the last minutes, now ${radio.utilization} % in use, noise ${radio.noise} dBm`}
                time={model.time}
                seconds={chartSeconds(model.time)}
                lines={[
                    { name: "in use", colour: `--radio-${radio.radio}`, values: values?.["utilization"] ?? [], scale: "share", filled: true },
                    { name: "noise", colour: "--muted", values: values?.["noise"] ?? [], scale: "noise", dashed: true },
                ]}
                axes={[
                    { scale: "share", side: "left", range: () => [0, 100], format: String, size: 30 },
                    { scale: "noise", side: "right", range: () => [-100, -70], format: signed, size: 32 },
                ]}
            />
        </li>
    );
}
