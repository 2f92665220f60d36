// SPDX-License-Identifier: Apache-2.0
// The frame of the page: theme, tabs, and how the connection stands.

import { emit, on, state } from "./bus.js";
import { byId } from "./dom.js";

const kThemes = ["auto", "light", "dark"];
const kThemeNames = { auto: "as the system", light: "light", dark: "dark" };
const kLinkTexts = { connecting: "Connecting …", on: "Connected", away: "Server away, trying again …", token: "Token wanted" };

function setTheme(theme) {
    document.documentElement.dataset.theme = theme;
    localStorage.setItem("theme", theme);
    byId("theme").textContent = { auto: "◐", light: "☀", dark: "☾" }[theme];
    byId("theme").setAttribute("aria-label", `Colours: ${kThemeNames[theme]}`);
    byId("theme").title = `Colours: ${kThemeNames[theme]}`;
    emit("theme");
}

function startTabs() {
    const tabs = [...document.querySelectorAll("[role=tab]")];
    const open = (chosen) => {
        for (const tab of tabs) {
            const isChosen = tab === chosen;
            tab.setAttribute("aria-selected", String(isChosen));
            tab.tabIndex = isChosen ? 0 : -1;
            byId(tab.getAttribute("aria-controls")).hidden = !isChosen;
        }
        sessionStorage.setItem("tab", chosen.id);
        emit("tab", chosen.id);
    };
    tabs.forEach((tab, at) => {
        tab.addEventListener("click", () => open(tab));
        tab.addEventListener("keydown", ({ key }) => {
            const target = { ArrowRight: at + 1, ArrowLeft: at - 1, Home: 0, End: -1 }[key];
            if (target !== undefined) {
                const next = tabs.at(target % tabs.length);
                open(next);
                next.focus();
            }
        });
    });
    open(byId(sessionStorage.getItem("tab") ?? "") ?? tabs[0]);
}

function showLink() {
    byId("link").className = `link ${state.link}`;
    byId("link-text").textContent = kLinkTexts[state.link];
    byId("away").hidden = state.link !== "away";
    document.body.classList.toggle("is-away", state.link === "away");
}

export function start() {
    const stored = localStorage.getItem("theme");
    setTheme(kThemes.includes(stored) ? stored : "auto");
    byId("theme").addEventListener("click", () => setTheme(kThemes[(kThemes.indexOf(document.documentElement.dataset.theme) + 1) % kThemes.length]));
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => emit("theme"));
    startTabs();
    on("link", showLink);
    on("server", ({ viewOnly, version }) => {
        byId("view-only").hidden = !viewOnly;
        byId("version").textContent = version;
    });
}
