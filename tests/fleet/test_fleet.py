# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The Ansible collection on devices that it reaches over ssh, from before the installation on."""

import json
import pathlib
import subprocess

import pytest

from testbed.waiting import wait_until
from testbed.policies import KEYS
from tests.fleet.fleet import (BASELINE, CHECKOUT, DEVICES, EXCEPTIONS, KIOSKS, REPOSITORY, Fleet,
                               everywhere, govctl, make_repository, on, values)

ALL = set(DEVICES)


@pytest.fixture(scope="session")
def bare(tmp_path_factory):
    """Ansible and devices on which govd was never installed."""
    assert pathlib.Path("/run/govd-sandbox").exists(), "run this with tests/fleet/run"
    return Fleet(tmp_path_factory.mktemp("ansible"))


@pytest.fixture(scope="session")
def installation(bare):
    """The results of the first run of the playbook. One device has the packages in a repository."""
    make_repository(REPOSITORY)
    return bare.playbook("fleet")


@pytest.fixture
def fleet(bare, installation):
    """Ansible and devices that allow all but what the baseline forbids."""
    assert not installation.having(outcome="failed")
    everywhere(reset)
    return bare


def wanted(device):
    """The values that the playbook gives a device."""
    return {**BASELINE, **(EXCEPTIONS if device in KIOSKS else {})}


def reset(device):
    """Gives a device the values of the playbook, and allows all else."""
    lines = [f"{key}={str(value).lower()}\n"
             for key, value in {**dict.fromkeys(KEYS[1:], True), **wanted(device)}.items()]
    on(device, "govctl apply -", input="[policy]\n" + "".join(lines))


def test_first_run_installs_and_sets_the_baseline(installation):
    assert not installation.having(outcome="failed")
    for device, present in everywhere(values).items():
        assert installation.of(device)["changed"]
        assert wanted(device).items() <= present.items()
    assert on(DEVICES[0], "systemctl is-enabled govd") == "enabled\n"


def test_second_run_changes_nothing(fleet):
    results = fleet.playbook("fleet")
    assert results.having(outcome="ok", changed=False) == ALL
    assert not results.having(changed=True) | results.having(outcome="failed")


def test_check_mode_changes_nothing_and_tells_what_the_run_does(fleet):
    on(DEVICES[1], "govctl set NfcEnabled off")
    before = everywhere(values)
    wish = {"NfcEnabled": False, "BackupEnabled": False, "CameraEnabled": False}
    checked = fleet.module("state", options=["--check", "--diff"], policies=wish)
    assert everywhere(values) == before
    done = fleet.module("state", options=["--diff"], policies=wish)
    for device, after in everywhere(values).items():
        differing = {key for key in wish if before[device][key]}
        assert {step["key"] for step in checked.of(device)["changes"]} == differing
        for member in ("changed", "changes", "diff"):
            assert checked.of(device)[member] == done.of(device)[member]
        assert after == {**before[device], **wish}
    assert "policy NfcEnabled: on\n" in checked.of(DEVICES[0])["diff"]["before"]
    assert "policy NfcEnabled: off\n" in checked.of(DEVICES[0])["diff"]["after"]
    again = fleet.module("state", options=["--check"], policies=wish)
    assert again.having(outcome="ok", changed=False) == ALL


@pytest.fixture
def locked():
    """A device on which a policy is locked that is on."""
    device, file = DEVICES[2], "/etc/govd/filelock.conf"
    on(device, f"printf '[lock]\npolicies=VpnEnabled\n' >{file}.new && mv {file}.new {file}")
    wait_until(lambda: not values(device)["VpnEnabled"])
    yield device
    on(device, f"rm {file}")
    wait_until(lambda: values(device)["VpnEnabled"])


@pytest.mark.parametrize("options", [["--check"], []], ids=["check", "run"])
def test_locked_policy_fails_its_device_alone_with_the_clients_words(fleet, locked, options):
    wish = {"VpnEnabled": True, "ScreenshotsEnabled": options == ["--check"]}
    results = fleet.module("state", policies=wish, options=options)
    words = govctl(locked, "apply -", 3, input="[policy]\nVpnEnabled=true\n")["error"]
    assert words["name"] == "locked"
    assert results.of(locked)["error"] == words
    assert results.of(locked)["msg"] == words["message"]
    assert results.having(outcome="failed") == {locked}
    assert values(locked)["ScreenshotsEnabled"]
    assert results.having(outcome="ok", changed=not options) == ALL - {locked}


def test_unknown_policy_fails_with_the_nearest(fleet):
    result, = fleet.module("state", DEVICES[0], policies={"CamraEnabled": False})
    assert result["outcome"] == "failed" and not result["changed"]
    assert result["error"]["name"] == "unknown-policy"
    assert result["error"]["nearest"] == ["CameraEnabled"]


@pytest.fixture
def halted():
    """A device whose daemon does not answer, because it is halted."""
    device = DEVICES[3]
    on(device, "systemctl kill -s STOP govd")
    yield device
    bring_back(device)


