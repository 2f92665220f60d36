// SPDX-License-Identifier: Apache-2.0
// The properties of the selected camera, by category.

import { call, cameraPath } from "./api.js";
import { emit, isConnected, on, selectedCamera, state } from "./bus.js";
import { byId, el } from "./dom.js";
import { describeControl, forgetFields, take } from "./field.js";

const kVisibilities = ["Beginner", "Expert", "Guru"];
const kClosedAtFirst = new Set(["Device Control", "Transport Layer Control"]);

let folded = new Map(JSON.parse(sessionStorage.getItem("folded") ?? "[]"));
let asked = 0;

const shownLevel = () => kVisibilities.indexOf(byId("visibility").value);
const levelOf = ({ visibility }) => Math.max(kVisibilities.indexOf(visibility), 0);

function section(category, properties) {
    const rows = el("div", { className: "rows" }, ...properties.map((property) => describeControl(property)));
    const isOpen = !(folded.get(category) ?? kClosedAtFirst.has(category));
    return el("details", { className: "category", open: isOpen, "data-category": category,
        ontoggle: (event) => {
            if (byId("search").value === "") {
                folded.set(category, !event.target.open);
                sessionStorage.setItem("folded", JSON.stringify([...folded]));
            }
        } },
    el("summary", {}, el("span", {}, category || "Other"), el("span", { className: "count" }, String(properties.length))), rows);
}

function build() {
    const categories = Map.groupBy ? Map.groupBy(state.properties.values(), ({ category }) => category)
        : [...state.properties.values()].reduce((map, one) => map.set(one.category, [...(map.get(one.category) ?? []), one]), new Map());
    const order = [...categories.keys()].sort((one, two) => kClosedAtFirst.has(one) - kClosedAtFirst.has(two) || one.localeCompare(two));
    byId("property-list").replaceChildren(...order.map((category) => section(category, categories.get(category))));
    filter();
}

/** Shows what the search and the visibility let through. */
function filter() {
    const words = byId("search").value.toLowerCase().split(/\s+/).filter(Boolean);
    let count = 0;
    for (const details of byId("property-list").querySelectorAll("details")) {
        let shown = 0;
        for (const row of details.querySelectorAll(".field")) {
            const property = state.properties.get(row.dataset.property);
            const text = `${property.name} ${property.category} ${property.description}`.toLowerCase();
            row.hidden = levelOf(property) > shownLevel() || !words.every((word) => text.includes(word));
            shown += !row.hidden;
        }
        details.hidden = shown === 0;
        details.querySelector(".count").textContent = String(shown);
        details.open = words.length > 0 || !(folded.get(details.dataset.category) ?? kClosedAtFirst.has(details.dataset.category));
        count += shown;
    }
    byId("property-count").textContent = state.properties.size === 0 ? "" : `${count} of ${state.properties.size} properties`;
}

async function load() {
    const mine = ++asked;
    const camera = state.selected;
    const note = byId("property-note");
    if (!isConnected() || state.link !== "on") {
        forgetFields();
        state.properties = new Map();
        build();
        emit("properties");
        note.textContent = state.link !== "on" ? "The server is away." : selectedCamera() ? "Connect the camera to see its properties." : "No camera.";
        note.hidden = false;
        return;
    }
    try {
        const { properties } = await call("GET", cameraPath(camera, "/properties"));
        if (mine !== asked) {
            return;
        }
        forgetFields();
        state.properties = new Map(properties.map((property) => [property.name, property]));
        note.hidden = true;
        build();
        emit("properties");
    } catch (problem) {
        if (mine === asked) {
            note.textContent = problem.text ?? String(problem);
            note.hidden = false;
        }
    }
}

export function start() {
    const stored = localStorage.getItem("visibility");
    byId("visibility").value = kVisibilities.includes(stored) ? stored : "Beginner";
    byId("visibility").addEventListener("change", () => {
        localStorage.setItem("visibility", byId("visibility").value);
        filter();
    });
    byId("search").addEventListener("input", filter);
    on("camera", load);
    on("property", ({ camera, property }) => {
        if (camera !== state.selected) {
            return;
        }
        const isNew = !state.properties.has(property.name);
        take(property);
        if (isNew) {
            build();
        }
    });
}
