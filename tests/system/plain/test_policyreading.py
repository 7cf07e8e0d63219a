# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Reads of policies: what they ask, and that they change nothing."""

import pytest
from jeepney import new_method_call

from testbed import files
from testbed.bus import SWITCH, read_of
from testbed.files import POLICY_FILE, SWITCH_FILE

CAMERA, UNKNOWN = "CameraEnabled", "TelepathyEnabled"


def test_switches_of_odd_types_are_not_asked(daemon, switches):
    switches.set_switch("lens", [2, 3, 45, -1, 100], False)
    switches.set_switch("shutter", [], False)
    daemon.start()
    before = len(switches.calls())
    assert daemon.policy(CAMERA) is True
    assert switches.calls(before) == ["keyPolicyTypes"]


def test_anybody_may_read_and_reading_changes_nothing(daemon, guest, switches):
    switches.set_switch("lens", [1], False)
    daemon.start()
    before, calls = files.snapshot(POLICY_FILE), len(switches.calls())
    assert guest.ask(read_of(CAMERA)) == (("b", False),)
    assert guest.ask(read_of("lens", SWITCH)) == (("b", False),)
    assert guest.ask(new_method_call(SWITCH, "KeyPolicyTypes", "s", ("lens",))) == ([1],)
    assert guest.ask(new_method_call(SWITCH, "Keys")) == (["lens"],)
    assert daemon.has_no_value(UNKNOWN)
    assert daemon.messages() == [("reply", False), ("reply", False), ("reply", [1]),
                                 ("reply", ["lens"])]
    assert daemon.records() == []
    assert daemon.logged() == []  # any user could fill the log
    assert files.snapshot(POLICY_FILE) == before
    assert not SWITCH_FILE.exists()
    assert not [call for call in switches.calls(calls) if call.startswith("setKeyValue")]


def test_keys_are_compared_exactly(daemon):
    daemon.start()
    assert daemon.has_no_value("cameraEnabled", "CAMERAENABLED", "CameraEnabled ",
                               " CameraEnabled", "CameraEnable", "Camera", "1", "")


def test_reader_without_an_answer_delays_no_other(daemon, root):
    daemon.start()
    with pytest.raises(TimeoutError):
        root.ask(read_of(UNKNOWN), 0.3)
    assert daemon.messages() == daemon.logged() == []
    assert daemon.policy(CAMERA) is True
    daemon.change(CAMERA, False)
    assert daemon.policy(CAMERA) is False
