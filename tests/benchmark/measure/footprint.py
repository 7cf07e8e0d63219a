# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What the daemon is made of: the size of its binary and the libraries that it needs."""

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
    """How many libraries the executable itself asks for."""
    return run("readelf", "--dynamic", DAEMON).count("(NEEDED)")


def library_directory():
    """Where Qt's libraries are, and below it the daemon's lock plugins."""
    qt_line, = (line for line in run("ldd", DAEMON).splitlines() if "libQt5Core" in line)
    return pathlib.Path(qt_line.split()[2]).parent


def loaded_libraries():
    """How many libraries are loaded in the end."""
    return len(run("ldd", DAEMON).splitlines())
