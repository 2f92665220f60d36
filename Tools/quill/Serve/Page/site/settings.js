// SPDX-License-Identifier: Apache-2.0
// A camera's settings as a file: saving, loading, comparing.

import { cameraPath, fileName, request } from "./api.js";
import { on, isConnected, say, state, whyLocked } from "./bus.js";
import { byId, el, saveFile } from "./dom.js";
import { shortText } from "./scales.js";

const kLargestBytes = 1 << 20;

let chosen = null; // { name, text }

function note(text, isError = false) {
    byId("settings-note").textContent = text;
    byId("settings-note").classList.toggle("error", isError);
}

function show() {
    const isThere = state.link === "on" && isConnected();
    byId("settings-save").disabled = byId("settings-compare").disabled = !isThere;
    byId("settings-compare").disabled ||= chosen === null;
    byId("settings-load").disabled = whyLocked() !== "" || chosen === null;
    byId("settings-load").title = whyLocked() || (chosen ? "" : "Choose a file first.");
    byId("settings-compare").title = !isThere ? "Connect the camera first." : chosen ? "" : "Choose a file first.";
    byId("settings-chosen").textContent = chosen ? chosen.name : "No file chosen";
}

async function choose(file) {
    chosen = null;
    byId("settings-results").replaceChildren();
    if (file.size > kLargestBytes) {
        note(`${file.name} is larger than 1 MiB. Choose a file that was saved here.`, true);
    } else {
        const text = await file.text();
        try {
            JSON.parse(text);
            chosen = { name: file.name, text };
            note("Compare it with the camera, or load it into the camera.");
        } catch {
            note(`${file.name} is no settings file. Choose a file that was saved here.`, true);
        }
    }
    show();
}

function table(title, rows, columns) {
    return rows.length === 0 ? [] : [el("h3", {}, `${title} (${rows.length})`), el("div", { className: "table-scroll", tabIndex: 0, role: "region", "aria-label": title },
        el("table", {}, el("thead", {}, el("tr", {}, ...columns.map((column) => el("th", { scope: "col" }, column)))),
            el("tbody", {}, ...rows.map((row) => el("tr", {}, ...row.map((value, at) => el(at ? "td" : "th", at ? {} : { scope: "row" }, shortText(value ?? ""))))))))];
}

const differenceRow = (one) => (typeof one === "string" ? [one, "", "", ""] : [one.name, one.wanted, one.present, one.reason]);
const kColumns = ["Property", "File", "Camera", "Reason"];

async function send(method, rest) {
    byId("settings-results").replaceChildren();
    note("…");
    try {
        return await (await request(method, cameraPath(state.selected, rest), { text: chosen.text })).json();
    } catch (problem) {
        note(problem.text ?? String(problem), true);
        return null;
    }
}

async function load() {
    const answer = await send("PUT", "/settings");
    if (answer) {
        const { written = [], different = [], failed = [] } = answer;
        note(`${written.length} written, ${different.length} different, ${failed.length} failed.`, failed.length > 0);
        byId("settings-results").replaceChildren(...table("Failed", failed.map(differenceRow), kColumns), ...table("Different", different.map(differenceRow), kColumns));
        say(failed.length ? "warning" : "info", `Loaded the settings ${chosen.name}: ${written.length} written, ${different.length} different, ${failed.length} failed.`, state.selected);
    }
}

async function compare() {
    const answer = await send("POST", "/settings/compare");
    if (answer) {
        note(answer.differences.length === 0 ? "The camera is set as the file says." : `${answer.differences.length} settings differ.`);
        byId("settings-results").replaceChildren(...table("Differences", answer.differences.map(differenceRow), kColumns));
    }
}

async function save() {
    try {
        const answer = await request("GET", cameraPath(state.selected, "/settings"));
        const name = fileName(answer, `${state.selected}-settings.json`);
        saveFile(name, await answer.blob());
        note(`Saved ${name}.`);
    } catch (problem) {
        note(problem.text ?? String(problem), true);
    }
}

export function start() {
    const input = byId("settings-file");
    input.addEventListener("change", () => {
        if (input.files.length > 0) {
            choose(input.files[0]);
            input.value = "";
        }
    });
    byId("settings-save").addEventListener("click", save);
    byId("settings-load").addEventListener("click", load);
    byId("settings-compare").addEventListener("click", compare);
    const zone = byId("settings-drop");
    for (const sign of ["dragenter", "dragover"]) {
        window.addEventListener(sign, (event) => {
            event.preventDefault();
            zone.classList.toggle("over", zone.contains(event.target));
        });
    }
    window.addEventListener("drop", (event) => {
        event.preventDefault();
        zone.classList.remove("over");
        if (zone.contains(event.target) && event.dataTransfer.files.length > 0) {
            choose(event.dataTransfer.files[0]);
        }
    });
    for (const topic of ["camera", "link", "server"]) {
        on(topic, show);
    }
    on("camera", () => { note(""); byId("settings-results").replaceChildren(); });
}
