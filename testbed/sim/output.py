# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The two forms of the output: text for people, and JSON for programs.

In JSON, standard output holds one document on each line and nothing else, failures included. As
text, results go to standard output and failures to standard error. Everything is UTF-8, whatever
the locale. A reader that has closed the pipe is no error.
"""

import json
import os
import select
from dataclasses import dataclass

from testbed.sim.text import printable

PROGRAM = "govd-sim"
VERSION = 1  # of the form of the documents
DONE, NO, USAGE, REFUSED, NO_DEVICE, NO_ANSWER, NO_OUTPUT = 0, 1, 2, 3, 5, 6, 7
GOOD, BAD, FAINT, STRONG = "32", "31", "2", "1"  # the terminal's codes


@dataclass
class Failure(Exception):
    """The reason why a verb failed."""
    code: int  # of the program's exit
    name: str  # for programs
    message: str  # one line for people, with what they can do
    nearest: tuple = ()  # known names that look like the unknown one

    def text(self):
        """The failure for people."""
        names = ", ".join(map(printable, self.nearest))
        return f"{self.message}; did you mean {names}?" if names else self.message

    def json(self):
        """The failure for programs."""
        return {"name": self.name, "message": self.message, "nearest": list(self.nearest)}


class Output:
    """Writes results and failures. `verb` is the name that documents carry, or None."""

    def __init__(self, is_json, verb):
        self.is_json = is_json
        self.is_open = True  # False once a reader has closed the pipe or a write has failed
        self.has_failed = False
        self._verb = verb
        self._has_colours = not is_json and can_be_steered() and not os.environ.get("NO_COLOR")

    def write(self, result, text):
        """Writes a result: the object with --json, otherwise the text."""
        self._print(self._document(DONE, result=result) if self.is_json else text)

    def fail(self, failure):
        """Writes a failure."""
        if self.is_json:
            self._print(self._document(failure.code, error=failure.json()))
        else:
            self.note(failure.text())

    def note(self, line):
        """Writes a line for people beside the result, to standard error."""
        write(2, f"{PROGRAM}: {line}\n".encode())

    def paint(self, code, text):
        """The text in a colour, where colours are wanted."""
        return f"\033[{code}m{text}\033[0m" if self._has_colours else text

    def _document(self, code, **content):
        return as_json({"version": VERSION, "verb": self._verb, "code": code, **content}) + "\n"

    def _print(self, text):
        if not self.is_open:
            return
        fault = write(1, text.encode(errors="replace"))
        self.is_open = fault is None
        # A closed pipe (EPIPE) is not reported: its reader needs no more output.
        if fault and not isinstance(fault, BrokenPipeError):
            self.has_failed = True
            self.note(f"cannot write the result ({fault.strerror}); check where the output goes")


def as_json(value):
    """A value as compact JSON."""
    return json.dumps(value, sort_keys=True, separators=(",", ":"), ensure_ascii=False)


def write(descriptor, data):
    """Writes without a buffer, so that each result reaches its reader at once and none is lost
    however the program ends. Returns the OSError when that fails."""
    while data:
        try:
            data = data[os.write(descriptor, data):]
        except BlockingIOError:
            select.select([], [descriptor], [])
        except OSError as fault:
            return fault
    return None


def can_be_steered():
    """Whether standard output is a terminal that understands control sequences."""
    return os.isatty(1) and os.environ.get("TERM") != "dumb"
