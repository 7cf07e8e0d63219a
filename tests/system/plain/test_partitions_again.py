# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A manager without a valid listing asks for another one, once for each occasion."""

import time

import pytest

from testbed.partitions import BLOCK_PATH, MOUNTED, PLACE, STICK, STICK_PATH, block, listings
from testbed.services.service import ERROR, PROPERTIES, SILENCE, Fault, answer
from testbed.services.storage import BLOCK, Block
from testbed.waiting import wait_until

TIMEOUT = 25.0  # seconds that the library waits for an answer
LATE_ERROR = Fault("error", delay=0.3)  # leaves time for other events before it


@pytest.fixture
def present(storage):
    """The storage service, on the bus."""
    storage.appear()
    return storage


def fail_to_list(storage, fault):
    """Makes the listings fail from now on."""
    storage.fail(fault, "GetManagedObjects")


def wait_for_listings(storage, count):
    """Waits until GetManagedObjects has been called so often."""
    wait_until(lambda: listings(storage) == count)


def tell_of(storage, path):
    """Sends a signal of the storage service that a device has changed."""
    storage.signal(path, PROPERTIES, "PropertiesChanged", "sa{sv}as", BLOCK, {}, [])


@pytest.mark.parametrize("fault", [ERROR, answer("s", "text"), SILENCE],
                         ids=["error", "another shape", "time-out"])
def test_asked_again(present, partitions, fault):
    present.plug(STICK)
    present.plug(block(PLACE, drive=STICK_PATH))
    fail_to_list(present, fault)
    partitions.make_application()
    start = time.monotonic()
    assert partitions.list() == []
    assert time.monotonic() - start < 2 * TIMEOUT
    present.mend()
    found = partitions.only()
    assert found["status"] == MOUNTED
    assert found["drive"]["connectionBus"] == 1
    partitions.run()
    partitions.wait_for(BLOCK_PATH)
    partitions.settle(present)
    assert partitions.paths() == [BLOCK_PATH]
    assert listings(present) == 2


@pytest.mark.parametrize("occasion", ["mounted", "another device"])
def test_signal_that_names_the_unknown(present, partitions, occasion):
    present.plug(STICK)
    present.plug(block(PLACE, drive=STICK_PATH))
    fail_to_list(present, ERROR)
    partitions.run()
    wait_for_listings(present, 1)
    present.mend()
    if occasion == "mounted":
        present.set_mount_points(BLOCK_PATH, PLACE)
        others = []
    else:
        others = [present.plug(Block("another"))]
    wait_until(lambda: BLOCK_PATH in partitions.paths())
    partitions.settle(present)
    assert sorted(partitions.paths()) == sorted([BLOCK_PATH, *others])
    assert listings(present) == 2


def test_signal_before_the_listing_has_failed(present, partitions):
    present.plug(STICK)
    present.plug(block(drive=STICK_PATH))
    fail_to_list(present, LATE_ERROR)
    partitions.run()
    wait_for_listings(present, 1)
    present.mend()
    present.set_mount_points(BLOCK_PATH, PLACE)  # arrives before the error does
    partitions.wait_for(BLOCK_PATH)
    assert partitions.announced()[0]["status"] == MOUNTED
    assert listings(present) == 2


def test_one_listing_for_each_occasion(present, partitions):
    fail_to_list(present, ERROR)
    partitions.run()
    wait_for_listings(present, 1)
    present.plug(block())  # its first appearance is announced only once
    partitions.wait_for(BLOCK_PATH)
    wait_for_listings(present, 2)
    for times in range(2, 12):
        present.set_mount_points(BLOCK_PATH, PLACE)
        partitions.wait_for(*times * [BLOCK_PATH])
        present.set_mount_points(BLOCK_PATH)
    assert listings(present) == 2
    for count in (3, 4, 5):
        partitions.list()
        assert listings(present) == count


def test_one_listing_at_a_time(present, partitions):
    fail_to_list(present, LATE_ERROR)
    partitions.run()
    wait_for_listings(present, 1)
    for number in range(50):
        tell_of(present, f"{BLOCK_PATH}{number}")
    # However many occasions there are, only one call follows the pending one.
    wait_for_listings(present, 2)
    partitions.list()
    assert listings(present) == 2
    partitions.list()
    assert listings(present) == 3


def test_no_more_listings_after_a_good_one(present, partitions):
    fail_to_list(present, ERROR)
    partitions.make_application()
    partitions.list()
    present.mend()
    partitions.list()
    assert listings(present) == 2
    partitions.list()
    partitions.run()
    tell_of(present, BLOCK_PATH)
    partitions.settle(present)
    assert listings(present) == 2


def test_signals_count_without_any_listing(present, partitions):
    """A service that never lists must not delay its signals."""
    fail_to_list(present, ERROR)
    partitions.run()
    wait_for_listings(present, 1)
    fail_to_list(present, SILENCE)
    present.plug(STICK)
    wait_for_listings(present, 2)
    present.plug(block(PLACE, drive=STICK_PATH))
    partitions.wait_for(BLOCK_PATH)
    present.set_mount_points(BLOCK_PATH)
    present.set_mount_points(BLOCK_PATH, PLACE)
    partitions.wait_for(BLOCK_PATH, BLOCK_PATH)
    assert partitions.announced()[1]["drive"]["connectionBus"] == 1
    assert listings(present) == 2
