# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The real storage service of the machine, with the device manager that it depends on."""

import pathlib
import shutil
import subprocess

from jeepney import DBusAddress, DBusErrorResponse, new_method_call

from testbed.bus import Client
from testbed.devices import IMAGE
from testbed.files import write
from testbed.services.service import PROPERTIES
from testbed.services.storage import FILESYSTEM, Storage
from testbed.waiting import wait_until

# Distributions keep daemons' programs in different folders.
DEVICE_MANAGERS = ("/usr/lib/systemd/systemd-udevd", "/lib/systemd/systemd-udevd", "/sbin/udevd")
STORAGE_SERVICES = ("/usr/libexec/udisks2/udisksd", "/usr/lib/udisks2/udisksd")
RULES = [pathlib.Path(place, "udev/rules.d")
         for place in ("/usr/lib", "/usr/local/lib", "/etc", "/run")]
RULE = ('SUBSYSTEM=="block", ATTRS{{loop/backing_file}}=="{}", IMPORT{{builtin}}="blkid", '
        'ENV{{UDISKS_SYSTEM}}="{}"\n')


class UDisks:
    """UDisks2 and the device manager (udev). A context that ends them.

    Both programs receive and send device events in the sandbox's network namespace, so the
    machine's own device manager is not disturbed.
    """

    def __init__(self):
        write_rules()
        self._client = Client()
        self._device_manager = subprocess.Popen(first_existing(DEVICE_MANAGERS, "udev"))
        wait_until(lambda: pathlib.Path("/run/udev/control").exists())
        subprocess.run(["udevadm", "control", "--ping"], check=True)
        self.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in (self._service, self._device_manager):
            process.terminate()
            process.wait()
        self._client.close()

    def start(self):
        """Starts UDisks2 and waits until it serves."""
        self._service = subprocess.Popen(first_existing(STORAGE_SERVICES, "udisks2"))
        wait_until(lambda: self._client.owner(Storage.NAME))

    def kill(self):
        """Kills UDisks2 and waits until it is gone from the bus."""
        self._service.kill()
        self._service.wait()
        wait_until(lambda: not self._client.owner(Storage.NAME))

    def places(self, device):
        """The mount points of a device by UDisks2; None when it shows no file system on it."""
        return known_places(self._client, device)

    def mount(self, device):
        """Has UDisks2 mount a device, as a file manager does. Raises DBusErrorResponse."""
        self._client.ask(new_method_call(DBusAddress(device.path, Storage.NAME, FILESYSTEM),
                                         "Mount", "a{sv}", ({},)))


def known_places(client, device):
    """The mount points of a device that UDisks2 tells a client; None without UDisks2, or when it
    shows no file system on it."""
    question = new_method_call(DBusAddress(device.path, Storage.NAME, PROPERTIES), "Get", "ss",
                               (FILESYSTEM, "MountPoints"))
    try:
        return client.ask(question)[0][1]
    except DBusErrorResponse:
        return None


def write_rules():
    """Replaces the device manager's rules: they probe loop devices and mark those on a file as not
    part of the system, while those on another device look like a part. Other devices of the machine
    are ignored."""
    for folder in RULES:
        shutil.rmtree(folder, ignore_errors=True)
    write(RULES[-1] / "50-govd-test.rules", RULE.format(IMAGE, 0) + RULE.format("/dev/loop*", 1))


def first_existing(programs, package):
    """The first of these programs that is installed."""
    found = [program for program in programs if pathlib.Path(program).exists()]
    assert found, f"the package {package} is not installed"
    return found[0]
