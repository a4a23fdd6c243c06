import { useLayoutEffect, useRef, useState } from "preact/hooks";

/** Follows the size of an element, in CSS pixels; 0 until it is known. */
export function useSize<Kind extends Element>(): [preact.RefObject<Kind>, number, number] {
    const element = useRef<Kind>(null);
    const [size, setSize] = useState<[number, number]>([0, 0]);
    useLayoutEffect(() => {
        const at = element.current;
        if (at === null) return;
        const measure = (): void => setSize([at.clientWidth, at.clientHeight]);
        measure();
        const observer = new ResizeObserver(measure);
        observer.observe(at);
        return () => observer.disconnect();
    }, []);
    return [element, size[0], size[1]];
}
