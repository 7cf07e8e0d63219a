# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Without a journal at its start the daemon looks for one once, and then makes no records. With
one, records change nothing on the bus."""

import contextlib
import os
import pathlib
import socket
import struct
import tempfile

import pytest

from testbed.bus import read_of, write_of
from testbed.callers import process_query
from testbed.daemon import changed
from testbed.systemcalls import traced
from testbed.waiting import wait_until

CAMERA = "CameraEnabled"
DENIED_RECORDS = 20  # at most so many of callers without rights in a period
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


def all_of(listener):
    """The records in the queue of the journal's socket."""
    found = []
    with contextlib.suppress(BlockingIOError):
        while True:
            found.append(listener.recv(1 << 16, socket.MSG_DONTWAIT))
    return found


def field(name, value):
    """A field of a record as it is sent."""
    return b"%s\n%s%s\n" % (name.encode(), struct.pack("<Q", len(value)), value.encode())


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
        assert field(name, value) in record
    event, announcement, reply = changed(CAMERA, True, False)
    assert daemon.messages() == [*process_query(root), event, *process_query(root),
                                 announcement, reply]
    assert daemon.logged() == []


def test_records_that_the_journal_does_not_take_are_counted(daemon, root, guest, journal):
    listener = journal()
    daemon.start()
    for _ in range(DENIED_RECORDS):
        guest.refusal(write_of(CAMERA, False))
    guest.ask(read_of(CAMERA))  # answered after the last record has been sent
    left_out = DENIED_RECORDS - len(all_of(listener))
    assert left_out > 0, "the kernel keeps all of them in its queue"
    assert root.ask(write_of(CAMERA, False)) == (True,)
    assert field("GOVD_LEFT_OUT", f"{left_out}") in all_of(listener)[0]


def test_denied_writes_are_recorded_again_after_a_while(daemon, guest, journal):
    """Anybody can cause such records, so there are few in a period."""
    listener = journal()
    daemon.start()
    writes = 0

    def another():
        nonlocal writes
        writes += 1
        guest.refusal(write_of(CAMERA, False))
        guest.ask(read_of(CAMERA))
        return all_of(listener)

    for _ in range(DENIED_RECORDS):
        assert len(another()) == 1
    assert another() == []
    record, = wait_until(another)
    assert field("GOVD_LEFT_OUT", f"{writes - DENIED_RECORDS - 1}") in record
