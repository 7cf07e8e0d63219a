// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
/* global cockpit */

// Runs the client, as root where the session has administrative access, otherwise as its user.
// `take` gets the output and, if the client failed, what Cockpit says of that.
function run(words, input, take) {
    return new Promise((resolve) => {
        const process = cockpit.spawn(["govctl", ...words], { superuser: "try", err: "message" });
        process.then((output) => resolve(take(output)), (failure, output) => resolve(take(output, failure)));
        process.input(input);
    });
}

// The document that the client prints, or one like it when it could not be run.
export function govctl(words, input = "") {
    return run(["--json", ...words], input, (output, failure) => {
        try {
            return JSON.parse(output);
        } catch {
            return { code: 5, error: { name: failure?.problem ?? "", message: cockpit.message(failure ?? output) } };
        }
    });
}

// The state of the device as a file.
export const exported = () => run(["export"], "", (text, failure) => ({ text, failure }));

// Runs `work` now, and again after each pause as long as it has been asked for in between.
export function coalesced(work, pause) {
    let running = false, wanted = false;
    return async () => {
        wanted = true;
        if (running)
            return;
        running = true;
        try {
            while (wanted) {
                wanted = false;
                await work();
                await new Promise((resolve) => { setTimeout(resolve, pause); });
            }
        } finally {
            running = false;
        }
    };
}

// Calls `onChange` for each signal of the daemon, and when the daemon comes or goes.
export function watch(onChange) {
    const bus = cockpit.dbus("org.kvt.PolicyManager", { bus: "system" });
    bus.subscribe({ path: "/org/kvt/PolicyManager" }, onChange);
    bus.addEventListener("owner", onChange);
}
