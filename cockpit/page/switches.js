// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
import { clipped, h, named, onOff, table, tableBody, tableRow, toggle } from "./dom.js";
import { change } from "./dialog.js";

const TITLES = ["Switch", "Governs", "On"];

class Row {
    constructor(key, refresh) {
        this.governs = h("span");
        [this.input, this.toggle] = toggle(`${clipped(key)} is on`, () => {
            const value = onOff(!this.value);
            change({
                title: ["Turn the switch ", named(key), ` ${value}?`], verb: ["switch", "set"],
                operands: [key, value], action: `Turn ${value}`,
            }, refresh);
        });
        this.element = tableRow(TITLES, [named(key), this.governs, this.toggle]);
    }

    update({ value, policies }, writable) {
        const shown = JSON.stringify([value, policies, writable]);
        if (shown === this.shown)
            return;
        this.shown = shown;
        this.value = this.input.checked = value;
        this.input.disabled = !writable;
        this.governs.replaceChildren(policies.join(", "));
    }
}

export function switchesView(refresh) {
    const rows = new Map();
    const body = tableBody();
    const none = h("p", {}, "This device has no access switches.");
    const list = table("Access switches", TITLES, body);
    return {
        element: h("div", {}, h("p", {}, "While a switch is off, the policies that it governs are off."), none, list),
        update({ switches, writable }) {
            none.hidden = switches.length > 0;
            list.hidden = !none.hidden;
            const keys = new Set(switches.map(({ key }) => key));
            for (const [key, { element }] of rows) {
                if (!keys.has(key)) {
                    element.remove();
                    rows.delete(key);
                }
            }
            for (const item of switches) {
                if (!rows.has(item.key)) {
                    rows.set(item.key, new Row(item.key, refresh));
                    body.append(rows.get(item.key).element);
                }
                rows.get(item.key).update(item, writable);
            }
        },
    };
}
