# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A file that comes and goes."""

import ctypes
import os
import pathlib

from gi.repository import GLib

COMES_OR_GOES = 0x40 | 0x80 | 0x100 | 0x200  # IN_MOVED_FROM, IN_MOVED_TO, IN_CREATE, IN_DELETE
FLAGS = os.O_NONBLOCK | os.O_CLOEXEC
C = ctypes.CDLL(None)


class MarkerFile:
    """Notices when a file comes and goes, even when its directory does not exist yet, and runs
    `changed` then."""

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
        # Watches before it looks, so that nothing is missed in between. A directory that is watched
        # already stays so, and one that is not there is no matter.
        for directory in self.path.parents:
            C.inotify_add_watch(self._notices, os.fsencode(directory), COMES_OR_GOES)
        if self.is_there != self.path.exists():
            self.is_there = not self.is_there
            self._changed()
