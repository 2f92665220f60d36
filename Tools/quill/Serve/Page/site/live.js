// SPDX-License-Identifier: Apache-2.0
// A camera's live pictures, as they come.

import { address, cameraPath } from "./api.js";
import { parsePicture } from "./frames.js";

const kLongestWaitMs = 4_000;

/** Stays connected until close(). Asks for the next picture once the last one is drawn: a hidden tab asks for none. */
export class Live {
    /**
     * @param onPicture called with a description and an ImageBitmap, when it is time to draw
     * @param onState called with a status and a sentence, of the stream or of the connection
     * @param onHeld called with the number of the frame that the server keeps
     */
    constructor(serialNumber, { onPicture, onState, onHeld }) {
        Object.assign(this, { serialNumber, onPicture, onState, onHeld });
        Object.assign(this, { socket: null, isClosed: false, isFrozen: false, held: null, wait: 300, view: { scale: 1, quality: 85 } });
        this.connect();
    }

    connect() {
        const scheme = location.protocol === "https:" ? "wss" : "ws";
        const socket = new WebSocket(`${scheme}://${location.host}${address(cameraPath(this.serialNumber, "/live"))}`);
        socket.binaryType = "arraybuffer";
        socket.onopen = () => {
            this.wait = 300;
            this.say({ type: "view", ...this.view });
            if (!this.isFrozen) {
                this.say({ type: "ready" });
            }
        };
        socket.onmessage = ({ data }) => (typeof data === "string" ? this.hear(JSON.parse(data)) : this.show(data, socket));
        socket.onclose = () => {
            if (this.isClosed || socket !== this.socket) {
                return;
            }
            this.onState("Away", "The connection for pictures is lost. It is made again by itself.");
            this.timer = setTimeout(() => this.connect(), this.wait);
            this.wait = Math.min(this.wait * 2, kLongestWaitMs);
        };
        this.socket = socket;
    }

    say(message) {
        if (this.socket?.readyState === WebSocket.OPEN) {
            this.socket.send(JSON.stringify(message));
        }
    }

    hear(message) {
        if (message.type === "state") {
            this.onState(message.status, message.text);
        } else if (message.type === "held") {
            this.held = message.frame;
            this.onHeld(message.frame);
        }
    }

    async show(data, socket) {
        const isMine = () => !this.isClosed && socket === this.socket;
        let bitmap;
        let description;
        try {
            const picture = parsePicture(data);
            description = picture.description;
            bitmap = await createImageBitmap(new Blob([picture.jpeg], { type: "image/jpeg" }));
        } catch {
            // A picture that cannot be shown is left out; the next one may be whole.
        }
        requestAnimationFrame(() => {
            const isLate = this.isFrozen && this.held !== null && description?.frame !== this.held;
            if (!isMine() || isLate) {
                bitmap?.close();
                return;
            }
            if (bitmap) {
                this.onPicture(description, bitmap);
            }
            if (!this.isFrozen) {
                this.say({ type: "ready" });
            }
        });
    }

    setScale(scale) {
        if (scale !== this.view.scale) {
            this.view = { ...this.view, scale };
            this.say({ type: "view", ...this.view });
        }
    }

    freeze(isFrozen) {
        if (isFrozen !== this.isFrozen) {
            this.isFrozen = isFrozen;
            this.held = null;
            this.say({ type: isFrozen ? "hold" : "release" });
            if (!isFrozen) {
                this.say({ type: "ready" });
            }
        }
    }

    close() {
        this.isClosed = true;
        clearTimeout(this.timer);
        this.socket?.close();
    }
}
