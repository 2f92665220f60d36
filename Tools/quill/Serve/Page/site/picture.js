// SPDX-License-Identifier: Apache-2.0
// The picture: drawing, zooming, panning, the pixel under the pointer, freezing.

import { call, cameraPath } from "./api.js";
import { emit, isConnected, on, selectedCamera, state, whyLocked } from "./bus.js";
import { clearProblem, showProblem } from "./cameras.js";
import { byId, colour, prepareCanvas } from "./dom.js";
import { scaleFor } from "./frames.js";
import { Live } from "./live.js";
import { PixelReader } from "./pixels.js";
import { Viewport } from "./viewport.js";

const kPixelGridZoom = 10;
const kPanShare = 0.15;

export const viewport = new Viewport();
let live = null;
let shown = null; // { description, bitmap }
let isFrozen = false;
let heldFrame = null;
let cursor = null; // the pixel whose values are shown
let isPending = false;
let hasGrid = false;
let stage;
let reader;
/** Draws over the picture, and may take the pointer: { draw(context), down(point), move(point), up(point), cancel() } */
let tool = null;

export function setTool(newTool) {
    tool = newTool;
    stage.classList.toggle("drawing", tool !== null);
    redraw();
}

export const shownFrame = () => shown?.description ?? null;

export function redraw() {
    if (!isPending) {
        isPending = true;
        requestAnimationFrame(draw);
    }
}

function line(context, x1, y1, x2, y2) {
    context.beginPath();
    context.moveTo(x1, y1);
    context.lineTo(x2, y2);
    context.stroke();
}

function drawGrid(context, width, height) {
    const begin = viewport.toStage(0, 0);
    const end = viewport.toStage(viewport.frame.width, viewport.frame.height);
    for (const [style, lineWidth] of [["rgb(0 0 0 / 55%)", 2.5], ["rgb(255 255 255 / 75%)", 1]]) {
        Object.assign(context, { strokeStyle: style, lineWidth });
        for (let part = 1; part < 8; ++part) {
            const x = begin.x + ((end.x - begin.x) * part) / 8;
            const y = begin.y + ((end.y - begin.y) * part) / 8;
            context.globalAlpha = part === 4 ? 1 : 0.45;
            line(context, x, Math.max(begin.y, 0), x, Math.min(end.y, height));
            line(context, Math.max(begin.x, 0), y, Math.min(end.x, width), y);
        }
    }
    context.globalAlpha = 1;
}

function drawPixelGrid(context, width, height) {
    const { x: firstX, y: firstY } = viewport.toFrame(0, 0);
    const { x: lastX, y: lastY } = viewport.toFrame(width, height);
    Object.assign(context, { strokeStyle: "rgb(128 128 128 / 45%)", lineWidth: 1 });
    for (let x = Math.max(Math.ceil(firstX), 0); x <= Math.min(lastX, viewport.frame.width); ++x) {
        const at = viewport.toStage(x, 0).x;
        line(context, at, 0, at, height);
    }
    for (let y = Math.max(Math.ceil(firstY), 0); y <= Math.min(lastY, viewport.frame.height); ++y) {
        const at = viewport.toStage(0, y).y;
        line(context, 0, at, width, at);
    }
}

function draw() {
    isPending = false;
    const { context, width, height, ratio } = prepareCanvas(stage);
    viewport.setStage(width, height);
    byId("zoom-value").textContent = `${viewport.zoom >= 0.1 ? Math.round(viewport.zoom * 100) : (viewport.zoom * 100).toFixed(1)} %`;
    if (!shown) {
        return;
    }
    const { bitmap } = shown;
    const corner = viewport.toStage(0, 0);
    context.imageSmoothingEnabled = viewport.zoom * ratio < 2;
    context.imageSmoothingQuality = "medium";
    context.drawImage(bitmap, corner.x, corner.y, viewport.frame.width * viewport.zoom, viewport.frame.height * viewport.zoom);
    if (viewport.zoom >= kPixelGridZoom) {
        drawPixelGrid(context, width, height);
    }
    if (hasGrid) {
        drawGrid(context, width, height);
    }
    if (cursor && viewport.zoom >= 4) {
        const at = viewport.toStage(cursor.x, cursor.y);
        Object.assign(context, { strokeStyle: colour("--accent-mark"), lineWidth: 2 });
        context.strokeRect(at.x, at.y, viewport.zoom, viewport.zoom);
    }
    tool?.draw?.(context);
    live?.setScale(scaleFor(viewport.zoom * ratio));
}

