// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
import { alert, button, foreign, h, onOff } from "./dom.js";
import { govctl } from "./client.js";

// Opens a window above the page. It keeps the focus, and gives it back when it closes.
export function openDialog(title) {
    const body = h("div", { class: "pf-v5-c-modal-box__body", tabindex: "0", "aria-live": "polite" });
    const action = h("span");
    const close = button("link", "Close", () => dialog.close());
    const dialog = h("dialog", {
        class: "pf-v5-c-modal-box pf-m-sm", "aria-labelledby": "dialog-title",
        cancel: (event) => { if (close.disabled) event.preventDefault(); },
        close: () => dialog.remove(),
    },
    h("header", { class: "pf-v5-c-modal-box__header" },
        h("h2", { class: "pf-v5-c-modal-box__title", id: "dialog-title" }, foreign(title))),
    body, h("footer", { class: "pf-v5-c-modal-box__footer" }, action, close));
    document.body.append(dialog);
    dialog.showModal();
    body.textContent = "Asking the device ...";
    return {
        fill: (...content) => body.replaceChildren(...content),
        // Offers to do something, once; the window stays open meanwhile.
        offer(text, work) {
            const run = button("primary", text, async () => {
                run.disabled = close.disabled = true;
                run.classList.add("pf-m-in-progress");
                await work();
                close.disabled = false;
                action.replaceChildren();
                body.focus();
            });
            action.replaceChildren(run);
        },
        close: () => dialog.close(),
    };
}

export function section(title, lines = []) {
    return lines.length === 0 ? [] : [h("h3", { class: "pf-v5-c-title pf-m-md" }, title),
        h("ul", { class: "pf-v5-c-list" }, lines.map((line) => h("li", {}, foreign(line))))];
}

export const failure = (document) => alert("danger", document.error.message, ...document.error.nearest ?? []);

const step = ({ key, before, value }) => `${key}: ${onOff(before)} → ${onOff(value)}`;

// What a change does or did, from the result that the client gives.
function describe({ error, result = {} }) {
    const parts = [
        error ? [failure({ error })] : [],
        section("Reads otherwise", result.policies?.map(step)),
        section("Changes", result.changes?.map(step)),
        section("On the device", result.enforces?.flatMap(({ key, effects }) =>
            effects.map((effect) => `${key}: ${effect}`))),
        section("In the way", result.obstacles?.map(({ message }) => message)),
        section("Taken back", result.takenBack?.map(step)),
        section("Note", result.notes),
    ].flat();
    return parts.length ? parts : ["Nothing changes on the device."];
}

// Asks the client what a change would do, shows it, and makes the change when that is confirmed.
// Options come before "--", after which a key is never taken for one.
export async function change({ title, verb, operands, input, action }, onDone) {
    const dialog = openDialog(title);
    const forecast = await govctl([...verb, "--dry-run", "--", ...operands], input);
    dialog.fill(...describe(forecast));
    if (forecast.error || forecast.result.changes?.length === 0)
        return;
    dialog.offer(action, async () => {
        const outcome = await govctl([...verb, "--", ...operands], input);
        onDone();
        if (outcome.error || outcome.result.notes.length)
            dialog.fill(...outcome.error ? [] : [alert("info", "The change was made")], ...describe(outcome));
        else
            dialog.close();
    });
}
