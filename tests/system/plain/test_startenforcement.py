# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Two passes of enforcement at start: each value as it is stored, then all by their numbers."""

import pytest

from testbed import files
from testbed.bus import SERVICE
from testbed.handlers import HANDLERS, USB_DEVICES, one_pass
from testbed.services.small import (ApplicationSandbox, DeveloperMode, DeviceSentry,
                                    NetworkTechnology, RuntimeManager)

# No two of these services enforce the same policy on the same route, so that the order of their
# calls is the order of the policies.
ORDERED = (ApplicationSandbox, DeviceSentry, NetworkTechnology, RuntimeManager)
CERTIFICATE_QUESTION = ("call", "Get", "org.kvt.deviceinfo.Features", "isOsCertified")


@pytest.fixture
def ordered(services):
    """These services only."""
    for kind, service in services.items():
        if kind not in ORDERED:
            service.leave()


def pass_of(values):
    """The calls of one pass to these services. Remote access is switched off without its service
    too."""
    calls = [call for handler in HANDLERS for call in handler.calls(
        values.get(handler.key, True), handler.routes[0])
        if handler.service in (*ORDERED, DeveloperMode)]
    return [("call", member, *arguments) for _, _, _, member, _, *arguments in calls]


def test_defaults_are_enforced_twice_in_order(daemon, ordered):
    daemon.start_observed()
    enforcement = pass_of({"UserReportExportEnabled": False})
    first = enforcement.copy()
    first.insert(5, CERTIFICATE_QUESTION)  # asked when user reports get their default
    assert daemon.said() == first + enforcement
    assert daemon.logged() == []


def test_stored_values_are_enforced_twice_in_order(daemon, ordered):
    """The order is that of the platform's policies, not of the file."""
    values = {handler.key: False for handler in reversed(HANDLERS)}
    files.store(values)
    daemon.start_observed()
    assert daemon.said() == 2 * pass_of(values)


def test_stored_values_go_before_defaults_in_the_first_pass(daemon, application_sandbox):
    application_sandbox.appear()
    stored = {"VoiceCallsEnabled": False, "UserReportExportEnabled": True}
    files.store(stored)
    daemon.start_observed()
    second = one_pass(stored, ApplicationSandbox)
    camera, microphone, browser, calls, messages, reports = second
    assert daemon.calls(ApplicationSandbox.NAME) == [calls, reports, camera, microphone, browser,
                                                     messages, *second]


def test_policy_that_is_off_by_a_switch_is_enforced_as_off(daemon, device_sentry, switches):
    files.store({USB_DEVICES.key: True})
    switches.set_switch("port", [45], False)
    device_sentry.appear()
    daemon.start_observed()
    assert daemon.calls() == 2 * USB_DEVICES.calls(False)
    assert files.stored()[USB_DEVICES.key] == "true"


def test_services_are_looked_for_before_any_policy(daemon, system_logs, application_sandbox,
                                                   transcript):
    """A service that appears after the list was read is announced by a signal."""
    system_logs.appear()
    application_sandbox.appear()
    daemon.start_observed()
    own = transcript.owner(SERVICE)
    calls = [(call.member, *call.arguments) for call in transcript.messages(
        lambda message: message.kind == "call" and message.sender == own)]
    watch = [place for place, (member, *arguments) in enumerate(calls) if member == "AddMatch"
             and "member='NameOwnerChanged'" in arguments[0] and "arg0=" not in arguments[0]]
    enforcement = [place for place, (member, *_) in enumerate(calls)
                   if member == "RemoveFromGlobalDenylist"]
    log = calls.index(("GetNameOwner", "org.kvtlabs.SystemLogs"))
    assert log < watch[0] < calls.index(("ListNames",)) < enforcement[0]
