# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""govctl verify on a device whose services do, or do not, what the daemon asks."""

import pytest

from testbed import govctl
from testbed.files import CAMERA_MARKER, DEVELOPER_SHELL_MARKER, MARKERS, POLICY_FILE, store
from testbed.partitions import PLACE, STICK, STICK_PATH, block
from testbed.policies import KEYS
from testbed.services.service import ERROR, SILENCE

IN_FORCE, NOT_IN_FORCE, NOT_ENFORCED, UNSEEN = (
    "in-force", "not-in-force", "not-enforced", "unseen")


def state(key):
    """The state of one policy, and the findings."""
    policy, = govctl.run("verify", key, "--json").result["policies"]
    return policy["state"], " ".join(policy["seen"])


def test_fresh_device_is_in_order(services, daemon):
    daemon.start()
    outcome = govctl.run("verify")
    assert outcome.code == 0, outcome
    assert [line.split()[0] for line in outcome.lines] == KEYS[1:]


def test_policies_without_handlers(daemon):
    daemon.start()
    daemon.change("VpnEnabled", False)
    assert state("VpnEnabled") == (NOT_ENFORCED, "")
    assert govctl.run("verify VpnEnabled").code == 0


@pytest.mark.parametrize("key, marker, is_there", [
    ("CameraEnabled", CAMERA_MARKER, True),
    ("UserReportExportEnabled", MARKERS / "user_report_enabled", True),
    ("DeveloperShellEnabled", DEVELOPER_SHELL_MARKER, False)])
@pytest.mark.parametrize("value", [True, False])
def test_markers(services, daemon, key, marker, is_there, value):
    store({key: value})
    daemon.start()
    assert state(key)[0] == IN_FORCE
    if marker.exists():
        marker.unlink()
    else:
        marker.parent.mkdir(exist_ok=True)
        marker.touch()
    assert state(key)[0] == NOT_IN_FORCE
    assert str(marker) in state(key)[1]
    assert govctl.run("verify", key).code == 1
    repaired = govctl.run("verify", key, "--repair", "--json")
    assert (repaired.code, repaired.result["repaired"]) == (0, True)
    assert marker.exists() is (value is is_there)


def test_usb_devices(device_sentry, daemon):
    daemon.start()
    assert state("UsbDevicesEnabled") == (UNSEEN, "org.brinos.DeviceSentry1 is not on the bus")
    daemon.change("UsbDevicesEnabled", False)
    assert state("UsbDevicesEnabled")[0] == NOT_IN_FORCE
    device_sentry.appear()
    assert state("UsbDevicesEnabled") == (NOT_IN_FORCE, "USB devices are enabled")
    assert govctl.run("verify --repair UsbDevicesEnabled").code == 0
    assert state("UsbDevicesEnabled") == (IN_FORCE, "USB devices are disabled")


@pytest.mark.parametrize("fault", [ERROR, SILENCE])
def test_services_that_do_not_tell(device_sentry, daemon, fault):
    device_sentry.appear()
    daemon.start()
    device_sentry.fail(fault, "Get")
    assert state("UsbDevicesEnabled") == (UNSEEN, "org.brinos.DeviceSentry1 does not tell")


def test_tethering(network, daemon):
    network.appear()
    daemon.start()
    network.set_tethering(True)
    assert state("InternetSharingEnabled")[0] == IN_FORCE
    daemon.change("InternetSharingEnabled", False)
    assert state("InternetSharingEnabled") == (IN_FORCE, "tethering over Wi-Fi is off")
    network.set_tethering(True)
    assert state("InternetSharingEnabled") == (NOT_IN_FORCE, "tethering over Wi-Fi is on")


def test_storage(storage, daemon):
    storage.plug(STICK)
    storage.plug(block(PLACE, drive=STICK_PATH))
    storage.appear()
    daemon.start()
    assert state("UsbStorageEnabled") == (IN_FORCE, f"mounted at {PLACE}")
    assert state("MemoryCardEnabled") == (IN_FORCE, "none is mounted")
    storage.fail(ERROR, "Unmount")
    daemon.change("UsbStorageEnabled", False)
    assert state("UsbStorageEnabled") == (NOT_IN_FORCE, f"mounted at {PLACE}")


def test_services_that_are_missing_count_against_what_is_forbidden(audio_policy, daemon):
    daemon.start()
    assert state("MicrophoneEnabled")[0] == UNSEEN
    daemon.change("MicrophoneEnabled", False)
    assert state("MicrophoneEnabled")[0] == NOT_IN_FORCE
    audio_policy.appear()
    assert state("MicrophoneEnabled")[0] == UNSEEN


def test_lock_on_a_running_daemon_is_not_enforced_until_repaired(services, daemon, lock_plugin):
    lock = lock_plugin("CameraEnabled")
    daemon.start()
    lock.set_locked("CameraEnabled")
    assert govctl.run("get CameraEnabled").out == "off\n"
    assert state("CameraEnabled")[0] == NOT_IN_FORCE
    assert govctl.run("verify --repair CameraEnabled").code == 0
    assert not CAMERA_MARKER.exists()


def test_file_that_was_edited(daemon):
    daemon.start()
    text = POLICY_FILE.read_text()
    POLICY_FILE.write_text(text.replace("VpnEnabled=true", "VpnEnabled=false"))
    assert state("VpnEnabled")[0] == NOT_IN_FORCE


def test_repair_is_for_root(daemon):
    daemon.start()
    CAMERA_MARKER.unlink()
    refused = govctl.run("verify CameraEnabled --repair --json", user="mdm")
    assert (refused.code, refused.error) == (4, "not-allowed")


def test_set_shows_what_is_not_in_force(device_sentry, daemon):
    device_sentry.appear()
    daemon.start()
    assert govctl.run("set UsbDevicesEnabled off").out == "UsbDevicesEnabled: on -> off\n"
    device_sentry.fail(ERROR, "Set")
    failed = govctl.run("set UsbDevicesEnabled on")
    assert failed.code == 8
    assert failed.out == ("UsbDevicesEnabled: off -> on\n"
                          "UsbDevicesEnabled is not in force: USB devices are disabled\n")


def test_set_notes_missing_services_and_handlers(daemon):
    daemon.start()
    missing = govctl.run("set MicrophoneEnabled off")
    assert missing.code == 0
    assert "org.freedesktop.ohm.mdm is not on the bus" in missing.lines[1]
    assert "programs have to heed it" in govctl.run("set VpnEnabled off").lines[1]
    assert govctl.result("set NfcEnabled off")["force"] == NOT_ENFORCED


def test_list_shows_which_are_only_announced(daemon):
    daemon.start()
    listed = govctl.run("list VpnEnabled CameraEnabled").lines
    assert "only announced" not in listed[0]
    assert "only announced" in listed[1]
