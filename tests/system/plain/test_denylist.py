# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The sandbox of applications keeps those from running whose policy is off."""

import pytest

from testbed.services.service import DEATH, answer, error, late

SANDBOX = ("org.pelloraos.appjaild1", "/org/pelloraos/appjaild1", "org.pelloraos.appjaild1")
APPLICATIONS = {  # by policy, in the order of their numbers
    "CameraEnabled": ["org.kvt.cameralockscreen", "org.kvt.camera"],
    "MicrophoneEnabled": [],
    "BrowserEnabled": ["org.kvt.browserstandalone", "org.kvt.browserpwa"],
    "VoiceCallsEnabled": ["voicecall-ui"],
    "MessagesEnabled": ["org.kvt.messages"],
    "UserReportExportEnabled": [],
}
# User reports are forbidden without device information.
AT_START = {key: key != "UserReportExportEnabled" for key in APPLICATIONS}


def order(key, value):
    """The call that carries a value of the policy out."""
    member = "RemoveFromGlobalDenylist" if value else "AddToGlobalDenylist"
    return (*SANDBOX, member, "as", APPLICATIONS[key])


def failure(key, value):
    """The line of the log when that fails."""
    what = "remove packages from" if value else "add packages to"
    quoted = ", ".join(f'"{name}"' for name in APPLICATIONS[key])
    return f"warning|default|Failed to {what} global denylist: ({quoted})"


@pytest.mark.parametrize("value", [False, True])
@pytest.mark.parametrize("key", APPLICATIONS)
def test_denylist_follows_the_policy(daemon, application_sandbox, key, value):
    application_sandbox.appear()
    daemon.start()
    daemon.change(key, not value)
    daemon.forget()
    daemon.change(key, value)
    assert daemon.calls(SANDBOX[0]) == [order(key, value)]


@pytest.mark.parametrize("key", ["LocationEnabled", "UsbMediaTransferEnabled",
                                 "DeveloperShellEnabled", "NoSuchPolicy"])
def test_other_policies_do_not_reach_it(daemon, application_sandbox, key):
    application_sandbox.appear()
    daemon.start()
    daemon.change(key, False)
    daemon.change(key, True)
    assert daemon.calls() == []
    assert daemon.logged() == []


def test_state_of_the_sandbox_follows(daemon, application_sandbox):
    application_sandbox.appear()
    daemon.start()
    for key in ("CameraEnabled", "VoiceCallsEnabled", "MicrophoneEnabled"):
        daemon.change(key, False)
    assert application_sandbox.denylist == {"org.kvt.camera", "org.kvt.cameralockscreen",
                                            "voicecall-ui"}
    daemon.change("CameraEnabled", True)
    assert application_sandbox.denylist == {"voicecall-ui"}


@pytest.mark.parametrize("value", [False, True])
@pytest.mark.parametrize("key", APPLICATIONS)
def test_failure_lists_the_packages(daemon, application_sandbox, key, value):
    application_sandbox.appear()
    daemon.start()
    daemon.change(key, not value)
    daemon.forget()
    application_sandbox.fail(error("org.example.Refused"))
    daemon.change(key, value)
    assert daemon.calls(SANDBOX[0]) == [order(key, value)]
    assert [line for line in daemon.logged() if "warning|" in line] == [failure(key, value)]


@pytest.mark.parametrize("fault", ["absent", error("org.example.Refused"), DEATH])
def test_every_fault_is_the_same_failure(daemon, application_sandbox, fault):
    application_sandbox.appear()
    daemon.start()
    application_sandbox.leave() if fault == "absent" else application_sandbox.fail(fault)
    daemon.change("CameraEnabled", False)
    assert daemon.logged() == [failure("CameraEnabled", False)]


@pytest.mark.parametrize("fault", [late(0.2), answer("i", 7), answer("b", False),
                                   answer("as", ["a", "b"])])
def test_odd_answer_is_success(daemon, application_sandbox, fault):
    application_sandbox.appear()
    daemon.start()
    application_sandbox.fail(fault)
    daemon.change("VoiceCallsEnabled", False)
    assert daemon.calls() == [order("VoiceCallsEnabled", False)]
    assert daemon.logged() == []


def test_all_policies_are_told_at_start(daemon, application_sandbox):
    """Each is told once as its value is stored, and once when all are set up."""
    application_sandbox.appear()
    daemon.start_observed()
    assert daemon.calls(SANDBOX[0]) == 2 * [order(*policy) for policy in AT_START.items()]


def test_all_policies_are_told_when_the_sandbox_appears(daemon, application_sandbox):
    daemon.start_observed()
    assert daemon.calls(SANDBOX[0]) == []
    application_sandbox.appear()
    assert daemon.calls(SANDBOX[0]) == 2 * [order(*policy) for policy in AT_START.items()]
