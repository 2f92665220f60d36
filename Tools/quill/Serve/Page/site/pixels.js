// SPDX-License-Identifier: Apache-2.0
// The values of the pixel under the pointer.

import { call, cameraPath } from "./api.js";
import { byId } from "./dom.js";

const kPauseMs = 60;

/** One request at a time, for the last pixel asked for. */
export class PixelReader {
    /** @param heldFrame returns the number of the frame that is kept, or null; @param camera the serial number, or null */
    constructor(heldFrame, camera) {
        Object.assign(this, { heldFrame, camera, pixel: null, isAsking: false, isDue: false });
    }

    point(pixel) {
        this.pixel = pixel;
        this.refresh();
    }

    async refresh() {
        if (!this.pixel) {
            this.show("", "");
            return;
        }
        if (this.isAsking) {
            this.isDue = true;
            return;
        }
        const camera = this.camera();
        if (camera === null) {
            return;
        }
        this.isAsking = true;
        this.isDue = false;
        const { x, y } = this.pixel;
        const frame = this.heldFrame();
        try {
            const answer = await call("GET", cameraPath(camera, `/pixels?x=${x}&y=${y}&width=1&height=1${frame === null ? "" : `&frame=${frame}`}`));
            if (this.pixel) {
                this.show(`x ${x}  y ${y}`, this.describe(answer), answer.converted?.[0]?.[0]);
            }
        } catch (problem) {
            this.show(`x ${x}  y ${y}`, problem.error === "FrameGone" ? "the frame is gone" : "");
        }
        setTimeout(() => {
            this.isAsking = false;
            if (this.isDue) {
                this.refresh();
            }
        }, kPauseMs);
    }

    describe({ raw, converted, channels, mosaic, bitDepth }) {
        const sample = raw?.[0]?.[0];
        const samples = Array.isArray(sample) ? sample : [sample];
        const names = samples.length === channels?.length ? channels.map((name) => name[0]) : [];
        const rawText = samples.map((value, at) => (names.length > 1 ? `${names[at]} ${value}` : value)).join(" ");
        const rgb = converted?.[0]?.[0];
        return `raw ${rawText}${mosaic ? ` (${mosaic})` : ""} · ${bitDepth} bit${rgb ? ` · RGB ${rgb.join(" ")}` : ""}`;
    }

    show(place, values, rgb) {
        byId("pixel-place").textContent = place;
        byId("pixel-values").textContent = values;
        const swatch = byId("pixel-colour");
        swatch.hidden = !rgb;
        if (rgb) {
            const [red, green = red, blue = red] = rgb;
            swatch.style.backgroundColor = `rgb(${red} ${green} ${blue})`;
        }
    }
}