function show(description, bitmap) {
    shown?.bitmap.close();
    shown = { description, bitmap };
    viewport.setFrame(description.width, description.height);
    byId("stage-note").hidden = selectedCamera()?.isStreaming !== false; // a last picture may come after the end of the stream
    redraw();
    reader.refresh();
    emit("frame", description);
}

function note(text, isBusy = false) {
    byId("stage-note").hidden = false;
    byId("stage-note").classList.toggle("over", shown !== null);
    byId("stage-text").textContent = text;
    byId("stage-connect").hidden = isBusy || isConnected() || !selectedCamera() || Boolean(state.server?.viewOnly);
}

function forget() {
    shown?.bitmap.close();
    shown = null;
    cursor = null;
    reader.point(null);
    emit("frame", null);
    redraw();
}

function setFrozen(frozen) {
    isFrozen = frozen;
    heldFrame = null;
    live?.freeze(frozen);
    byId("freeze").setAttribute("aria-pressed", String(frozen));
    byId("frozen").hidden = !frozen;
}

function follow() {
    live?.close();
    live = null;
    setFrozen(false);
    const camera = selectedCamera();
    if (state.link === "away") {
        note("The server is away. The picture goes on by itself once it is back.", true);
    } else if (!camera) {
        note(state.selected ? `Camera ${state.selected} is gone. The picture goes on by itself once it is back.` : "No camera is here.");
    } else if (!isConnected(camera)) {
        note(camera.state === "suspended" ? "The camera is suspended." : "The camera is not connected.");
    } else {
        note(camera.isStreaming === false ? "The stream does not run. Start it to see pictures." : "Waiting for the first picture …", true);
        live = new Live(camera.serialNumber, {
            onPicture: show,
            onState: (status, text) => (status === "Running" ? shown && (byId("stage-note").hidden = true) : note(text)),
            onHeld: (frame) => {
                heldFrame = frame;
            },
        });
    }
    showStream();
}

function showStream() {
    const camera = selectedCamera();
    const button = byId("stream");
    const runs = Boolean(camera?.isStreaming && isConnected(camera));
    button.textContent = runs ? "Stop stream" : "Start stream";
    button.classList.toggle("primary", !runs);
    button.disabled = whyLocked() !== "";
    button.title = whyLocked();
}

async function toggleStream() {
    const camera = selectedCamera();
    byId("stream").disabled = true;
    try {
        Object.assign(camera, await call("POST", cameraPath(camera.serialNumber, `/stream/${camera.isStreaming ? "stop" : "start"}`), {}));
        const { isStreaming } = await call("GET", cameraPath(camera.serialNumber));
        camera.isStreaming = isStreaming;
        clearProblem();
        emit("list");
    } catch (problem) {
        showProblem(problem);
    } finally {
        showStream();
    }
}

const stagePoint = (event) => {
    const box = stage.getBoundingClientRect();
    return { x: event.clientX - box.left, y: event.clientY - box.top };
};

function pointAt(pixel) {
    cursor = pixel;
    reader.point(pixel);
    redraw();
}

