export interface Box {
    x: number;
    y: number;
    width: number;
    height: number;
}

function overlap(a: Box, b: Box): boolean {
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

/**
 * Finds a free place for a label: its own, else one or more lines above, then below it.
 *
 * Returns the box moved, or null when the label would cover one of `taken` everywhere between `top` and `bottom`.
 */
export function place(box: Box, taken: Box[], top: number, bottom: number): Box | null {
    for (const lines of [0, -1, -2, 1, -3, 2, -4, 3, 4]) {
        const moved = { ...box, y: box.y + lines * box.height };
        if (moved.y < top || moved.y + moved.height > bottom) continue;
        if (!taken.some((one) => overlap(moved, one))) return moved;
    }
    return null;
}
