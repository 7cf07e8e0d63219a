# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The size of the daemon's binary and the libraries that it needs."""

import os
import pathlib
import tempfile

from processes import run

DAEMON = "/usr/sbin/govd"


def binary_size():
    """The size in bytes of the installed executable without its symbols."""
    with tempfile.NamedTemporaryFile() as stripped:
        run("strip", "-o", stripped.name, DAEMON)
        return os.path.getsize(stripped.name)


def needed_libraries():
    """The number of libraries that the executable itself is linked to."""
    return run("readelf", "--dynamic", DAEMON).count("(NEEDED)")


def library_directory():
    """The folder of Qt's libraries, which also holds that of the lock plugins."""
    qt_line, = (line for line in run("ldd", DAEMON).splitlines() if "libQt5Core" in line)
    return pathlib.Path(qt_line.split()[2]).parent


def loaded_libraries():
    """The number of libraries that are loaded, indirect ones included."""
    return len(run("ldd", DAEMON).splitlines())
