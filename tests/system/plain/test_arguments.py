# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon takes no arguments: any is answered before a file or the bus is touched."""

import re
import subprocess

import pytest

TOUCH = re.compile(r".*(?:/etc/policy|/etc/govd|/var/lib|/run/dbus|socket\().*")


@pytest.mark.parametrize("arguments, code", [
    (["--help"], 0), (["--version"], 0), (["--halp"], 2), (["-v"], 2), ([""], 2), (["start"], 2),
    (["start", "--help"], 2), (["-qmljsdebugger=port:1"], 2)])
def test_arguments(tmp_path, arguments, code):
    trace = tmp_path / "trace"
    # The leak sanitizer does not work in a process that strace traces.
    done = subprocess.run(["strace", "-f", "-o", trace, "-e", "trace=file,network",
                           "-E", "ASAN_OPTIONS=detect_leaks=0", "timeout", "5",
                           "/usr/sbin/govd", *arguments], text=True, capture_output=True,
                          check=False)
    assert done.returncode == code
    told, silent = (done.stdout, done.stderr) if code == 0 else (done.stderr, done.stdout)
    assert "govd" in told and silent == ""
    assert not TOUCH.findall(trace.read_text())
