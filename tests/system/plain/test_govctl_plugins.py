# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What the client reports of the plugins' files, tested with the file of locks."""

import pathlib

import pytest

from testbed import govctl
from testbed.files import replace, write
from testbed.plugins import FILE_LOCK_FILE
from testbed.waiting import wait_until

STATES = pathlib.Path("/run/govd")
GOOD = "[lock]\npolicies=\n"


def state():
    """The state of the only plugin."""
    plugin, = govctl.result("status")["plugins"]
    return plugin["state"]


@pytest.mark.parametrize("contents, state, text, code", [
    ([GOOD], "good", "is good: it is in force", 0),
    ([None], "absent", "is not there: nothing is in force", 0),
    ([GOOD, ""], "kept", "is empty: its last good content is in force", 1),
    ([""], "never-good", "is empty, and no good content is known: nothing is in force", 1),
], ids=["good", "absent", "kept", "never-good"])
def test_shows_what_is_in_force(process, file_lock, contents, state, text, code):
    for content in contents:
        if process.running:
            assert process.stop() == 0
        if content is not None:
            write(FILE_LOCK_FILE, content)
        process.start()
    message = f"{FILE_LOCK_FILE} {text}"
    outcome = govctl.run("status", user="guest")
    assert outcome.code == code
    assert f"plugin    filelock: {message}" in outcome.lines
    for verb in ("status", "dump"):
        assert govctl.result(verb, user="guest")["plugins"] == [
            {"name": "filelock", "state": state, "message": message}]


def test_follows_the_file(process, file_lock):
    process.start()
    assert state() == "absent"
    replace(FILE_LOCK_FILE, GOOD)
    wait_until(lambda: state() == "good")
    replace(FILE_LOCK_FILE, "no key file\n")
    wait_until(lambda: state() == "kept")
    FILE_LOCK_FILE.unlink()
    wait_until(lambda: state() == "absent")


def test_without_plugins_there_is_nothing_to_tell(process):
    process.start()
    assert "plugin" not in govctl.run("status").out
    assert govctl.result("status")["plugins"] == []


def test_without_a_daemon_nothing_is_known(process, file_lock):
    """A report that an earlier daemon has left does not describe the present."""
    process.start()
    assert process.stop() == 0
    assert list(STATES.iterdir())
    assert govctl.run("status").out == "service   not there\n"
    assert govctl.run("status --json").result["plugins"] is None


def test_folder_that_this_user_may_not_read(process, file_lock):
    process.start()
    STATES.chmod(0o700)
    outcome = govctl.run("status", user="guest")
    assert outcome.code == 0
    assert "plugins   not known: this user may not read /run/govd" in outcome.lines
    assert govctl.result("status", user="guest")["plugins"] is None


def test_names_are_no_commands_to_a_terminal(process, file_lock):
    process.start()
    write(STATES / "zz.json",
          r'{"name": "a\u001b[31m", "state": "good", "message": "two\nlines"}')
    outcome = govctl.run("status")
    assert "\033" not in outcome.out
    assert len([line for line in outcome.lines if "plugin " in line]) == 2
