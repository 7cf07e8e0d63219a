# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Two devices in one window of Cockpit, which reaches the second by ssh."""

import json
import os
import pathlib
import subprocess

import pytest

from testbed import unit
from testbed.browser import Browser
from testbed.files import write
from testbed.waiting import wait_until

CAMERA = "CameraEnabled"
SANDBOX = pathlib.Path(__file__).parents[3] / "scripts/sandbox"
ADDRESS = "10.9.0.2"
SECOND = f"""
govd &
until ip link set cable up 2>/dev/null; do sleep 0.1; done
ip address add {ADDRESS}/24 dev cable
mkdir -p /run/sshd
exec /usr/sbin/sshd -D -o ListenAddress={ADDRESS}
"""


def let_in():
    """Gives the user a key for every host, and makes the key of the second host known."""
    unit.run("ssh-keygen", "-A")
    key = pathlib.Path("/home/admin/.ssh/id_rsa")
    unit.run("runuser", "-u", "admin", "--", "ssh-keygen", "-q", "-t", "rsa", "-N", "", "-f", key)
    unit.run("cp", "-p", f"{key}.pub", key.parent / "authorized_keys")
    hosts = [file.read_text() for file in pathlib.Path("/etc/ssh").glob("ssh_host_*.pub")]
    write("/etc/ssh/ssh_known_hosts", "".join(f"{ADDRESS} {host}" for host in hosts))
    write("/etc/cockpit/machines.d/50-second.json",
          json.dumps({ADDRESS: {"address": ADDRESS, "user": "admin", "visible": True}}))


@pytest.fixture
def second(daemon):
    """Another device, in a sandbox in this one; the name that Cockpit has for it."""
    let_in()
    command = [SANDBOX, "--build", os.environ["GOVD_BUILD"], "--", "bash", "-c", SECOND]
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as device:
        first = str(unit.main_pid())
        pid, = wait_until(lambda: set(unit.run("pgrep", "-x", "govd").split()) - {first})
        unit.run("ip", "link", "add", "cable", "type", "veth",
                 "peer", "name", "cable", "netns", pid)
        unit.run("ip", "address", "add", "10.9.0.1/24", "dev", "cable")
        unit.run("ip", "link", "set", "cable", "up")
        yield f"admin@{ADDRESS}"
        device.kill()


def test_each_host_has_its_own_policies(second):
    with Browser("admin") as page:
        page.driver.get(f"{page.address}/@{ADDRESS}/govd")
        page.enter_page(second)
        assert not page.toggle(CAMERA).is_enabled()
        page.gain_access(second)
        page.patiently(page.toggle(CAMERA).is_enabled)
        page.ask(CAMERA)
        page.confirm("Turn off")
        page.patiently(lambda: page.row(CAMERA)[1] == "off")
        page.driver.get(f"{page.address}/govd")
        page.enter_page()
        assert page.row(CAMERA)[1] == "on"
