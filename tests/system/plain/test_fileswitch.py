# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Access switches that are kept in a file."""

import shutil

import pytest

from testbed import files
from testbed.files import CAMERA_MARKER
from testbed.plugins import FILE_SWITCH, SWITCH_PLUGIN, installed
from testbed.plugins import FILE_SWITCH_FILE as FILE
from testbed.waiting import wait_until

CAMERA = "CameraEnabled"
OFF = f"[lens]\npolicies={CAMERA}\nvalue=false\n"
ON = f"[lens]\npolicies={CAMERA}\nvalue=true\n"


@pytest.fixture(autouse=True)
def file_switch():
    """The plugin, with a file that has a switch for the camera."""
    files.write(FILE, f"# by the administrator\n{ON}")
    with installed(FILE_SWITCH, SWITCH_PLUGIN):
        yield
    shutil.rmtree(FILE.parent)


def is_switched(value):
    """Whether a message announces the switch with this value."""
    return lambda message: (message.member == "SwitchChanged"
                            and message.arguments == ("lens", value))


def test_switches_are_those_of_the_file(daemon):
    daemon.start()
    assert daemon.switch_keys() == ["lens"]
    assert daemon.switch("lens") is daemon.policy(CAMERA) is True


def test_off_forces_its_policies_off(daemon, transcript):
    daemon.start()
    assert CAMERA_MARKER.exists()
    assert daemon.set_switch("lens", False) is True
    assert not CAMERA_MARKER.exists()
    assert daemon.policy(CAMERA) is False
    transcript.wait_for(is_switched(False))


def test_write_is_kept_beside_comments(daemon):
    daemon.start()
    assert daemon.set_switch("lens", False) is True
    text = FILE.read_text().replace("\n\n", "\n")  # newer GLib drops the empty line
    assert text == f"# by the administrator\n{OFF}"


def test_write_keeps_a_link_and_its_privacy(daemon):
    profile = FILE.parent / "profile"
    FILE.rename(profile)
    profile.chmod(0o600)
    FILE.symlink_to("profile")
    daemon.start()
    assert daemon.set_switch("lens", False) is True
    assert FILE.is_symlink() and "value=false" in profile.read_text()
    assert profile.stat().st_mode & 0o777 == 0o600


def test_unknown_switch_is_refused(daemon):
    daemon.start()
    assert daemon.set_switch("ear", False) is False
    assert daemon.logged()[-1] == "warning|default|Return code: 2"


def test_follows_an_edit(daemon, transcript):
    daemon.start()
    files.write(FILE, OFF)
    transcript.wait_for(is_switched(False))
    assert not CAMERA_MARKER.exists()


def test_switch_that_goes_frees_its_policies(daemon):
    files.write(FILE, OFF)
    daemon.start()
    assert not CAMERA_MARKER.exists()
    FILE.unlink()
    wait_until(CAMERA_MARKER.exists)
    assert daemon.policy(CAMERA) is True
    assert daemon.switch_keys() == []


@pytest.mark.parametrize("content, fault", [
    ("[lens]\npolicies=NoSuchPolicy\nvalue=true\n", "malformed"),
    ("[lens]\nvalue=true\n", "malformed"),
    (f"[lens]\npolicies={CAMERA}\n", "malformed"),
    (f"[lens]\npolicies={CAMERA}\nvalue=perhaps\n", "malformed"),
    ("lens is on\n", "malformed"),
    ("", "empty"),  # as in the middle of a write in place
])
def test_damaged_file_keeps_the_switches(daemon, content, fault):
    files.write(FILE, OFF)
    daemon.start()
    files.replace(FILE, content)
    warning = (f"warning|default|fileswitch: {FILE} is {fault}: its last good content is in force")
    daemon.wait_for_log(warning)
    assert daemon.switch("lens") is False
    assert not CAMERA_MARKER.exists()
    assert daemon.set_switch("lens", True) is False
    assert FILE.read_text() == content
    assert daemon.stop() == 0
    before = len(daemon.log())
    daemon.start_observed()
    assert daemon.switch("lens") is False
    assert not CAMERA_MARKER.exists()
    assert [line for line in daemon.log(before) if "fileswitch" in line] == [warning]
    files.replace(FILE, ON)
    wait_until(lambda: daemon.switch("lens"))
    assert daemon.log().count(warning) == 2
