# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Watches whether a file exists."""

import ctypes
import os
import pathlib

from gi.repository import GLib

COMES_OR_GOES = 0x40 | 0x80 | 0x100 | 0x200  # IN_MOVED_FROM, IN_MOVED_TO, IN_CREATE, IN_DELETE
FLAGS = os.O_NONBLOCK | os.O_CLOEXEC
C = ctypes.CDLL(None)


class MarkerFile:
    """Calls `changed` when a file appears or disappears; its directory need not exist yet."""

    def __init__(self, path, changed):
        self.path = pathlib.Path(path)
        self.is_there = False
        self._changed = lambda: None
        self._notices = C.inotify_init1(FLAGS)
        GLib.unix_fd_add_full(GLib.PRIORITY_DEFAULT, self._notices, GLib.IOCondition.IN,
                              self._read_notices)
        self._look()
        self._changed = changed

    def _read_notices(self, *_):
        os.read(self._notices, 1 << 16)
        self._look()
        return GLib.SOURCE_CONTINUE

    def _look(self):
        # The watches are added before the look, so that no change is missed in between. Adding a
        # watch again has no effect, and a missing directory is skipped.
        for directory in self.path.parents:
            C.inotify_add_watch(self._notices, os.fsencode(directory), COMES_OR_GOES)
        if self.is_there != self.path.exists():
            self.is_there = not self.is_there
            self._changed()
