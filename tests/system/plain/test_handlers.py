# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The handlers of each policy call the services, with and without faults."""

import pytest

from testbed import bus, files
from testbed.daemon import announcement
from testbed.handlers import DIRECT, HANDLERS, WATCHED, one_pass, termination
from testbed.services.service import DEATH, answer, error, late

EFFECTS = [(handler, value) for handler in HANDLERS for value in (False, True)]
ONE_FOR_EACH_SERVICE = list({row.service: row for row in reversed(HANDLERS)}.values())
ABSENT = ("org.freedesktop.DBus.Error.ServiceUnknown", bus.ABSENT)
DIED = ("org.freedesktop.DBus.Error.NoReply", bus.DIED)
REFUSED = ("org.example.Refused", "Failed on purpose")
FAULTS = {  # the fault, and the errors in which the calls end, in order
    "absent": (None, (ABSENT, ABSENT)),
    "error": (error(REFUSED[0]), (REFUSED, REFUSED)),
    "death": (DEATH, (DIED, ABSENT)),
}


def orders(daemon, service):
    """The calls to a service, without the first one to a USB-mode service (the whitelist)."""
    return [call for call in daemon.calls(service.NAME) if call[3] != "set_whitelisted_modes"]


@pytest.mark.parametrize("handler, value", EFFECTS, ids=str)
def test_service_follows_the_policy(daemon, services, handler, value):
    daemon.start()
    daemon.change(handler.key, not value)
    daemon.forget()
    daemon.change(handler.key, value)
    calls = handler.calls(value)
    assert daemon.calls(handler.service.NAME) == calls
    assert daemon.has_left_alone(handler.service.NAME) == (not calls)
    assert handler.state(services[handler.service]) == handler.state_of[value]
    assert daemon.logged() == []


@pytest.mark.parametrize("fault, errors", FAULTS.values(), ids=FAULTS)
@pytest.mark.parametrize("handler, value", [effect for effect in EFFECTS
                                            if effect[0].calls_of[effect[1]]], ids=str)
def test_fault_is_a_line_of_the_log_and_nothing_else(daemon, services, handler, value, fault,
                                                     errors):
    service = services[handler.service]
    daemon.start()
    daemon.change(handler.key, not value)
    daemon.forget()
    service.fail(fault) if fault else service.leave()
    daemon.change(handler.key, value)
    assert daemon.calls(service.NAME) == handler.calls(value)
    assert daemon.logged() == handler.failures(
        value, [(name, text.format(service.NAME)) for name, text in errors])
    assert daemon.said()[-2:] == [announcement(handler.key, value), ("reply", True)]
    assert daemon.policy(handler.key) is value
    assert files.stored()[handler.key] == files.text_of(value)


@pytest.mark.parametrize("fault", [answer("i", 7), answer("b", False), answer("as", ["a", "b"])],
                         ids=lambda fault: fault.answer[0])
@pytest.mark.parametrize("handler", ONE_FOR_EACH_SERVICE, ids=str)
def test_odd_answer_is_success(daemon, services, handler, fault):
    daemon.start()
    services[handler.service].fail(fault)
    daemon.change(handler.key, False)
    assert daemon.calls(handler.service.NAME) == handler.calls(False)
    assert daemon.logged() == []


@pytest.mark.parametrize("handler", ONE_FOR_EACH_SERVICE, ids=str)
def test_late_answer_is_waited_for(daemon, services, handler):
    """The daemon replies only when the change is in force."""
    daemon.start()
    services[handler.service].fail(late(0.2))
    daemon.change(handler.key, False)
    assert daemon.calls(handler.service.NAME) == handler.calls(False)
    assert daemon.logged() == []
    write, = daemon.transcript.calls("SetKeyValue")
    asked = daemon.transcript.messages(
        lambda message: message.kind == "call" and message.destination == handler.service.NAME)
    replies = daemon.transcript.messages(
        lambda message: any(message.is_reply_to(call) for call in [write, *asked]))
    assert len(replies) == 1 + len(handler.calls(False))
    assert replies[-1].is_reply_to(write)


@pytest.mark.parametrize("handler", [row for row in HANDLERS if DIRECT in row.routes], ids=str)
def test_direct_handler_needs_no_service(daemon, services, handler):
    """Without the service it fails at once, and is not repeated when the service appears."""
    service = services[handler.service]
    service.leave()
    daemon.start()
    daemon.change(handler.key, False)
    calls = handler.calls(False, DIRECT)
    assert daemon.calls(service.NAME) == calls
    unknown = (ABSENT[0], ABSENT[1].format(service.NAME))
    assert daemon.logged() == handler.failures(False, len(calls) * [unknown])
    daemon.forget()
    service.appear()
    waiting = handler.calls(False, WATCHED) if WATCHED in handler.routes else []
    assert daemon.calls() == waiting
    daemon.change(handler.key, True)
    assert daemon.calls(service.NAME) == waiting + handler.calls(True)
    assert daemon.logged() == []


@pytest.mark.parametrize("handler", [row for row in HANDLERS if row.routes == (WATCHED,)], ids=str)
def test_tasks_wait_for_the_service_in_order(daemon, services, handler):
    """First come the tasks of the start: for each stored value, and for all policies again."""
    # User reports are forbidden without device information.
    start = {row.key: row.key != "UserReportExportEnabled" for row in HANDLERS}
    changes = [not start[handler.key], start[handler.key], not start[handler.key]]
    service = services[handler.service]
    service.leave()
    daemon.start()
    for value in changes:
        daemon.change(handler.key, value)
    assert daemon.calls(service.NAME) == []
    service.appear()
    assert orders(daemon, handler.service) == 2 * one_pass(start, handler.service) + [
        call for value in changes for call in handler.calls(value)]
    assert [line for line in daemon.logged() if line.startswith("warning")] == []


@pytest.mark.parametrize("values", [dict.fromkeys([row.key for row in HANDLERS], value)
                                    for value in (False, True)], ids=["forbidden", "allowed"])
def test_all_policies_are_carried_out_twice_at_start(daemon, services, values):
    """Each when its value is stored, and again when all have values."""
    files.store(values)
    daemon.start_observed()
    for service in services:
        assert orders(daemon, service) == 2 * one_pass(values, service)
        assert daemon.has_left_alone(service.NAME) == (daemon.calls(service.NAME) == [])


def test_application_that_cannot_be_ended_does_not_save_the_next(daemon, runtime_manager):
    runtime_manager.start("org.kvt.browserpwa")
    runtime_manager.appear()
    daemon.start()
    daemon.change("BrowserEnabled", False)
    assert runtime_manager.running == []
    assert daemon.logged() == termination("BrowserEnabled", "org.kvt.browserstandalone").failures(
        False, [("", "org.kvt.browserstandalone is not running")])