function followPointers() {
    const pointers = new Map();
    const spread = () => {
        const [one, two] = [...pointers.values()];
        return { distance: Math.hypot(one.x - two.x, one.y - two.y), x: (one.x + two.x) / 2, y: (one.y + two.y) / 2 };
    };
    stage.addEventListener("pointerdown", (event) => {
        stage.setPointerCapture(event.pointerId);
        pointers.set(event.pointerId, stagePoint(event));
        if (pointers.size === 1 && event.button === 0) {
            tool?.down?.(stagePoint(event));
        } else {
            tool?.cancel?.();
        }
    });
    stage.addEventListener("pointermove", (event) => {
        const point = stagePoint(event);
        const before = pointers.get(event.pointerId);
        if (before && pointers.size === 2) {
            const was = spread();
            pointers.set(event.pointerId, point);
            const is = spread();
            viewport.zoomTo((viewport.zoom * is.distance) / Math.max(was.distance, 1), was.x, was.y);
            viewport.pan(is.x - was.x, is.y - was.y);
        } else if (before) {
            pointers.set(event.pointerId, point);
            if (tool?.move) {
                tool.move(point);
            } else {
                viewport.pan(point.x - before.x, point.y - before.y);
            }
        }
        pointAt(shown ? viewport.pixelAt(point.x, point.y) : null);
    });
    for (const end of ["pointerup", "pointercancel"]) {
        stage.addEventListener(end, (event) => {
            if (pointers.delete(event.pointerId) && pointers.size === 0) {
                end === "pointerup" ? tool?.up?.(stagePoint(event)) : tool?.cancel?.();
            }
        });
    }
    stage.addEventListener("pointerleave", () => pointers.size || pointAt(null));
    stage.addEventListener("wheel", (event) => {
        event.preventDefault();
        const point = stagePoint(event);
        const amount = event.deltaMode === 1 ? event.deltaY * 16 : event.deltaY;
        viewport.zoomTo(viewport.zoom * 2 ** (-amount / 240), point.x, point.y);
        redraw();
    }, { passive: false });
    stage.addEventListener("dblclick", (event) => {
        if (!tool) {
            const point = stagePoint(event);
            viewport.fits ? viewport.zoomTo(1, point.x, point.y) : viewport.fit();
            redraw();
        }
    });
}

const zoomBy = (factor) => viewport.zoomTo(viewport.zoom * factor);
const panBy = (x, y) => viewport.pan(x * viewport.stage.width * kPanShare, y * viewport.stage.height * kPanShare);

function moveCursor(x, y) {
    const centre = { x: Math.floor(viewport.x), y: Math.floor(viewport.y) };
    const from = cursor ?? centre;
    pointAt({ x: Math.min(Math.max(from.x + x, 0), viewport.frame.width - 1), y: Math.min(Math.max(from.y + y, 0), viewport.frame.height - 1) });
}

const kKeys = {
    "+": () => zoomBy(1.5), "=": () => zoomBy(1.5), "-": () => zoomBy(1 / 1.5),
    0: () => viewport.fit(), 1: () => viewport.zoomTo(1),
    ArrowLeft: () => panBy(1, 0), ArrowRight: () => panBy(-1, 0), ArrowUp: () => panBy(0, 1), ArrowDown: () => panBy(0, -1),
    "Shift+ArrowLeft": () => moveCursor(-1, 0), "Shift+ArrowRight": () => moveCursor(1, 0),
    "Shift+ArrowUp": () => moveCursor(0, -1), "Shift+ArrowDown": () => moveCursor(0, 1),
    " ": () => setFrozen(!isFrozen), g: () => byId("grid").click(), Escape: () => tool?.cancel?.(),
};

export function start() {
    stage = byId("stage");
    reader = new PixelReader(() => (isFrozen ? heldFrame : null), () => (isConnected() ? state.selected : null));
    followPointers();
    stage.addEventListener("keydown", (event) => {
        const isArrow = event.key.startsWith("Arrow");
        const action = event.ctrlKey || event.metaKey || event.altKey ? null : kKeys[event.shiftKey && isArrow ? `Shift+${event.key}` : event.key];
        if (action) {
            event.preventDefault();
            action();
            redraw();
        }
    });
    const press = (id, action) => byId(id).addEventListener("click", () => { action(); redraw(); });
    press("fit", () => viewport.fit());
    press("one-to-one", () => viewport.zoomTo(1 / (window.devicePixelRatio || 1)));
    press("zoom-in", () => zoomBy(1.5));
    press("zoom-out", () => zoomBy(1 / 1.5));
    press("freeze", () => setFrozen(!isFrozen));
    press("grid", () => {
        hasGrid = !hasGrid;
        byId("grid").setAttribute("aria-pressed", String(hasGrid));
    });
    byId("stream").addEventListener("click", toggleStream);
    byId("stage-connect").addEventListener("click", () => byId("action-connect").click());
    new ResizeObserver(redraw).observe(stage);
    let followed = null;
    on("camera", () => {
        if (followed !== state.selected) {
            forget();
            viewport.fit();
        }
        followed = state.selected;
        follow();
    });
    on("link", (link) => (link === "away" ? follow() : showStream()));
    on("list", showStream);
    on("theme", redraw);
}
