# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The default values of policies that are in no file."""

import dbus
import pytest

from testbed import files
from testbed.policies import KEYS, default_of
from testbed.services.service import DEATH, ERROR, Fault, answer, error, late

USER_REPORT = "UserReportExportEnabled"
USER_REPORT_MARKER = files.MARKERS / "user_report_enabled"
DEFAULTS = {key: default_of(key) for key in KEYS}
QUESTION = ("call", "Get", "org.kvt.deviceinfo.Features", "isOsCertified")


def lines(values):
    """The lines of a policy file with these values."""
    return "".join(f"{key}={files.text_of(value)}\n" for key, value in values.items())


def failure(name):
    """The fault that every call ends in this error of the bus."""
    return error(f"org.freedesktop.DBus.Error.{name}")


def test_everything_is_allowed_but_user_reports(daemon):
    daemon.start_observed()
    assert {key: daemon.policy(key) for key in KEYS} == DEFAULTS
    assert files.CAMERA_MARKER.exists()
    assert not USER_REPORT_MARKER.exists()
    assert not files.DEVELOPER_SHELL_MARKER.exists()


def test_defaults_are_recorded_in_the_platforms_order(daemon):
    daemon.start_observed()
    assert KEYS[0] == "NoPolicy" and len(KEYS) == 46
    assert files.POLICY_FILE.read_text() == "[policy]\n" + lines(DEFAULTS)
    assert list(files.POLICY_FILE.parent.iterdir()) == [files.POLICY_FILE]


def test_stored_policies_keep_their_values(daemon):
    stored = {"MessagesEnabled": False, "CameraEnabled": False, USER_REPORT: True,
              "NoPolicy": False}
    files.store(stored)
    daemon.start_observed()
    assert {key: daemon.policy(key) for key in KEYS} == {**DEFAULTS, **stored}
    others = {key: value for key, value in DEFAULTS.items() if key not in stored}
    assert files.POLICY_FILE.read_text() == "[policy]\n" + lines(stored) + lines(others)
    assert USER_REPORT_MARKER.exists()


def test_second_start_finds_the_defaults_as_stored(daemon, device_information):
    """The defaults stay as they are when the device's certification changes."""
    device_information.set(True)
    device_information.appear()
    daemon.start_observed()
    assert daemon.policy(USER_REPORT) is False
    assert daemon.stop() == 0
    content = files.POLICY_FILE.read_bytes()
    device_information.set(False)
    daemon.start_observed()
    assert daemon.policy(USER_REPORT) is False
    assert files.POLICY_FILE.read_bytes() == content


@pytest.mark.parametrize("is_certified, fault, allowed", [
    (True, Fault(), False),
    (False, Fault(), True),
    (False, late(0.2), True),
    (False, failure("UnknownProperty"), False),
    (False, failure("UnknownInterface"), False),
    (False, failure("UnknownObject"), False),
    (False, failure("AccessDenied"), False),
    (False, ERROR, False),
    (False, DEATH, False),
    (False, answer(""), False),
    (False, answer("b", False), False),  # no variant
    (False, answer("v", "no certificate"), False),
    (True, answer("v", "false"), True),  # text that reads as false
    (False, answer("v", dbus.Int32(1)), False),
    (True, answer("v", dbus.Int32(0)), True),  # a number that reads as false
    (False, answer("v", dbus.Array([], signature="s")), False),
    (False, answer("v", dbus.Dictionary({}, signature="sv")), False)])
def test_user_reports_follow_the_certificate(daemon, device_information, is_certified, fault,
                                             allowed):
    device_information.set(is_certified)
    device_information.fail(fault)
    device_information.appear()
    daemon.start_observed()
    assert daemon.policy(USER_REPORT) is allowed
    assert USER_REPORT_MARKER.exists() == allowed
    assert files.stored()[USER_REPORT] == files.text_of(allowed)
    assert daemon.complaints() == []
    assert len(daemon.logged()) == 2


def test_certificate_is_asked_for_once(daemon, device_information):
    device_information.appear()
    daemon.start_observed()
    call, = device_information.calls
    assert (call.path, call.interface) == ("/org/kvt/deviceinfo/Features",
                                           "org.freedesktop.DBus.Properties")
    assert ("call", call.member, *call.arguments) == QUESTION
    # Of these calls, only the one about USB devices belongs to a later policy.
    assert [words[1] for words in daemon.said()] == ["Get", "Set", "Set"]


def test_certificate_does_not_matter_for_a_stored_policy(daemon, device_information):
    files.store({USER_REPORT: True})
    device_information.set(True)
    device_information.appear()
    daemon.start_observed()
    assert device_information.calls == []
    assert daemon.policy(USER_REPORT) is True
