/** Returns a rate for people: 866680000 -> "867 Mbit/s". */
export function bitRate(bitsPerSecond: number): string {
    const units = ["bit/s", "kbit/s", "Mbit/s", "Gbit/s"];
    let value = bitsPerSecond;
    let unit = 0;
    while (value >= 999.5 && unit < units.length - 1) {
        value /= 1000;
        ++unit;
    }
    return `${short(value)} ${units[unit]}`;
}

function short(value: number): string {
    if (value === 0) return "0";
    if (value >= 99.95) return value.toFixed(0);
    if (value >= 9.995) return value.toFixed(0);
    return value.toFixed(1);
}

/** Returns seconds as "5:07" or "1:02:09". */
export function clock(seconds: number): string {
    const whole = Math.max(0, Math.floor(seconds));
    const two = (value: number): string => String(value).padStart(2, "0");
    const hours = Math.floor(whole / 3600);
    const minutes = Math.floor(whole / 60) % 60;
    return hours > 0 ? `${hours}:${two(minutes)}:${two(whole % 60)}` : `${minutes}:${two(whole % 60)}`;
}

/** Returns a signal with a real minus sign: -48 -> "−48". */
export function signed(value: number): string {
    return value < 0 ? `\u2212${-value}` : String(value);
}

export type Strength = "good" | "fair" | "weak";

/** Says how good a signal (dBm) is. */
export function strength(rssi: number): Strength {
    if (rssi >= -60) return "good";
    return rssi >= -72 ? "fair" : "weak";
}
