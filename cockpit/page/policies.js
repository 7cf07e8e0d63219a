// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
import {
    button, choice, foreign, h, label, named, onOff, search, table, tableBody, tableRow, toggle, toolbar,
} from "./dom.js";
import { change, failure, openDialog, section } from "./dialog.js";
import { exported, govctl } from "./client.js";
import { change as wrote, when, who } from "./history.js";

const TITLES = ["Policy", "Reads", "Why", "In force", "Stored as"];

const FORCE = {
    "in-force": ["in force", "green"],
    "not-in-force": ["not in force", "red"],
    "not-enforced": ["only announced", "grey"],
    "unseen": ["cannot be seen", "blue"],
};

const FILTERS = [
    ["", "All policies", () => true],
    ["on", "On", (policy) => policy.value === true],
    ["off", "Off", (policy) => policy.value !== true],
    ["switch", "Forced off by a switch", (policy) => policy.reason === "switch"],
    ["lock", "Locked", (policy) => policy.reason === "lock"],
    ["force", "Not in force", (policy) => policy.force === "not-in-force"],
    ["announced", "Only announced", (policy) => policy.force === "not-enforced"],
];

const why = (policy) => ({
    stored: "as stored",
    switch: policy.switches.filter(({ value }) => !value).flatMap(({ key }, i) =>
        [i ? ", switch " : "switch ", named(key), " is off"]),
    lock: "locked, or its file was edited",
    file: "the file says otherwise, or has no value",
    none: "has no value, which counts as off",
    unknown: "the stored value is not known to this user",
}[policy.reason] ?? policy.reason);

const isOn = (policy) => policy.stored ?? policy.value ?? false;

// All that can be found out about one policy.
function showPolicy(policy) {
    const dialog = openDialog(named(policy.key));
    dialog.attempt(async () => {
        const [explained, history] = await Promise.all(
            [govctl(["explain", "--", policy.key]), govctl(["history", "--", policy.key])]);
        const last = history.result?.writes.filter(({ result }) => result === "accepted").at(-1);
        const effects = explained.result?.effects ?? { on: [], off: [] };
        dialog.fill(
            h("p", {}, `Reads ${onOff(policy.value)}: `, why(policy), "."),
            ...explained.error ? [failure(explained)] : [],
            ...section("When it goes on, the daemon", effects.on),
            ...section("When it goes off, the daemon", effects.off),
            ...section("Seen on the device", policy.seen),
            ...section("Governed by", policy.switches.map(({ key, value }) =>
                [named(key), `, which is ${onOff(value)}`])),
            ...section("Last change", [history.error?.message ?? (last
                ? [`${when(last)}, by `, foreign(who(last)), ": ", ...wrote(last)]
                : "no change has a record")]));
    });
}

// A row that stays in the page, so that a refresh takes no focus away.
class Row {
    constructor(key, refresh) {
        this.name = button("link", key, () => showPolicy(this.policy));
        this.name.classList.add("pf-m-inline");
        [this.input, this.toggle] = toggle(`${key} is stored as on`, () => this.ask(refresh));
        this.cells = [h("span"), h("span"), h("span")];
        this.element = tableRow(TITLES, [this.name, ...this.cells, this.toggle]);
    }

    ask(refresh) {
        const value = onOff(!isOn(this.policy));
        change({
            title: ["Turn ", named(this.policy.key), ` ${value}?`], verb: ["set"],
            operands: [this.policy.key, value], action: `Turn ${value}`,
        }, refresh);
    }

    update(policy, writable) {
        const shown = JSON.stringify([policy, writable]);
        if (shown === this.shown)
            return;
        this.shown = shown;
        this.policy = policy;
        this.input.checked = isOn(policy);
        this.input.disabled = !writable;
        const [reads, reason, force] = this.cells;
        reads.replaceChildren(label(onOff(policy.value), policy.value ? "green" : "grey"));
        reason.replaceChildren(...[why(policy)].flat());
        force.replaceChildren(label(...FORCE[policy.force] ?? ["not known", "grey"]));
    }
}

async function saveExport() {
    const { text, failure: problem } = await exported();
    if (problem)
        return openDialog("Export").fill(failure({ error: problem }));
    const link = h("a", { download: "policies.conf", href: URL.createObjectURL(new Blob([text])) });
    link.click();
    URL.revokeObjectURL(link.href);
}

async function applyFile(event, refresh) {
    const [file] = event.target.files;
    const input = await file.text();
    event.target.value = ""; // the same file can be chosen again
    change({
        title: ["Apply ", named(file.name), "?"], verb: ["apply"], operands: ["-"], input, action: "Apply",
    }, refresh);
}

export function policiesView(refresh) {
    const rows = new Map();
    const body = tableBody();
    const count = h("p", { role: "status", class: "pf-v5-u-mb-sm" });
    const filter = () => {
        const text = query.querySelector("input").value.trim().toLowerCase();
        const [, , matches] = FILTERS.find(([value]) => value === kind.querySelector("select").value);
        let shown = 0;
        for (const { element, policy } of rows.values()) {
            element.hidden = !(matches(policy) && element.textContent.toLowerCase().includes(text));
            shown += !element.hidden;
        }
        const words = `${shown} of ${rows.size} policies`;
        if (count.textContent !== words) // a screen reader says it again otherwise
            count.textContent = words;
    };
    const query = search("Search policies", filter);
    const kind = choice("Show", FILTERS, filter);
    const file = h("input", { type: "file", hidden: true, change: (event) => applyFile(event, refresh) });
    const apply = button("secondary", "Apply a file", () => file.click());
    return {
        element: h("div", {},
            toolbar(query, kind, button("secondary", "Export", saveExport), apply, file), count,
            table("Policies", TITLES, body)),
        update({ policies, writable }) {
            for (const policy of policies) {
                if (!rows.has(policy.key)) {
                    rows.set(policy.key, new Row(policy.key, refresh));
                    body.append(rows.get(policy.key).element);
                }
                rows.get(policy.key).update(policy, writable);
            }
            apply.disabled = !writable;
            filter();
        },
    };
}
