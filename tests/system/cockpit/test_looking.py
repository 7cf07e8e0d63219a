# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What everybody sees in the page, also when the device changes meanwhile."""

import contextlib
import os
import signal
import time

from testbed import govctl, unit
from testbed.browser import Browser
from testbed.bus import SWITCH, write_of
from testbed.files import replace, store, write
from testbed.plugins import FILE_LOCK_FILE, FILE_SWITCH_FILE

CAMERA = "CameraEnabled"
NFC = "NfcEnabled"
FORCE = {"in-force": "in force", "not-in-force": "not in force", "not-enforced": "only announced",
         "unseen": "cannot be seen"}
MARKUP = "<img src=x onerror=document.title='caught'>"


@contextlib.contextmanager
def held(pids):
    """Stops processes as long as the context lasts."""
    pids = [int(pid) for pid in pids]
    for pid in pids:
        os.kill(pid, signal.SIGSTOP)
    yield
    for pid in pids:
        os.kill(pid, signal.SIGCONT)


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


def test_foreign_text_stays_text(page, root):
    """Keys of switches and policies, and names that processes give themselves, with markup."""
    replace(FILE_SWITCH_FILE, f"[{MARKUP}]\npolicies=NfcEnabled\nvalue=false\n"
                              "[-n]\npolicies=BackupEnabled\nvalue=true\n")
    page.patiently(lambda: page.row(NFC)[2] == f"switch {MARKUP} is off")
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
    looks at the device a few times only."""
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
    with held(unit.run("pgrep", "-f", "cockpit-bridge").split()):
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
