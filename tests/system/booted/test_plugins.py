# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Plugins that read files, under the shipped unit: what it shows them and what it hides."""

import os
import pathlib
import shutil

import pytest
from jeepney import new_method_call

from testbed import files, unit
from testbed.bus import SWITCH, Client, read_of, write_of
from testbed.files import CAMERA_MARKER, SWITCH_FILE
from testbed.plugins import (FILE_LOCK_FILE, FILE_SWITCH, FILE_SWITCH_FILE, KIOSK, SWITCH_PLUGIN,
                             installed)
from testbed.users import run_as
from testbed.waiting import wait_until

TOLD = pathlib.Path("/run/govd/filelock.json")
DRAFT = FILE_LOCK_FILE.with_suffix(".draft")
MOVED = pathlib.Path("/srv/govd/filelock.conf")
FAMILY_ON = "[Family]\npolicies=CameraEnabled;BrowserEnabled\nvalue=true\n"
CAMERA_LOCKED, BROWSER_LOCKED = (f"[lock]\npolicies={key}Enabled\n"
                                 for key in ("Camera", "Browser"))
EXAMPLE = KIOSK.parent
KIOSK_FOLDER = pathlib.Path("/run/kiosk")
MARKER = KIOSK_FOLDER / "active"


@pytest.fixture
def switches(stopped):
    """The plugin that reads access switches from a file, with one that governs the camera."""
    files.write(FILE_SWITCH_FILE, FAMILY_ON)
    with installed(FILE_SWITCH, SWITCH_PLUGIN):
        yield


@pytest.fixture
def kiosk(stopped):
    """The example for authors, installed as its own build does it."""
    unit.run("cmake", "--install", EXAMPLE, "--prefix", "/usr")
    unit.run("systemd-tmpfiles", "--create", "kiosk.conf")
    unit.run("systemctl", "daemon-reload")
    yield
    for file in (EXAMPLE / "install_manifest.txt").read_text().splitlines():
        os.unlink(file)
    unit.run("systemctl", "daemon-reload")
    shutil.rmtree(KIOSK_FOLDER, ignore_errors=True)


def reads(key):
    """The value of a policy."""
    with Client() as client:
        return client.ask(read_of(key))[0][1]


def is_locked(key):
    """Whether a policy cannot be set."""
    with Client() as client:
        return client.ask(write_of(key, True)) == (False,)


def status():
    """The output of "govctl status" for a user without rights."""
    return run_as("guest", "govctl", "status").stdout


def damage(kind):
    """Makes an unacceptable object beside the file: another user's file, a link or a pipe."""
    if kind == "of another owner":  # the daemon has no capability to read it
        DRAFT.touch(0o600)
        shutil.chown(DRAFT, "guest")
    elif kind == "link":
        files.write(MOVED, FILE_LOCK_FILE.read_text())
        DRAFT.symlink_to(MOVED)
    else:
        os.mkfifo(DRAFT)


@pytest.mark.parametrize("kind, fault", [
    ("of another owner", "cannot be read (Permission denied)"),
    ("link", "is a link to what the daemon does not see"),
    ("pipe", "is no regular file"),
])
def test_last_good_state_survives_restarts(file_lock, journal, kind, fault):
    files.write(FILE_LOCK_FILE, CAMERA_LOCKED)
    unit.start()
    assert is_locked("CameraEnabled")
    assert f"plugin    filelock: {FILE_LOCK_FILE} is good: it is in force" in status()
    assert run_as("guest", "ls", "/var/lib/govd/plugins").returncode != 0

    # The object replaces the file in one step: a moment without the file would clear the locks.
    damage(kind)
    DRAFT.rename(FILE_LOCK_FILE)
    unit.run("systemctl", "restart", unit.UNIT)
    assert is_locked("CameraEnabled")
    line = f"filelock: {FILE_LOCK_FILE} {fault}: its last good content is in force"
    assert f"plugin    {line}" in status()
    assert [found for found in journal.lines() if found.text.startswith(line)]

    FILE_LOCK_FILE.unlink()
    files.write(FILE_LOCK_FILE, BROWSER_LOCKED)
    wait_until(lambda: is_locked("BrowserEnabled"))
    assert not is_locked("CameraEnabled")


def test_lock_leaves_other_policies_alone(file_lock):
    files.write(FILE_LOCK_FILE, CAMERA_LOCKED)
    unit.start()
    assert is_locked("CameraEnabled")
    assert not is_locked("BrowserEnabled")


def test_what_plugins_tell_goes_with_the_daemon(file_lock):
    unit.start()
    assert TOLD.exists()
    unit.run("systemctl", "stop", unit.UNIT)
    assert not TOLD.parent.exists()


def test_switches(switches, root):
    unit.start()
    assert root.ask(new_method_call(SWITCH, "Keys")) == (["Family"],)
    assert reads("CameraEnabled") is True
    assert root.ask(write_of("Family", False, address=SWITCH)) == (True,)
    assert reads("CameraEnabled") is False
    assert not CAMERA_MARKER.exists()
    assert "value=false" in FILE_SWITCH_FILE.read_text().splitlines()
    assert files.stored(SWITCH_FILE)["Family"] == "false"
    files.write(FILE_SWITCH_FILE, FILE_SWITCH_FILE.read_text().replace("value=false", "value=true"))
    wait_until(lambda: reads("CameraEnabled"))
    wait_until(CAMERA_MARKER.exists)


def test_example_for_authors(kiosk, journal):
    unit.start()
    assert reads("BrowserEnabled") is True
    MARKER.touch()
    wait_until(lambda: not reads("BrowserEnabled"))
    assert is_locked("BrowserEnabled")
    MARKER.unlink()
    wait_until(lambda: reads("BrowserEnabled"))

    MARKER.touch()
    unit.run("systemctl", "restart", unit.UNIT)
    assert is_locked("BrowserEnabled")
    assert not [line for line in journal.lines() if line.text.startswith("kiosk:")]
