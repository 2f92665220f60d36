// SPDX-License-Identifier: Apache-2.0
// What happened, newest last.

import { on } from "./bus.js";
import { byId, el } from "./dom.js";

const kLongest = 500;
const kWords = { info: "Info", warning: "Warning", error: "Error" };

function timeText(time) {
    const date = new Date(time);
    return Number.isNaN(date.getTime()) ? time : date.toLocaleTimeString("en-GB");
}

export function start() {
    const list = byId("log");
    const scroll = byId("log-scroll");
    on("log", ({ time, level, camera, text }) => {
        const isAtEnd = scroll.scrollTop + scroll.clientHeight >= scroll.scrollHeight - 8;
        list.append(el("li", { className: level }, el("time", { dateTime: time }, timeText(time)),
            el("span", { className: "level" }, kWords[level] ?? level), el("span", { className: "log-camera" }, camera ?? ""), el("span", { className: "log-text" }, text)));
        while (list.childElementCount > kLongest) {
            list.firstElementChild.remove();
        }
        if (isAtEnd) {
            scroll.scrollTop = scroll.scrollHeight;
        }
        byId("log-none").hidden = true;
    });
    byId("log-clear").addEventListener("click", () => {
        list.replaceChildren();
        byId("log-none").hidden = false;
    });
}
