# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""govctl can: the daemon's rules and the bus policy together."""

import pytest

from testbed import govctl

pytestmark = pytest.mark.bus


@pytest.mark.parametrize("user, groups, allowed, bus", [
    ("root", None, True, True),
    ("mdm", None, True, True),
    ("mdm", [], False, False),  # became a member after its login
    ("operator", None, True, True),
    ("deputy", None, False, True),
    ("guest", None, False, False),
    ("guest", ["pellora-mdm"], False, True)])  # is no longer a member
def test_answer_is_what_happens(lasting_daemon, user, groups, allowed, bus):
    answer = govctl.run("can --json", user=user, groups=groups)
    assert (answer.code, answer.result["allowed"], answer.result["bus"]) == (
        0 if allowed else 1, allowed, bus)
    change = govctl.run("set CameraEnabled off", user=user, groups=groups)
    assert change.code == (0 if allowed else 4)


def test_refusals_have_own_texts(lasting_daemon):
    by_bus = govctl.run("set CameraEnabled off", user="mdm", groups=[])
    assert by_bus.err == ("govctl: the system bus does not let this process change anything;"
                          ' "govctl can" says who may\n')
    by_daemon = govctl.run("set CameraEnabled off", user="guest", groups=["pellora-mdm"])
    assert by_daemon.err == ("govctl: this user may not change anything;"
                             ' "govctl can" says who may\n')
