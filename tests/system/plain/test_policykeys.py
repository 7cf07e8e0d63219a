# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A caller may send any text as key; a file that cannot be read again would lose every policy."""

import pytest

from testbed import files
from testbed.daemon import SAVE_FAILURE, changed

CAMERA = "CameraEnabled"
REFUSED = {  # keys, and how the log shows them
    "": '""',
    "a=b": '"a=b"',
    "a=": '"a="',
    "a[b": '"a[b"',
    "a]b": '"a]b"',
    "CameraEnabled[de]": '"CameraEnabled[de]"',
    "[policy]": '"[policy]"',
    "#CameraEnabled": '"#CameraEnabled"',
    " CameraEnabled": '" CameraEnabled"',
    "CameraEnabled ": '"CameraEnabled "',
    " ": '" "',
    "a\tb": r'"a\tb"',
    "a\nb": r'"a\nb"',
    "a\nCameraEnabled=true\nb": r'"a\nCameraEnabled=true\nb"',
    "a\rb": r'"a\rb"',
    "a\x1b[31m": r'"a\u001B[31m"',
    "a\x7f": r'"a\u007F"',
    "a\x85": r'"a\u0085"',
    "Encoding": '"Encoding"',  # GLib uses this key itself
}
KEPT = ["a b", "com.example.Wish", "a#b", ";a", r"a\nb", '"a"', "50%", "-", "encoding", "true",
        "NoPolicyAtAll", "K\u00fche", "\U0001f404", pytest.param("k" * 5000, id="long")]


def refusal(shown):
    """The log lines about a refused key; `shown` is how they show it."""
    return [f"warning|default|Error saving key file 1 Key file cannot hold the key {shown}",
            SAVE_FAILURE]


@pytest.mark.parametrize("key, shown", REFUSED.items())
def test_key_that_the_file_cannot_hold_is_refused(daemon, key, shown):
    files.store({CAMERA: False})
    daemon.start()
    before = files.snapshot(files.POLICY_FILE)
    for value in (True, False):
        assert daemon.set(key, value) is False
    assert daemon.said() == 2 * [("reply", False)]
    assert daemon.records() == []
    assert daemon.logged() == 2 * refusal(shown)
    assert files.snapshot(files.POLICY_FILE) == before
    assert daemon.has_no_value(key)

    assert daemon.stop() == 0
    daemon.start()
    assert len(files.stored()) == 46  # every policy of the platform, and no more
    assert daemon.policy(CAMERA) is False
    assert daemon.policy("BrowserEnabled") is True


@pytest.mark.parametrize("locale", ["", "C", "C.UTF-8", "xx_XX.ISO-8859-1"])
def test_key_is_the_same_in_every_locale(daemon, locale):
    key = "K\u00fche \u03b1 \U0001f404"
    daemon.environment.update(LANG=locale, LC_ALL=locale)
    daemon.start()
    daemon.change(key, True)
    assert daemon.said() == changed(key, "", True)
    assert files.POLICY_FILE.read_bytes().endswith(f"\n{key}=true\n".encode())
    assert daemon.set(f"{key}=", True) is False
    assert daemon.logged() == refusal(f'"{key}="')
    assert daemon.stop() == 0
    daemon.start()
    assert daemon.policy(CAMERA) is True


def test_key_for_the_library_is_taken_behind_another_group(daemon):
    daemon.start()
    files.write(files.POLICY_FILE, "[other]\nx=1\n\n[policy]\nCameraEnabled=true\n")
    daemon.change("Encoding", True)
    assert daemon.said() == changed("Encoding", "", True)
    assert (files.POLICY_FILE.read_text()
            == "[other]\nx=1\n\n[policy]\nCameraEnabled=true\nEncoding=true\n")


@pytest.mark.parametrize("key", KEPT)
def test_key_that_the_file_can_hold_is_kept(daemon, key):
    daemon.start()
    daemon.change(key, True)
    assert daemon.said() == changed(key, "", True)
    assert daemon.policy(key) is True

    daemon.change(CAMERA, False)  # the file can still be read
    assert files.stored()[key] == "true"
    assert daemon.stop() == 0
    daemon.start()
    assert daemon.policy(CAMERA) is False
    assert files.stored()[key] == "true"


def test_unknown_key_is_not_read_at_the_next_start(daemon):
    key = "com.example.Wish"
    files.store({key: True})
    daemon.start()
    assert daemon.has_no_value(key)
    assert files.stored()[key] == "true"
    # Its first value again: without an old one in the event.
    daemon.change(key, True)
    assert daemon.said() == changed(key, "", True)
