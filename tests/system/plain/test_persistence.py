# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The policy file after writes, and writes that cannot be saved."""

import os
import shutil
import subprocess

import pytest

from testbed import files
from testbed.daemon import SAVE_FAILURE, changed
from testbed.files import CAMERA_MARKER, POLICY_FILE, SWITCH_FILE

CAMERA = "CameraEnabled"
FOLDER = POLICY_FILE.parent
WRITES = {  # the file before a write of the camera, its value, and the file after it
    "empty file": ("", True, "[policy]\nCameraEnabled=true\n"),
    "value changes at its place": (
        "[policy]\nA=true\nCameraEnabled=true\nB=false\n", False,
        "[policy]\nA=true\nCameraEnabled=false\nB=false\n"),
    "value stays": ("[policy]\nCameraEnabled=true\nB=false\n", True,
                    "[policy]\nCameraEnabled=true\nB=false\n"),
    "new key goes to the end of its group": (
        "[policy]\nA=true\n\n[other]\nx=1\n", True,
        "[policy]\nA=true\nCameraEnabled=true\n\n[other]\nx=1\n"),
    "new group goes to the end of the file": ("[other]\nx=1\n", False,
                                              "[other]\nx=1\n\n[policy]\nCameraEnabled=false\n"),
    "same key in another group": (
        "[other]\nCameraEnabled=true\n\n[policy]\nA=true\n", False,
        "[other]\nCameraEnabled=true\n\n[policy]\nA=true\nCameraEnabled=false\n"),
    "values that are no booleans": (
        "[policy]\nA=yes\nB=\nC=1;2;\nCameraEnabled=maybe\n", True,
        "[policy]\nA=yes\nB=\nC=1;2;\nCameraEnabled=true\n"),
    "1 becomes true": ("[policy]\nA=1\nCameraEnabled=1\n", True,
                       "[policy]\nA=1\nCameraEnabled=true\n"),
    "0 becomes false": ("[policy]\nCameraEnabled=0\n", False, "[policy]\nCameraEnabled=false\n"),
    "keys with another letter case": ("[policy]\ncameraenabled=true\n", False,
                                      "[policy]\ncameraenabled=true\nCameraEnabled=false\n"),
    "comments go": ("# head\n\n[policy]\n# of the camera\nCameraEnabled=true\n# tail\n", False,
                    "[policy]\nCameraEnabled=false\n"),
    "comments of other groups go": ("# head\n[other]\n#x\nx=1\n[policy]\n#p\nA=true\n", True,
                                    "[other]\nx=1\n\n[policy]\nA=true\nCameraEnabled=true\n"),
    "blank lines go": ("\n\n[policy]\n\n\nA=true\n\n\nCameraEnabled=true\n\n", False,
                       "[policy]\nA=true\nCameraEnabled=false\n"),
    "translations go": ("[policy]\nA=true\nA[de]=false\nCameraEnabled[de]=true\n", False,
                        "[policy]\nA=true\nCameraEnabled=false\n"),
    "blanks around the value go": ("[policy]\nA = true\nCameraEnabled  =  true\n", False,
                                   "[policy]\nA=true\nCameraEnabled=false\n"),
    "last line without an end": ("[policy]\nA=true\nCameraEnabled=true", False,
                                 "[policy]\nA=true\nCameraEnabled=false\n"),
    "texts beyond ASCII": (
        "[policy]\nK\u00fche=true\n[\u03b1]\n\u03b2=\u03b3\n", True,
        "[policy]\nK\u00fche=true\nCameraEnabled=true\n\n[\u03b1]\n\u03b2=\u03b3\n"),
}
# GLib's error codes for files and for the content of key files.
READ_ONLY_SYSTEM, NO_ENTRY, NO_SPACE = 8, 4, 12
UNKNOWN_ENCODING, PARSE_ERROR, GROUP_NOT_FOUND = 0, 1, 4
NO_LINE = "which is not a key-value pair, group, or comment"
MALFORMED = {  # content, GLib's number and a part of its message
    "a letter": ("Dear daemon,\n", PARSE_ERROR, NO_LINE),
    "end of the file cut off": ("[policy]\nCameraEnabled=true\nBrowser", PARSE_ERROR, NO_LINE),
    "group not closed": ("[policy\nCameraEnabled=true\n", PARSE_ERROR, NO_LINE),
    "key in front of the group": ("CameraEnabled=true\n[policy]\n", GROUP_NOT_FOUND,
                                  "does not start with a group"),
    "group without a name": ("[]\nCameraEnabled=true\n", PARSE_ERROR, "Invalid group name: "),
    "key without a name": ("[policy]\n=true\n", PARSE_ERROR, NO_LINE),
    "bracket in the key": ("[policy]\na[=true\n", PARSE_ERROR, "Invalid key name: a["),
    "another encoding": ("[policy]\nEncoding=latin1\n", UNKNOWN_ENCODING, "unsupported encoding "),
}


def table(rows):
    """The rows of a table, each with its name."""
    return [pytest.param(*row, id=name) for name, row in rows.items()]


def check_refused(daemon, action, code, text):
    """Writes a policy that cannot be saved, and checks that nothing has changed."""
    daemon.forget()
    before = files.snapshot(POLICY_FILE)
    assert daemon.set(CAMERA, False) is False
    assert daemon.said() == [("reply", False)]
    assert daemon.records() == []
    cause, consequence = daemon.logged()
    start = f"warning|default|Error {action} key file {code} "
    assert cause.startswith(start) and text in cause
    assert cause[len(start)] != '"'
    assert consequence == SAVE_FAILURE
    assert files.snapshot(POLICY_FILE) == before
    assert CAMERA_MARKER.exists()  # not enforced
    assert daemon.policy(CAMERA) is True


