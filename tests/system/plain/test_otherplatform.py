# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon takes the policies from the platform, and acts on them by number."""

import pytest

from testbed import files
from testbed.handlers import USB_DEVICES
from testbed.plugins import LIBRARIES

USER_REPORT_MARKER = files.MARKERS / "user_report_enabled"
USB_ON = ("call", "Set", "org.brinos.DeviceSentry1.UsbManager", "Enabled", True)
CAMERA_ON = ("call", "RemoveFromGlobalDenylist", ["org.kvt.cameralockscreen", "org.kvt.camera"])
REPORTS_ON = ("call", "RemoveFromGlobalDenylist", [])
CERTIFICATE_QUESTION = ("call", "Get", "org.kvt.deviceinfo.Features", "isOsCertified")


@pytest.fixture
def daemon(daemon):
    """The daemon on a platform with other policies; see libraries/otherplatform/policyvalue.h."""
    daemon.environment["LD_LIBRARY_PATH"] = str(LIBRARIES / "otherplatform")
    return daemon


def test_policies_are_those_of_the_platform(daemon):
    files.store({"CameraEnabled": False, "lensallowed": False})
    daemon.start()
    assert files.POLICY_FILE.read_text() == (
        "[policy]\nCameraEnabled=false\nlensallowed=false\nUsbAllowed=true\nNoPolicy=true\n"
        "LensAllowed=true\nUserReportExportEnabled=false\nTorchAllowed=true\n"
        "userReportExportEnabled=true\nReportsAllowed=true\n")
    assert daemon.has_no_value("CameraEnabled", "lensallowed", "UsbDevicesEnabled")
    assert daemon.policy("LensAllowed") is daemon.policy("ReportsAllowed") is True


def test_actions_follow_the_number(daemon):
    files.store({"LensAllowed": False})
    daemon.start()
    assert not files.CAMERA_MARKER.exists()
    daemon.change("LensAllowed", True)
    assert files.CAMERA_MARKER.exists()
    daemon.change("CameraEnabled", False)  # a key like any other here
    assert files.CAMERA_MARKER.exists()


def test_default_of_user_reports_follows_the_name(daemon, device_information):
    device_information.set(True)
    device_information.appear()
    daemon.start()
    assert daemon.policy("UserReportExportEnabled") is False
    assert daemon.policy("userReportExportEnabled") is True
    assert USER_REPORT_MARKER.exists()  # of number 41, which is allowed


def test_numbers_beyond_that_of_keys_are_enforced_as_they_are_stored_only(
        daemon, application_sandbox, device_sentry):
    """The first pass follows the platform's order; the second one counts numbers."""
    application_sandbox.appear()
    device_sentry.appear()
    daemon.start_observed()
    assert daemon.said() == [USB_ON, CAMERA_ON, CERTIFICATE_QUESTION, REPORTS_ON, CAMERA_ON]


def test_numbers_beyond_that_of_keys_without_a_value_are_not_enforced(daemon, device_sentry):
    files.write(files.CAMERA_MARKER, "")
    files.write(USER_REPORT_MARKER, "")
    device_sentry.appear()
    with files.read_only("/etc/policy"):
        daemon.start_observed()
        assert not files.CAMERA_MARKER.exists()
        assert USER_REPORT_MARKER.exists()
        assert daemon.calls(USB_DEVICES.service.NAME) == []


def test_switches_govern_by_number(daemon, switches):
    switches.set_switch("port", [45, 4, 100], False)
    daemon.start()
    assert daemon.policy("UsbAllowed") is False
    assert daemon.policy("LensAllowed") is True
