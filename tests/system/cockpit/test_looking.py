# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What everybody sees in the page, also when the device changes meanwhile."""

import os
import time

from testbed import govctl, unit
from testbed.browser import Browser
from testbed.bus import SWITCH, write_of
from testbed.files import replace, store, write
from testbed.plugins import FILE_LOCK_FILE, FILE_SWITCH_FILE
from testbed.processes import held

CAMERA = "CameraEnabled"
NFC = "NfcEnabled"
FORCE = {"in-force": "in force", "not-in-force": "not in force", "not-enforced": "only announced",
         "unseen": "cannot be seen"}
MARKUP = "<img src=x onerror=document.title='caught'>"


def test_everybody_sees_all_policies(daemon):
    with Browser("viewer") as page:
        page.row(CAMERA)
        shown = {key: (value, force) for key, value, _, force, _ in page.rows()}
    assert shown == {policy["key"]: ("on" if policy["value"] else "off", FORCE[policy["state"]])
                     for policy in govctl.run("verify", "--json").result["policies"]}


def test_history_needs_a_right(daemon):
    with Browser("viewer") as page:
        page.show("History")
        assert "may not read the system's journal" in page.text("#view .pf-m-danger")


def test_search_and_filter(page):
    page.fill("Search policies", "usbst")
    assert [row[0] for row in page.rows()] == ["UsbStorageEnabled"]
    assert "1 of " in page.text("#view p")
    page.fill("Search policies", "")
    page.fill("Show", "off")
    assert [row[0] for row in page.rows()] == ["UserReportExportEnabled"]


def test_filters_of_locks_and_switches(page):
    write(FILE_LOCK_FILE, "[lock]\npolicies=BackupEnabled\n")
    assert govctl.run("switch", "set", "lens", "off").code in (0, 8)
    page.patiently(lambda: page.row(NFC)[1] == page.row("BackupEnabled")[1] == "off")
    page.fill("Show", "lock")
    assert [row[0] for row in page.rows()] == ["BackupEnabled"]
    page.fill("Show", "switch")
    assert [row[0] for row in page.rows()] == [CAMERA, NFC]


def test_changes_of_others_appear(page, root):
    root.ask(write_of(NFC, False))
    page.patiently(lambda: page.row(NFC)[1] == "off" and not page.toggle(NFC).is_selected())


def test_history_is_filtered(page, root):
    unit.run("journalctl", "--quiet", "--rotate", "--vacuum-time=1us")
    write(FILE_LOCK_FILE, "[lock]\npolicies=BackupEnabled\n")
    page.patiently(lambda: page.row("BackupEnabled")[1] == "off")
    root.ask(write_of(NFC, False))
    root.ask(write_of(NFC, True))
    root.ask(write_of("BackupEnabled", True))
    page.show("History")
    page.patiently(lambda: [row[3:] for row in page.rows()] == [
        ["BackupEnabled", "- → on", "locked"], [NFC, "off → on", "accepted"],
        [NFC, "on → off", "accepted"]])
    page.fill("Search by policy or switch", "nfc")
    assert [row[3] for row in page.rows()] == [NFC, NFC]
    page.fill("Search by policy or switch", "")
    page.fill("Result", "locked")
    assert [row[3] for row in page.rows()] == ["BackupEnabled"]
    root.ask(write_of("BackupEnabled", False))  # appears by itself, and the filter stays
    page.patiently(lambda: [row[4] for row in page.rows()] == ["- → off", "- → on"])


def test_daemon_restarts_while_one_looks(page):
    unit.run("systemctl", "stop", unit.UNIT)
    page.patiently(lambda: "out of date" in page.text("#notices"))
    assert not page.toggle(CAMERA).is_enabled()
    store({NFC: False})
    unit.start()
    page.patiently(lambda: page.toggle(CAMERA).is_enabled())
    assert "out of date" not in page.run("return document.body.textContent")
    page.patiently(lambda: page.row(NFC)[1] == "off")


def test_nothing_is_claimed_before_the_first_look(page):
    unit.run("systemctl", "stop", unit.UNIT)
    page.reload()
    page.text("#notices .pf-m-danger")
    for view in "Switches", "Policies":
        page.show(view)
        page.patiently(lambda: page.text("nav [aria-current=page]") == view)
        assert page.run("return document.getElementById('view').textContent") == ""
    unit.start()
    assert page.row(CAMERA)[1] == "on"


def test_force_is_looked_at_without_a_signal(page):
    os.remove("/var/lib/govd/camera_enabled")
    page.patiently(lambda: page.row(CAMERA)[3] == "not in force")


