// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
import { choice, foreign, h, label, named, search, table, tableBody, tableRow, toolbar } from "./dom.js";
import { failure } from "./dialog.js";
import { govctl } from "./client.js";

const TITLES = ["Time", "Who", "Program", "What", "Change", "Result"];
const LIMIT = 500; // rows; more are slow to draw, and nobody reads them
const PERIODS = [["-1d", "Last day"], ["-7d", "Last week"], ["-31d", "Last month"], ["@0", "All time"]];

const word = (value) => ({ true: "on", false: "off", null: "-" }[value] ?? value);

export const who = (write) => write.user ?? "unknown";
export const when = (write) => new Date(write.time).toLocaleString();
export const change = (write) => [foreign(word(write.before)), " → ", foreign(word(write.value))];

function makeRow(write) {
    return tableRow(TITLES, [
        when(write),
        foreign(who(write)),
        foreign(write.program ?? `"${write.command ?? ""}"`),
        named(write.key),
        h("span", {}, ...change(write)),
        label(foreign(write.result), write.result === "accepted" ? "green" : "red"),
    ]);
}

export function historyView() {
    let writes = [], questions = 0;
    const body = tableBody();
    const problem = h("div", { role: "status" });
    const count = h("p", { role: "status" });
    const results = new Set();
    const draw = () => {
        const key = query.querySelector("input").value.trim().toLowerCase();
        const result = select.value;
        const found = writes.filter((write) => write.key.toLowerCase().includes(key) &&
            (result === "" || write.result === result)).reverse();
        body.replaceChildren(...found.slice(0, LIMIT).map(makeRow));
        count.textContent = `${found.length} of ${writes.length} writes` +
            (found.length > LIMIT ? `, of which the newest ${LIMIT} are listed` : "");
    };
    const update = async () => {
        const question = questions += 1;
        const history = await govctl(["history", "--since", period.querySelector("select").value]);
        if (question !== questions)
            return; // a later one has been asked, for another period or of a newer journal
        writes = history.result?.writes ?? [];
        problem.replaceChildren(...history.error ? [failure(history)] : []);
        for (const { result } of writes.filter((write) => !results.has(write.result))) {
            results.add(result);
            select.append(h("option", { value: result }, result));
        }
        draw();
    };
    const query = search("Search by policy or switch", draw);
    const period = choice("Period", PERIODS, update);
    const result = choice("Result", [["", "All results"]], draw);
    const select = result.querySelector("select");
    period.querySelector("select").value = "-7d";
    return {
        element: h("div", {}, toolbar(query, result, period), problem, count, table("History", TITLES, body)),
        update,
    };
}
