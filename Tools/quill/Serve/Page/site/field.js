// SPDX-License-Identifier: Apache-2.0
// One property: its control, and what the camera made of a value.

import { call, cameraPath } from "./api.js";
import { on, state, whyLocked } from "./bus.js";
import { el } from "./dom.js";
import { toPosition, numberOf, shortText, sliderOf, textAt } from "./scales.js";

const kSwitch = ["Disabled", "Enabled"];
const notes = new Map(); // by property: { text, isError }, of the selected camera
const fields = new Map(); // by property: the fields that show it

/** Writes of one property follow each other; of those that wait, only the last is made. */
const writing = new Map();

async function put(name, value) {
    const job = writing.get(name);
    if (job) {
        job.next = { value };
        return;
    }
    writing.set(name, {});
    const camera = state.selected;
    let property = state.properties.get(name);
    try {
        const path = cameraPath(camera, `/properties/${encodeURIComponent(name)}`);
        const answer = value === null ? await call("POST", `${path}/reset`, {}) : await call("PUT", path, { value });
        property = answer.property;
        notes.set(name, { text: answer.difference ?? "", isError: false });
    } catch (problem) {
        notes.set(name, { text: problem.text ?? String(problem), isError: true });
    }
    const next = writing.get(name)?.next;
    writing.delete(name);
    if (camera !== state.selected) {
        return;
    }
    if (next) {
        put(name, next.value);
    } else if (property) {
        take(property);
    }
}

/** Takes a property's present state. */
export function take(property) {
    state.properties.set(property.name, property);
    update(property.name);
}

function update(name) {
    for (const field of fields.get(name) ?? []) {
        field.update(state.properties.get(name), notes.get(name));
    }
}

export function forgetFields() {
    fields.clear();
    notes.clear();
    writing.clear();
}

/** Why a property cannot be written; empty if it can. */
function whyReadOnly(property) {
    return whyLocked() || (property.readOnly ? "Read only." : property.availableForWriting ? "" : "Locked by the camera's present state.");
}

const isFocused = (element) => document.activeElement === element;

function choiceControl(property, id) {
    const select = el("select", { id, onchange: () => put(property.name, select.value) });
    return { element: select, inputs: [select], update(present) {
        const choices = present.choices.includes(present.value) ? present.choices : [present.value, ...present.choices];
        const sign = JSON.stringify(choices);
        if (select.dataset.choices !== sign) {
            select.dataset.choices = sign;
            select.replaceChildren(...choices.map((value) => el("option", { value }, shortText(value) || "(none)")));
        }
        select.value = present.value;
    } };
}

function switchControl(property, id) {
    const input = el("input", { type: "checkbox", role: "switch", id, onchange: () => put(property.name, kSwitch[Number(input.checked)]) });
    const text = el("span", { className: "switch-text", "aria-hidden": "true" });
    return { element: el("span", { className: "switch" }, input, text), inputs: [input], update(present) {
        input.checked = present.value === kSwitch[1];
        text.textContent = input.checked ? "On" : "Off";
    } };
}

function textControl(property, id) {
    let present = property;
    const isNumber = property.type !== "String";
    const shownValue = () => (isNumber ? shortText(present.value) : present.value);
    const apply = () => {
        if (input.value === shownValue()) {
            return;
        }
        const number = numberOf(input.value);
        if (isNumber && Number.isNaN(number)) {
            notes.set(property.name, { text: `“${input.value}” is no number.`, isError: true });
            update(property.name);
            return;
        }
        put(property.name, isNumber ? input.value.trim().replace(/^([+-]?\d*),(\d+)$/, "$1.$2") : input.value);
    };
    const input = el("input", { type: "text", id, inputMode: isNumber ? "decimal" : "text", autocomplete: "off", spellcheck: false,
        className: isNumber ? "number" : "", onchange: apply, onblur: () => {
            if (!writing.has(property.name)) {
                input.value = shownValue();
            }
        }, onkeydown: (event) => {
            if (event.key === "Escape") {
                input.value = shownValue();
                notes.delete(property.name);
                update(property.name);
                input.select();
            }
        } });
    return { element: input, inputs: [input], update(next, note) {
        const isTyping = isFocused(input) && input.value !== shownValue() && note?.isError;
        present = next;
        if (!isTyping) {
            input.value = shownValue();
        }
    } };
}

