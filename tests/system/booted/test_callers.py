# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Who may change policies, under the shipped unit and bus policy."""

import pathlib
import re

import pytest

from testbed.bus import read_of, reload_bus, write_of
from testbed.callers import REFUSED_BY_BUS, refusal, verdict
from testbed.users import User, membership

pytestmark = pytest.mark.bus

CAMERA = "CameraEnabled"
WRITE = write_of(CAMERA, False)
WRITERS = [("root",), ("mdm",), ("agent",), ("operator",), ("guest", "privileged")]
STRANGERS = [("guest",), ("pretender",)]


@pytest.fixture
def earlier_session():
    """A process that was started before its user was added to the group pellora-mdm."""
    process = User("guest")
    with membership("guest", "pellora-mdm"):
        yield process


@pytest.fixture
def without_group():
    """A system without the group pellora-mdm; the processes of its users are started before."""
    users = {name: User(name) for name in ("root", "operator", "mdm", "guest")}
    file = pathlib.Path("/etc/group")
    before = file.read_text()
    file.write_text(re.sub("^pellora-mdm:.*\n", "", before, flags=re.MULTILINE))
    reload_bus()
    yield users
    file.write_text(before)
    reload_bus()


def expect_change(writer):
    """Checks that this client can change a policy, and restores it."""
    assert writer.ask(WRITE) == (True,)
    assert writer.ask(read_of(CAMERA)) == (("b", False),)
    assert writer.ask(write_of(CAMERA, True)) == (True,)


def expect_refusal(stranger, by_bus):
    """Checks that this client cannot change a policy, and who refuses it."""
    if by_bus:
        assert verdict(stranger.send_and_get_reply(WRITE)) == REFUSED_BY_BUS
    else:
        assert stranger.refusal(WRITE) == refusal(stranger.user.pid)
    assert stranger.ask(read_of(CAMERA)) == (("b", True),)


@pytest.mark.parametrize("process", WRITERS, ids="-".join)
def test_writers_may(lasting_daemon, client, process):
    expect_change(client(User(*process)))


@pytest.mark.parametrize("process", STRANGERS, ids="-".join)
def test_others_may_not(lasting_daemon, client, process):
    expect_refusal(client(User(*process)), by_bus=True)


@pytest.mark.parametrize("process", [
    ("deputy",),  # the bus looks at all groups of a process, the daemon at the primary one only
    ("guest", "pellora-mdm"),  # for this group the user's membership counts, not the process's
], ids="-".join)
def test_others_whom_the_bus_lets_pass_may_not(lasting_daemon, client, process):
    expect_refusal(client(User(*process)), by_bus=False)


def test_session_from_before_the_membership_may_not(lasting_daemon, client, earlier_session):
    expect_refusal(client(earlier_session), by_bus=True)


def test_daemon_alone_goes_by_the_present_membership(open_bus, lasting_daemon, client,
                                                     earlier_session):
    expect_change(client(earlier_session))


def test_missing_group_affects_only_its_members(without_group, lasting_daemon, client):
    for name in ("root", "operator"):
        expect_change(client(without_group[name]))
    for name in ("mdm", "guest"):
        expect_refusal(client(without_group[name]), by_bus=True)
