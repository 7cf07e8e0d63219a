# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""An installed program as a process of the test."""

import grp
import os
import pathlib
import subprocess
import tempfile
from dataclasses import dataclass

from testbed import users
from testbed.waiting import PATIENCE, wait_until


@dataclass(frozen=True)
class Outcome:
    """The result of one run; the code is negative when a signal ended it."""
    code: int
    out: str
    err: str


class Program:
    """A command in the name of a user, who has logged in with these groups or with those that the
    user has now. It reads `text`, and finds these variables in its environment beside those of the
    test. A context that ends it."""
    OUTCOME = Outcome

    def __init__(self, command, user="root", groups=None, text="", environment=()):
        uid, gid = users.ids_of(user)
        numbers = (os.getgrouplist(user, gid) if groups is None
                   else [grp.getgrnam(group).gr_gid for group in groups])
        self._folder = tempfile.TemporaryDirectory()
        source, self._out, self._err = (pathlib.Path(self._folder.name) / name
                                        for name in ("in", "out", "err"))
        source.write_text(text)
        with source.open() as stdin, self._out.open("wb") as out, self._err.open("wb") as err:
            self.process = subprocess.Popen(
                command, stdin=stdin, stdout=out, stderr=err, user=uid, group=gid,
                extra_groups=numbers, env={**os.environ, **dict(environment)})

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self._folder.cleanup()

    @property
    def out(self):
        """What it has written to its standard output so far."""
        return self._out.read_bytes().decode()

    @property
    def err(self):
        """What it has written to its standard error so far."""
        return self._err.read_bytes().decode()

    def wait_for_out(self, text):
        """Waits for a text on its standard output."""
        wait_until(lambda: text in self.out)

    def wait_for_err(self, text):
        """Waits for a text on its standard error."""
        wait_until(lambda: text in self.err)

    def finish(self):
        """Waits for its end and returns the result."""
        return self.OUTCOME(self.process.wait(PATIENCE), self.out, self.err)
