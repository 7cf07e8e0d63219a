# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Which handlers run for which policy, and in which order."""

import pytest

from testbed import files
from testbed.bus import SERVICE
from testbed.daemon import announcement, event
from testbed.handlers import DIRECT, HANDLERS, WATCHED, calls_of
from testbed.services.small import ApplicationSandbox, AudioPolicy, UsbModes


@pytest.mark.parametrize("value", [False, True])
def test_every_policy_reaches_its_handlers_only(daemon, services, value):
    """After the event, before the announcement and the reply."""
    daemon.start()
    keys = list(files.stored())
    assert len(keys) == 46
    daemon.stop()
    files.store(dict.fromkeys(keys, not value))
    daemon.start()
    for key in keys:
        daemon.forget()
        daemon.change(key, value)
        said, calls = daemon.said(), daemon.calls()
        direct, waiting = calls_of(key, value, DIRECT), calls_of(key, value, WATCHED)
        assert said[0] == event(key, not value, value)
        assert said[-2:] == [announcement(key, value), ("reply", True)]
        assert len(said) == 3 + len(calls)
        assert calls[:len(direct)] == direct
        assert sorted(calls[len(direct):]) == sorted(waiting)  # services have no fixed order
        assert daemon.logged() == []


@pytest.mark.parametrize("key", ["LocationEnabled", "NoSuchPolicy"])
def test_policy_without_handlers_waits_for_no_service(daemon, services, key):
    for service in services.values():
        service.leave()
    daemon.start()
    daemon.change(key, False)
    daemon.change(key, True)
    assert daemon.calls() == []
    assert daemon.logged() == []
    daemon.forget()
    for service in services.values():
        service.appear()
    assert len(daemon.calls(ApplicationSandbox.NAME)) == 2 * 6
    assert len(daemon.calls(UsbModes.NAME)) == 1 + 2 * 3
    assert len(daemon.calls(AudioPolicy.NAME)) == 2
    assert len(daemon.said()) == 21
    assert daemon.logged() == []


def test_state_of_a_service_is_that_of_all_its_policies(daemon, application_sandbox):
    application_sandbox.appear()
    daemon.start()
    for key in ("CameraEnabled", "VoiceCallsEnabled", "MicrophoneEnabled"):
        daemon.change(key, False)
    assert application_sandbox.denylist == {"org.kvt.camera", "org.kvt.cameralockscreen",
                                            "voicecall-ui"}
    daemon.change("CameraEnabled", True)
    assert application_sandbox.denylist == {"voicecall-ui"}


def test_all_services_are_served_before_the_daemon_takes_its_name(daemon, services, transcript):
    files.store(dict.fromkeys([handler.key for handler in HANDLERS], False))
    daemon.start_observed()
    own = transcript.owner(SERVICE)
    steps = [SERVICE if message.member == "RequestName" else message.destination
             for message in transcript.messages(lambda message: message.sender == own)]
    assert steps.count(SERVICE) == 1
    before, after = steps[:steps.index(SERVICE)], steps[steps.index(SERVICE):]
    for service in services:
        assert service.NAME in before and service.NAME not in after
    assert len(transcript.calls("ListNames", own)) == 1
