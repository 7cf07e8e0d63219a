// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// Makes an element. A child that is no element becomes text, never markup: keys, messages of plugins
// and the journal are foreign.
export function h(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
        if (typeof value === "function")
            element.addEventListener(name, value);
        else if (value === true)
            element.setAttribute(name, "");
        else if (value !== false && value !== null)
            element.setAttribute(name, value);
    }
    element.append(...children.flat());
    return element;
}

const escaped = (character) => `\\u${character.codePointAt(0).toString(16).padStart(4, "0")}`;

// Foreign text as the client prints it: control and format characters, which cannot be seen, as \uXXXX.
const printable = (text) => text.replace(/[\p{Cc}\p{Cf}]/gu, escaped);

// Foreign text, which cannot change the direction in which the text around it is written.
export const foreign = (text) => h("bdi", {}, printable(text));

// What is shown of the key of a switch, which has no limit of its own.
export const clipped = (key) => printable(key.length > 200 ? `${key.slice(0, 200)}...` : key);

export const named = (key) => h("bdi", {}, clipped(key));

export const onOff = (value) => (value === null ? "none" : value ? "on" : "off");

export function button(kind, text, onClick) {
    return h("button", { type: "button", class: `pf-v5-c-button pf-m-${kind}`, click: onClick }, text);
}

export function label(text, colour) {
    return h("span", { class: `pf-v5-c-label pf-m-compact pf-m-${colour}` },
        h("span", { class: "pf-v5-c-label__content" }, h("span", { class: "pf-v5-c-label__text" }, text)));
}

// A switch whose position is that of the device: a click asks, and changes nothing by itself.
export function toggle(name, onAsk) {
    const input = h("input", {
        type: "checkbox", role: "switch", class: "pf-v5-c-switch__input", "aria-label": name,
        click: (event) => { event.preventDefault(); onAsk(); },
    });
    return [input, h("label", { class: "pf-v5-c-switch" }, input,
        h("span", { class: "pf-v5-c-switch__toggle" }))];
}

export function search(name, onInput) {
    return h("span", { class: "pf-v5-c-form-control" },
        h("input", { type: "search", "aria-label": name, placeholder: name, input: onInput }));
}

// A list to choose from: pairs of a value and its text.
export function choice(name, options, onChange) {
    return h("span", { class: "pf-v5-c-form-control" },
        h("select", { "aria-label": name, change: onChange },
            options.map(([value, text]) => h("option", { value }, text))));
}

export function toolbar(...items) {
    return h("div", { class: "pf-v5-c-toolbar" }, h("div", { class: "pf-v5-c-toolbar__content" },
        h("div", { class: "pf-v5-c-toolbar__content-section" },
            items.map((item) => h("div", { class: "pf-v5-c-toolbar__item" }, item)))));
}

// The styles for a phone take the meaning of a table from its elements, so the roles are written out.
export function table(name, titles, rows) {
    return h("table", { class: "pf-v5-c-table pf-m-compact pf-m-grid-md", role: "table", "aria-label": name },
        h("thead", { class: "pf-v5-c-table__thead", role: "rowgroup" },
            h("tr", { class: "pf-v5-c-table__tr", role: "row" }, titles.map((title) =>
                h("th", { class: "pf-v5-c-table__th", role: "columnheader", scope: "col" }, title)))),
        rows);
}

export const tableBody = () => h("tbody", { class: "pf-v5-c-table__tbody", role: "rowgroup" });

export function tableRow(titles, cells) {
    return h("tr", { class: "pf-v5-c-table__tr", role: "row" }, cells.map((cell, i) =>
        h("td", { class: "pf-v5-c-table__td", role: "cell", "data-label": titles[i] }, cell)));
}

export function alert(kind, title, ...lines) {
    return h("div", { class: `pf-v5-c-alert pf-m-inline pf-m-${kind}` },
        h("p", { class: "pf-v5-c-alert__title" }, foreign(title)),
        h("div", { class: "pf-v5-c-alert__description" }, lines.map((line) => h("p", {}, foreign(line)))));
}
