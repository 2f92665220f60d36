// SPDX-License-Identifier: Apache-2.0
// Images and series of images, as files.

import { cameraPath, fileName, request } from "./api.js";
import { isConnected, on, say, selectedCamera, state } from "./bus.js";
import { byId, el, saveFile } from "./dom.js";
import { describeControl } from "./field.js";

const kFoldBytes = 16 << 20;
const kNames = { png: "PNG", tiff: "TIFF", dng: "DNG", jpeg: "JPEG" };

let recording = null; // an AbortController

function note(text, isError = false) {
    byId("capture-note").textContent = text;
    byId("capture-note").classList.toggle("error", isError);
}

async function capture() {
    byId("capture").disabled = true;
    note("Capturing …");
    try {
        const answer = await request("GET", cameraPath(state.selected, `/capture?format=${byId("capture-format").value}`));
        const name = fileName(answer, `${state.selected}.${byId("capture-format").value}`);
        saveFile(name, await answer.blob());
        note(`Saved ${name}.`);
        say("info", `Captured ${name}.`, state.selected);
    } catch (problem) {
        note(problem.text ?? "The connection was lost while the image came.", true);
    }
    show();
}

/** Gathers what comes in a blob, which the browser may keep on disk, and keeps what was recorded when it is ended. */
async function gather(answer, onBytes) {
    let whole = new Blob([], { type: "application/x-tar" });
    let parts = [];
    let bytes = 0;
    const fold = () => {
        whole = new Blob([whole, ...parts], { type: "application/x-tar" });
        parts = [];
    };
    try {
        for (const reader = answer.body.getReader(); ;) {
            const { done, value } = await reader.read();
            if (done) {
                break;
            }
            parts.push(value);
            bytes += value.length;
            if (bytes - whole.size > kFoldBytes) {
                fold();
            }
            onBytes(bytes);
        }
    } catch (reason) {
        if (reason.name !== "AbortError") {
            fold();
            return { whole, isCut: true };
        }
    }
    fold();
    return { whole, isCut: false };
}

async function record() {
    if (recording) {
        recording.abort();
        return;
    }
    const frames = Math.round(Number(byId("series-frames").value));
    if (!(frames >= 1 && frames <= 1000)) {
        note("A series has 1 to 1000 frames.", true);
        byId("series-frames").focus();
        return;
    }
    recording = new AbortController();
    byId("record").textContent = "Stop recording";
    note(`Recording ${frames} frames …`);
    try {
        const path = cameraPath(state.selected, `/series?frames=${frames}&format=${byId("capture-format").value}`);
        const answer = await request("GET", path, { signal: recording.signal });
        const name = fileName(answer, `${state.selected}-series.tar`);
        const { whole, isCut } = await gather(answer, (bytes) => note(`Recording ${frames} frames … ${(bytes / 1e6).toFixed(1)} MB`));
        if (whole.size > 0) {
            saveFile(name, whole);
        }
        const size = `${(whole.size / 1e6).toFixed(1)} MB`;
        note(isCut ? `The recording ended early. What came is saved in ${name} (${size}).` : `Saved ${name} (${size}).`, isCut);
        say(isCut ? "warning" : "info", `Recorded ${name}, ${size}.`, state.selected);
    } catch (problem) {
        note(problem.name === "AbortError" ? "The recording is stopped." : problem.text ?? String(problem), problem.name !== "AbortError");
    }
    recording = null;
    byId("record").textContent = "Record";
    show();
}

function show() {
    const camera = selectedCamera();
    const reason = state.link !== "on" ? "The server is away." : !isConnected(camera) ? "Connect the camera first."
        : state.server?.viewOnly && !camera.isStreaming ? "View only: the stream must run." : "";
    for (const id of ["capture", "record"]) {
        byId(id).disabled = reason !== "" && !(id === "record" && recording);
        byId(id).title = reason;
    }
}

export function start() {
    on("server", ({ captureFormats }) => {
        const before = byId("capture-format").value || "png";
        byId("capture-format").replaceChildren(...captureFormats.map((format) => el("option",
            { value: format, selected: format === before }, kNames[format] ?? format)));
    });
    byId("capture").addEventListener("click", capture);
    byId("record").addEventListener("click", record);
    for (const topic of ["camera", "link", "list"]) {
        on(topic, show);
    }
    on("camera", () => note(""));
    on("properties", () => {
        const property = [...state.properties.values()].find(({ name }) => /^pixel ?format$/i.test(name));
        byId("pixel-format").replaceChildren(...(property ? [describeControl(property, "beside-picture")] : []));
    });
}
