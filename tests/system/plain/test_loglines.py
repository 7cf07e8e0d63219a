# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Texts from callers and services cannot forge a log line: each event is one message to the system
log, and each message of the daemon is one line of limited length.

The text of an event is fixed and contains what the caller sent, line breaks included. It is sent to
the system log as one datagram; the log service escapes it.
"""

import re
import unicodedata

import pytest

from testbed.daemon import event_text
from testbed.services.service import Fault
from testbed.waiting import wait_until

CAMERA = "CameraEnabled"
LONGEST = 1024  # bytes of the longest text that is not cut, with quotes and escapes
FORGED_EVENT = f"x\n<14>Jan  1 00:00:00 govd: {event_text(CAMERA, False, True)}"
HOSTILE = {  # texts that would break a line, a format string or a terminal
    "line break": "a\nb",
    "carriage return": "a\rb",
    "other line ends": "a\u0085b\u2028c\u2029d\v\f",
    "forged event": FORGED_EVENT,
    "forged message": "x\nwarning|default|Failed to enforce policy: forged",
    "terminal": "a\x1b[2J\x1b]0;title\x07\b\b",
    "C format": "%s%s%s%n%1000000d",
    "Qt format": "%1 %2 %3 %99 %L1",
    "quotes": "\"\\\" \\n '`$(reboot)`",
    "10 kB": "k" * 10_000,
    "10 kB of line breaks": "\n" * 10_000,
}
EVERY_TEXT = pytest.mark.parametrize("text", HOSTILE.values(), ids=HOSTILE.keys())
WHOLE_LINE = re.compile(r"(debug|info|warning|critical)\|[\w.]+\|[^\x00-\x1f\x7f]*")


def broken(lines):
    """The log lines that are not one complete message."""
    return [line for line in lines if not WHOLE_LINE.fullmatch(line)
            or line.startswith("warning|default|Failed to enforce")]


def texts(logs):
    """The texts of the events that the log service has received."""
    return [text for _, _, text in logs.events]


@EVERY_TEXT
def test_event_is_one_datagram(daemon, system_logs, text):
    system_logs.appear()
    daemon.start()
    assert daemon.set(CAMERA, text, "s") is True
    expected = [event_text(CAMERA, True, text)]
    assert daemon.records() == expected
    wait_until(lambda: texts(system_logs) == expected)
    assert broken(daemon.logged()) == []


@EVERY_TEXT
def test_refused_key_is_one_line(daemon, text):
    daemon.start()
    assert daemon.set(f"{text}=true", True) is False  # no key file can hold an equals sign
    saving, failed = daemon.logged()
    assert saving.startswith("warning|default|Error saving key file")
    assert failed.startswith("warning|default|Failed to save configuration")
    assert broken([saving, failed]) == []
    assert daemon.records() == []


@EVERY_TEXT
def test_switch_messages_are_one_line_each(daemon, switches, text):
    switches.set_switch(text, [1], 7)  # reading it fails, with this code
    switches.set_entries(text, result=3)  # and so does writing
    daemon.start()
    assert daemon.set_switch(text, False) is False
    # The plugin is not asked about a key that no file can hold.
    asked = not any(unicodedata.category(character) == "Cc" for character in text)
    log = daemon.logged()
    counts = [sum(part in line for line in log) for part in (
        "AccessSwitch plugin failed to set value", "Return code:", "Error saving key file")]
    assert counts == ([1, 2, 0] if asked else [0, 0, 1])
    assert broken(log) == []


def quoted_ends(text):
    """The possible ends of a line: the text in quotes, or the mark where it is cut."""
    escaped = text.replace("\\", "\\\\").replace('"', '\\"')
    if len(text) > LONGEST // 2 or any(not character.isprintable() for character in text):
        return (" more bytes]", '"', '")', " more bytes])")
    return (f'"{escaped}"', f'"{escaped}")')


@EVERY_TEXT
def test_error_of_a_service_is_one_line(daemon, network, runtime_manager, system_logs, text):
    """Two messages of the daemon contain an error's text; errors of the log service are ignored."""
    for service in (network, runtime_manager, system_logs):
        service.fail(Fault("error", name="org.example.Refused", text=text))
        service.appear()
    daemon.start()
    daemon.change("InternetSharingEnabled", False)
    daemon.change("MessagesEnabled", False)
    sharing, terminating = log = daemon.logged()
    assert broken(log) == []
    assert sharing.startswith("warning|default|Failed to disable internet sharing: ")
    assert terminating.startswith("info|default|Terminating ")
    assert all(line.endswith(quoted_ends(text)) for line in log)
    assert len(daemon.records()) == 2


def test_text_too_long_for_the_system_log(daemon, system_logs):
    """The system log gets nothing beyond the largest datagram; the log service does."""
    system_logs.appear()
    daemon.start()
    text = "t" * (1 << 20)
    assert daemon.set(CAMERA, text, "s") is True
    assert daemon.records() == []
    wait_until(lambda: [text in each for each in texts(system_logs)] == [True])
    daemon.change(CAMERA, False)
    assert len(daemon.records()) == 1


@pytest.mark.parametrize("character, shown", [
    ("k", "k"), ('"', '\\"'), ("\\", r"\\"), ("\u20ac", "\u20ac"), ("\u0001", r"\u0001")])
def test_long_text_is_cut(daemon, character, shown):
    daemon.start()
    assert daemon.set(character * 100_000 + "=", True) is False
    log = daemon.logged()
    assert len(log) == 2
    assert LONGEST < len(log[0].encode()) < LONGEST + 200
    assert " more bytes]" in log[0]
    assert f'{shown}"[' in log[0]  # cut between two characters
    assert broken(log) == []


def test_lines_of_readers_are_limited(daemon, switches):
    """Reading needs no right, so the lines about failing reads must not fill the log."""
    reads, burst = 50, 20  # a failing read is two lines
    switches.set_switch("lens", [1], 7)
    daemon.start()
    before = len(daemon.log())
    for _ in range(reads):
        daemon.switch("lens")
    left_out = f"warning|default|Left out {2 * reads - burst} log lines that callers caused"
    wait_until(lambda: left_out in daemon.log(before))
    assert len(daemon.log(before)) == burst + 1
    daemon.switch("lens")
    assert len(daemon.log(before)) == burst + 3
