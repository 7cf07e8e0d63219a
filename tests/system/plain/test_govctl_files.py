# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Files with the wanted state of a device: govctl export, diff and apply."""

import pytest

from testbed import govctl
from testbed.files import POLICY_FILE, store, stored
from testbed.policies import KEYS

CAMERA_OFF, CAMERA_ON = "[policy]\nCameraEnabled=false\n", "[policy]\nCameraEnabled=true\n"


@pytest.fixture
def radio(switches):
    """A plugin with a switch that is on and governs wireless networks and tethering."""
    switches.set_switch("radio", [4, 8], True)
    return switches


def changes(outcome):
    """The changes, as keys with their new values."""
    return {step["key"]: step["value"] for step in outcome.result["changes"]}


def test_export_is_what_diff_and_apply_want(daemon, radio):
    store({"CameraEnabled": False})
    daemon.start()
    govctl.run("switch set radio off")
    exported = govctl.run("export")
    lines = exported.lines
    assert lines[0] == "[policy]" and "CameraEnabled=false" in lines
    assert "WlanEnabled=true" in lines  # only the switch keeps it off
    assert lines[-2:] == ["[switch]", "radio=false"]
    assert len(lines) == len(KEYS[1:]) + 3
    assert govctl.result("export")["leftOut"] == []
    assert govctl.run("diff", "-", text=exported.out).code == 0
    daemon.forget()
    again = govctl.run("apply", "-", "--json", "--exit-code", text=exported.out)
    assert (again.code, again.result["changed"], again.result["kept"]) == (0, False, 46)
    assert daemon.records() == []


def test_export_leaves_locked_policies_out(daemon, lock_plugin):
    """Applied without the lock, "off" would stay for good."""
    lock = lock_plugin("CameraEnabled")
    daemon.start()
    lock.set_locked("CameraEnabled")
    exported = govctl.run("export")
    assert exported.lines[0].startswith("# CameraEnabled is left out: locked")
    assert "CameraEnabled" not in govctl.result("export")["policy"]
    assert govctl.run("diff -", text=exported.out).code == 0


def test_values_that_this_user_may_not_read(daemon, radio):
    daemon.start()
    govctl.run("switch set radio off")
    POLICY_FILE.chmod(0o600)
    exported = govctl.result("export", user="guest")
    assert "WlanEnabled" not in exported["policy"] and exported["policy"]["VpnEnabled"] is True
    assert [text.split()[0] for text in exported["leftOut"]] == [
        "WlanEnabled", "InternetSharingEnabled"]
    off = "[policy]\nWlanEnabled=off\n"
    assert govctl.run("diff -", user="mdm", text=off).code == 1
    assert govctl.run("apply -", user="mdm", text=off).code == 0
    assert stored()["WlanEnabled"] == "false"


@pytest.mark.parametrize("key, is_named", [
    ("two words", True), ("x[1]", True), ("a=b", False), ("#x", False), ("", False),
    ("x\n[policy]\nVpnEnabled", False), ("[x]", False)])
def test_switches_that_a_file_cannot_name(daemon, switches, key, is_named):
    switches.set_switch(key, [4], True)
    daemon.start()
    assert (key in govctl.result("export")["switch"]) is is_named
    text = govctl.run("export").out
    assert text.startswith("# switch ") is not is_named
    assert govctl.run("diff -", text=text).code == 0


def test_diff(daemon):
    daemon.start()
    text = "[policy]\nCameraEnabled=off\nVpnEnabled=true\n"
    outcome = govctl.run("diff -", text=text)
    assert (outcome.code, outcome.out) == (1, "CameraEnabled: on -> off\n")
    assert govctl.run("diff - --json", text=text).result["kept"] == 1
    assert daemon.policy("CameraEnabled") is True


