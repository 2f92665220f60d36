// SPDX-License-Identifier: Apache-2.0
// The list of cameras, the selected one, and its state.

import { call, cameraPath } from "./api.js";
import { emit, isConnected, on, say, selectedCamera, state } from "./bus.js";
import { byId, el } from "./dom.js";

const kActions = [
    { id: "connect", text: "Connect", isFor: (camera) => camera.state !== "connected" },
    { id: "suspend", text: "Suspend", isFor: (camera) => camera.state === "connected" },
    { id: "disconnect", text: "Disconnect", isFor: (camera) => camera.state !== "disconnected" },
];

let isBusy = false;

export function showProblem(problem, camera = state.selected) {
    byId("problem-text").textContent = problem.text ?? String(problem);
    byId("problem").hidden = false;
    say("error", problem.text ?? String(problem), camera);
}

export function clearProblem() {
    byId("problem").hidden = true;
}

export function select(serialNumber) {
    if (serialNumber === state.selected) {
        return;
    }
    state.selected = serialNumber;
    const parts = new URLSearchParams(location.hash.slice(1));
    parts.set("camera", serialNumber);
    history.replaceState(null, "", `#${parts}`);
    clearProblem();
    showList();
    emit("camera", selectedCamera());
}

async function act(action) {
    isBusy = true;
    showActions();
    try {
        await call("POST", cameraPath(state.selected, `/${action}`), {});
        clearProblem();
        await refresh();
    } catch (problem) {
        showProblem(problem);
    } finally {
        isBusy = false;
        showActions();
    }
}

function showActions() {
    const camera = selectedCamera();
    const reason = state.link !== "on" ? "The server is away."
        : state.server?.viewOnly ? "View only: this server lets nobody change a camera." : "";
    for (const { id, isFor } of kActions) {
        const button = byId(`action-${id}`);
        const isThere = camera !== null && isFor(camera);
        if (!isThere && document.activeElement === button) {
            byId("camera-title").focus();
        }
        button.hidden = !isThere;
        button.disabled = isBusy || reason !== "";
        button.title = reason;
    }
}

function card(camera) {
    const isSelected = camera.serialNumber === state.selected;
    const status = camera.isStreaming && camera.state === "connected" ? "streaming" : camera.state;
    return el("li", {}, el("button", { type: "button", className: "camera", "aria-pressed": String(isSelected), "data-serial": camera.serialNumber,
        onclick: () => select(camera.serialNumber) },
        el("span", { className: `dot ${status}`, "aria-hidden": "true" }),
        el("span", { className: "camera-model" }, camera.modelName || "Camera"),
        el("span", { className: "camera-kind" }, `${camera.serialNumber} · ${status}`),
        el("span", { className: "camera-status" }, camera.kind)));
}

function showList() {
    const focused = document.activeElement?.dataset?.serial;
    byId("camera-list").replaceChildren(...state.cameras.map(card));
    if (focused) {
        document.querySelector(`[data-serial="${CSS.escape(focused)}"]`)?.focus();
    }
    byId("camera-none").hidden = state.cameras.length > 0;
    byId("camera-failures").replaceChildren(...state.failures.map(({ adapter, reason }) => el("li", {}, `${adapter}: ${reason}`)));
    const camera = selectedCamera();
    byId("camera-title").textContent = camera ? camera.modelName || "Camera" : state.selected ?? "No camera";
    byId("camera-number").textContent = camera ? camera.serialNumber : "";
    byId("camera-state").textContent = camera ? camera.state : state.selected ? "gone" : "";
    byId("camera-state").className = `badge ${camera ? camera.state : "gone"}`;
    byId("camera-state").hidden = !state.selected;
    document.title = camera ? `${camera.modelName} ${camera.serialNumber} – Quill` : "Quill";
    showActions();
}

function take({ cameras, failures }, isFresh = false) {
    const selectedBefore = selectedCamera();
    state.cameras = cameras;
    state.failures = failures ?? [];
    if (state.selected === null && cameras.length > 0) {
        const wanted = new URLSearchParams(location.hash.slice(1)).get("camera");
        const connected = cameras.find((camera) => isConnected(camera));
        state.selected = wanted ?? (connected ?? cameras[0]).serialNumber;
    }
    showList();
    const camera = selectedCamera();
    const sign = (one) => one && `${one.kind} ${one.state}`;
    if (sign(camera) !== sign(selectedBefore) || isFresh) {
        emit("camera", camera);
    }
    if (camera?.isStreaming !== selectedBefore?.isStreaming) {
        emit("stream", camera);
    }
    emit("list");
}

async function refresh() {
    take(await call("GET", "/cameras"));
}

export function start() {
    byId("camera-actions").replaceChildren(...kActions.map(({ id, text }) => el("button", { type: "button", id: `action-${id}`, hidden: true,
        className: id === "connect" ? "primary" : "", onclick: () => act(id) }, text)));
    byId("problem-close").addEventListener("click", clearProblem);
    window.addEventListener("hashchange", () => {
        const wanted = new URLSearchParams(location.hash.slice(1)).get("camera");
        if (wanted) {
            select(wanted);
        }
    });
    on("cameras", (list) => take(list));
    on("link", showActions);
    on("fresh", async () => {
        try {
            take(await call("GET", "/cameras"), true);
        } catch (problem) {
            showProblem(problem, null);
        }
    });
}
