# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The library of partitions, in a process of its own."""

import itertools
import json
import os
import pathlib
import queue
import subprocess
import tempfile
import threading
import time

from testbed.services.storage import Block, Drive, object_path
from testbed.waiting import PATIENCE, wait_until

PROGRAM = pathlib.Path(os.environ["GOVD_BUILD"], "tests/system/partitions")
UNMOUNTED, MOUNTED = 0, 2  # the status of a partition
SYSTEM, EXTERNAL, ANY = 0x01, 0x08, 0x0F  # its type

# What the tests plug in.
STICK = Drive("stick", "usb", "Maker", "Model")
STICK_PATH = object_path("drives", "stick")
BLOCK_PATH = object_path("block_devices", "sda1")
PLACE = "/run/media/stick"


def block(*places, drive="/"):
    """The block device at BLOCK_PATH, mounted in these places."""
    return Block("sda1", drive, mount_points=places)


def plug_stick(storage, *places):
    """Plugs in the stick and its block device, mounted in these places."""
    storage.plug(STICK)
    storage.plug(block(*places, drive=STICK_PATH))


class Partitions:
    """The library in a process that ends with its context.

    At first the process has the partition manager 0, but no application object and no event loop.
    Other managers are made when their number is first used. A partition is a dictionary with "path"
    (of its object), "device", "place", "drive", "type" and "status".
    """

    def __init__(self, **environment):
        self._log = tempfile.NamedTemporaryFile("r")
        pattern = {"QT_MESSAGE_PATTERN": "%{type}|%{category}|%{message}",
                   "QT_FORCE_STDERR_LOGGING": "1"}
        with open(self._log.name, "a", encoding="utf-8") as log:
            self._process = subprocess.Popen(
                [PROGRAM], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=log, text=True,
                env={**os.environ, **pattern, **environment})
        self._has_application = False
        self._numbers = itertools.count()
        self._announced = []
        self._results = queue.SimpleQueue()
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self._reader.join()
        for stream in (self._process.stdin, self._process.stdout, self._log):
            stream.close()

    def make_application(self):
        """Makes the application object of the process; its event loop does not run yet."""
        self.ask("application")
        self._has_application = True

    def run(self, *paths):
        """Starts the event loop of the process, and waits until it has announced these."""
        if not self._has_application:
            self.make_application()
        self.ask("run")
        if paths:
            self.wait_for(*paths)

    def end(self):
        """Ends the process by the end of its input, with all destructors; returns its exit code."""
        self._process.stdin.close()
        return self._process.wait(PATIENCE)

    def list(self, types=ANY, manager=0):
        """The partitions of these types that a manager lists."""
        return self.ask("list", manager, types)

    def only(self):
        """The only partition."""
        partition, = self.list()
        return partition

    def status(self):
        """The status of the only partition."""
        return self.only()["status"]

    def unmount(self, path, options=None, manager=0):
        """Has a manager unmount a partition that was listed or announced; "" names none."""
        self.ask("unmount", manager, path, options or {})

    def unmount_announced(self, manager=0):
        """From now on a manager unmounts what it announces as mounted, as the daemon does."""
        self.ask("unmounting", manager)

    def ask(self, name, manager=0, *arguments):
        """Sends a command to the process and returns its result."""
        self._process.stdin.write(json.dumps([name, manager, *arguments]) + "\n")
        self._process.stdin.flush()
        return self._results.get(timeout=PATIENCE)

    def announced(self, manager=0):
        """The partitions that a manager has announced since forget(), but for those of settle(),
        each with the "time" of its announcement."""
        return [partition for number, partition in self._announced
                if number == manager and "sentinel" not in partition["path"]]

    def paths(self, manager=0):
        """The object paths of the announced partitions."""
        return [partition["path"] for partition in self.announced(manager)]

    def wait_for(self, *paths, manager=0):
        """Waits until a manager has announced these partitions and no others."""
        wait_until(lambda: self.paths(manager) == list(paths))

    def forget(self):
        """Forgets all announcements."""
        self._announced.clear()

    def settle(self, storage):
        """Returns when manager 0 has handled all signals of the storage service so far."""
        path = storage.plug(Block(f"sentinel{next(self._numbers)}"))
        wait_until(lambda: path in [partition["path"] for _, partition in list(self._announced)])
        storage.unplug(path)
        wait_until(lambda: path not in [partition["path"] for partition in self.list()])

    def take_log(self):
        """What the process has written to its standard error since the last call, each message in
        the form "type|category|text"."""
        return self._log.read().splitlines()

    def _read(self):
        for line in self._process.stdout:
            message = json.loads(line)
            if "announced" in message:
                partition = {**message["announced"], "time": time.monotonic()}
                self._announced.append((message["manager"], partition))
            else:
                self._results.put(message["result"])


def calls_of(storage, member):
    """The calls of a method that the storage service has received."""
    return [call for call in storage.calls if call.member == member]


def listings(storage):
    """The number of calls of GetManagedObjects so far."""
    return len(calls_of(storage, "GetManagedObjects"))
