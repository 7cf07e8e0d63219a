// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
import { alert, button, foreign, h, named, onOff } from "./dom.js";
import { govctl } from "./client.js";

// The title of what nobody expected, for example the answer of a client of another version.
export const UNEXPECTED = "The page could not go on";

// A browser lets a second Escape close a dialog that has refused the first.
const stay = (event) => { if (event.key === "Escape") event.preventDefault(); };

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
        h("h2", { class: "pf-v5-c-modal-box__title", id: "dialog-title" }, title)),
    body, h("footer", { class: "pf-v5-c-modal-box__footer" }, action, close));
    document.body.append(dialog);
    dialog.showModal();
    body.textContent = "Asking the device ...";
    const attempt = async (work) => {
        try {
            await work();
        } catch (error) {
            body.replaceChildren(alert("danger", UNEXPECTED, String(error)));
        }
    };
    return {
        attempt, // does something, and says in the window if it fails
        fill: (...content) => body.replaceChildren(...content),
        // Offers to do something, once; the window stays open meanwhile.
        offer(text, work) {
            const run = button("primary", text, async () => {
                run.disabled = close.disabled = true;
                run.classList.add("pf-m-in-progress");
                document.addEventListener("keydown", stay);
                await attempt(work);
                document.removeEventListener("keydown", stay);
                close.disabled = false;
                run.remove();
                body.focus();
            });
            action.replaceChildren(run);
        },
        close: () => dialog.close(),
    };
}

// A list under a title. A line is foreign text, or a list of texts and elements.
export function section(title, lines = []) {
    return lines.length === 0 ? [] : [h("h3", { class: "pf-v5-c-title pf-m-md" }, title),
        h("ul", { class: "pf-v5-c-list" }, lines.map((line) =>
            h("li", {}, typeof line === "string" ? foreign(line) : line)))];
}

export const failure = (document) => alert("danger", document.error.message, ...document.error.nearest ?? []);

const step = ({ kind, key, before, value }) =>
    [kind ? `${kind} ` : "", named(key), `: ${onOff(before)} → ${onOff(value)}`];

// What a change does or did, from the result that the client gives.
function describe({ error, result = {} }) {
    const parts = [
        error ? [failure({ error })] : [],
        section("Reads otherwise", result.policies?.map(step)),
        section("Changes", result.changes?.map(step)),
        result.dryRun && result.changes?.length ? [h("p", {},
            "Not listed: what the switches force, and what the daemon does on the device.")] : [],
        section("On the device", result.enforces?.flatMap(({ key, effects }) =>
            (effects.length ? effects : ["nothing but the announcement, which programs have to heed"])
                .map((effect) => [named(key), `: ${effect}`]))),
        section("In the way", result.obstacles?.map(({ message }) => message)),
        section("Taken back", result.takenBack?.map(step)),
        section("Note", result.notes),
    ].flat();
    return parts.length ? parts : ["Nothing changes on the device."];
}

// Asks the client what a change would do, shows it, and makes the change when that is confirmed and
// the client still says the same. Options come before "--", after which a key is never taken for one.
export function change({ title, verb, operands, input, action }, onDone) {
    const dialog = openDialog(title);
    const foretell = () => govctl([...verb, "--dry-run", "--", ...operands], input);
    const show = (forecast, ...notice) => {
        dialog.fill(...notice, ...describe(forecast));
        if (!forecast.error && forecast.result.changes?.length !== 0)
            dialog.offer(action, () => make(forecast));
    };
    const make = async (shown) => {
        const forecast = await foretell();
        if (JSON.stringify(forecast) !== JSON.stringify(shown))
            return show(forecast, alert("warning", "The device has changed meanwhile; nothing was done"));
        const outcome = await govctl([...verb, "--", ...operands], input);
        onDone();
        if (outcome.error || outcome.result.notes.length)
            dialog.fill(...outcome.error ? [] : [alert("info", "The change was made")], ...describe(outcome));
        else
            dialog.close();
    };
    dialog.attempt(async () => show(await foretell()));
}
