# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Callers without rights that execute a program with rights. The daemon checks the process when it
handles the call; the bus has checked it when it connected."""

import grp
import pwd

import pytest

from testbed import files
from testbed.bus import POLICY, SERVICE, write_of
from testbed.callers import DENIED, DONE, REFUSED_BY_BUS, verdict
from testbed.elevation import ElevatedCaller, installed_program
from testbed.processes import held
from testbed.users import run_as

pytestmark = pytest.mark.bus

CAMERA = "CameraEnabled"
WRITE = write_of(CAMERA, False)
ELEVATIONS = {"to the user root": (0o4755, "root"),
              "to the group privileged": (0o2755, "privileged")}


@pytest.fixture(params=ELEVATIONS)
def elevation(request):
    """The mode and the group of a program with rights."""
    return ELEVATIONS[request.param]


@pytest.fixture
def program(elevation):
    """A program with rights that copies its input to its output."""
    with installed_program("cat", *elevation) as path:
        yield path


@pytest.fixture
def ids(elevation):
    """The user and the group of an unprivileged user's process after it executes the program."""
    mode, group = elevation
    guest = pwd.getpwnam("guest")
    return (0, guest.pw_gid) if mode & 0o4000 else (guest.pw_uid, grp.getgrnam(group).gr_gid)


def decision_while_the_daemon_waits(daemon, program, ids):
    """The decision on a call that the daemon handles after its caller has executed the program."""
    with held([daemon]):
        caller = ElevatedCaller("guest", WRITE, program)
        caller.wait_until_elevated(*ids)
    with caller:
        return verdict(caller.answer())


def decisions(program, attempts):
    """The decisions on so many attempts while the daemon is not held."""
    for _ in range(attempts):
        with ElevatedCaller("guest", WRITE, program) as caller:
            yield verdict(caller.answer())


def test_daemon_alone_is_deceived(open_bus, daemon, program, ids):
    assert decision_while_the_daemon_waits(daemon, program, ids) == DONE
    assert files.stored()[CAMERA] == "false"


def test_bus_is_not_deceived_while_the_daemon_waits(daemon, program, ids):
    assert decision_while_the_daemon_waits(daemon, program, ids) == REFUSED_BY_BUS
    assert files.stored()[CAMERA] == "true"


def test_daemon_alone_is_deceived_in_a_race(open_bus, daemon, program):
    assert DONE in decisions(program, 1000)  # the first time, as a rule


def test_bus_is_never_deceived(daemon, program):
    assert set(decisions(program, 100)) == {REFUSED_BY_BUS}
    assert files.stored()[CAMERA] == "true"


@pytest.mark.parametrize("mode, group, is_allowed", [
    (0o755, "root", False), *[(*elevation, True) for elevation in ELEVATIONS.values()]])
def test_program_that_connects_itself(daemon, mode, group, is_allowed):
    with installed_program("gdbus", mode, group) as path:
        done = run_as("guest", path, "call", "--system", "-d", SERVICE, "-o", POLICY.object_path,
                      "-m", f"{POLICY.interface}.SetKeyValue", CAMERA, "<false>")
    if is_allowed:
        assert done.stdout == "(true,)\n"
    else:
        assert DENIED in done.stderr
        assert "pellora-mdm" not in done.stderr  # the bus's error, not the daemon's
    assert files.stored()[CAMERA] == str(not is_allowed).lower()