def test_apply_changes_what_differs_and_nothing_else(daemon, radio, tmp_path):
    store({"NfcEnabled": False})
    daemon.start()
    path = tmp_path / "wanted.conf"
    path.write_text("[policy]\nCameraEnabled=false\nNfcEnabled=true\nVpnEnabled=true\n"
                    "[switch]\nradio=false\n")
    daemon.forget()
    dry = govctl.run("apply", path, "--dry-run", "--json")
    assert (dry.code, dry.result["changed"], dry.result["dryRun"]) == (0, False, True)
    assert daemon.records() == []
    outcome = govctl.run("apply", path, "--json")
    assert outcome.code == 0
    assert changes(outcome) == changes(dry) == {
        "CameraEnabled": False, "radio": False, "NfcEnabled": True}
    # Writes of "off" come first.
    assert [step["value"] for step in outcome.result["changes"]] == [False, False, True]
    assert stored()["CameraEnabled"] == "false" and stored()["NfcEnabled"] == "true"
    assert daemon.switch("radio") is False
    assert govctl.run("apply", path).out == "the device is as the file says; nothing to do\n"


def test_exit_code_shows_a_change(daemon):
    daemon.start()
    for options, code in [("--dry-run", 1), ("", 1), ("", 0)]:
        outcome = govctl.run(f"apply - --exit-code {options}", text=CAMERA_OFF)
        assert outcome.code == code


@pytest.mark.parametrize("text, code, error", [
    ("[policy]\nCamraEnabled=false\n", 2, "unknown-policy"),
    ("[switch]\nnone=false\n", 2, "unknown-switch"),
    ("[policy]\nVpnEnabled=false\nCameraEnabled=maybe\n", 2, "bad-file"),
    ("[policies]\nVpnEnabled=false\n", 2, "bad-file"),
    ("VpnEnabled=false\n", 2, "bad-file"),
    ("[policy]\nVpnEnabled=false\nVpnEnabled=true\n", 2, "bad-file"),
    ("[policy]\nVpnEnabled=false\n[switch]\n[policy]\n VpnEnabled =true\n", 2, "bad-file"),
    ("[policy]\nVpnEnabled[de]=false\n", 2, "unknown-policy"),
    ("[policy]\nVpnEnabled=true\n\0NfcEnabled=false\n", 2, "bad-file")])
def test_wrong_files_change_nothing(daemon, text, code, error):
    daemon.start()
    before = POLICY_FILE.read_text()
    for verb in ("diff", "apply"):
        outcome = govctl.run(verb, "-", "--json", text=f"{text}\n")
        assert (outcome.code, outcome.error) == (code, error)
    assert POLICY_FILE.read_text() == before


@pytest.mark.parametrize("path", ["/nowhere", "/", "/dev/zero", ""])
def test_no_file(daemon, path):
    daemon.start()
    for verb in ("diff", "apply"):
        failed = govctl.run(verb, path)
        assert (failed.code, failed.err.count("\n")) == (2, 1)
        assert govctl.run(verb, path, "--json").error == "bad-file"


def test_long_mistakes_are_cut(daemon):
    daemon.start()
    failed = govctl.run("diff -", text=10_000 * "x")
    assert failed.code == 2 and len(failed.err) < 400


def test_other_files_that_are_right(daemon):
    daemon.start()
    for text in (POLICY_FILE.read_text(), "[policy]\nVpnEnabled = on \t\n"):
        assert govctl.run("diff -", text=text).code == 0


def test_lock_is_seen_before_anything_changes(daemon, lock_plugin):
    lock = lock_plugin("CameraEnabled")
    store({"VpnEnabled": True})
    daemon.start()
    lock.set_locked("CameraEnabled")
    daemon.forget()
    refused = govctl.run("apply - --json", text=CAMERA_ON + "VpnEnabled=false\n")
    assert (refused.code, refused.error) == (3, "locked")
    assert "nothing was changed" in refused.document["error"]["message"]
    assert daemon.records() == []
    # This file wants it off, as the lock does.
    assert changes(govctl.run("apply - --json", text=CAMERA_OFF)) == {}


