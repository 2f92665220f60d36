// SPDX-License-Identifier: Apache-2.0
// Elements of the page.

export const byId = (id) => document.getElementById(id);

/** Makes an element; properties that begin with "on" are listeners, those with a dash or "role" are attributes. */
export function el(tag, properties = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(properties)) {
        if (name.startsWith("on")) {
            element.addEventListener(name.slice(2), value);
        } else if (name.includes("-") || name === "role" || name === "for") {
            element.setAttribute(name, value);
        } else {
            element[name] = value;
        }
    }
    element.append(...children);
    return element;
}

/** Lets the browser save bytes as a file. */
export function saveFile(name, blob) {
    const address = URL.createObjectURL(blob);
    const link = el("a", { href: address, download: name });
    document.body.append(link);
    link.click();
    link.remove();
    setTimeout(() => URL.revokeObjectURL(address), 60_000);
}

/** Fits a canvas' memory to its place on the screen. Returns its context, in CSS pixels, and the size. */
export function prepareCanvas(canvas) {
    const ratio = window.devicePixelRatio || 1;
    const { clientWidth: width, clientHeight: height } = canvas;
    const [columns, rows] = [Math.round(width * ratio), Math.round(height * ratio)];
    if (canvas.width !== columns || canvas.height !== rows) {
        canvas.width = columns;
        canvas.height = rows;
    }
    const context = canvas.getContext("2d");
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, width, height);
    return { context, width, height, ratio };
}

/** A colour of the style sheet, by the name of its variable. */
export const colour = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
