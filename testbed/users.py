# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Users of the device: who a client of the bus is, as the kernel tells the bus and the daemon."""

import ctypes
import functools
import os
import pwd
import socket

PR_SET_DUMPABLE = 4


class User:
    """A process that runs as a user and opens connections in the user's name.

    Whoever is asked about such a connection sees this process: its number `pid`, its user and its
    groups. It ends with the process that made it.
    """

    def __init__(self, name):
        self._orders, orders = socket.socketpair()
        self.pid = os.fork()
        if self.pid == 0:
            try:
                become(name)
                serve(orders)
            finally:
                os._exit(1)
        orders.close()

    def connect(self, path):
        """Opens a stream connection to the socket at `path`. Raises ConnectionError."""
        connection = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        socket.send_fds(self._orders, [path.encode()], [connection.fileno()])
        if self._orders.recv(1) != b"+":
            connection.close()
            raise ConnectionError(f"nobody listens at {path}")
        return connection


@functools.lru_cache(maxsize=None)
def user(name):
    """The process of the user `name`, the same for each call."""
    return User(name)


def become(name):
    """Makes this process one that the user has started after a login."""
    account = pwd.getpwnam(name)
    os.initgroups(name, account.pw_gid)
    os.setgid(account.pw_gid)
    os.setuid(account.pw_uid)
    # Otherwise its directory in /proc would be root's, and the daemon would take it for root.
    ctypes.CDLL(None).prctl(PR_SET_DUMPABLE, 1, 0, 0, 0)


def serve(orders):
    """Connects each socket that comes over `orders` to the path beside it, until their end."""
    # Descriptors of the other side that stayed open here would keep its connections alive.
    orders = socket.socket(fileno=os.dup2(orders.detach(), 3))
    os.closerange(4, os.sysconf("SC_OPEN_MAX"))
    while True:
        path, descriptors, _, _ = socket.recv_fds(orders, 4096, 1)
        if not path:
            os._exit(0)
        with socket.socket(fileno=descriptors[0]) as connection:
            try:
                connection.connect(path.decode())
                orders.send(b"+")
            except OSError:
                orders.send(b"-")
