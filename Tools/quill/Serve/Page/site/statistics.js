// SPDX-License-Identifier: Apache-2.0
// What the camera and its stream achieve, over time.

import { call, cameraPath } from "./api.js";
import { isConnected, on, state } from "./bus.js";
import { byId, el } from "./dom.js";
import { kSpanSeconds, Plot } from "./plots.js";

const history = new Map(); // by camera: [{ seconds, statistics }]
let plots;
let shownFrames = 0; // since the last reading

/** Losses per second, by reason, between two readings. */
export function lossRates(before, now, seconds) {
    const earlier = new Map((before?.counters ?? []).map(({ name, value }) => [name, value]));
    const losses = now.counters.filter(({ isLoss }) => isLoss);
    return Object.fromEntries(losses.filter(({ value }) => value > 0)
        .map(({ name, value }) => [name, earlier.has(name) && seconds > 0 ? Math.max(value - earlier.get(name), 0) / seconds : 0]));
}

function plot(entry, before) {
    const { seconds, statistics, shownPerSecond } = entry;
    plots.rate.add(seconds, { Received: statistics.receivedPerSecond, Shown: shownPerSecond });
    plots.losses.add(seconds, lossRates(before?.statistics, statistics, seconds - (before?.seconds ?? seconds)));
    plots.times.add(seconds, { Capture: statistics.captureTimeMs, Transfer: statistics.transferTimeMs });
    const temperatures = Object.fromEntries((statistics.temperatures ?? []).map(({ name, value }) => [name, Number(value)]));
    plots.temperatures.element.hidden = Object.keys(temperatures).length === 0;
    plots.temperatures.add(seconds, temperatures);
}

function showCounters({ counters, isStreaming, receivedPerSecond }) {
    byId("counters").replaceChildren(...counters.map(({ name, value, isLoss, description }) => el("tr", { className: isLoss && value > 0 ? "loss" : "" },
        el("th", { scope: "row" }, name, el("span", { className: "describes" }, description ?? "")), el("td", {}, value.toLocaleString("en")))));
    const lost = counters.filter(({ isLoss }) => isLoss).reduce((sum, { value }) => sum + value, 0);
    byId("rate").textContent = isStreaming ? `${receivedPerSecond.toFixed(1)} fps` : "";
    byId("lost").textContent = lost > 0 ? `${lost.toLocaleString("en")} lost` : "";
}

function take(statistics) {
    const seconds = performance.now() / 1000;
    const entries = history.get(statistics.camera) ?? [];
    const before = entries.at(-1);
    const isSelected = statistics.camera === state.selected;
    entries.push({ seconds, statistics, shownPerSecond: isSelected && before ? shownFrames / (seconds - before.seconds) : 0 });
    shownFrames = isSelected ? 0 : shownFrames;
    while (entries[0].seconds < seconds - kSpanSeconds) {
        entries.shift();
    }
    history.set(statistics.camera, entries);
    if (isSelected) {
        plot(entries.at(-1), before);
        showCounters(statistics);
    }
}

async function load() {
    Object.values(plots).forEach((one) => one.clear());
    byId("counters").replaceChildren();
    byId("rate").textContent = byId("lost").textContent = "";
    (history.get(state.selected) ?? []).forEach((entry, at, all) => plot(entry, all[at - 1]));
    if (isConnected() && state.link === "on") {
        await call("GET", cameraPath(state.selected, "/statistics")).then(take).catch(() => {});
    }
}

export function start() {
    plots = { rate: new Plot("Frame rate", "fps"), losses: new Plot("Lost frames", "per s"), times: new Plot("Time of a frame", "ms"),
        temperatures: new Plot("Temperature", "°C", false) };
    byId("plots").append(...Object.values(plots).map(({ element }) => element));
    on("statistics", take);
    on("frame", (description) => {
        shownFrames += description ? 1 : 0;
    });
    on("camera", () => {
        shownFrames = 0;
        load();
    });
    for (const topic of ["theme", "tab"]) {
        on(topic, () => Object.values(plots).forEach((one) => one.draw()));
    }
    on("stream", load);
}
