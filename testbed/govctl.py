# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The installed client govctl as processes of the test."""

import functools
import grp
import json
import os
import pathlib
import pwd
import subprocess
from dataclasses import dataclass

import jsonschema

from testbed.waiting import PATIENCE

PROGRAM = "/usr/bin/govctl"
SCHEMA = pathlib.Path("/usr/share/govctl/output.schema.json")


@dataclass(frozen=True)
class Outcome:
    """What one run gave."""
    code: int
    out: str
    err: str

    @property
    def lines(self):
        """The lines of standard output."""
        return self.out.splitlines()

    @property
    def document(self):
        """The only line of standard output as a document, which is the only output."""
        document = json.loads(self.out)
        jsonschema.validate(document, schema())
        assert (document["code"], self.err) == (self.code, "")
        return document

    @property
    def result(self):
        """What was found or done."""
        return self.document["result"]

    @property
    def error(self):
        """The name of what went wrong."""
        return self.document["error"]["name"]


@functools.lru_cache(maxsize=None)
def schema():
    """The schema that is published with the client."""
    return json.loads(SCHEMA.read_text())


def run(*arguments, user="root", groups=None, text="", environment=None):
    """Runs the client to its end in the name of a user, who has logged in with these groups or
    with those that the user has now. A single argument is a line of words."""
    words = arguments[0].split() if len(arguments) == 1 else arguments
    account = pwd.getpwnam(user)
    numbers = (os.getgrouplist(user, account.pw_gid) if groups is None
               else [grp.getgrnam(group).gr_gid for group in groups])
    ended = subprocess.run([PROGRAM, *words], input=text, capture_output=True, text=True,
                           check=False, timeout=PATIENCE, user=account.pw_uid,
                           group=account.pw_gid, extra_groups=numbers,
                           env={**os.environ, **(environment or {})})
    return Outcome(ended.returncode, ended.stdout, ended.stderr)


def result(*arguments, **keywords):
    """What a run with --json has found or done."""
    words = arguments[0].split() if len(arguments) == 1 else arguments
    return run(*words, "--json", **keywords).result
