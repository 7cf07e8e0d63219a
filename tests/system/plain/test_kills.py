# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A killed daemon: no acknowledged write is lost, the files are never in a state between two
writes, and the next start reads them."""

import os
import random

import pytest
from jeepney import DBusErrorResponse, HeaderFields, MessageType

from testbed import files
from testbed.bus import Client, write_of
from testbed.files import CAMERA_MARKER, text_of
from testbed.policies import KEYS, default_of
from testbed.systemcalls import SystemCalls, places, traced
from testbed.waiting import wait_until

LONG = "GOVD_HOLD" in os.environ
BURST = 80  # writes that are sent at once


@pytest.mark.parametrize("creation", [False, True])
@pytest.mark.parametrize("key, file", [("CameraEnabled", files.POLICY_FILE),
                                       ("camera", files.SWITCH_FILE)])
def test_file_is_old_or_new_wherever_a_write_is_killed(daemon, switches, key, file, creation):
    switches.set_switch("camera", [1], True)
    make, read = ((daemon.set_switch, daemon.switch) if key == "camera"
                  else (daemon.set, daemon.policy))

    def prepare(old_value):
        if creation:
            file.unlink(missing_ok=True)
        else:
            assert make(key, old_value) is True

    def kill(place):
        """Whether the file has the old content after a kill there, and whether it was reached."""
        daemon.start()
        value = not read(key)
        prepare(not value)
        before = files.snapshot(file)
        expected = files.stored(file) | {key: text_of(value)}
        calls = SystemCalls(daemon.pid, *place.killing())
        try:
            acknowledged = make(key, value)
        except DBusErrorResponse:
            acknowledged = False
        calls.drop()
        if acknowledged:
            daemon.kill()
        wait_until(lambda: not daemon.running)
        is_old = files.snapshot(file) == before
        assert is_old or files.stored(file) == expected
        assert not (acknowledged and is_old)
        daemon.start()
        assert is_old or read(key) is value
        assert make(key, value) is True  # and writes go on
        assert files.stored(file)[key] == text_of(value)
        daemon.kill()
        return is_old, acknowledged

    daemon.start()
    prepare(True)
    calls = SystemCalls(daemon.pid)
    assert make(key, False) is True
    found = places(calls.end(), LONG)
    daemon.kill()
    assert len(found) > 5
    old, missed = (sum(column) for column in zip(*map(kill, found)))
    assert old and missed * 2 <= len(found)


def file_with(count):
    """The file when the defaults of the first policies have been stored."""
    return "[policy]\n" + "".join(f"{key}={text_of(default_of(key))}\n" for key in KEYS[:count])


def test_start_after_a_killed_first_start_has_every_default(daemon, tmp_path):
    calls = tmp_path / "calls"
    daemon.wrapper = traced("-y", output=calls)
    daemon.start()
    daemon.kill()
    found = places(calls.read_text(errors="replace").split("\n"), LONG)
    assert len(found) > 5 * len(KEYS)  # several calls for each policy
    left = []
    for place in found[::1 if LONG else 11]:
        files.reset()
        daemon.wrapper = traced(*place.killing())
        try:
            daemon.start()
            daemon.kill()  # the place lies after the start, or this run has fewer such calls
        except ChildProcessError:
            pass
        content = files.POLICY_FILE.read_text() if files.POLICY_FILE.exists() else None
        left.append(content.count("=") if content else 0)
        assert content in (None, file_with(left[-1])) and (content is None or left[-1])
        daemon.wrapper = []
        daemon.start()
        assert [daemon.policy(key) for key in KEYS] == [default_of(key) for key in KEYS]
        assert files.POLICY_FILE.read_text() == file_with(len(KEYS))
        assert CAMERA_MARKER.exists()
        daemon.change("CameraEnabled", False)  # and writes go on
        assert files.stored()["CameraEnabled"] == "false"
        daemon.kill()
    whole = left.count(len(KEYS))
    assert left.count(0) and len(left) - left.count(0) - whole > whole


def test_nothing_acknowledged_is_lost_at_random(daemon):
    rounds, in_the_middle = 500 if LONG else 25, 0
    seed = random.randrange(1 << 32)
    print("seed", seed)  # shown when the test fails
    chance = random.Random(seed)
    daemon.start()
    for _ in range(rounds):
        with Client() as client:
            states, serials = [files.stored()], []
            for _ in range(BURST):
                key = chance.choice(KEYS[1:])
                value = states[-1][key] != "true"
                states.append(states[-1] | {key: text_of(value)})
                serials.append(client.call(write_of(key, value)))
            end = chance.randrange(BURST)
            acknowledged = 0
            for number in range(BURST):
                if number == end:
                    daemon.kill()
                # The bus sends an error for calls to a closed connection.
                message = client.receive(timeout=60)
                while HeaderFields.reply_serial not in message.header.fields:
                    message = client.receive(timeout=60)
                acknowledged += message.header.message_type == MessageType.method_return
        found = files.stored()
        assert found in states[acknowledged:]
        in_the_middle += acknowledged < BURST
        daemon.start()
        assert {key: text_of(daemon.policy(key)) for key in found} == found
    assert in_the_middle > rounds / 2
