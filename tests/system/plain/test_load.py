# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Many clients at once, with and without rights: all replies, signals and events agree with one
order of the accepted writes."""

import collections
import os
import random
from dataclasses import dataclass

from jeepney import MessageType

from testbed import files
from testbed.bus import read_of, write_of
from testbed.daemon import announcement, event
from testbed.policies import KEYS
from testbed.users import MAY_WRITE

LONG = "GOVD_HOLD" in os.environ
SEED = 20260101
NEVER_ANSWERED = 60  # calls of one client at a time, so that the bus does not refuse more


@dataclass(frozen=True)
class Deed:
    """A call of a client: a read, or a write of a value, and its result."""
    key: str
    written: object  # None for a read
    answer: object  # the value that was read, or whether a write was accepted; None for a refusal


def message_of(chance, number, key):
    """A message, and the value that it writes, if any."""
    if chance.random() < 0.4:
        return read_of(key), None
    if KEYS.index(key) % 5 == 0:
        value = chance.random() < 0.5
        return write_of(key, value), value
    # No client writes the numbers 0 and 1, which equal booleans; each number is written once.
    return write_of(key, 1000 + number, "i"), 1000 + number


def work(clients, calls):
    """Makes so many calls with all clients at the same time; the deeds of each, in order."""
    chance, numbers = random.Random(SEED), iter(range(1 << 30))
    deeds = [[] for _ in clients]
    for _ in range(0, calls, NEVER_ANSWERED):
        sent = []
        for client in clients:
            sent.append({})
            for _ in range(NEVER_ANSWERED):
                key = chance.choice(KEYS[1:])
                message, value = message_of(chance, next(numbers), key)
                sent[-1][client.call(message)] = key, value
        for client, calls_of, done in zip(clients, sent, deeds):
            for serial, (key, value) in calls_of.items():  # replies to one client are in order
                reply = client.answer(serial)
                refused = reply.header.message_type == MessageType.error
                content = None if refused else reply.body[0]
                done.append(Deed(key, value, content if value is not None else content[1]))
    return deeds


class History:
    """The changes in their order, from the audit events."""

    def __init__(self, before, events):
        self.now = dict(before)
        self.announcements = []
        self.changes = collections.defaultdict(list)  # by key: (place, new value)
        for place, (key, old, new) in enumerate(events, 1):
            assert old == str(files.text_of(self.now[key])), (key, old, self.now[key])
            value = new == "true" if new in ("true", "false") else int(new)
            self.announcements.append(event(key, self.now[key], value))
            if self.now[key] != value:
                self.announcements.append(announcement(key, bool(value)))
            self.now[key] = value
            self.changes[key].append((place, value))
        self._before = before

    def place_of(self, key, value, since):
        """The first place at or after `since` where a policy has a value."""
        current = [new for place, new in self.changes[key] if place <= since]
        if (current[-1] if current else self._before[key]) == value:
            return since
        return next(place for place, new in self.changes[key] if place > since and new == value)


def parsed(text):
    """Key, old and new value in the text of an event."""
    key, _, rest = text.removeprefix("Policy ").partition(" changed. Old value ")
    old, _, new = rest.partition(". New value ")
    return key, old, new.removesuffix(".")


def test_everything_fits_to_one_order_of_the_writes(daemon, client, system_logs):
    count, calls = (50, 2000) if LONG else (14, 600)
    system_logs.appear()
    daemon.start()
    before = {key: daemon.policy(key) for key in KEYS}
    users = [list(MAY_WRITE)[number % len(MAY_WRITE)] for number in range(count)]
    clients = [client(user) for user in users]
    deeds = work(clients, calls)
    history = History(before, map(parsed, daemon.records()))
    # Without rights every write is refused; with rights every write is accepted.
    for user, done in zip(users, deeds):
        writes = {deed.answer for deed in done if deed.written is not None}
        assert writes == {True if MAY_WRITE[user] else None}
    # Every write that was acknowledged happened once.
    accepted = collections.Counter((deed.key, deed.written) for done in deeds for deed in done
                                   if deed.written is not None and deed.answer)
    happened = collections.Counter((key, value) for key, changes in history.changes.items()
                                   for _, value in changes)
    assert accepted == happened and sum(accepted.values()) > calls
    # The signals give the same history.
    assert history.announcements == [words for words in daemon.said() if words[0] == "signal"
                                     or words[1] == "sendEventStringAlt"]
    # The calls of each client fit into it.
    for user, done in zip(users, deeds):
        place = 0
        for deed in done:
            if deed.written is None:
                place = history.place_of(deed.key, deed.answer, place)
            elif deed.answer:
                place = history.place_of(deed.key, deed.written, place)
    # The final values are those of the last changes.
    assert {key: daemon.policy(key) for key in KEYS} == history.now
    assert files.stored() == {key: files.text_of(bool(value))
                              for key, value in history.now.items()}
