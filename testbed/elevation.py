# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Callers that execute a set-user-id or set-group-id program."""

import contextlib
import functools
import os
import pathlib
import pwd
import select
import shutil
import signal
import socket

from jeepney import HeaderFields, new_method_call
from jeepney.low_level import Parser

from testbed.bus import BUS, SOCKET
from testbed.waiting import PATIENCE, wait_until

HELLO, CALL = 1, 2  # serials of the two messages of such a caller


@contextlib.contextmanager
def installed_program(name, mode, group="root"):
    """A copy of a program, with this mode and of this group; its path."""
    path = pathlib.Path("/usr/local/bin", f"govd-test-{name}")
    shutil.copyfile(shutil.which(name), path)
    shutil.chown(path, "root", group)
    path.chmod(mode)
    try:
        yield path
    finally:
        path.unlink()


class ElevatedCaller:
    """A client of the bus in a process of its own, which connects as a user, sends its login and
    its call in one write, and at once executes a program, while the bus and the daemon check it.

    The program copies its standard input, which is the connection, to its standard output, where
    the replies are read. A context that ends the process.
    """

    def __init__(self, name, message, program):
        uid, gid, groups = account_of(name)
        words = conversation(uid, message)
        self._output, output = os.pipe()
        self._pid = os.fork()
        if self._pid == 0:
            try:
                os.setgroups(groups)
                os.setresgid(gid, gid, gid)
                os.setresuid(uid, uid, uid)
                connection = socket.socket(socket.AF_UNIX)
                os.dup2(connection.fileno(), 0)
                os.dup2(output, 1)
                connection.connect(SOCKET)
                connection.send(words)
                os.execv(program, [program])
            finally:
                os._exit(1)
        os.close(output)
        self._heard = b""  # what has come until the login is over
        self._parser = None
        self._answers = {}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.kill(self._pid, signal.SIGKILL)
        os.waitpid(self._pid, 0)
        os.close(self._output)

    def wait_until_elevated(self, uid, gid):
        """Waits until the process runs as this user and group, and the bus has accepted it."""
        def is_elevated():
            status = os.stat(f"/proc/{self._pid}")
            return (status.st_uid, status.st_gid) == (uid, gid)
        wait_until(is_elevated)
        self._answer_to(HELLO)

    def answer(self):
        """Waits for the reply, or the error, to the call."""
        return self._answer_to(CALL)

    def _answer_to(self, serial):
        while serial not in self._answers:
            ready, _, _ = select.select([self._output], [], [], PATIENCE)
            data = os.read(self._output, 4096) if ready else b""
            assert data, "the bus answers no more"
            self._take(data)
        return self._answers[serial]

    def _take(self, data):
        if self._parser is None:
            self._heard += data
            login, end, data = self._heard.partition(b"\r\n")
            if not end:
                return
            assert login.startswith(b"OK "), login
            self._parser = Parser()
        for message in self._parser.feed(data):
            self._answers[message.header.fields.get(HeaderFields.reply_serial)] = message


@functools.lru_cache(maxsize=None)
def account_of(name):
    """The id, the primary group and all groups of a user."""
    account = pwd.getpwnam(name)
    return account.pw_uid, account.pw_gid, os.getgrouplist(name, account.pw_gid)


def conversation(uid, message):
    """The bytes that a client of a user sends to log in and make one call."""
    hello = new_method_call(BUS, "Hello").serialise(serial=HELLO)
    login = f"\0AUTH EXTERNAL {str(uid).encode().hex()}\r\nBEGIN\r\n".encode()
    return login + hello + message.serialise(serial=CALL)