def test_switch_that_would_keep_a_policy_off(daemon, radio):
    store({"WlanEnabled": False})
    daemon.start()
    govctl.run("switch set radio off")
    wireless = "[policy]\nWlanEnabled=true\n"
    refused = govctl.run("apply - --json", text=wireless)
    assert (refused.code, refused.error) == (3, "switched-off")
    assert govctl.run("apply -", text=wireless + "[switch]\nradio=true\n").code == 0
    assert daemon.policy("WlanEnabled") is True


def test_right_is_judged_before_anything_changes(daemon):
    daemon.start()
    refused = govctl.run("apply - --json", user="guest", text=CAMERA_OFF)
    assert (refused.code, refused.error) == (4, "not-allowed")
    assert govctl.run("apply -", user="guest", text=CAMERA_ON).code == 0
    assert govctl.run("apply -", user="mdm", text=CAMERA_OFF).code == 0


def test_dry_run_of_a_policy(daemon):
    daemon.start()
    result = govctl.result("set CameraEnabled off --dry-run")
    assert result["policies"] == [{"key": "CameraEnabled", "before": True, "value": False}]
    enforced, = result["enforces"]
    assert enforced["key"] == "CameraEnabled" and len(enforced["effects"]) == 2
    assert daemon.policy("CameraEnabled") is True
    assert govctl.result("set CameraEnabled on --dry-run")["enforces"] == []
    assert any("org.pelloraos.appjaild1" in note for note in result["notes"])


@pytest.mark.parametrize("arguments", ["set CameraEnabled off", "switch set radio off"])
def test_dry_run_judges_rights(daemon, radio, arguments):
    daemon.start()
    refused = govctl.run(f"{arguments} --dry-run --json", user="guest")
    assert (refused.code, refused.error) == (4, "not-allowed")


def test_dry_run_of_a_switch(daemon, radio):
    store({"InternetSharingEnabled": False})
    daemon.start()
    result = govctl.result("switch set radio off --dry-run")
    assert result["policies"] == [{"key": "WlanEnabled", "before": True, "value": False}]
    assert {row["key"]: row["value"] for row in result["enforces"]} == {
        "WlanEnabled": False, "InternetSharingEnabled": False}
    assert daemon.switch("radio") is True


def shared_mode_notes(*arguments, **keywords):
    """What the client tells of USB modes that policies share."""
    notes = govctl.result(*arguments, **keywords)["notes"]
    return [note for note in notes if "USB mode is shared" in note]


@pytest.mark.parametrize("key, other", [("UsbDeveloperModeEnabled", "DeveloperModeEnabled"),
                                        ("DeveloperModeEnabled", "UsbDeveloperModeEnabled")])
def test_shared_usb_mode_is_noted(daemon, key, other):
    daemon.start()
    note, = shared_mode_notes("set", key, "off", "--dry-run")
    assert other in note and "forbidden" in note
    assert [note] == shared_mode_notes("set", key, "off")
    assert shared_mode_notes("set", other, "off", "--dry-run") == []


def test_shared_usb_mode_with_switches_and_files(daemon, switches):
    switches.set_switch("shell", [42], True)
    daemon.start()
    for verb in ("switch set shell off --dry-run", "switch set shell off"):
        note, = shared_mode_notes(verb)
        assert "UsbDeveloperModeEnabled, which reads on" in note and "forbidden" in note
    assert shared_mode_notes("switch set shell on") == []
    daemon.change("DeveloperModeEnabled", False)
    both = "[policy]\nUsbDeveloperModeEnabled=off\nDeveloperModeEnabled=on\n"
    for verb in ("apply - --dry-run", "apply -"):
        note, = shared_mode_notes(verb, text=both)  # of the write that is made last
        assert "UsbDeveloperModeEnabled, which reads off" in note and "allowed" in note