def test_late_answer_does_not_replace_a_later_one(page, root, tmp_path):
    root.ask(write_of(NFC, False))
    page.show("History")
    page.row(NFC, 3)
    page.run("""
        const spawn = cockpit.spawn, file = arguments[0];
        cockpit.spawn = (words, options) => {
            const answer = spawn(words.includes("@0")
                ? ["sh", "-c", "until [ -e $0 ]; do sleep 0.1; done; echo {}", file]
                : words, options);
            answer.then(() => { window[words.at(-1)] = true; });
            return answer;
        };""", str(tmp_path / "go"))
    page.fill("Period", "@0")
    page.fill("Period", "-1d")
    page.patiently(lambda: page.run("return window['-1d']"))
    (tmp_path / "go").touch()
    page.patiently(lambda: page.run("return window['@0']"))
    assert "0 of 0" not in page.run("return document.getElementById('view').textContent")


def test_rows_of_switches_stay_in_the_page(page, root):
    page.show("Switches")
    page.row("lens")
    page.run("window.kept = document.querySelector('tbody td:nth-child(2) span').firstChild")
    replace(FILE_SWITCH_FILE, "[lens]\npolicies=CameraEnabled;NfcEnabled\nvalue=true\n"
                              f"[{'x' * 300}]\npolicies=BackupEnabled\nvalue=true\n"
                              "[to\u202efrom]\npolicies=BackupEnabled\nvalue=true\n")
    page.row("x" * 200 + "...")
    page.row("to\\u202efrom")
    assert page.run("return window.kept.isConnected")


def test_foreign_text_stays_text(page, root):
    """Keys of switches and policies, and names that processes give themselves, with markup."""
    replace(FILE_SWITCH_FILE, f"[{MARKUP}]\npolicies=NfcEnabled\nvalue=false\n"
                              "[-n]\npolicies=BackupEnabled\nvalue=true\n")
    page.patiently(lambda: page.row(NFC)[2] == f"switch {MARKUP} is off")
    isolated = page.run("return [...document.querySelectorAll('bdi')].map((e) => e.textContent)")
    assert MARKUP in isolated
    root.ask(write_of(f"{MARKUP}Policy", True))
    page.press(NFC)
    assert f"{MARKUP}, which is off" in page.answer()
    page.press("Close")
    page.show("Switches")
    page.row(MARKUP)
    page.ask("-n")  # is no option of the client
    page.confirm("Turn off")
    page.patiently(lambda: not page.toggle("-n").is_selected())
    page.show("History")
    page.row(f"{MARKUP}Policy", 3)
    assert page.run("return document.querySelector('img')") is None
    assert page.run("return document.title") == "Device policies"


def test_thousand_signals_leave_the_page_responsive(page, root, capsys):
    """A switch announces all that it governs, and Cockpit passes all on in an instant. The page
    looks at the device a few times only. How long it is busy is told, but not judged: that is up
    to the machine."""
    announced = [policy["key"] for policy in govctl.run("list", "--json").result["policies"]
                 if not policy["enforced"]]
    replace(FILE_SWITCH_FILE, f"[many]\npolicies={';'.join(announced)}\nvalue=true\n")
    page.patiently(lambda: "switch" not in page.row(announced[0])[2])
    page.run("""
        window.looks = window.signals = window.longest = 0;
        const spawn = cockpit.spawn;
        cockpit.spawn = (...words) => { window.looks += 1; return spawn(...words); };
        cockpit.dbus("org.kvt.PolicyManager", { bus: "system" }).subscribe({}, () => {
            window.first ??= performance.now();
            window.last = performance.now();
            window.signals += 1;
        });
        let last = performance.now();
        setInterval(() => {
            window.longest = Math.max(window.longest, performance.now() - last);
            last = performance.now();
        }, 10);""")
    count, value = 0, True
    with held([int(pid) for pid in unit.run("pgrep", "-f", "cockpit-bridge").split()]):
        while count < 1000:
            value = not value
            assert root.ask(write_of("many", value, address=SWITCH)) == (True,)
            count += len(announced) + 1
    before = time.monotonic()
    page.fill("Search policies", announced[0])
    assert [row[0] for row in page.rows()] == [announced[0]]
    answered = time.monotonic() - before
    page.patiently(lambda: page.run("return window.signals") == count)
    longest, looks, took = page.run(
        "return [window.longest, window.looks, window.last - window.first]")
    with capsys.disabled():
        print(f"{count} signals within {took:.0f} ms; a search among them took "
              f"{answered * 1000:.0f} ms; the page was busy for {longest:.0f} ms at most, and ran "
              f"the client {looks} times")
    assert looks < count / 10
    page.patiently(lambda: page.row(announced[0])[1] == ("on" if value else "off"))
