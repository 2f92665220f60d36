// SPDX-License-Identifier: Apache-2.0
// What the server finds in a frame: histogram, saturation, focus.

import { on } from "./bus.js";
import { byId, colour, prepareCanvas } from "./dom.js";

const kSaturationWarning = 0.005;
const kFocusHistory = 90;
const kColours = { Red: "--red", Green: "--green", Blue: "--blue" };

let shown = null;
let focus = [];
let isPending = false;

function drawChannels(analysis, isLogarithmic) {
    const { context, width, height } = prepareCanvas(byId("histogram"));
    const height0 = (count) => (isLogarithmic ? Math.log1p(count) : count);
    const inner = analysis.histogram.flatMap((counts) => counts.slice(1, -1));
    const largest = Math.max(...inner.map(height0), height0(Math.max(...analysis.histogram.map((counts) => Math.max(...counts))) / 20), 1);
    analysis.histogram.forEach((counts, channel) => {
        const ink = colour(kColours[analysis.channels[channel]] ?? "--ink");
        context.beginPath();
        context.moveTo(0, height);
        counts.forEach((count, bin) => {
            const y = height - Math.min(height0(count) / largest, 1) * (height - 3);
            context.lineTo((bin / counts.length) * width, y);
            context.lineTo(((bin + 1) / counts.length) * width, y);
        });
        context.lineTo(width, height);
        Object.assign(context, { fillStyle: ink, strokeStyle: ink, lineWidth: 1.2, globalAlpha: 0.18 });
        context.fill();
        context.globalAlpha = 0.9;
        context.stroke();
        context.globalAlpha = 1;
    });
}

function drawFocus() {
    const { context, width, height } = prepareCanvas(byId("focus-plot"));
    const largest = Math.max(...focus, 1e-9);
    Object.assign(context, { strokeStyle: colour("--accent"), lineWidth: 1.5 });
    context.beginPath();
    focus.forEach((value, at) => {
        const x = width - (focus.length - 1 - at) * (width / (kFocusHistory - 1));
        context[at ? "lineTo" : "moveTo"](x, height - 2 - (value / largest) * (height - 4));
    });
    context.stroke();
}

const rounded = (value) => (value >= 100 ? value.toFixed(0) : value.toPrecision(3));

/** Says in words what a histogram shows. */
export function describeHistogram({ histogram, channels }) {
    return histogram.map((counts, channel) => {
        const all = counts.reduce((sum, count) => sum + count, 0);
        let seen = 0;
        const median = counts.findIndex((count) => (seen += count) >= all / 2);
        return `${channels[channel]}: median ${Math.round((median / counts.length) * 100)} % of full scale`;
    }).join("; ");
}

function draw() {
    isPending = false;
    const analysis = shown?.analysis;
    if (!analysis) {
        prepareCanvas(byId("histogram"));
        prepareCanvas(byId("focus-plot"));
        byId("saturation").hidden = true;
        byId("focus-value").textContent = byId("saturated-value").textContent = byId("frame-text").textContent = "–";
        return;
    }
    drawChannels(analysis, byId("histogram-log").checked);
    drawFocus();
    byId("focus-value").textContent = rounded(analysis.focus);
    byId("saturated-value").textContent = `${(analysis.saturated * 100).toFixed(2)} %`;
    byId("saturation").hidden = analysis.saturated < kSaturationWarning;
    const { frame, width, height, layout, bitDepth } = shown;
    byId("frame-text").textContent = `#${frame} · ${width} × ${height} · ${layout} ${bitDepth} bit`;
}

export function start() {
    const redraw = () => {
        if (!isPending) {
            isPending = true;
            requestAnimationFrame(draw);
        }
    };
    on("frame", (description) => {
        shown = description;
        focus = description?.analysis ? [...focus, description.analysis.focus].slice(-kFocusHistory) : [];
        redraw();
    });
    on("theme", redraw);
    new ResizeObserver(redraw).observe(byId("histogram"));
    byId("histogram-log").addEventListener("change", redraw);
    setInterval(() => {
        byId("histogram").setAttribute("aria-label", shown?.analysis
            ? `Histogram. ${describeHistogram(shown.analysis)}` : "Histogram: no picture yet");
    }, 3_000);
}
