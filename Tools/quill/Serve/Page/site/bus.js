// SPDX-License-Identifier: Apache-2.0
// Events between the parts of the page, and the state that they share.

const listeners = new Map();

/** Topics: link, server, cameras, camera (the selected one), property, properties, statistics, log, theme, frame. */
export function on(topic, listener) {
    listeners.set(topic, [...(listeners.get(topic) ?? []), listener]);
}

export function emit(topic, data) {
    for (const listener of listeners.get(topic) ?? []) {
        listener(data);
    }
}

export const state = {
    server: null, // as GET /server
    link: "connecting", // or "on", "away", "token"
    cameras: [],
    failures: [],
    selected: null, // a serial number
    properties: new Map(), // of the selected camera, by name
};

export const selectedCamera = () => state.cameras.find((camera) => camera.serialNumber === state.selected) ?? null;

export const isConnected = (camera = selectedCamera()) => camera?.state === "connected";

/** Why the selected camera cannot be changed now; empty if it can. */
export function whyLocked() {
    if (state.link !== "on") {
        return "The server is away.";
    }
    if (state.server?.viewOnly) {
        return "View only: this server lets nobody change a camera.";
    }
    if (!selectedCamera()) {
        return "No camera is selected, or it is gone.";
    }
    return isConnected() ? "" : "Connect the camera first.";
}

export function say(level, text, camera = null) {
    emit("log", { time: new Date().toISOString(), level, camera, text });
}
