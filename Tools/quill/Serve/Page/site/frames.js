// SPDX-License-Identifier: Apache-2.0
// Messages of live pictures. Pure functions.

const kMagic = "QLP1";
const kHead = 8;

/** Splits a message into its description and the bytes of its JPEG. Throws an Error if it is none. */
export function parsePicture(buffer) {
    const bytes = new Uint8Array(buffer);
    if (bytes.length < kHead || String.fromCharCode(...bytes.subarray(0, 4)) !== kMagic) {
        throw new Error("The message is no picture.");
    }
    const length = new DataView(buffer).getUint32(4, true);
    if (kHead + length > bytes.length) {
        throw new Error("The picture's description is cut off.");
    }
    const description = JSON.parse(new TextDecoder().decode(bytes.subarray(kHead, kHead + length)));
    return { description, jpeg: bytes.subarray(kHead + length) };
}

/** The coarsest picture that still has a pixel for every pixel of the screen. */
export function scaleFor(screenPixelsPerFramePixel) {
    return [8, 4, 2].find((scale) => screenPixelsPerFramePixel * scale <= 1.05) ?? 1;
}
