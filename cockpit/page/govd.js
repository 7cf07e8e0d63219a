// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
/* global cockpit */
import { UNEXPECTED } from "./dialog.js";
import { alert } from "./dom.js";
import { coalesced, govctl, watch } from "./client.js";
import { followTheme } from "./theme.js";
import { historyView } from "./history.js";
import { policiesView } from "./policies.js";
import { switchesView } from "./switches.js";

const PAUSE = 1000; // milliseconds between two looks at the device
const PERIOD = 30000; // milliseconds after which it looks anyway: services are lost without a signal

// Has policies and switches, too, since the first look that succeeded.
const device = { writable: false };
let notices = "";
let rights = null; // of this session, which keeps them: asking makes the bus log a refused call

// Says what keeps the page from being right or from changing anything; again only when it is new.
function notify(...lines) {
    if (notices !== JSON.stringify(lines)) {
        notices = JSON.stringify(lines);
        document.getElementById("notices").replaceChildren(...lines.map((line) => alert(...line)));
    }
}

function take(list, verified, switches) {
    const found = new Map(verified.result?.policies.map((policy) => [policy.key, policy]));
    device.policies = list.result.policies.map((policy) =>
        ({ ...policy, force: found.get(policy.key)?.state, seen: found.get(policy.key)?.seen }));
    device.switches = switches.result.switches;
    device.writable = rights.allowed && rights.bus !== false;
    const number = (test) => device.policies.filter(test).length;
    document.getElementById("summary").textContent =
        `${number(({ value }) => value === true)} on, ${number(({ value }) => value !== true)} off, ` +
        `${number(({ force }) => force === "not-in-force")} not in force`;
}

async function look() {
    const questions = [["list"], ["verify"], ["switch", "list"], ...rights ? [] : [["can"]]];
    const answers = await Promise.all(questions.map((words) => govctl(words)));
    rights ??= answers[3].result;
    const failed = answers.find(({ error }) => error);
    if (failed) {
        device.writable = false;
        notify(["danger", "What is shown may be out of date", failed.error.message]);
    } else {
        take(...answers);
        notify(...device.writable ? [] : [["info", "Read-only",
            "To change something, turn on administrative access at the top of the page."]]);
    }
    await showView();
}

const refresh = coalesced(look, PAUSE);
const views = { "#/switches": switchesView(refresh), "#/history": historyView() };
const firstView = policiesView(refresh);

async function showView() {
    const view = views[location.hash] ?? firstView;
    const place = document.getElementById("view");
    if (device.policies && place.firstChild !== view.element)
        place.replaceChildren(view.element);
    for (const link of document.querySelectorAll("nav a")) {
        const current = (views[link.hash] ?? firstView) === view;
        link.setAttribute("aria-current", current ? "page" : "false");
        link.parentElement.classList.toggle("pf-m-current", current);
    }
    if (device.policies)
        await view.update(device);
}

const lookIfVisible = () => { if (!cockpit.hidden) refresh(); };

addEventListener("unhandledrejection", ({ reason }) => notify(["danger", UNEXPECTED, String(reason)]));

followTheme();
// Cockpit loads the page anew when administrative access is gained or dropped.
cockpit.permission({ admin: true });
addEventListener("hashchange", showView);
cockpit.addEventListener("visibilitychange", lookIfVisible);
setInterval(lookIfVisible, PERIOD);
watch(refresh);
refresh();
