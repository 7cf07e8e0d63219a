# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The agent that the guide for authors of agents shows."""

import os
import re
import subprocess

import pytest

from testbed.manuals import FOLDER
from testbed.users import ids_of
from testbed.waiting import wait_until

GUIDE = FOLDER.parent / "agents.md"


@pytest.fixture
def agent(daemon, tmp_path):
    """Runs the program of the guide as a user; returns a function that gives what it has printed."""
    program, = re.findall(r"^```python\n(.*?)^```$", GUIDE.read_text(), re.DOTALL | re.MULTILINE)
    output = tmp_path / "output"
    started = []

    def run(user):
        uid, gid = ids_of(user)
        with output.open("w") as file:
            started.append(subprocess.Popen(
                ["/usr/bin/python3", "-c", program], stdout=file, user=uid, group=gid,
                extra_groups=os.getgrouplist(user, gid)))
        return output.read_text
    daemon.start()
    yield run
    for process in started:
        process.kill()
        process.wait()


def test_camera_is_kept_off(agent, daemon):
    printed = agent("mdm")
    wait_until(lambda: "CameraEnabled off\n" in printed())
    daemon.change("CameraEnabled", True)
    wait_until(lambda: printed().count("CameraEnabled off\n") == 2)
    daemon.kill()
    wait_until(lambda: printed().endswith("the daemon is away\n"))


def test_user_without_rights(agent):
    printed = agent("guest")
    wait_until(lambda: "not allowed: " in printed())
    assert "CameraEnabled off" not in printed()
