// SPDX-License-Identifier: Apache-2.0

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";

const site = new URL("../../../../Tools/quill/Serve/Page/site/", import.meta.url);
const load = (name) => import(`data:text/javascript,${encodeURIComponent(readFileSync(new URL(name, site), "utf8"))}`);
const { axisTo, numberOf, toPosition, shortText, sliderOf, snap, textAt, valueAt } = await load("scales.js");
const { parsePicture, scaleFor } = await load("frames.js");
const { Viewport } = await load("viewport.js");

const range = (type, minimum, maximum, increment = "") => sliderOf({ type, minimum, maximum, increment });

test("reads numbers as people write them", () => {
    for (const [text, number] of [["12.5", 12.5], [" 12,5 ", 12.5], ["-3", -3], ["1e3", 1000], [".5", 0.5]]) {
        assert.equal(numberOf(text), number);
    }
    for (const text of ["", "abc", "1 2", "0x10", "1,000.5", "Infinity", "nan"]) {
        assert.ok(Number.isNaN(numberOf(text)), text);
    }
    assert.deepEqual(["10.000000", "0.250", "100", "RGGB", "1.2.0"].map(shortText), ["10", "0.25", "100", "RGGB", "1.2.0"]);
});

test("snaps to steps within the range", () => {
    for (const [value, minimum, maximum, step, snapped] of [
        [637, 8, 2592, 8, 640], [9999, 8, 2592, 8, 2592], [-1, 8, 2592, 8, 8], [99, 0, 100, 30, 90], [0.123, 0, 1, 0, 0.123]]) {
        assert.equal(snap(value, minimum, maximum, step), snapped);
    }
});

test("a slider reaches both ends and every step, and writes what it shows", () => {
    for (const slider of [range("Float", "0.02", "2000"), range("Float", "-100", "100"), range("Integer", "8", "2592", "8"),
        range("Integer", "0", "255"), range("Float", "1", "16"), range("Integer", "1", "1000000")]) {
        assert.equal(Number(textAt(slider, 0)), slider.low);
        assert.equal(Number(textAt(slider, slider.positions)), slider.high);
        for (let position = 0; position <= slider.positions; ++position) {
            const value = Number(textAt(slider, position));
            assert.ok(value >= slider.low && value <= slider.high);
            assert.ok(Math.abs(toPosition(slider, value) - position) <= 1 || slider.isLogarithmic && slider.step > 0, `${position}: ${value}`);
            assert.ok(!(slider.step > 0) || Math.abs((value - slider.low) / slider.step % 1) < 1e-9);
        }
    }
    assert.equal(range("Integer", "8", "2592", "8").positions, 323);
    assert.ok(range("Float", "0.02", "2000").isLogarithmic && !range("Float", "1", "1000").isLogarithmic);
    assert.ok(Math.abs(valueAt(range("Float", "0.02", "2000"), 500) - Math.sqrt(0.02 * 2000)) < 1e-9);
    for (const [minimum, maximum] of [["", ""], ["3", "3"], ["a", "b"]]) {
        assert.equal(range("Float", minimum, maximum), null);
    }
});

test("axes end at round numbers", () => {
    assert.deepEqual([14.6, 0.9, 100, 1].map((largest) => axisTo(largest).end), [15, 1, 100, 1]);
});

test("takes pictures apart, and refuses what is none", () => {
    const description = new TextEncoder().encode('{"frame":7,"text":"°"}');
    const message = new Uint8Array([...new TextEncoder().encode("QLP1"), description.length, 0, 0, 0, ...description, 0xff, 0xd8, 1]);
    const picture = parsePicture(message.buffer);
    assert.deepEqual([picture.description.frame, picture.description.text, [...picture.jpeg]], [7, "°", [0xff, 0xd8, 1]]);
    for (const wrong of [message.slice(1), message.slice(0, 20), message.slice(0, 3)]) {
        assert.throws(() => parsePicture(wrong.buffer));
    }
    assert.deepEqual([2, 1, 0.5, 0.3, 0.25, 0.01].map(scaleFor), [1, 1, 2, 2, 4, 8]);
});

test("zooming keeps the point under the pointer, and the frame in sight", () => {
    const viewport = new Viewport();
    viewport.setStage(800, 600);
    viewport.setFrame(2592, 1944);
    const fit = viewport.zoom;
    assert.ok(Math.abs(fit - 600 / 1944) < 1e-9);
    const before = viewport.toFrame(500, 200);
    viewport.zoomTo(4, 500, 200);
    const after = viewport.toFrame(500, 200);
    assert.ok(Math.abs(before.x - after.x) < 1e-6 && Math.abs(before.y - after.y) < 1e-6);
    viewport.pan(1e6, 1e6);
    assert.deepEqual(viewport.pixelAt(0, 0), { x: 0, y: 0 });
    viewport.zoomTo(1e-9);
    assert.ok(viewport.fits && viewport.zoom === fit);
    viewport.setFrame(640, 480); // a smaller region fits anew
    assert.equal(viewport.zoom, 1.25);
    assert.equal(new Viewport().pixelAt(-5, 0), null);
});
