# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Configuration that cannot be saved: every write is refused, every policy is enforced as off."""

import contextlib
import os
import shutil

import pytest

from testbed import files
from testbed.daemon import SAVE_FAILURE
from testbed.files import CAMERA_MARKER, DEVELOPER_SHELL_MARKER, MARKERS, POLICY_FILE
from testbed.handlers import one_pass
from testbed.policies import KEYS
from testbed.services.small import UsbModes

CAMERA = "CameraEnabled"
FOLDER = POLICY_FILE.parent
REPORT_MARKER = MARKERS / "user_report_enabled"
LOADING, SAVING = "Error loading key file 1 ", "Error saving key file "
# Content of the file, and how the log begins.
NO_KEY_FILES = [
    ("Everything is allowed.\n", LOADING),
    ("CameraEnabled=true\n", "Error loading key file 4 "),
    ("[policy\nCameraEnabled=true\n", LOADING),
    ("<<<<<<< mine\n[policy]\nCameraEnabled=true\n", LOADING),
]


@pytest.fixture(autouse=True)
def markers():
    """Marker files from a time when the features were allowed."""
    files.write(CAMERA_MARKER, "")
    files.write(REPORT_MARKER, "")


def check_refusals(daemon, cause, count):
    """Checks that so many values were refused, each with two lines, and that no policy has one."""
    lines = daemon.logged()
    assert len(lines) == 2 * count
    assert all(line.startswith(f"warning|default|{cause}") for line in lines[::2])
    assert set(lines[1::2]) == {SAVE_FAILURE}
    assert daemon.has_no_value(*KEYS)


@pytest.mark.parametrize("content, cause", NO_KEY_FILES)
def test_file_that_is_no_key_file_stops_everything(daemon, services, content, cause):
    files.write(POLICY_FILE, content)
    before = files.snapshot(POLICY_FILE)
    daemon.start_observed()
    check_refusals(daemon, cause, 46)
    assert files.snapshot(POLICY_FILE) == before
    assert not CAMERA_MARKER.exists()
    assert not REPORT_MARKER.exists()
    assert DEVELOPER_SHELL_MARKER.exists()


def test_truncated_file_is_not_used_in_part(daemon, services):
    files.write(POLICY_FILE, "[policy]\nCameraEnabled=true\nMicrophoneEnabled=true\n<broken>\n")
    daemon.start_observed()
    # Two values are read and refused; their defaults are refused once more.
    check_refusals(daemon, LOADING, 48)


def test_pipe_in_the_files_place_stops_everything(daemon, services):
    os.mkfifo(POLICY_FILE)
    daemon.start_observed()
    check_refusals(daemon, LOADING, 46)


@pytest.mark.parametrize("is_there, values, count", [
    (True, {}, 46), (True, {CAMERA: True, "DeveloperShellEnabled": True}, 48), (False, {}, 46)])
def test_unwritable_folder_stops_everything(daemon, services, is_there, values, count):
    if values:
        files.store(values)
    before = files.snapshot(POLICY_FILE)
    if not is_there:
        shutil.rmtree(FOLDER)
    with files.read_only(FOLDER) if is_there else contextlib.nullcontext():
        daemon.start_observed()
        check_refusals(daemon, SAVING, count)
    assert files.snapshot(POLICY_FILE) == before
    assert FOLDER.exists() is is_there
    assert not CAMERA_MARKER.exists()
    assert DEVELOPER_SHELL_MARKER.exists()
    assert daemon.records() == []


def test_nothing_is_taken_from_seeds_that_cannot_be_recorded(daemon, services):
    files.store({CAMERA: True, "UsbDevicesEnabled": True}, FOLDER / "policy.d/seed.conf")
    with files.read_only(FOLDER):
        daemon.start_observed()
        check_refusals(daemon, SAVING, 48)


def test_everything_is_enforced_as_forbidden_once(daemon, services):
    off = dict.fromkeys(KEYS, False)
    with files.read_only(FOLDER):
        daemon.start_observed()
    for kind in services:
        calls = [call for call in daemon.calls(kind.NAME) if call[3] != "set_whitelisted_modes"]
        assert calls == one_pass(off, kind)
    assert daemon.calls(UsbModes.NAME)[0][-1] == ""  # no mode is allowed


def test_policies_are_written_once_that_is_possible(daemon):
    with files.read_only(FOLDER):
        daemon.start()
        assert daemon.set(CAMERA, True) is False
    daemon.change(CAMERA, True)
    assert daemon.policy(CAMERA) is True
    assert daemon.has_no_value(*KEYS[2:])
    assert POLICY_FILE.read_text() == "[policy]\nCameraEnabled=true\n"
    assert CAMERA_MARKER.exists()


def test_next_start_finds_the_mended_file(daemon):
    files.write(POLICY_FILE, "<broken>")
    daemon.start()
    assert daemon.stop() == 0
    files.store({CAMERA: False})
    daemon.start()
    assert daemon.policy(CAMERA) is False
    assert daemon.policy("UsbDevicesEnabled") is True