def check_accepted(daemon):
    """Checks that the same write has all its effects when the fault is gone."""
    daemon.forget()
    daemon.change(CAMERA, False)
    assert daemon.said() == changed(CAMERA, True, False)
    assert daemon.logged() == []
    assert files.stored()[CAMERA] == "false"
    assert not CAMERA_MARKER.exists()


@pytest.mark.parametrize("before, value, after", table(WRITES))
def test_write_changes_the_file_as_little_as_possible(daemon, before, value, after):
    daemon.start()
    files.write(POLICY_FILE, before)
    daemon.change(CAMERA, value)
    assert POLICY_FILE.read_bytes() == after.encode()
    assert daemon.logged() == []


def test_each_write_keeps_the_present_content(daemon):
    daemon.start()
    POLICY_FILE.unlink()
    daemon.change(CAMERA, False)
    assert POLICY_FILE.read_text() == "[policy]\nCameraEnabled=false\n"
    daemon.change("BrowserEnabled", True)
    assert POLICY_FILE.read_text() == "[policy]\nCameraEnabled=false\nBrowserEnabled=true\n"
    # An edited file has no effect until the next start.
    files.store({CAMERA: True})
    assert daemon.policy(CAMERA) is False


def test_file_is_replaced_as_a_whole(daemon):
    daemon.start()
    content, inode, _ = files.snapshot(POLICY_FILE)
    with POLICY_FILE.open("rb") as reader:
        daemon.change(CAMERA, False)
        assert reader.read() == content  # the old file, which is still open, is complete
    assert files.snapshot(POLICY_FILE)[1] != inode
    assert POLICY_FILE.read_bytes() == content.replace(b"\nCameraEnabled=true\n",
                                                       b"\nCameraEnabled=false\n")


def test_link_is_replaced_by_a_file(daemon):
    target = FOLDER / "elsewhere"
    daemon.start()
    files.store({"A": True}, target)
    POLICY_FILE.unlink()
    POLICY_FILE.symlink_to(target)
    daemon.change(CAMERA, False)
    assert not POLICY_FILE.is_symlink()
    assert POLICY_FILE.read_text() == "[policy]\nA=true\nCameraEnabled=false\n"
    assert target.read_text() == "[policy]\nA=true\n"


def test_policy_write_does_not_touch_the_switch_file(daemon):
    daemon.start()
    daemon.change(CAMERA, False)
    assert not SWITCH_FILE.exists()
    files.write(SWITCH_FILE, "# mine\n")
    before = files.snapshot(SWITCH_FILE)
    daemon.change(CAMERA, True)
    assert files.snapshot(SWITCH_FILE) == before


@pytest.mark.parametrize("end", ["stop", "kill"])
def test_change_outlives_the_daemon(daemon, end):
    daemon.start()
    daemon.change(CAMERA, False)  # the reply alone means that the value is saved
    assert getattr(daemon, end)() in (0, None)
    content = POLICY_FILE.read_bytes()
    daemon.start()
    assert daemon.policy(CAMERA) is False
    assert daemon.policy("BrowserEnabled") is True
    assert POLICY_FILE.read_bytes() == content


def test_read_only_folder(daemon):
    daemon.start()
    with files.read_only(FOLDER):
        check_refused(daemon, "saving", READ_ONLY_SYSTEM, "Read-only file system")
    check_accepted(daemon)


def test_missing_folder(daemon):
    daemon.start()
    shutil.rmtree(FOLDER)
    check_refused(daemon, "saving", NO_ENTRY, "No such file or directory")
    assert not FOLDER.exists()  # the daemon does not create it
    FOLDER.mkdir()
    check_accepted(daemon)


def test_full_disk(daemon):
    with files.small_disk(FOLDER, 65536):
        daemon.start()
        filler = FOLDER / "filler"
        subprocess.run(["dd", "if=/dev/zero", f"of={filler}", "bs=1", "status=none"], check=False)
        check_refused(daemon, "saving", NO_SPACE, "No space left on device")
        assert sorted(os.listdir(FOLDER)) == ["filler", "policy.conf"]
        filler.unlink()
        check_accepted(daemon)


@pytest.mark.parametrize("content, code, text", table(MALFORMED))
def test_malformed_file(daemon, content, code, text):
    daemon.start()
    files.write(POLICY_FILE, content)
    check_refused(daemon, "loading", code, text)
    POLICY_FILE.unlink()
    check_accepted(daemon)


@pytest.mark.parametrize("make, remove", [(os.mkdir, os.rmdir), (os.mkfifo, os.unlink)])
def test_other_things_in_place_of_the_file(daemon, make, remove):
    """Opening a pipe must not block until it has a writer."""
    daemon.start()
    POLICY_FILE.unlink()
    make(POLICY_FILE)
    check_refused(daemon, "loading", PARSE_ERROR, "Not a regular file")
    assert not POLICY_FILE.is_file()
    remove(POLICY_FILE)
    check_accepted(daemon)


def test_failure_is_logged_for_each_write(daemon):
    daemon.start()
    files.write(POLICY_FILE, "Dear daemon,\n")
    for key in (CAMERA, CAMERA, "com.example.Wish"):
        assert daemon.set(key, True) is False
    assert daemon.logged() == 3 * daemon.logged()[:2]
    assert daemon.said() == 3 * [("reply", False)]
