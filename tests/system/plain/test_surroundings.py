# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What the daemon inherits from its parent process, and its handling of signals."""

import pathlib
import signal

import pytest

from testbed import files
from testbed.bus import SERVICE
from testbed.waiting import wait_until

USB_FAILURE = "warning|default|Failed to disable USB devices connection."
SURROUNDINGS = {
    "no home directory": ["env", "-u", "HOME"],
    "home directory that is not there": ["env", "HOME=/nonexistent"],
    "no locale": ["env", "-u", "LANG"],
    "unknown locale": ["env", "LC_ALL=xx_YY.UTF-8"],
    "hardly any environment": ["env", "-u", "HOME", "-u", "LANG", "-u", "PATH", "-u", "TERM"],
    "in the root directory": ["env", "--chdir=/"],
    "in a directory that is gone": [
        "sh", "-c", 'mkdir /tmp/gone && cd /tmp/gone && rmdir /tmp/gone && exec "$0"'],
    "without standard input and output": ["sh", "-c", 'exec "$0" <&- >&-'],
}


@pytest.mark.parametrize("wrapper", SURROUNDINGS.values(), ids=SURROUNDINGS)
def test_surroundings_change_nothing(daemon, wrapper):
    files.store({"MicrophoneEnabled": False})
    daemon.wrapper = wrapper
    daemon.start()
    assert daemon.policy("MicrophoneEnabled") is False
    daemon.change("CameraEnabled", False)
    assert daemon.policy("CameraEnabled") is False
    assert not files.CAMERA_MARKER.exists()
    assert files.stored()["MicrophoneEnabled"] == files.stored()["CameraEnabled"] == "false"
    assert daemon.stop() == 0
    assert daemon.log() == [USB_FAILURE, USB_FAILURE]


def test_nothing_is_written_into_the_current_directory(daemon, tmp_path):
    daemon.wrapper = ["env", f"--chdir={tmp_path}"]
    daemon.start()
    daemon.change("CameraEnabled", False)
    assert daemon.stop() == 0
    assert list(tmp_path.iterdir()) == []


@pytest.mark.parametrize("wrapper", [["env", "LC_ALL=C.UTF-8"], ["env", "-u", "LANG"],
                                     ["env", "LC_ALL=C"]], ids=" ".join)
def test_files_are_read_under_any_names(daemon, wrapper):
    files.store({"CameraEnabled": False}, "/etc/policy/policy.d/f\u00fcr alle.conf")
    daemon.wrapper = wrapper
    daemon.start()
    assert daemon.policy("CameraEnabled") is False


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_signal_during_the_start_ends_it(daemon, switches, root, transcript, number):
    switches.set_switch("lens", [1], True)
    switches.hold("keyValue")
    daemon.launch()
    switches.wait_for_call("holding keyValue")
    daemon.signal(number)
    # The plugin still waits: a start that waits does not delay the end.
    assert daemon.wait() == -number
    transcript.settle()
    assert not root.owner(SERVICE) and transcript.calls("RequestName") == []
    switches.release()
    daemon.start()


def test_signal_waits_for_seeds(daemon, switches):
    """Seeds are not read again once the policy file exists, so all must be read before the end."""
    files.store({"CameraEnabled": True, "DeveloperShellEnabled": False},
                "/etc/policy/policy.d/seed.conf")
    switches.set_switch("lens", [1], True)
    switches.hold("keyValue")
    daemon.launch()
    switches.wait_for_call("holding keyValue")  # about the first of them
    daemon.signal(signal.SIGTERM)
    switches.release()
    assert daemon.wait() == -signal.SIGTERM
    assert files.stored()["DeveloperShellEnabled"] == "false"


def test_watchdog_seldom_asks_the_bus(daemon, transcript):
    """Once in an eighth of the time allowed, however many events there are."""
    daemon.wrapper = ["env", "WATCHDOG_USEC=60000000"]
    daemon.start()
    transcript.clear()
    for _ in range(100):
        daemon.policy("CameraEnabled")
    transcript.settle()
    assert len(transcript.calls("GetId")) < 10


def test_signal_is_not_blocked_in_children(daemon):
    daemon.start()
    status = pathlib.Path(f"/proc/{daemon.pid}/status").read_text()
    assert "\nSigBlk:\t0000000000000000\n" in status


def test_hangup_enforces_all_policies_once_more(daemon):
    """It reads no file."""
    daemon.start()
    daemon.change("DeveloperShellEnabled", False)
    files.store({"CameraEnabled": False})
    markers = (files.CAMERA_MARKER, files.DEVELOPER_SHELL_MARKER)
    for _ in range(2):
        for marker in markers:
            marker.unlink()
        daemon.signal(signal.SIGHUP)
        wait_until(lambda: all(marker.exists() for marker in markers))
    assert daemon.policy("CameraEnabled") is True