function numberControl(property, id) {
    const text = textControl(property, id);
    let slider = sliderOf(property);
    let drags = false;
    const range = el("input", { type: "range", min: 0, tabIndex: 0, "aria-label": `${property.name}, slider`,
        oninput: () => {
            drags = true;
            const value = textAt(slider, Number(range.value));
            text.element.value = value;
            range.setAttribute("aria-valuetext", `${value} ${property.unit}`);
            put(property.name, value);
        },
        onchange: () => {
            drags = false;
        } });
    return { element: el("span", { className: "number-control" }, range, text.element), inputs: [range, text.element], update(present, note) {
        slider = sliderOf(present);
        range.hidden = !slider;
        const isStillWriting = drags || writing.has(property.name) && isFocused(range);
        if (slider && !isStillWriting) {
            range.max = slider.positions;
            range.step = 1;
            range.value = toPosition(slider, numberOf(present.value));
            range.setAttribute("aria-valuetext", `${shortText(present.value)} ${present.unit}`);
            range.style.setProperty("--share", `${(Number(range.value) / slider.positions) * 100}%`);
        }
        if (!isStillWriting) {
            text.update(present, note);
        }
    } };
}

function controlOf(property, id) {
    if (property.readOnly) {
        const output = el("output", { id, className: "value" });
        return { element: output, inputs: [], update: (present) => { output.textContent = shortText(present.value) || "–"; } };
    }
    const isSwitch = property.choices.length === 2 && kSwitch.every((choice) => property.choices.includes(choice));
    const make = isSwitch ? switchControl : property.choices.length > 0 ? choiceControl : property.type === "String" ? textControl : numberControl;
    return make(property, id);
}

/** The control of a property with its label, unit, reset and note; it follows the property. */
export function describeControl(property, place = "list") {
    const id = `${place}-${property.name.replace(/\W+/g, "-").toLowerCase()}`;
    const control = controlOf(property, id);
    const note = el("p", { className: "note", id: `${id}-note`, "aria-live": "polite" });
    const reset = el("button", { type: "button", className: "icon reset", textContent: "↺", "aria-label": `Reset ${property.name}`,
        onclick: () => put(property.name, null) });
    const lock = el("span", { className: "lock", "aria-hidden": "true" });
    const label = el("label", { for: id, title: property.description }, property.name);
    const row = el("div", { className: `field${property.readOnly ? " read-only" : ""}`, "data-property": property.name },
        el("div", { className: "field-name" }, label, lock),
        el("div", { className: "field-control" }, control.element, el("span", { className: "unit" }, property.unit), ...(property.readOnly ? [] : [reset])),
        note);
    const shape = shapeOf(property);
    const field = { place, update(present, said) {
        if (shapeOf(present) !== shape) {
            const replacement = describeControl(present, place);
            row.replaceWith(replacement);
            return;
        }
        const reason = whyReadOnly(present);
        control.update(present, said);
        for (const input of control.inputs) {
            input.disabled = reason !== "";
            input.title = reason || limits(present);
            input.setAttribute("aria-describedby", note.id);
            input.setAttribute("aria-invalid", String(Boolean(said?.isError)));
        }
        row.classList.toggle("locked", !present.readOnly && reason !== "");
        row.classList.toggle("changed", !present.readOnly && present.default !== "" && present.value !== present.default);
        reset.disabled = reason !== "" || present.value === present.default;
        reset.title = reason || `Reset to ${shortText(present.default)}`;
        lock.textContent = !present.readOnly && reason ? "locked" : "";
        lock.title = reason;
        note.textContent = said?.text ?? "";
        note.classList.toggle("error", Boolean(said?.isError));
    } };
    const others = (fields.get(property.name) ?? []).filter((other) => other.place !== place);
    fields.set(property.name, [...others, field]);
    field.update(property, notes.get(property.name));
    return row;
}

const shapeOf = ({ type, readOnly, choices }) => `${type} ${readOnly} ${choices.length > 0}`;

function limits({ minimum, maximum, increment, unit, choices }) {
    if (choices.length > 0 || minimum === "" || minimum === maximum) {
        return "";
    }
    return `${shortText(minimum)} to ${shortText(maximum)} ${unit}${increment ? `, in steps of ${shortText(increment)}` : ""}`;
}

export function start() {
    const all = () => [...fields.keys()].forEach(update);
    for (const topic of ["link", "server", "camera"]) {
        on(topic, all);
    }
}
