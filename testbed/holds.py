# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Changes with a time limit: their files, their timer, and the start of the device."""

import datetime
import json
import pathlib
import subprocess

from testbed import govctl, unit

HOLDS = pathlib.Path("/var/lib/govctl/holds")
RELEASE = "govctl-release.service"
TIMER = "govctl-release.timer"


def timers():
    """The timers of holds."""
    listed = unit.run("systemctl", "list-units", "--plain", "--no-legend", "--type=timer",
                      "govctl-release*")
    return [line.split()[0] for line in listed.splitlines()]


def held():
    """The keys in each hold."""
    return [[step["key"] for step in hold["changes"]] for hold in govctl.result("holds")["holds"]]


def pass_time(number, **time):
    """Moves the end of a hold back by so much time."""
    path = HOLDS / f"{number}.json"
    hold = json.loads(path.read_text())
    until = datetime.datetime.fromisoformat(hold["until"].replace("Z", "+00:00"))
    hold["until"] = (until - datetime.timedelta(**time)).strftime("%Y-%m-%dT%H:%M:%SZ")
    path.write_text(json.dumps(hold))


def stop_device():
    """Does what switching the device off does: ends timers and daemon."""
    unit.run("systemctl", "stop", *timers(), RELEASE, unit.UNIT)


def run_release():
    """Starts the service that ends holds, as the timer or the start of the device does. Whether it
    has taken back all that was due."""
    return subprocess.run(["systemctl", "start", RELEASE], check=False).returncode == 0
