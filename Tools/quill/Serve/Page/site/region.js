// SPDX-License-Identifier: Apache-2.0
// The part of the sensor that the camera delivers: by fields, and drawn on the picture.

import { call, cameraPath } from "./api.js";
import { isConnected, on, state, whyLocked } from "./bus.js";
import { byId, colour } from "./dom.js";
import { redraw, setTool, shownFrame, viewport } from "./picture.js";

const kFields = ["x", "y", "width", "height"];
const kSmallest = 4; // pixels of the screen; less is a click

let present = null; // as GET /region
let drawn = null; // { from, to } in points of the frame
let isDrawing = false;
let isUnread = false; // since reading it failed
let isTyped = false; // and not written yet: what the camera says does not replace it

const field = (name) => byId(`region-${name}`);

function say(text, isError = false) {
    byId("region-note").textContent = text;
    byId("region-note").classList.toggle("error", isError);
}

async function load() {
    const camera = state.selected;
    let found = null;
    let problem = null;
    if (isConnected() && state.link === "on") {
        try {
            found = await call("GET", cameraPath(camera, "/region"));
        } catch (failure) {
            problem = failure;
        }
    }
    if (camera !== state.selected) {
        return;
    }
    present = found;
    if (problem) {
        say(problem.text, problem.error !== "RegionNotSupported");
    } else if (isUnread) {
        say(""); // else the note says what the last change did
    }
    isUnread = problem !== null;
    show();
}

function show() {
    const reason = whyLocked() || (present ? "" : "This camera has no region.");
    for (const name of kFields) {
        const input = field(name);
        input.disabled = reason !== "";
        input.title = reason;
        if (present) {
            const { unit, maximum, region } = present;
            input.step = unit?.[name] ?? 1;
            input.min = name === "width" || name === "height" ? (unit?.[name] ?? 1) : 0;
            input.max = maximum?.[name] ?? maximum?.[name === "x" ? "width" : "height"] ?? "";
            if (!isTyped) {
                input.value = region[name];
            }
        } else {
            input.value = "";
        }
    }
    for (const id of ["region-apply", "region-full", "region-draw"]) {
        byId(id).disabled = reason !== "";
        byId(id).title = reason;
    }
    byId("region-hint").textContent = present?.unit
        ? `Sensor ${present.maximum.width} × ${present.maximum.height}; widths are multiples of ${present.unit.width}, heights of ${present.unit.height}.` : "";
}

async function write(region) {
    isTyped = false;
    say("Writing …");
    try {
        const answer = await call("PUT", cameraPath(state.selected, "/region"), region);
        present = { ...present, region: answer.region };
        for (const name of kFields) {
            field(name).value = answer.region[name];
        }
        const { x, y, width, height } = answer.region;
        say(`${answer.difference ?? ""} The camera took ${width} × ${height} at ${x}, ${y}.`.trim());
    } catch (problem) {
        say(problem.text, true);
    }
    show();
}

/** A part of the shown frame, in pixels of the sensor: they are the same unless the camera combines or skips pixels. */
export function onSensor({ from, to }, frame, region) {
    const [across, down] = [region.width / frame.width, region.height / frame.height];
    const left = Math.max(Math.min(from.x, to.x), 0);
    const top = Math.max(Math.min(from.y, to.y), 0);
    const right = Math.min(Math.max(from.x, to.x), frame.width);
    const bottom = Math.min(Math.max(from.y, to.y), frame.height);
    return { x: Math.round(region.x + left * across), y: Math.round(region.y + top * down),
        width: Math.round((right - left) * across), height: Math.round((bottom - top) * down) };
}

const tool = {
    draw(context) {
        if (!drawn) {
            return;
        }
        const from = viewport.toStage(drawn.from.x, drawn.from.y);
        const to = viewport.toStage(drawn.to.x, drawn.to.y);
        Object.assign(context, { strokeStyle: colour("--accent-mark"), lineWidth: 2, fillStyle: "rgb(90 170 255 / 18%)" });
        context.fillRect(from.x, from.y, to.x - from.x, to.y - from.y);
        context.strokeRect(from.x, from.y, to.x - from.x, to.y - from.y);
    },
    down(point) {
        const at = viewport.toFrame(point.x, point.y);
        drawn = { from: at, to: at };
    },
    move(point) {
        if (drawn && present) {
            drawn.to = viewport.toFrame(point.x, point.y);
            const { width, height, x, y } = onSensor(drawn, shownFrame() ?? viewport.frame, present.region);
            say(`${width} × ${height} at ${x}, ${y}`);
            redraw();
        }
    },
    up(point) {
        const area = drawn;
        const isLarge = area && Math.hypot(area.to.x - area.from.x, area.to.y - area.from.y) * viewport.zoom > kSmallest;
        setDrawing(false);
        if (isLarge && present && shownFrame()) {
            area.to = viewport.toFrame(point.x, point.y);
            write(onSensor(area, shownFrame(), present.region));
        }
    },
    cancel: () => setDrawing(false),
};

function setDrawing(draws) {
    isDrawing = draws;
    drawn = null;
    byId("region-draw").setAttribute("aria-pressed", String(draws));
    setTool(draws ? tool : null);
    say(draws ? "Drag over the picture; Escape ends it." : "");
}

export function start() {
    byId("region-open").addEventListener("click", () => {
        const opens = byId("region-panel").hidden;
        byId("region-panel").hidden = !opens;
        byId("region-open").setAttribute("aria-expanded", String(opens));
        if (opens) {
            isTyped = false;
            load();
        } else {
            setDrawing(false);
        }
    });
    byId("region-panel").addEventListener("input", () => {
        isTyped = true;
    });
    byId("region-draw").addEventListener("click", () => setDrawing(!isDrawing));
    byId("region-panel").addEventListener("submit", (event) => {
        event.preventDefault();
        write(Object.fromEntries(kFields.map((name) => [name, Math.round(Number(field(name).value))])));
    });
    byId("region-full").addEventListener("click", () => write({ x: 0, y: 0, ...present.maximum }));
    const loadIfOpen = () => byId("region-panel").hidden || load();
    on("camera", () => {
        isTyped = false;
        present = null;
        setDrawing(false);
        loadIfOpen();
    });
    on("link", show);
    on("property", ({ camera, property }) => {
        if (camera === state.selected && /^(width|height|x ?offset|y ?offset|offset ?[xy]|sampling description)/i.test(property.name)) {
            loadIfOpen();
        }
    });
}
