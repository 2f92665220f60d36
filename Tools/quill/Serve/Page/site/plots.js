// SPDX-License-Identifier: Apache-2.0
// Lines over time on a canvas, with their figures as a table.

import { colour, el, prepareCanvas } from "./dom.js";
import { axisTo } from "./scales.js";

export const kSpanSeconds = 120;
const kInks = ["--accent", "--orange", "--green", "--red", "--violet", "--cyan", "--ink"];

const text = (value) => (value === null || value === undefined ? "–" : Math.abs(value) >= 100 || Number.isInteger(value) ? value.toFixed(0) : value.toPrecision(3));

/** A plot with its legend and, in words, the same. */
export class Plot {
    constructor(title, unit, hasZero = true) {
        Object.assign(this, { title, unit, hasZero, lines: new Map() });
        this.canvas = el("canvas", { className: "plot", role: "img" });
        this.legend = el("ul", { className: "legend" });
        this.body = el("tbody");
        this.element = el("section", { className: "plot-box" }, el("h3", {}, title, el("span", { className: "unit" }, unit)), this.canvas, this.legend,
            el("details", { className: "figures" }, el("summary", {}, `${title} in figures`),
                el("table", {}, el("thead", {}, el("tr", {}, ...["", "now", "least", "mean", "most"].map((head) => el("th", { scope: "col" }, head)))), this.body)));
        new ResizeObserver(() => this.draw()).observe(this.canvas);
    }

    clear() {
        this.lines.clear();
        this.draw();
    }

    add(seconds, values) {
        for (const [name, value] of Object.entries(values)) {
            const points = this.lines.get(name) ?? [];
            points.push({ seconds, value });
            while (points[0].seconds < seconds - kSpanSeconds) {
                points.shift();
            }
            this.lines.set(name, points);
        }
        this.draw();
    }

    draw() {
        if (this.canvas.clientWidth === 0) {
            return;
        }
        const { context, width, height } = prepareCanvas(this.canvas);
        const known = [...this.lines].map(([name, points]) => [name, points.filter(({ value }) => Number.isFinite(value))]);
        const values = known.flatMap(([, points]) => points.map(({ value }) => value));
        const low = this.hasZero || values.length === 0 ? 0 : Math.floor(Math.min(...values) - 1);
        const { end, step } = axisTo(Math.max(...values.filter((value) => value > 0), values.some((value) => value > 0) ? low : 1, this.hasZero ? 0 : low + 2) - low);
        const now = Math.max(...known.flatMap(([, points]) => points.slice(-1).map(({ seconds }) => seconds)), 0);
        const left = 40;
        const toX = (seconds) => width - 4 - ((now - seconds) / kSpanSeconds) * (width - left - 4);
        const toY = (value) => height - 6 - ((value - low) / end) * (height - 14);
        const family = getComputedStyle(this.canvas).fontFamily;
        Object.assign(context, { font: `11px ${family}`, fillStyle: colour("--muted"), strokeStyle: colour("--line"), textAlign: "right", textBaseline: "middle", lineWidth: 1 });
        for (let value = 0; value <= end * 1.001; value += step) {
            const y = Math.round(toY(low + value)) + 0.5;
            context.beginPath();
            context.moveTo(left, y);
            context.lineTo(width, y);
            context.stroke();
            context.fillText(text(low + value), left - 6, y);
        }
        known.forEach(([, points], at) => {
            Object.assign(context, { strokeStyle: colour(kInks[at % kInks.length]), lineWidth: 1.6, lineJoin: "round" });
            context.beginPath();
            points.forEach(({ seconds, value }, index) => context[index ? "lineTo" : "moveTo"](toX(seconds), toY(value)));
            context.stroke();
        });
        this.describe(known);
    }

    describe(known) {
        const figures = known.filter(([, points]) => points.length > 0).map(([name, points]) => {
            const values = points.map(({ value }) => value);
            const mean = values.reduce((sum, value) => sum + value, 0) / values.length;
            return { name, figures: [values.at(-1), Math.min(...values), mean, Math.max(...values)].map(text) };
        });
        this.legend.replaceChildren(...figures.map(({ name, figures: [now] }, at) => {
            const key = el("span", { className: "key", "aria-hidden": "true" });
            key.style.backgroundColor = `var(${kInks[at % kInks.length]})`;
            return el("li", {}, key, name, el("b", {}, now));
        }));
        this.body.replaceChildren(...figures.map(({ name, figures: all }) => el("tr", {}, el("th", { scope: "row" }, name), ...all.map((value) => el("td", {}, value)))));
        this.canvas.setAttribute("aria-label", figures.length === 0 ? `${this.title}: nothing yet`
            : `${this.title}, the last two minutes: ${figures.map(({ name, figures: [now] }) => `${name} ${now} ${this.unit}`).join(", ")}`);
    }
}
