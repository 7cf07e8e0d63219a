# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""When forbidden storage is unmounted: when its policy is enforced, and when it appears later. What
the storage service tells and how it can fail is tested with the library of partitions."""

import pytest

from testbed.services.service import DEATH, SILENCE, error
from testbed.stick import Stick
from testbed.waiting import wait_until

CARD, USB = "MemoryCardEnabled", "UsbStorageEnabled"
STICK = Stick()
LOG_BURST = 20  # lines that are written before others are only counted
BUSY = "org.freedesktop.UDisks2.Error.DeviceBusy"


def answers(daemon, member):
    """The answers to the calls of a method."""
    calls = daemon.transcript.calls(member)
    return daemon.transcript.messages(lambda message: any(map(message.is_reply_to, calls)))


def wait_until_unmounted(storage):
    """Waits until the stick is not mounted."""
    wait_until(lambda: not STICK.is_mounted(storage))


def test_allowing_mounts_nothing(daemon, present):
    STICK.plug(present)
    daemon.start()
    daemon.change(USB, False)
    wait_until_unmounted(present)
    daemon.forget()
    daemon.change(USB, True)
    assert daemon.calls() == []
    assert not STICK.is_mounted(present)
    STICK.mount(present)
    assert daemon.calls() == []


@pytest.mark.parametrize("tells", [True, False], ids=["told where", "told that it changed"])
def test_storage_mounted_later_is_unmounted(daemon, present, tells):
    Stick(mounted=False).plug(present)
    present.tells = tells
    daemon.start_observed()
    daemon.change(USB, False)
    assert daemon.calls(present.NAME) == []
    STICK.mount(present)
    daemon.transcript.wait_for(lambda message: message.member == "Unmount")
    wait_until_unmounted(present)
    assert daemon.calls(present.NAME) == [STICK.order]


def test_same_value_unmounts_nothing(daemon, present):
    """The storage stays mounted, and nothing reminds the daemon of it."""
    daemon.start()
    daemon.change(USB, False)
    present.fail(SILENCE, "Unmount")
    STICK.plug(present)
    daemon.forget()
    daemon.change(USB, False)
    assert daemon.calls() == []


def test_absent_service_is_no_failure(daemon):
    daemon.start()
    daemon.change(USB, False)
    daemon.change(USB, True)
    daemon.change(CARD, False)
    assert daemon.calls() == []
    assert daemon.logged() == []


@pytest.mark.parametrize("was_there", [False, True])
def test_storage_of_a_service_that_appears_is_unmounted(daemon, storage, was_there):
    if was_there:
        storage.appear()
    daemon.start()
    daemon.change(USB, False)
    storage.leave()
    STICK.plug(storage)
    daemon.forget()
    storage.appear()
    wait_until_unmounted(storage)
    assert daemon.calls() == [STICK.order]
    assert daemon.logged() == []


def test_death_instead_of_unmounting_is_silent(daemon, present):
    STICK.plug(present)
    present.fail(DEATH, "Unmount")
    daemon.start()
    daemon.change(USB, False)
    wait_until(lambda: answers(daemon, "Unmount"))
    assert daemon.calls() == [STICK.order]
    assert daemon.logged() == []


def test_storage_in_use_is_left_alone_once_it_is_allowed(daemon, present):
    """A memory card, which stays forbidden, shows when the stick would have been tried again."""
    card = Stick("card", "sdio")
    STICK.plug(present)
    card.plug(present)
    present.fail(error(BUSY), "Unmount")
    daemon.start()
    daemon.change(USB, False)
    wait_until(lambda: answers(daemon, "Unmount"))
    daemon.change(CARD, False)
    daemon.change(USB, True)
    present.mend()
    wait_until(lambda: not card.is_mounted(present))
    assert daemon.calls().count(STICK.order) == 1
    assert STICK.is_mounted(present)


def test_lines_about_storage_are_limited(daemon, present):
    """Whoever may mount can cause such lines again and again."""
    sticks = [Stick(f"stick{number}") for number in range(2 * LOG_BURST)]
    for stick in sticks:
        stick.plug(present)
    present.fail(error(BUSY), "Unmount")
    daemon.start()
    daemon.change(USB, False)
    wait_until(lambda: len(answers(daemon, "Unmount")) >= len(sticks))
    assert len(daemon.logged()) == LOG_BURST
