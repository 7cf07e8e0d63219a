# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The storage service refuses, ends or does not answer; storage is unmounted when possible."""

import time

import pytest

from testbed import files
from testbed.services.service import DEATH, ERROR, SILENCE, Fault, error
from testbed.stick import Stick
from testbed.waiting import wait_until

CARD, USB = "MemoryCardEnabled", "UsbStorageEnabled"
STICK = Stick()
WAITING_TIME = 5.0  # seconds that the daemon waits for a listing
LOG_BURST = 20  # lines that are written before others are only counted
BUSY = "org.freedesktop.UDisks2.Error.DeviceBusy"
COMPLAINT = f'warning|systemsettings|Cannot unmount "/dev/stick": {BUSY}'


@pytest.fixture
def plugged(storage):
    """The storage service, on the bus, with a mounted stick."""
    storage.appear()
    STICK.plug(storage)
    return storage


def answers(daemon, member):
    """The answers to the first call of a method."""
    daemon.transcript.settle()
    call = daemon.transcript.calls(member)[0]
    return daemon.transcript.messages(lambda message: message.is_reply_to(call))


def refusals(daemon):
    """The answers by which the storage service has refused to unmount something."""
    return daemon.transcript.messages(lambda message: message.error == BUSY)


def wait_for_refusal(daemon):
    """Waits until the storage service has refused to unmount something."""
    wait_until(lambda: refusals(daemon))


def test_failure_to_unmount_is_logged_once(daemon, plugged):
    """A failed unmount is tried again, but logged once."""
    plugged.fail(error(BUSY), "Unmount")
    daemon.start()
    daemon.change(USB, False)
    wait_until(lambda: len(daemon.transcript.calls("Unmount")) == 2)
    assert daemon.calls() == 2 * [STICK.order]
    assert daemon.logged() == [COMPLAINT]
    assert daemon.policy(USB) is False


def test_death_instead_of_unmounting_is_silent(daemon, plugged):
    plugged.fail(DEATH, "Unmount")
    daemon.start()
    daemon.change(USB, False)
    wait_until(lambda: len(answers(daemon, "Unmount")) == 1)
    assert daemon.calls() == [STICK.order]
    assert daemon.logged() == []


def test_storage_in_use_is_unmounted_when_it_is_free(daemon, plugged):
    plugged.fail(error(BUSY), "Unmount")
    daemon.start()
    daemon.change(USB, False)
    wait_for_refusal(daemon)
    plugged.mend()
    wait_until(lambda: not STICK.is_mounted(plugged))
    assert daemon.logged() == [COMPLAINT]


def test_storage_in_use_is_left_alone_once_it_is_allowed(daemon, plugged):
    """A memory card, which stays forbidden, shows when the stick would have been tried again."""
    card = Stick("card", "sdio")
    card.plug(plugged)
    plugged.fail(error(BUSY), "Unmount")
    daemon.start()
    daemon.change(USB, False)
    wait_for_refusal(daemon)
    daemon.change(CARD, False)
    daemon.change(USB, True)
    plugged.mend()
    wait_until(lambda: not card.is_mounted(plugged))
    assert daemon.calls().count(STICK.order) == 1
    assert STICK.is_mounted(plugged)


def test_each_place_is_unmounted(daemon, plugged):
    plugged.set_mount_points(STICK.path, "/a", "/b")
    daemon.start()
    daemon.change(USB, False)
    wait_until(lambda: not STICK.is_mounted(plugged))
    assert daemon.calls() == 2 * [STICK.order]
    assert daemon.logged() == []


@pytest.mark.parametrize("occasion", ["forbidden again", "mounted later", "time passes"])
def test_storage_that_was_not_listed_is_unmounted_when_it_can_be(daemon, storage, occasion):
    storage.fail(ERROR, "GetManagedObjects")
    storage.appear()
    Stick(mounted=occasion != "mounted later").plug(storage)
    daemon.start_observed()
    daemon.change(USB, False)
    assert daemon.calls(storage.NAME) == []
    storage.mend()
    if occasion == "mounted later":
        STICK.mount(storage)
    elif occasion == "forbidden again":
        daemon.change(USB, True)
        daemon.change(USB, False)
    wait_until(lambda: not STICK.is_mounted(storage))
    assert daemon.calls(storage.NAME) == [STICK.order]


@pytest.mark.parametrize("fault", [SILENCE, Fault("error", delay=0.9 * WAITING_TIME)],
                         ids=["no answer", "late error"])
def test_start_waits_once_for_a_service_that_lists_nothing(daemon, storage, fault):
    storage.fail(fault, "GetManagedObjects")
    storage.appear()
    STICK.plug(storage)
    files.store({CARD: False, USB: False})
    start = time.monotonic()
    daemon.start_observed()
    assert time.monotonic() - start < 3 * WAITING_TIME
    storage.mend()
    wait_until(lambda: not STICK.is_mounted(storage))
    assert daemon.calls(storage.NAME) == [STICK.order]


def test_drive_that_is_gone_while_its_policy_goes_off(daemon, plugged):
    """Without its drive, nothing says which policy the stick obeys."""
    daemon.start_observed()
    wait_until(lambda: len(answers(daemon, "GetManagedObjects")) == 1)
    path = plugged.blocks[STICK.path].drive
    drive = plugged.drives[path]
    plugged.unplug(path)
    daemon.transcript.settle()
    daemon.change(USB, False)
    plugged.plug(drive)
    wait_until(lambda: not STICK.is_mounted(plugged))
    assert daemon.calls(plugged.NAME) == [STICK.order]


def test_lines_about_storage_are_limited(daemon, storage):
    """Whoever may mount can cause such lines again and again."""
    sticks = [Stick(f"stick{number}") for number in range(2 * LOG_BURST)]
    for stick in sticks:
        stick.plug(storage)
    storage.fail(error(BUSY), "Unmount")
    storage.appear()
    daemon.start()
    daemon.change(USB, False)
    wait_until(lambda: len(refusals(daemon)) >= len(sticks))
    assert len(daemon.logged()) == LOG_BURST


def test_nobody_waits_for_the_unmount(daemon, plugged):
    plugged.fail(SILENCE, "Unmount")
    daemon.start()
    daemon.change(USB, False)
    assert daemon.calls() == [STICK.order]
    assert answers(daemon, "Unmount") == []
    assert daemon.policy(CARD) is True


def test_many_devices_need_no_question_each(daemon, storage):
    sticks = [Stick(f"stick{number:03}", mounted=number % 100 == 0) for number in range(300)]
    for stick in sticks:
        stick.plug(storage)
    storage.appear()
    daemon.start_observed()
    # A listing that came later would have each stick unmounted again.
    wait_until(lambda: len(answers(daemon, "GetManagedObjects")) == 1)
    assert daemon.policy(USB) is True
    daemon.change(USB, False)
    orders = [stick.order for stick in sticks if stick.mounted]
    assert daemon.calls(storage.NAME) == orders
    questions = [message for message in daemon.transcript.messages()
                 if message.kind == "call" and message.destination == storage.NAME]
    assert len(questions) <= len(orders) + 4  # a few listings
