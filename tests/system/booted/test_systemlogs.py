# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What the journal and rsyslog, both as Debian sets them up, make of the audit line."""

import pathlib

import pytest

from testbed import unit
from testbed.bus import write_of
from testbed.daemon import event_text
from testbed.waiting import wait_until

RSYSLOG_FILE = pathlib.Path("/var/log/user.log")
LONGEST = 8070  # bytes of a text for which rsyslog has room
WISH, END = "Wish", event_text("End", "", "x")
FORGED = event_text("CameraEnabled", True, False)


def unchanged(text):
    """The line of a log that keeps everything."""
    return text.encode()


def escaped(text):
    """rsyslog writes each control character of ASCII, except the last, as three octal digits."""
    return "".join(f"#{ord(one):03o}" if one < " " else one for one in text).encode()


def cut(text):
    """rsyslog cuts a text that is too long, also within a character."""
    return text.encode()[:LONGEST]


# Key, value, and what rsyslog makes of the line. The journal has every line as it was.
LINES = {
    "UTF-8": ("K\u00fche", "\u03b1 \U0001f404", unchanged),
    "line break": (WISH, f"a\n{FORGED}", escaped),
    "control characters": (WISH, "\t\x1b[2J\r\x7f", escaped),
    "control characters beyond ASCII": (WISH, "\u0085\u202e", unchanged),
    "escapes of rsyslog": (WISH, "#012", unchanged),
    "longest": (WISH, "v" * (LONGEST - len(event_text(WISH, "", ""))), unchanged),
    "too long": (WISH, "v" * 9000, cut),
    "too long, in UTF-8": ("Wishes", "\u00fc" * 9000, cut),
}


@pytest.fixture(scope="module", autouse=True)
def rsyslog():
    """rsyslog gets from the journal what the journal gets."""
    unit.run("systemctl", "enable", "--quiet", "--now", "rsyslog")
    yield
    unit.run("systemctl", "disable", "--quiet", "--now", "rsyslog", "syslog.socket")


@pytest.fixture
def logged(daemon, root, journal):
    """Writes a policy. Returns whether that was accepted, and the audit lines in the journal and
    in rsyslog's file, as bytes."""
    def lines(key, value):
        written = RSYSLOG_FILE.stat().st_size if RSYSLOG_FILE.exists() else 0

        def in_file():
            new = RSYSLOG_FILE.read_bytes()[written:].splitlines()
            return [line.partition(b" govd: ")[2] for line in new if b" govd: " in line]
        accepted = root.ask(write_of(key, value, "s"))[0]
        root.ask(write_of("End", "x", "s"))
        wait_until(lambda: RSYSLOG_FILE.exists() and END.encode() in in_file())
        in_journal = [line.text.encode() for line in journal.lines()
                      if line.text.startswith("Policy ")]
        return accepted, in_journal[:-1], in_file()[:-1]
    return lines


@pytest.mark.parametrize("key, value, in_file", LINES.values(), ids=LINES.keys())
def test_line(logged, key, value, in_file):
    text = event_text(key, "", value)
    assert logged(key, value) == (True, [text.encode()], [in_file(text)])


def test_line_break_in_a_key(logged):
    assert logged(f"a\n{FORGED}", "x") == (False, [], [])


def test_line_larger_than_a_datagram(logged, journal):
    """The C library drops it. The record of the write has a part of each text."""
    size = int(pathlib.Path("/proc/sys/net/core/wmem_default").read_text())
    assert logged(WISH, "v" * size) == (True, [], [])
    record, _ = journal.records()
    assert (record["GOVD_KEY"], record["GOVD_NEW_VALUE"][:1024]) == (WISH, "v" * 1024)


def test_journalctl_shows_no_forged_line(logged):
    logged(WISH, f"a\n{FORGED}")
    shown = unit.run("journalctl", "--no-pager", "-u", unit.UNIT).splitlines()
    assert not [line for line in shown if line.startswith(FORGED)]
    assert [line for line in shown if line.strip() == FORGED + "."]


def test_journalctl_shows_no_control_characters(logged):
    logged(WISH, "\x1b[2J")
    assert "\x1b" not in unit.run("journalctl", "--no-pager", "-u", unit.UNIT)
