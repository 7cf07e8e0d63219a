# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A service that appears gets its waiting tasks; its leaving has no effect."""

import re

import pytest
from jeepney import new_method_call, new_method_return

from testbed import files
from testbed.bus import ABSENT, BUS, SERVICE
from testbed.handlers import TETHERING, WATCHED, calls_of, one_pass
from testbed.processes import held
from testbed.relay import Relay
from testbed.services.service import ERROR, late
from testbed.services.small import ApplicationSandbox, AudioPolicy
from testbed.waiting import wait_until

UNKNOWN = "org.freedesktop.DBus.Error.ServiceUnknown"
FAILED = "org.freedesktop.DBus.Error.Failed"
START = ["enabled", "enabled"]  # as the default is stored, and when all policies are set up
MICROPHONE, SHARING = "MicrophoneEnabled", "InternetSharingEnabled"


def states(daemon):
    """The states of the microphone that the daemon has set, in order."""
    return [call[-1] for call in daemon.calls(AudioPolicy.NAME)]


def failure(verb, error):
    """The line of the log when the microphone cannot be set."""
    return f'warning|default|Failed to {verb} microphone "{error}"'


def test_replay_keeps_the_order_of_policies_and_happens_once(daemon, application_sandbox):
    daemon.start()
    changes = [("CameraEnabled", False), ("CameraEnabled", True), ("CameraEnabled", False),
               (MICROPHONE, False), ("CameraEnabled", True)]
    for key, value in changes:
        daemon.change(key, value)
    daemon.forget()
    application_sandbox.appear()
    start = one_pass({"UserReportExportEnabled": False}, ApplicationSandbox)
    replayed = start + start + [call for key, value in changes
                                for call in calls_of(key, value, WATCHED)
                                if call[0] == ApplicationSandbox.NAME]
    assert daemon.calls() == replayed
    application_sandbox.leave()
    application_sandbox.appear()
    assert daemon.calls() == replayed
    assert daemon.logged() == []


def test_new_task_waits_for_the_replay_to_end(daemon, audio_policy, transcript):
    audio_policy.fail(late(0.1))
    daemon.start()
    daemon.change(MICROPHONE, False)
    daemon.change(MICROPHONE, True)
    daemon.forget()
    audio_policy.appear()
    transcript.wait_for(lambda message: message.member == "Set")
    daemon.change(MICROPHONE, False)
    assert states(daemon) == [*START, "disabled", "enabled", "disabled"]


@pytest.mark.parametrize("name", [
    "org.example.Other",
    "net.connman.vpn",  # longer than that of a service
    "org.pelloraos",  # shorter
    "net.ConnMan",  # differs in case
    "org.kvt.RuntimeManager"])  # only on the direct route
def test_other_names_change_nothing(daemon, root, name):
    daemon.start()
    daemon.change(SHARING, False)
    daemon.forget()
    root.own(name)
    root.ask(new_method_call(BUS, "ReleaseName", "s", (name,)))
    assert daemon.calls() == []
    assert daemon.logged() == []


def test_service_that_has_left_still_gets_its_tasks(daemon, audio_policy):
    audio_policy.appear()
    daemon.start()
    audio_policy.leave()
    daemon.forget()
    daemon.change(MICROPHONE, False)
    daemon.change(MICROPHONE, True)
    assert states(daemon) == ["disabled", "enabled"]
    assert daemon.logged() == [failure("disable", UNKNOWN), failure("enable", UNKNOWN)]
    daemon.forget()
    audio_policy.appear()
    assert states(daemon) == []


def test_tasks_of_a_service_that_leaves_at_once_are_lost(daemon, audio_policy):
    """The daemon handles the signal when the service has already left."""
    daemon.start()
    with held([daemon.pid]):
        audio_policy.appear()
        audio_policy.leave()
    assert states(daemon) == START
    assert daemon.logged() == 2 * [failure("enable", UNKNOWN)]
    daemon.forget()
    audio_policy.appear()
    assert states(daemon) == []


