# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""govctl apply takes back what it has done when it cannot do the rest."""

import signal

import pytest

from testbed import govctl
from testbed.bus import write_of
from testbed.services.service import late
from testbed.waiting import wait_until

SEVERAL = "[policy]\nNfcEnabled=off\nUsbDevicesEnabled=off\nVpnEnabled=off\n"
REFUSED = "[policy]\nCameraEnabled=off\nNfcEnabled=off\n[switch]\nradio=off\n"


@pytest.fixture
def radio(switches):
    """A plugin with a switch that is on and governs wireless networks."""
    switches.set_switch("radio", [4], True)
    return switches


def test_refusal_in_the_middle_takes_back_what_was_done(daemon, radio):
    daemon.start()
    radio.set_entries("radio", result=3)
    refused = govctl.run("apply - --json", text=REFUSED)
    assert (refused.code, refused.error) == (3, "refused")
    assert refused.result["changed"] is False
    assert [step["key"] for step in refused.result["takenBack"]] == ["NfcEnabled", "CameraEnabled"]
    assert daemon.policy("CameraEnabled") is True and daemon.policy("NfcEnabled") is True


def test_missing_answer_takes_back_what_was_done(device_sentry, daemon):
    """What has no answer counts as made, because the daemon makes it as soon as it can."""
    device_sentry.appear()
    daemon.start()
    device_sentry.fail(late(4), "Set")
    with govctl.Govctl("apply - --timeout 3 --json", text=SEVERAL) as client:
        wait_until(lambda: any(call.arguments[-1] == 0 for call in device_sentry.calls))
        device_sentry.mend()
        failed = client.finish()
    assert (failed.code, failed.error) == (6, "no-answer")
    assert "UsbDevicesEnabled: " in failed.document["error"]["message"]
    assert [step["key"] for step in failed.result["takenBack"]] == [
        "UsbDevicesEnabled", "NfcEnabled"]
    assert (failed.result["changed"], failed.result["changes"]) == (False, [])
    assert [daemon.policy(key) for key in ("NfcEnabled", "UsbDevicesEnabled", "VpnEnabled")] == [
        True, True, True]


def test_daemon_that_goes_on_answering_nothing(device_sentry, daemon):
    device_sentry.appear()
    daemon.start()
    device_sentry.fail(late(5), "Set")
    failed = govctl.run("apply - --timeout 2 --json", text=SEVERAL)
    assert (failed.code, failed.error) == (6, "no-answer")
    assert [step["key"] for step in failed.result["changes"]] == ["NfcEnabled", "UsbDevicesEnabled"]
    assert failed.result["takenBack"] == []


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_signal_takes_back_what_was_done(device_sentry, daemon, number):
    device_sentry.appear()
    daemon.start()
    device_sentry.fail(late(2), "Set")
    with govctl.Govctl("apply - --json", text=SEVERAL) as client:
        wait_until(lambda: any(call.arguments[-1] == 0 for call in device_sentry.calls))
        device_sentry.mend()
        client.process.send_signal(number)
        ended = client.finish()
    assert (ended.code, ended.error, ended.result["changes"]) == (6, "interrupted", [])
    assert [daemon.policy(key) for key in ("NfcEnabled", "UsbDevicesEnabled", "VpnEnabled")] == [
        True, True, True]


def test_what_others_have_set_is_not_taken_back(daemon, radio, root):
    daemon.start()
    radio.hold("setKeyValue")
    radio.set_entries("radio", result=3)
    with govctl.Govctl("apply - --json", text=REFUSED) as client:
        radio.wait_for_call("holding setKeyValue")
        root.send(write_of("CameraEnabled", True))
        radio.release()
        refused = client.finish()
    assert [step["key"] for step in refused.result["takenBack"]] == ["NfcEnabled"]
