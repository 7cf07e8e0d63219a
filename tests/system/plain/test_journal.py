# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Without a journal at its start the daemon looks for one once, and then makes no records. With
one, records change nothing on the bus."""

import os
import pathlib
import socket
import struct
import tempfile

import pytest

from testbed.bus import write_of
from testbed.callers import process_query
from testbed.daemon import changed
from testbed.systemcalls import traced

CAMERA = "CameraEnabled"
JOURNAL = pathlib.Path("/run/systemd/journal/socket")


@pytest.fixture
def journal():
    """Makes a socket where the journal has its own."""
    JOURNAL.parent.mkdir(parents=True, exist_ok=True)
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as listener:
        yield lambda: listener.bind(f"{JOURNAL}") or listener
    JOURNAL.unlink()


@pytest.fixture
def calls():
    """A file for the daemon's system calls."""
    with tempfile.NamedTemporaryFile("r") as file:
        yield file


def test_nothing_is_done_for_a_record(daemon, root, guest, calls):
    daemon.wrapper = traced("-e", "trace=file,network", output=calls.name)
    daemon.start()
    assert root.ask(write_of(CAMERA, False)) == (True,)
    guest.refusal(write_of(CAMERA, True))
    assert daemon.said()[:-1] == changed(CAMERA, True, False)
    daemon.stop()
    lines = calls.read().split("\n")
    assert len([line for line in lines if f"{JOURNAL}" in line]) == 1
    callers = [f"/proc/{caller.user.pid}/" for caller in (root, guest)]
    assert not [line for line in lines if any(caller in line for caller in callers)]


def test_journal_that_comes_later_gets_nothing(daemon, journal):
    daemon.start()
    listener = journal()
    daemon.change(CAMERA, False)
    listener.setblocking(False)
    with pytest.raises(BlockingIOError):
        listener.recv(1)


def test_record_costs_no_question_and_no_message(daemon, root, journal):
    listener = journal()
    daemon.start()
    assert root.ask(write_of(CAMERA, False)) == (True,)
    record = listener.recv(1 << 16)
    for name, value in [("GOVD_KEY", CAMERA),
                        ("GOVD_CALLER_PROGRAM", os.readlink(f"/proc/{root.user.pid}/exe"))]:
        assert b"%s\n%s%s\n" % (name.encode(), struct.pack("<Q", len(value)),
                                value.encode()) in record
    event, announcement, reply = changed(CAMERA, True, False)
    assert daemon.messages() == [*process_query(root), event, *process_query(root),
                                 announcement, reply]
    assert daemon.logged() == []
