# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A start, a write of each policy and a stop under valgrind: no invalid or uninitialised memory is
used, and none is leaked."""

from testbed.policies import KEYS


def test_no_errors_of_memory(daemon):
    daemon.wrapper = ["valgrind", "--error-exitcode=99", "--leak-check=full",
                      "--errors-for-leak-kinds=definite", "--log-file=/run/memcheck.log"]
    daemon.start_observed()
    for key in KEYS:
        daemon.change(key, False)
    assert daemon.switch_keys() == []
    assert daemon.switch("lens") is False
    assert daemon.stop() == 0, open("/run/memcheck.log", encoding="utf-8").read()
