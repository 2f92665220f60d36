// SPDX-License-Identifier: Apache-2.0
// Numbers: positions of sliders, steps, texts. Pure functions.

const kPositions = 1000;

/** The number that a text means, a comma counting as a point; NaN if it is none. */
export function numberOf(text) {
    const trimmed = String(text).trim().replace(/^([+-]?\d*),(\d+)$/, "$1.$2");
    return /^[+-]?(\d+\.?\d*|\.\d+)(e[+-]?\d+)?$/i.test(trimmed) ? Number(trimmed) : NaN;
}

/** A number's text without the zeros at its end; other texts stay. */
export function shortText(text) {
    return /^[+-]?\d+\.\d+$/.test(text) ? text.replace(/\.?0+$/, "") : String(text);
}

/** The multiple of a step from a minimum on that is nearest to a value, within the range. */
export function snap(value, minimum, maximum, step) {
    const bounded = Math.min(Math.max(value, minimum), maximum);
    if (!(step > 0)) {
        return bounded;
    }
    const last = Math.floor((maximum - minimum) / step + 1e-9);
    return minimum + Math.min(Math.round((bounded - minimum) / step), last) * step;
}

/** How a property's range lies on a slider; null if it has none. */
export function sliderOf({ type, minimum, maximum, increment }) {
    const [low, high] = [numberOf(minimum), numberOf(maximum)];
    if (!(low < high) || !Number.isFinite(high - low)) {
        return null;
    }
    const given = numberOf(increment);
    const step = given > 0 ? given : type === "Integer" ? 1 : 0;
    const isLogarithmic = low > 0 && high / low > 1000;
    const steps = step > 0 ? Math.floor((high - low) / step + 1e-9) : Infinity;
    const positions = !isLogarithmic && steps <= 10 * kPositions ? steps : kPositions;
    return { low, high, step, isLogarithmic, positions: Math.max(positions, 1) };
}

export function toPosition(slider, value) {
    const { low, high, isLogarithmic, positions } = slider;
    const bounded = Math.min(Math.max(value, low), high);
    const share = isLogarithmic ? Math.log(bounded / low) / Math.log(high / low) : (bounded - low) / (high - low);
    return Math.round(share * positions);
}

export function valueAt(slider, position) {
    const { low, high, step, isLogarithmic, positions } = slider;
    const share = position / positions;
    if (share >= 1) {
        return snap(high, low, high, step);
    }
    return snap(isLogarithmic ? low * (high / low) ** share : low + (high - low) * share, low, high, step);
}

/** As many digits as a slider's position means, and no more. */
export function textAt(slider, position) {
    const value = valueAt(slider, position);
    if (Number.isInteger(slider.step) && slider.step > 0 && Number.isInteger(value)) {
        return String(value);
    }
    const distance = slider.isLogarithmic ? Math.abs(value) / 200 : (slider.high - slider.low) / slider.positions;
    const unit = slider.step > 0 ? slider.step : distance;
    const decimals = Math.min(Math.max(Math.ceil(-Math.log10(unit)), 0) + (slider.step > 0 ? 2 : 0), 9);
    const rounded = Math.min(Math.max(Number(value.toFixed(decimals)), slider.low), slider.high);
    return shortText(rounded.toFixed(decimals));
}

/** Bounds of an axis from 0 on, and a step of 1, 2 or 5 times a power of ten. */
export function axisTo(largest, parts = 3) {
    const rough = Math.max(largest, 1e-9) / parts;
    const power = 10 ** Math.floor(Math.log10(rough));
    const step = [1, 2, 5, 10].map((factor) => factor * power).find((candidate) => candidate >= rough * (1 - 1e-9));
    return { end: Math.ceil(largest / step - 1e-9) * step || step, step };
}