def test_tasks_that_fail_in_the_replay_are_lost(daemon, audio_policy):
    audio_policy.fail(ERROR)
    daemon.start()
    audio_policy.appear()
    assert states(daemon) == START
    assert daemon.logged() == 2 * [failure("enable", FAILED)]
    daemon.forget()
    audio_policy.mend()
    daemon.change(MICROPHONE, False)
    assert states(daemon) == ["disabled"]


def test_name_that_changes_hands_gets_nothing_again(daemon, client, transcript):
    first, second = client(), client()
    allow_replacement, replace = 1, 2
    daemon.start_observed()
    first.ask(new_method_call(BUS, "RequestName", "su", (AudioPolicy.NAME, allow_replacement)))
    for _ in START:
        first.send(new_method_return(first.next_call()))
    assert states(daemon) == START
    daemon.forget()
    second.ask(new_method_call(BUS, "RequestName", "su", (AudioPolicy.NAME, replace)))
    assert states(daemon) == []
    change, = transcript.messages(lambda message: message.member == "NameOwnerChanged"
                                  and message.arguments[0] == AudioPolicy.NAME)
    assert change.arguments[1] == first.unique_name


def lines_about(daemon):
    """The daemon's log lines about the list of services and about tethering."""
    return [line for line in daemon.logged() if re.search("sharing|registered", line)]


def test_departure_counts_as_appearance(daemon, network, root, transcript):
    """A service whose appearance the daemon has missed gets its tasks once, when it leaves."""
    files.store({SHARING: False})
    absent = TETHERING.failures(False, [(UNKNOWN, ABSENT.format(network.NAME))])
    network.appear()
    with Relay(hold_at=b"ListNames") as relay:
        # It receives signals already, but has not yet asked for the list of services.
        daemon.environment["DBUS_SYSTEM_BUS_ADDRESS"] = relay.ADDRESS
        daemon.launch()
        relay.wait_until_held()
        # The bus may handle messages of another client first.
        transcript.wait_for(lambda message: message.member == "AddMatch"
                            and message.arguments[0].endswith("member='NameOwnerChanged'"))
        network.leave()
        wait_until(lambda: not root.owner(network.NAME))
        relay.release()
        wait_until(lambda: root.owner(SERVICE))
        assert daemon.calls(network.NAME) == 2 * TETHERING.calls(False)
        assert lines_about(daemon) == 2 * absent
        # From now on tasks are not kept.
        daemon.forget()
        daemon.change(SHARING, True)
        daemon.change(SHARING, False)
        assert daemon.calls(network.NAME) == TETHERING.calls(False)
        assert lines_about(daemon) == absent
        daemon.forget()
        network.appear()
        assert daemon.said() == []
        daemon.change(SHARING, True)
        daemon.change(SHARING, False)
        assert [call.member for call in network.calls] == ["SetProperty"]


def test_after_a_failing_list_services_are_found_by_signals(daemon, network, root, transcript):
    files.store({SHARING: False})
    network.appear()
    with Relay(spoil={b"ListNames": b"ListNothi"}) as relay:  # the bus has no such method
        daemon.environment["DBUS_SYSTEM_BUS_ADDRESS"] = relay.ADDRESS
        daemon.launch()
        wait_until(lambda: root.owner(SERVICE))
        line, = lines_about(daemon)
        # The text ends in a blank, and another one comes before the error.
        assert re.fullmatch(r"warning\|default\|Failed to get registered services:  QDBusError\("
                            r'"org\.freedesktop\.DBus\.Error\.UnknownMethod", ".+"\)',
                            line)
        assert len(transcript.calls("ListNothi")) == 1  # and it does not ask again
        daemon.change(SHARING, True)
        daemon.change(SHARING, False)
        assert daemon.calls(network.NAME) == []  # no service is known to be present
        with held([daemon.pid]):  # it handles the leaving when the service is back already
            network.leave()
            network.appear()
        assert daemon.calls(network.NAME) == 3 * TETHERING.calls(False)  # two of the start, one new
        assert len(network.calls) == 3
        assert lines_about(daemon) == [line]


def test_stop_drops_waiting_tasks(daemon, network, transcript):
    files.store({SHARING: False})
    daemon.start()
    assert daemon.stop() == 0
    network.appear()
    transcript.settle()
    assert transcript.calls("SetProperty") == []
    assert [line for line in daemon.log() if "sharing" in line] == []
