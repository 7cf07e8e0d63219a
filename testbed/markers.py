# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The policies that are enforced by a marker file."""

import pathlib
from dataclasses import dataclass

from testbed import files


@dataclass(frozen=True)
class Marker:
    """A policy's file."""
    key: str
    path: pathlib.Path
    there: bool  # the value with which it exists
    cannot_create: str
    cannot_remove: str

    def __str__(self):
        return self.path.name

    def failure(self, creation):
        """The line of the log when the file cannot be made, or cannot be removed."""
        return self.cannot_create if creation else self.cannot_remove


def feature(key, name):
    """The marker of a feature that is allowed."""
    path = files.MARKERS / name
    return Marker(key, path, True, f'warning|default|Failed to create file: "{path}"',
                  f'warning|default|Failed to remove file: "{path}"')


MARKERS = (feature("CameraEnabled", "camera_enabled"),
           feature("UserReportExportEnabled", "user_report_enabled"),
           Marker("DeveloperShellEnabled", files.DEVELOPER_SHELL_MARKER, False,
                  "warning|default|Failed to disable devel-su",
                  "warning|default|Failed to enable devel-su"))
