# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Who may change a value, and how the daemon finds out."""

import pytest

from testbed import files
from testbed.bus import POLICY, SWITCH, write_of
from testbed.callers import asked, denial, process_query, queries, refusal
from testbed.daemon import announcement, event
from testbed.files import CAMERA_MARKER, SWITCH_FILE
from testbed.users import User

CAMERA = "CameraEnabled"
NAMELESS = 54321  # an id that is not in the user and group databases
# A process as User takes it: its user, its group if that is not the user's primary one, and whether
# both are only effective.
ALLOWED = [  # and whether the bus is asked about its user
    (("root",), False),
    (("root", "guest"), False),
    (("operator",), False),  # primary group privileged
    (("guest", "privileged"), False),
    (("guest", "privileged", True), False),
    (("mdm", "privileged"), False),
    (("mdm",), True),
    (("mdm", "guest"), True),
    (("mdm", None, True), True),
    (("agent",), True),  # primary group pellora-mdm
    (("agent", "Privileged"), True),
]
STRANGERS = [
    ("guest",),
    ("deputy",),  # privileged is not the primary group
    ("pretender",),  # primary group Privileged
    ("guest", None, True),
    # The daemon looks up the user's membership, not the groups of the process.
    ("guest", "pellora-mdm"),
    ("guest", "root"),
]
# A process when it connects and when it calls; the number of questions, and whether it may write.
CHANGED = [
    # Each is checked twice when the first check lets it pass.
    (("guest",), ("root",), 1, True),
    (("guest",), ("guest", "privileged"), 1, True),
    (("root",), ("guest",), 2, False),
    (("guest", "privileged"), ("guest",), 2, False),
    (("root",), (NAMELESS,), 2, False),
    # The user is the one that the bus has recorded.
    (("mdm",), ("guest",), 2, True),
    (("guest",), ("mdm",), 2, False),
]


def name_of(process):
    """The name of a case with this process."""
    return "-".join(map(str, process)) if isinstance(process, tuple) else None


@pytest.mark.parametrize("process, user_is_asked", ALLOWED, ids=name_of)
def test_callers_that_may_change_values(daemon, client, process, user_is_asked):
    daemon.start()
    assert CAMERA_MARKER.exists()
    caller = client(User(*process))
    assert caller.ask(write_of(CAMERA, False)) == (True,)
    check = queries(caller) if user_is_asked else process_query(caller)
    assert daemon.messages() == [*check, event(CAMERA, True, False), *check,
                                 announcement(CAMERA, False), ("reply", True)]
    assert files.stored()[CAMERA] == "false"
    assert not CAMERA_MARKER.exists()
    assert daemon.logged() == []


@pytest.mark.parametrize("key, address", [(CAMERA, POLICY), ("cellular", SWITCH)])
@pytest.mark.parametrize("process", STRANGERS, ids=name_of)
def test_callers_that_may_not(daemon, client, switches, process, key, address):
    switches.set_switch("cellular", [1], True)
    daemon.start()
    before, calls = files.snapshots(), len(switches.calls())
    caller = client(User(*process))
    assert caller.refusal(write_of(key, False, address=address)) == refusal(caller.user.pid)
    assert daemon.messages() == [*queries(caller), denial(caller.user.pid)]
    assert switches.calls(calls) == []
    assert switches.value("cellular") is True
    assert daemon.records() == []
    assert daemon.logged() == []
    assert files.snapshots() == before
    assert not SWITCH_FILE.exists()
    assert daemon.policy(CAMERA) is True


def test_refusal_goes_before_absence_of_the_plugin(daemon, guest):
    daemon.start()
    assert guest.refusal(write_of("cellular", True, address=SWITCH)) == refusal(guest.user.pid)
    assert daemon.logged() == []
    assert not SWITCH_FILE.exists()


def test_refusal_goes_before_a_lock(daemon, guest, lock_plugin):
    lock = lock_plugin(CAMERA)
    lock.set_locked(CAMERA)
    daemon.start()
    before = len(lock.calls())
    assert guest.refusal(write_of(CAMERA, True)) == refusal(guest.user.pid)
    assert lock.calls(before) == []
    assert daemon.set(CAMERA, True) is False
    assert lock.calls(before) != []


@pytest.mark.parametrize("then, now, count, is_allowed", CHANGED, ids=name_of)
def test_process_counts_as_it_is_now(daemon, client, then, now, count, is_allowed):
    """Its ids have changed since it connected to the bus."""
    daemon.start()
    caller = client(User(*then, *[None] * (2 - len(then)), True))
    caller.user.change(*now)
    write = write_of(CAMERA, False)
    if is_allowed:
        assert caller.ask(write) == (True,)
    else:
        assert caller.refusal(write) == refusal(caller.user.pid)
    assert len(daemon.records()) == is_allowed
    assert asked(daemon) == (1 + is_allowed) * queries(caller)[:count]
    assert daemon.policy(CAMERA) is not is_allowed
