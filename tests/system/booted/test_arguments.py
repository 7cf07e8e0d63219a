# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon takes no arguments: any is answered before a file or the bus is touched."""

import re
import subprocess

import pytest

GOVD = "/usr/sbin/govd"
TOUCH = re.compile(r".*(?:/etc/policy|/etc/govd|/var/lib|/run/dbus|socket\().*")


@pytest.fixture
def run(tmp_path):
    """Runs the daemon with arguments; `touched` of the result lists what it has touched."""
    def run_with(*arguments):
        trace = tmp_path / "trace"
        done = subprocess.run(
            ["strace", "-f", "-o", trace, "-e", "trace=file,network",
             "timeout", "5", GOVD, *arguments], text=True, capture_output=True, check=False)
        done.touched = TOUCH.findall(trace.read_text())
        return done
    return run_with


@pytest.mark.parametrize("argument", ["--help", "--version"])
def test_question(run, argument):
    done = run(argument)
    assert (done.returncode, done.stderr) == (0, "")
    assert "govd" in done.stdout
    assert not done.touched


@pytest.mark.parametrize("arguments", [["--halp"], ["-v"], [""], ["start"], ["start", "--help"],
                                       ["-qmljsdebugger=port:1"]])
def test_mistake(run, arguments):
    done = run(*arguments)
    assert (done.returncode, done.stdout) == (2, "")
    assert "govd" in done.stderr
    assert not done.touched
