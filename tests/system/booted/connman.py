# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Tethering by the daemon beside the real connman, which has to be unpacked in the sandbox. No test
of the usual run: where connman is installed, it takes over the machine's network."""

import os
import pathlib
import shutil
import struct

import pytest
from jeepney import DBusAddress, new_method_call

from testbed import files, govctl, unit
from testbed.bus import write_of
from testbed.waiting import wait_until

SHARING = "InternetSharingEnabled"
CONNMAN = "connman.service"
MANAGER = DBusAddress("/", "net.connman", "net.connman.Manager")
WIFI, CABLE = (DBusAddress(f"/net/connman/technology/{name}", "net.connman",
                           "net.connman.Technology") for name in ("wifi", "ethernet"))
ALREADY, UNKNOWN = "net.connman.Error.AlreadyDisabled", "org.freedesktop.DBus.Error.UnknownObject"
FAILURE = "Failed to disable internet sharing: QDBusError("

RFKILL = pathlib.Path("/dev/rfkill")
RADIO = struct.pack("<IBBBB", 0, 1, 0, 0, 0)  # first device, WLAN, added, not blocked in any way
SETTINGS = pathlib.Path("/etc/connman/main.conf")
STATE = pathlib.Path("/var/lib/connman")


@pytest.fixture
def radio():
    """A Wi-Fi radio, of which a pipe tells in the place of the kernel. connman has a technology for
    it, but no interface to share over."""
    os.mkfifo(RFKILL)
    device = os.open(RFKILL, os.O_RDWR)
    os.write(device, RADIO)
    yield
    os.close(device)
    RFKILL.unlink()


@pytest.fixture
def cable(tmp_path):
    """An interface to share over, and the settings of the network's kernel that connman writes."""
    unit.run("ip", "link", "add", "eth0", "type", "veth", "peer", "name", "peer0")
    unit.run("ip", "link", "set", "peer0", "up")
    SETTINGS.write_text("[General]\nTetheringTechnologies=ethernet\nPersistentTetheringMode=true\n"
                        "NetworkInterfaceBlacklist=peer\n")
    for kind in ("proc", "sysfs"):
        (tmp_path / kind).mkdir()
        unit.run("mount", "-t", kind, kind, tmp_path / kind)
    paths = f"{tmp_path}/proc/sys/net:/proc/sys/net {tmp_path}/sysfs:/sys"
    with unit.drop_in(f"[Service]\nBindPaths={paths}\n", CONNMAN):
        yield
    unit.run("umount", tmp_path / "proc", tmp_path / "sysfs")
    SETTINGS.unlink()
    unit.run("ip", "link", "delete", "eth0")


@pytest.fixture
def connman(stopped, root):
    """Starts connman again, and returns when it has a technology."""
    def start(technology):
        unit.run("systemctl", "restart", CONNMAN)
        wait_until(lambda: technology.object_path in dict(
            root.ask(new_method_call(MANAGER, "GetTechnologies"))[0]))

    yield start
    unit.run("systemctl", "stop", CONNMAN)
    shutil.rmtree(STATE, ignore_errors=True)


def tethering(on):
    """A call that switches tethering over the cable."""
    return new_method_call(CABLE, "SetProperty", "sv", ("Tethering", ("b", on)))


def is_tethering(client):
    """Whether connman shares over the cable."""
    return client.ask(new_method_call(CABLE, "GetProperties"))[0]["Tethering"] == ("b", True)


def failures(journal):
    """The names of the errors that connman has given to the daemon."""
    return [line.text.removeprefix(FAILURE).split('"')[1] for line in journal.lines()
            if line.text.startswith(FAILURE)]


def state():
    """What the client says about the policy."""
    policy, = govctl.result("verify", SHARING)["policies"]
    return policy["state"]


def test_without_a_radio(daemon, root, cable, connman, journal):
    """There is no object that the daemon could ask; nor can the client."""
    connman(CABLE)
    assert root.ask(write_of(SHARING, False)) == (True,)
    assert failures(journal) == [UNKNOWN]
    assert state() == "unseen"


def test_with_a_radio(daemon, root, radio, connman, journal):
    """Tethering that is off already is an error of connman's."""
    connman(WIFI)
    assert root.ask(write_of(SHARING, False)) == (True,)
    assert failures(journal) == [ALREADY]
    assert state() == "in-force"


def test_start_of_the_daemon(radio, connman, journal):
    connman(WIFI)
    files.store({SHARING: False})
    unit.start()
    assert failures(journal) == [ALREADY, ALREADY]


def test_start_of_connman(daemon, root, radio, connman, journal):
    assert root.ask(write_of(SHARING, False)) == (True,)
    connman(WIFI)
    failure, = wait_until(lambda: failures(journal))
    assert failure in (ALREADY, UNKNOWN)  # the object may come later than the name


def test_shared_cable(daemon, root, guest, cable, connman):
    """Any user may share, and connman shares again after a restart. The daemon does not hinder it,
    but the call that it makes for Wi-Fi ends it."""
    assert root.ask(write_of(SHARING, False)) == (True,)
    connman(CABLE)
    guest.ask(tethering(True))
    assert is_tethering(root)
    connman(CABLE)
    wait_until(lambda: is_tethering(root))
    root.ask(tethering(False))
    assert not is_tethering(root)
