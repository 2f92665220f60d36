// SPDX-License-Identifier: Apache-2.0
// Requests to the server.

const kBase = "/api/v1";

/** A refusal: what is wrong (message), and what to do (advice). */
export class Problem extends Error {
    constructor({ status = 0, error = "Failed", message = "The request failed.", advice = "" }) {
        super(message);
        Object.assign(this, { status, error, advice });
    }

    get text() {
        return this.advice ? `${this.message} ${this.advice}` : this.message;
    }
}

export const cameraPath = (serialNumber, rest = "") => `/cameras/${encodeURIComponent(serialNumber)}${rest}`;
export const address = (path) => kBase + path;

/** Returns the answer once its status says success; throws a Problem. */
export async function request(method, path, { body, text, signal } = {}) {
    const options = { method, signal, cache: "no-store", credentials: "same-origin" };
    if (body !== undefined || text !== undefined) {
        options.headers = { "Content-Type": "application/json" };
        options.body = text ?? JSON.stringify(body);
    }
    let answer;
    try {
        answer = await fetch(address(path), options);
    } catch (reason) {
        if (signal?.aborted && reason.name === "AbortError") {
            throw reason;
        }
        throw new Problem({ error: "ServerAway", message: "The server does not answer.",
            advice: "Try again once the page says that it is back." });
    }
    if (!answer.ok) {
        const problem = await answer.json().catch(() => ({ message: `The server answers ${answer.status}.` }));
        throw new Problem({ ...problem, status: answer.status });
    }
    return answer;
}

/** The same for an answer that is JSON, or empty. */
export async function call(method, path, body) {
    const answer = await request(method, path, { body });
    return answer.status === 204 ? null : answer.json();
}

/** The name that the server gives to a file. */
export function fileName(answer, otherwise) {
    const found = /filename="([^"]+)"/.exec(answer.headers.get("Content-Disposition") ?? "");
    return found ? found[1] : otherwise;
}
