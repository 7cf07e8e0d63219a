# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Processes of other users, in whose name clients connect to the bus."""

import contextlib
import ctypes
import functools
import grp
import os
import pathlib
import pwd
import re
import signal
import socket
import struct
import subprocess

# The users of the sandbox, and whether they may change policies.
MAY_WRITE = {"root": True, "operator": True, "deputy": False, "mdm": True, "agent": True,
             "pretender": False, "guest": False}
PR_SET_DUMPABLE = 4
IDS = struct.Struct("II")  # a user and a group


class User:
    """A process that runs as a user and opens connections in the user's name.

    For the kernel, and so for the bus, the connection belongs to this process: its id `pid`, its
    user and its groups. `group` replaces the user's primary group. With `effective` only the
    effective ids change and the real ids stay root's, as with a set-user-id program. It ends with
    the process that made it.
    """

    def __init__(self, name, group=None, effective=False):
        self.uid, gid = ids_of(name, group)
        self._orders, orders = socket.socketpair()
        self.pid = os.fork()
        if self.pid == 0:
            try:
                os.initgroups(name, pwd.getpwnam(name).pw_gid)
                become(self.uid, gid, effective)
                orders.send(b"+")
                serve(orders)
            finally:
                os._exit(1)
        orders.close()
        assert self._orders.recv(1) == b"+"

    def connect(self, path):
        """Opens a stream connection to the socket at `path`. Raises ConnectionError."""
        connection = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        socket.send_fds(self._orders, [path.encode()], [connection.fileno()])
        if self._orders.recv(1) != b"+":
            connection.close()
            raise ConnectionError(f"nobody listens at {path}")
        return connection

    def change(self, name, group=None):
        """Gives it other effective ids; it must have been made as `effective`. A number is an id
        without a name."""
        self.uid, gid = ids_of(name, group)
        self._orders.send(IDS.pack(self.uid, gid))
        assert self._orders.recv(1) == b"+"

    def end(self):
        """Ends it; the connections that it has opened stay."""
        os.kill(self.pid, signal.SIGKILL)
        os.waitpid(self.pid, 0)


@functools.lru_cache(maxsize=None)
def user(name):
    """The process of the user `name`, the same for each call."""
    return User(name)


def run_as(name, *command):
    """Runs a program to its end, as a login of the user would; its output is text."""
    uid, gid = ids_of(name)
    return subprocess.run(command, user=uid, group=gid, extra_groups=os.getgrouplist(name, gid),
                          text=True, capture_output=True, check=False)


@contextlib.contextmanager
def membership(name, group):
    """Adds a user to a group that has members already, as long as the context lasts."""
    file = pathlib.Path("/etc/group")
    before = file.read_text()
    file.write_text(re.sub(f"^{group}:.*$", rf"\g<0>,{name}", before, flags=re.MULTILINE))
    try:
        yield
    finally:
        file.write_text(before)


def ids_of(name, group=None):
    """The ids of a user and of `group`, by default the user's primary group; a number stands for
    both ids."""
    if isinstance(name, int):
        return name, name
    account = pwd.getpwnam(name)
    return account.pw_uid, grp.getgrnam(group).gr_gid if group else account.pw_gid


def become(uid, gid, effective=False):
    """Gives this process a user and a group, or as effective ones only."""
    if effective:
        os.seteuid(0)  # only root may take any id
        os.setegid(gid)
        os.seteuid(uid)
    else:
        os.setgid(gid)
        os.setuid(uid)
    # Otherwise its directory in /proc would belong to root, and the daemon would take it for root.
    ctypes.CDLL(None).prctl(PR_SET_DUMPABLE, 1, 0, 0, 0)


def serve(orders):
    """Reads `orders` until their end: connects a socket to the path that comes with it, and takes
    on effective ids that come without one."""
    # Inherited descriptors would keep the other side's connections open.
    orders = socket.socket(fileno=os.dup2(orders.detach(), 3))
    os.closerange(4, os.sysconf("SC_OPEN_MAX"))
    while True:
        order, descriptors, _, _ = socket.recv_fds(orders, 4096, 1)
        if not order:
            os._exit(0)
        if not descriptors:
            become(*IDS.unpack(order), effective=True)
            orders.send(b"+")
            continue
        with socket.socket(fileno=descriptors[0]) as connection:
            try:
                connection.connect(order.decode())
                orders.send(b"+")
            except OSError:
                orders.send(b"-")