def bring_back(device):
    """Connects a device again, and lets its daemon go on."""
    subprocess.run(["ip", "link", "set", device, "up"], check=True)
    wait_until(lambda: on_or_none(device, "systemctl kill -s CONT govd") is not None)
    wait_until(lambda: on_or_none(device, "pgrep -x govctl") is None)


def test_device_that_goes_away_in_the_middle_is_unreachable_alone(fleet, halted):
    wish = {"MessagesEnabled": False}
    run = fleet.start_module("state", policies=wish)
    wait_until(lambda: on_or_none(halted, "pgrep -x govctl"))
    subprocess.run(["ip", "link", "set", halted, "down"], check=True)
    results = fleet.finish(run)
    assert results.having(outcome="unreachable") == {halted}
    assert results.having(outcome="ok", changed=True) == ALL - {halted}
    bring_back(halted)
    assert fleet.module("state", policies=wish).having(outcome="ok") == ALL
    assert not values(halted)["MessagesEnabled"]


def on_or_none(device, command):
    """The output of a command on a device; None if it fails or the device does not answer."""
    try:
        return on(device, command)
    except (AssertionError, subprocess.TimeoutExpired):
        return None


@pytest.fixture
def broken():
    """A device with a service that refuses to switch USB devices off."""
    device = DEVICES[4]
    on(device, f"systemd-run --quiet --unit=broken {CHECKOUT}/tests/fleet/brokenservice")
    wait_until(lambda: on_or_none(device, "busctl status org.brinos.DeviceSentry1"))
    yield device
    on(device, "systemctl stop broken")


def test_service_that_fails_fails_its_device_alone_and_stays_told(fleet, broken):
    wish = {"UsbDevicesEnabled": False}
    results = fleet.module("state", policies=wish)
    assert results.having(outcome="failed") == {broken}
    failed = results.of(broken)
    assert failed["changed"] and failed["rc"] == 8
    assert failed["msg"] == "UsbDevicesEnabled is not in force: USB devices are enabled"
    assert results.having(outcome="ok", changed=True) == ALL - {broken}
    assert fleet.module("state", policies=wish).having(outcome="ok", changed=False) == ALL
    facts = fleet.module("state_facts", broken).of(broken)["ansible_facts"]["govd"]
    assert facts["policies"]["UsbDevicesEnabled"]["state"] == "not-in-force"
    assert facts["policies"]["UsbDevicesEnabled"]["seen"] == ["USB devices are enabled"]


def test_device_without_daemon_fails_alone(fleet):
    device = DEVICES[6]
    on(device, "systemctl stop govd")
    state, facts = fleet.module("state", policies={}), fleet.module("state_facts")
    on(device, "systemctl start govd")
    for results in (state, facts):
        assert results.having(outcome="failed") == {device}
        assert results.of(device)["error"]["name"] == "no-service"
        assert results.having(outcome="ok", changed=False) == ALL - {device}


def test_facts_are_what_the_client_tells(fleet):
    results = fleet.module("state_facts")
    assert results.having(outcome="ok", changed=False) == ALL
    for device in DEVICES[:2]:
        facts = results.of(device)["ansible_facts"]["govd"]
        assert {key: row["value"] for key, row in facts["policies"].items()} == values(device)
        for row in govctl(device, "verify", 1)["result"]["policies"]:
            assert row.items() <= facts["policies"][row["key"]].items()


def test_switch_is_set_and_told(fleet):
    device, file = DEVICES[0], "/etc/govd/fileswitch.conf"
    lines = "[Parental control]\npolicies=AccountCreationEnabled;\nvalue=true\n"
    on(device, f"cat >{file}.new && mv {file}.new {file}", input=lines)
    wait_until(lambda: govctl(device, "switch list")["result"]["switches"])
    result, = fleet.module("state", device, switches={"Parental control": False})
    assert result["changes"] == [
        {"kind": "switch", "key": "Parental control", "before": True, "value": False}]
    facts = fleet.module("state_facts", device).of(device)["ansible_facts"]["govd"]
    assert facts["switches"]["Parental control"]["value"] is False
    assert facts["policies"]["AccountCreationEnabled"]["reason"] == "switch"
    on(device, f"rm {file}")


def test_drift_is_reported_for_its_device(fleet):
    device = DEVICES[1]
    on(device, "govctl set UsbStorageEnabled on")
    results = fleet.playbook("drift")
    assert values(device)["UsbStorageEnabled"]
    for each in DEVICES:
        report = results.of(each)["msg"]
        assert report["obstacles"] == []
        assert report["drift"] == (["UsbStorageEnabled"] if each == device else [])
    assert "CameraEnabled" in results.of(device)["msg"]["not_in_force"]


def test_drift_is_reported_beside_obstacles(fleet, locked):
    on(locked, "govctl set UsbStorageEnabled on")
    wish = {"govd_exceptions": {"VpnEnabled": True, "CamraEnabled": False}}
    report = fleet.playbook("drift", "--limit", locked, "-e", json.dumps(wish)).of(locked)["msg"]
    assert report["drift"] == ["UsbStorageEnabled"]
    assert len(report["obstacles"]) == 2
