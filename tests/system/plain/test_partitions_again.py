# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The library asks for another listing when it has no good one: at the next occasion, and after a
pause in any case."""

import time

import pytest

from testbed.partitions import (BLOCK_PATH, MOUNTED, PLACE, STICK, STICK_PATH, block, listings,
                                plug_stick)
from testbed.services.service import ERROR, PROPERTIES, SILENCE, Fault, answer, late
from testbed.services.storage import BLOCK, Block
from testbed.waiting import wait_until

WAITING_TIME = 5.0  # seconds that a call waits for a listing
FIRST_PAUSE = 2.0  # seconds until the library asks again by itself
LATE_ERROR = Fault("error", delay=0.3)  # leaves time for other events before it


def wait_for_listings(storage, count):
    """Waits until GetManagedObjects has been called so often."""
    wait_until(lambda: listings(storage) == count)


def fail_repeatedly(storage, partitions):
    """Lets the listings fail until the library waits for several seconds between them. Returns
    their number."""
    storage.fail(ERROR, "GetManagedObjects")
    partitions.run()
    wait_for_listings(storage, 3)
    return 3


def wait_for_good_listing(storage, partitions, *others):
    """Waits until the block device is listed, and announced once beside others."""
    partitions.wait_for(*sorted([BLOCK_PATH, *others]))
    partitions.settle(storage)
    assert sorted(partitions.paths()) == sorted([BLOCK_PATH, *others])
    found = {partition["path"]: partition for partition in partitions.list()}
    assert found[BLOCK_PATH]["status"] == MOUNTED
    assert found[BLOCK_PATH]["drive"]["connectionBus"] == 1


each_fault = pytest.mark.parametrize("fault", [ERROR, answer("s", "text"), SILENCE],
                                     ids=["error", "another shape", "time-out"])


@each_fault
def test_asked_again_by_the_next_call(present, partitions, fault):
    """There is no event loop yet, which would ask again after a pause."""
    plug_stick(present, PLACE)
    present.fail(fault, "GetManagedObjects")
    partitions.make_application()
    assert partitions.list() == []
    present.mend()
    wait_until(partitions.list)
    assert listings(present) == 2
    partitions.run()
    wait_for_good_listing(present, partitions)
    assert listings(present) == 2


@each_fault
def test_asked_again_without_an_occasion(present, partitions, fault):
    plug_stick(present, PLACE)
    present.fail(fault, "GetManagedObjects")
    partitions.run()
    wait_for_listings(present, 1)
    present.mend()
    wait_for_good_listing(present, partitions)


def test_pauses_grow(present, partitions):
    present.fail(ERROR, "GetManagedObjects")
    partitions.run()
    times = []
    for count in range(1, 5):
        wait_for_listings(present, count)
        times.append(time.monotonic())
    pauses = [later - earlier for earlier, later in zip(times, times[1:])]
    assert [pause > 0.9 * FIRST_PAUSE * 2 ** number for number, pause in enumerate(pauses)] == [
        True, True, True]


def test_pauses_begin_anew_with_the_next_service(present, partitions):
    count = fail_repeatedly(present, partitions)  # the next pause would be of four times the first
    present.leave()
    present.appear()
    wait_for_listings(present, count + 1)
    start = time.monotonic()
    wait_for_listings(present, count + 2)
    assert time.monotonic() - start < 3 * FIRST_PAUSE


@pytest.mark.parametrize("fault", [SILENCE, Fault("error", delay=0.9 * WAITING_TIME)],
                         ids=["no answer", "late error"])
def test_service_that_lists_nothing_is_waited_for_once(present, partitions, fault):
    present.fail(fault, "GetManagedObjects")
    partitions.make_application()
    start = time.monotonic()
    for manager in (0, 1, 0, 1):
        assert partitions.list(manager=manager) == []
    assert time.monotonic() - start < 2 * WAITING_TIME


def test_slow_service_is_listed_in_the_end(present, partitions):
    """It answers later than a call waits for it."""
    plug_stick(present, PLACE)
    present.fail(late(1.5 * WAITING_TIME), "GetManagedObjects")
    partitions.run()
    wait_for_good_listing(present, partitions)


@pytest.mark.parametrize("fault", [ERROR, answer("s", "text")], ids=["error", "another shape"])
def test_value_that_could_not_be_read_is_listed_again(present, partitions, fault):
    """The service reports that the mount points have changed, but not how."""
    plug_stick(present)
    partitions.run(BLOCK_PATH)
    partitions.forget()
    present.fail(fault, "Get")
    present.tells = False
    present.set_mount_points(BLOCK_PATH, PLACE)
    wait_for_good_listing(present, partitions)


def test_what_a_later_listing_lacks_is_forgotten(present, partitions):
    """Without an event loop, the library reads the listing before the signal of the removal."""
    def list_after_signals():
        partitions.ask("events")
        return partitions.list()
    present.fail(ERROR, "GetManagedObjects")
    partitions.make_application()
    assert partitions.list() == []
    present.plug(block())
    wait_until(list_after_signals)
    present.mend()
    present.unplug(BLOCK_PATH)
    wait_until(lambda: partitions.list() == [])
    partitions.run()
    partitions.settle(present)
    assert partitions.list() == []


@pytest.mark.parametrize("occasion", ["mounted", "another device"])
def test_signal_that_names_the_unknown(present, partitions, occasion):
    plug_stick(present, PLACE)
    count = fail_repeatedly(present, partitions)
    present.mend()
    start = time.monotonic()
    if occasion == "mounted":
        present.set_mount_points(BLOCK_PATH, PLACE)
        others = []
    else:
        others = [present.plug(Block("another"))]
    wait_for_listings(present, count + 1)
    assert time.monotonic() - start < 3 * FIRST_PAUSE  # the present pause is longer
    wait_for_good_listing(present, partitions, *others)
    assert listings(present) == count + 1


def test_signal_before_the_listing_has_failed(present, partitions):
    plug_stick(present)
    present.fail(LATE_ERROR, "GetManagedObjects")
    partitions.run()
    wait_for_listings(present, 1)
    present.mend()
    present.set_mount_points(BLOCK_PATH, PLACE)  # arrives before the error does
    partitions.wait_for(BLOCK_PATH)
    assert partitions.announced()[0]["status"] == MOUNTED
    assert listings(present) == 2


def test_one_listing_for_each_occasion(present, partitions):
    first = fail_repeatedly(present, partitions) + 1
    present.plug(block())  # its first appearance is announced only once
    partitions.wait_for(BLOCK_PATH)
    wait_for_listings(present, first)
    for times in range(2, 7):
        present.set_mount_points(BLOCK_PATH, PLACE)
        partitions.wait_for(*times * [BLOCK_PATH])
        present.set_mount_points(BLOCK_PATH)
    assert listings(present) == first
    for count in (1, 2, 3):
        partitions.list()
        assert listings(present) == first + count


def test_one_listing_at_a_time(present, partitions):
    present.fail(LATE_ERROR, "GetManagedObjects")
    partitions.run()
    wait_for_listings(present, 1)
    for number in range(50):
        present.signal(f"{BLOCK_PATH}{number}", PROPERTIES, "PropertiesChanged", "sa{sv}as", BLOCK,
                       {}, [])
    # However many occasions there are, only one call follows the pending one.
    wait_until(lambda: listings(present) > 1)
    partitions.list()
    assert listings(present) < 10


def test_signals_count_without_any_listing(present, partitions):
    """A service that never lists must not delay its signals."""
    present.fail(ERROR, "GetManagedObjects")
    partitions.run()
    wait_for_listings(present, 1)
    present.fail(SILENCE, "GetManagedObjects")
    present.plug(STICK)
    wait_for_listings(present, 2)
    present.plug(block(PLACE, drive=STICK_PATH))
    partitions.wait_for(BLOCK_PATH)
    present.set_mount_points(BLOCK_PATH)
    present.set_mount_points(BLOCK_PATH, PLACE)
    partitions.wait_for(BLOCK_PATH, BLOCK_PATH)
    assert partitions.announced()[1]["drive"]["connectionBus"] == 1
