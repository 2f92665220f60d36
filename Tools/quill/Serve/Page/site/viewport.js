// SPDX-License-Identifier: Apache-2.0
// Which part of a frame is seen, and how large. Pure: lengths are in pixels of the stage and of the frame.

const kLargestZoom = 96;

export class Viewport {
    constructor() {
        Object.assign(this, { stage: { width: 1, height: 1 }, frame: { width: 1, height: 1 } });
        Object.assign(this, { zoom: 1, x: 0, y: 0, fits: true }); // x, y: the frame's point at the stage's centre
    }

    get fitZoom() {
        return Math.min(this.stage.width / this.frame.width, this.stage.height / this.frame.height);
    }

    setStage(width, height) {
        this.stage = { width: Math.max(width, 1), height: Math.max(height, 1) };
        this.settle();
    }

    setFrame(width, height) {
        if (width !== this.frame.width || height !== this.frame.height) {
            this.frame = { width, height };
            this.fits = this.fits || this.zoom < this.fitZoom;
            this.settle();
        }
    }

    fit() {
        this.fits = true;
        this.settle();
    }

    /** Zooms so that the frame's point under a point of the stage stays there. */
    zoomTo(zoom, stageX = this.stage.width / 2, stageY = this.stage.height / 2) {
        const fixed = this.toFrame(stageX, stageY);
        const smallest = Math.min(this.fitZoom, 1);
        this.zoom = Math.min(Math.max(zoom, smallest), kLargestZoom);
        this.fits = this.zoom <= smallest && smallest === this.fitZoom;
        this.x = fixed.x - (stageX - this.stage.width / 2) / this.zoom;
        this.y = fixed.y - (stageY - this.stage.height / 2) / this.zoom;
        this.settle();
    }

    pan(stageX, stageY) {
        this.x -= stageX / this.zoom;
        this.y -= stageY / this.zoom;
        this.settle();
    }

    toFrame(stageX, stageY) {
        return { x: this.x + (stageX - this.stage.width / 2) / this.zoom,
            y: this.y + (stageY - this.stage.height / 2) / this.zoom };
    }

    toStage(frameX, frameY) {
        return { x: (frameX - this.x) * this.zoom + this.stage.width / 2,
            y: (frameY - this.y) * this.zoom + this.stage.height / 2 };
    }

    /** The pixel at a point of the stage; null beside the frame. */
    pixelAt(stageX, stageY) {
        const { x, y } = this.toFrame(stageX, stageY);
        const isInside = x >= 0 && y >= 0 && x < this.frame.width && y < this.frame.height;
        return isInside ? { x: Math.floor(x), y: Math.floor(y) } : null;
    }

    settle() {
        if (this.fits) {
            this.zoom = this.fitZoom;
        }
        const settled = (value, frame, stage) => {
            const half = stage / 2 / this.zoom;
            return frame <= 2 * half ? frame / 2 : Math.min(Math.max(value, half), frame - half);
        };
        this.x = settled(this.x, this.frame.width, this.stage.width);
        this.y = settled(this.y, this.frame.height, this.stage.height);
    }
}
