// SPDX-License-Identifier: Apache-2.0
// The connection to the server: its events, its absence and return, its token.

import { call, address, Problem } from "./api.js";
import { emit, say, state } from "./bus.js";
import { byId } from "./dom.js";

const kBeatMs = 10_000;
const kPatienceMs = 6_000;
const kHiddenMs = 15_000;

let source = null;
let retry = null;
let wait = 500;
let lastBeat = Date.now();
let firstVersion = null;
let restTimer = null;

function setLink(link) {
    if (link === state.link) {
        return;
    }
    const before = state.link;
    state.link = link;
    if (link === "away") {
        say("warning", "The server is away. The page tries to reach it again by itself.");
    } else if (link === "on" && before === "away") {
        say("info", "The server is back.");
    }
    emit("link", link);
}

function again() {
    source?.close();
    source = null;
    clearTimeout(retry);
    retry = setTimeout(connect, wait);
    wait = Math.min(wait * 1.6, 5_000);
}

async function askForServer() {
    const abort = new AbortController();
    const limit = setTimeout(() => abort.abort(), kPatienceMs);
    try {
        const answer = await fetch(address("/server"), { signal: abort.signal, cache: "no-store" });
        if (answer.status === 401) {
            return "token";
        }
        if (!answer.ok) {
            return "away";
        }
        state.server = await answer.json();
        return "on";
    } catch {
        return "away";
    } finally {
        clearTimeout(limit);
    }
}

/** Connects anew, whatever is there. */
export async function connect() {
    giveUp();
    const found = await askForServer();
    if (found !== "on") {
        setLink(found);
        if (found === "token") {
            byId("token-dialog").open || byId("token-dialog").showModal();
        } else {
            again();
        }
        return;
    }
    firstVersion ??= state.server.version;
    byId("outdated").hidden = state.server.version === firstVersion;
    emit("server", state.server);
    source = new EventSource(address("/events"));
    source.addEventListener("hello", () => {
        wait = 500;
        lastBeat = Date.now();
        setLink("on");
        emit("fresh");
    });
    source.addEventListener("error", () => {
        setLink("away");
        again();
    });
    for (const topic of ["cameras", "property", "statistics", "log"]) {
        source.addEventListener(topic, (event) => {
            lastBeat = Date.now();
            emit(topic, JSON.parse(event.data));
        });
    }
}

/** A page that slept, or whose network went, hears nothing of it: asks now and then. */
async function beat() {
    const slept = Date.now() - lastBeat > 6 * kBeatMs;
    if (state.link !== "on" || document.hidden || Date.now() - lastBeat < kBeatMs) {
        return;
    }
    lastBeat = Date.now();
    const found = await askForServer();
    if (found !== "on") {
        setLink(found === "token" ? "token" : "away");
        connect();
    } else if (slept || source?.readyState !== EventSource.OPEN) {
        connect();
    }
}

function giveUp() {
    clearTimeout(retry);
    source?.close();
    source = null;
}

/** A browser has six connections to a server for all its tabs: one that is hidden for a while gives its own back. */
function rest() {
    clearTimeout(restTimer);
    if (document.hidden) {
        restTimer = setTimeout(giveUp, kHiddenMs);
    } else if (state.link !== "on" || source === null) {
        connect();
    } else {
        beat();
    }
}

async function openSession(token) {
    await call("POST", "/session", { token });
}

/** Takes the token out of the address, gives it to the server, and connects. */
export async function start() {
    const parts = new URLSearchParams(location.hash.slice(1));
    const token = parts.get("token");
    byId("token-form").addEventListener("submit", async (event) => {
        event.preventDefault();
        try {
            await openSession(byId("token").value.trim());
            byId("token-dialog").close();
            byId("token").value = "";
            byId("token-problem").textContent = "";
            connect();
        } catch (problem) {
            byId("token-problem").textContent = problem.text;
        }
    });
    byId("outdated-reload").addEventListener("click", () => location.reload());
    setInterval(beat, 2_000);
    window.addEventListener("online", () => state.link === "away" && connect());
    window.addEventListener("pagehide", giveUp); // the browser may keep a page that was left, with its connection
    window.addEventListener("pageshow", ({ persisted }) => persisted && connect());
    document.addEventListener("visibilitychange", rest);
    if (token !== null) {
        parts.delete("token");
        history.replaceState(null, "", `${location.pathname}${parts.size ? `#${parts}` : ""}`);
        await openSession(token).catch((problem) => {
            byId("token-problem").textContent = problem instanceof Problem ? problem.text : String(problem);
        });
    }
    connect();
}
