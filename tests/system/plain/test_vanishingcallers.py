# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Callers that are killed before, during and after the daemon's check: no write without rights is
accepted, and no acknowledged write is lost."""

import collections
import os
import random
import time

from jeepney import MessageType

from testbed import files
from testbed.bus import Client, write_of
from testbed.users import MAY_WRITE, User

KEY = "NfcEnabled"  # a policy without a handler
DEATHS = 5000 if "GOVD_HOLD" in os.environ else 500


def was_accepted(client):
    """Whether a client that is about to be killed has got the reply that its write was accepted."""
    try:
        while True:
            message = client.receive(timeout=0)
            if message.header.message_type == MessageType.method_return:
                return message.body == (True,)
    except TimeoutError:
        return False


def time_of_write(daemon):
    """How many seconds a write takes in this run when nothing disturbs it."""
    times = []
    for number in range(10):
        start = time.monotonic()
        daemon.set(KEY, 100 + number, "i")
        times.append(time.monotonic() - start)
    return min(times)


def test_none_is_admitted_wrongly_and_none_is_lost(daemon):
    daemon.start()
    longest = 2 * time_of_write(daemon)
    seed = random.randrange(1 << 32)
    print("seed", seed)  # shown when the test fails
    chance = random.Random(seed)
    ends = collections.Counter()
    told = {}
    for number in range(1000, 1000 + DEATHS):
        user = chance.choice(list(MAY_WRITE))
        process = User(user)
        with Client(process) as client:
            client.call(write_of(KEY, number, "i"))
            end = time.monotonic() + chance.random() * longest
            while time.monotonic() < end:
                pass  # the time is shorter than the kernel can sleep
            process.end()
            told[number] = user, was_accepted(client)
    daemon.change("LastOfAll", True)  # its reply means that all before is done
    recorded = "\n".join(daemon.records())
    for number, (user, accepted) in told.items():
        happened = f". New value {number}." in recorded
        assert MAY_WRITE[user] or not (happened or accepted)
        assert happened or not accepted
        if MAY_WRITE[user]:
            ends["told" if accepted else "carried out" if happened else "unheard"] += 1
    assert set(ends) == {"told", "carried out", "unheard"}, ends
    assert files.stored()[KEY] == "true"
