# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The library without the storage service, without a bus, a loop or an application object."""

import time

import pytest

from testbed.partitions import BLOCK_PATH, PLACE, Partitions, block, calls_of, listings
from testbed.relay import Relay
from testbed.services.service import DEATH, ERROR
from testbed.services.storage import Block
from testbed.waiting import wait_until

UNMOUNT_FAILED = ['warning|systemsettings|Cannot unmount "/dev/sda1": '
                  "org.freedesktop.DBus.Error.Failed"]


@pytest.fixture
def failing_unmounts(storage, partitions):
    """A service whose first unmount has failed."""
    storage.plug(block(PLACE))
    storage.fail(ERROR, "Unmount")
    storage.appear()
    partitions.unmount_announced()
    partitions.run()
    assert wait_until(partitions.take_log) == UNMOUNT_FAILED
    return storage


def test_absent_service(partitions):
    partitions.run()
    start = time.monotonic()
    for _ in range(100):
        assert partitions.list() == []
    assert time.monotonic() - start < 2


def test_service_is_never_started(storage, partitions, transcript):
    transcript.clear()
    partitions.run()
    assert partitions.list() == []
    storage.plug(block(PLACE))
    storage.appear()
    partitions.wait_for(BLOCK_PATH)
    storage.leave()
    wait_until(lambda: partitions.list() == [])
    partitions.unmount(BLOCK_PATH)
    partitions.list(manager=1)
    unmount = transcript.wait_for(lambda message: message.member == "Unmount")
    assert not unmount.may_start
    transcript.settle_bus()
    calls = transcript.messages(lambda message: message.kind == "call"
                                and message.sender == unmount.sender)
    assert not [call for call in calls if call.destination == storage.NAME and call.may_start]
    assert not [call for call in calls if call.member == "StartServiceByName"]


def test_service_that_returns_is_announced_again(storage, partitions):
    storage.plug(block())
    partitions.run()
    for _ in range(3):
        partitions.forget()
        storage.appear()
        partitions.wait_for(BLOCK_PATH)
        storage.set_mount_points(BLOCK_PATH, PLACE)  # signals of the new owner count, too
        partitions.wait_for(BLOCK_PATH, BLOCK_PATH)
        storage.leave()
        storage.set_mount_points(BLOCK_PATH)
        wait_until(lambda: partitions.list() == [])
        assert partitions.paths() == [BLOCK_PATH, BLOCK_PATH]


def test_death_while_listing(storage, partitions):
    storage.plug(block(PLACE))
    storage.appear()
    storage.fail(DEATH)
    partitions.make_application()
    assert partitions.list() == []
    storage.mend()
    storage.appear()
    partitions.run(BLOCK_PATH)


def test_manager_older_than_the_application_object(storage, partitions):
    storage.plug(block(PLACE))
    storage.appear()
    assert partitions.list() == []
    partitions.unmount("")
    partitions.make_application()
    assert storage.calls == []
    partitions.run(BLOCK_PATH)
    assert listings(storage) == 1


@pytest.mark.parametrize("has_application", [False, True])
def test_end_without_loop(storage, partitions, has_application):
    storage.appear()
    assert partitions.list() == []
    partitions.unmount("")
    if has_application:
        partitions.make_application()
    assert partitions.end() == 0
    assert storage.calls == []


def test_no_bus():
    with Partitions(DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nonexistent/bus") as partitions:
        assert partitions.list() == []
        partitions.run()
        assert partitions.list() == []
        assert partitions.end() == 0
        assert partitions.take_log() == []


def test_end_before_a_reminder(failing_unmounts, partitions):
    assert partitions.end() == 0
    assert len(calls_of(failing_unmounts, "Unmount")) == 1


def test_failure_with_the_next_service_is_logged_as_well(failing_unmounts, partitions):
    failing_unmounts.leave()
    failing_unmounts.appear()
    assert wait_until(partitions.take_log) == UNMOUNT_FAILED


@pytest.mark.parametrize("question", [b"GetNameOwner", b"InterfacesAdded"],
                         ids=["about the owner of the name", "during the subscription"])
def test_bus_that_answers_too_late(storage, question):
    """A failed look for the owner of the service's name does not mean that there is none, and a
    subscription that took so long brings no signals."""
    storage.plug(block())
    storage.appear()
    with (Relay(hold_at=question) as relay,
          Partitions(DBUS_SYSTEM_BUS_ADDRESS=relay.ADDRESS) as partitions):
        partitions.run()
        relay.wait_until_held()
        assert partitions.list() == []
        relay.release()
        partitions.wait_for(BLOCK_PATH)
        storage.set_mount_points(BLOCK_PATH, PLACE)
        partitions.wait_for(*2 * [BLOCK_PATH])


def test_manager_that_comes_later(storage, partitions):
    """It announces what others have announced before."""
    storage.appear()
    storage.plug(block(PLACE))
    partitions.run(BLOCK_PATH)
    partitions.forget()
    assert len(partitions.list(manager=1)) == 1
    partitions.wait_for(BLOCK_PATH, manager=1)
    other = storage.plug(Block("other"))
    partitions.wait_for(BLOCK_PATH, other, manager=1)
    partitions.settle(storage)
    assert partitions.paths() == [other]
    assert partitions.paths(manager=1) == [BLOCK_PATH, other]
    assert listings(storage) == 1
