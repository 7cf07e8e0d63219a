# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""govctl verify on a device whose services do, or do not, what the daemon asks."""

import time

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


@pytest.mark.parametrize("key, marker, is_there, sound", [
    ("CameraEnabled", CAMERA_MARKER, True, UNSEEN),  # the service that starts it does not tell
    ("UserReportExportEnabled", MARKERS / "user_report_enabled", True, IN_FORCE),
    ("DeveloperShellEnabled", DEVELOPER_SHELL_MARKER, False, IN_FORCE)])
@pytest.mark.parametrize("value", [True, False])
def test_markers(services, daemon, key, marker, is_there, sound, value):
    store({key: value})
    daemon.start()
    assert state(key)[0] == sound
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


@pytest.mark.parametrize("fault", [ERROR, SILENCE])
def test_storage_service_that_lists_nothing(storage, daemon, fault):
    storage.plug(STICK)
    storage.plug(block(PLACE, drive=STICK_PATH))
    storage.appear()
    daemon.start()
    storage.fail(ERROR, "Unmount")
    daemon.change("UsbStorageEnabled", False)
    storage.fail(fault, "GetManagedObjects")
    started = time.monotonic()
    assert state("UsbStorageEnabled") == (UNSEEN, "org.freedesktop.UDisks2 does not tell")
    assert time.monotonic() - started < 10
    assert govctl.result("set UsbStorageEnabled off")["force"] == UNSEEN


@pytest.mark.parametrize("key", ["BrowserEnabled", "MessagesEnabled"])
def test_service_that_ends_applications(application_sandbox, runtime_manager, daemon, key):
    application_sandbox.appear()
    daemon.start()
    daemon.change(key, False)
    assert state(key)[0] == NOT_IN_FORCE
    assert "org.kvt.RuntimeManager is not on the bus" in state(key)[1]
    runtime_manager.appear()
    assert state(key)[0] == UNSEEN


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
    for edit, seen in [(("VpnEnabled=true", "VpnEnabled=false"), "off in the file"),
                       (("VpnEnabled=true\n", ""), "not in the file"),
                       ((text, "no key file"), "the file is malformed")]:
        POLICY_FILE.write_text(text.replace(*edit))
        found, why = state("VpnEnabled")
        assert found == NOT_IN_FORCE and seen in why
    POLICY_FILE.unlink()
    assert state("VpnEnabled") == (NOT_IN_FORCE, "not stored: the file is missing")


def test_file_that_was_edited_is_no_lock(daemon):
    """Without a lock plugin there is no lock."""
    store({"VpnEnabled": False})
    daemon.start()
    POLICY_FILE.write_text(POLICY_FILE.read_text().replace("VpnEnabled=false", "VpnEnabled=true"))
    assert state("VpnEnabled")[0] == NOT_IN_FORCE
    assert govctl.result("explain VpnEnabled")["policy"]["reason"] == "file"
    assert ["lock", "no"] in [line.split() for line in govctl.run("explain VpnEnabled").lines]
    assert govctl.run("status").code == 1
    assert govctl.run("set VpnEnabled on --dry-run").code == 0
    for value in ("off", "on"):
        assert govctl.run("apply -", text=f"[policy]\nVpnEnabled={value}\n").code == 0
        assert (govctl.run("get VpnEnabled").out, govctl.run("verify VpnEnabled").code) == (
            f"{value}\n", 0)


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


def test_switch_set_shows_what_is_not_in_force(device_sentry, daemon, switches):
    switches.set_switch("usb", [45], True)
    device_sentry.appear()
    daemon.start()
    device_sentry.fail(ERROR, "Set")
    failed = govctl.run("switch set usb off")
    assert failed.code == 8
    assert failed.lines[1:] == [
        "  UsbDevicesEnabled: on -> off",
        "UsbDevicesEnabled is not in force: USB devices are enabled"]


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


def test_list_tells_which_services_are_missing(audio_policy, daemon):
    daemon.start()
    missing = govctl.run("list MicrophoneEnabled --color never").out
    assert "not enforced by org.freedesktop.ohm.mdm, which is not on the bus" in missing
    audio_policy.appear()
    assert govctl.run("list MicrophoneEnabled").out.split() == ["MicrophoneEnabled", "on"]
