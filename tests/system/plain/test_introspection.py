# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon does not read services' introspection data."""

from testbed.bus import SERVICE
from testbed.policies import KEYS


def test_no_service_is_introspected(services, daemon, transcript):
    daemon.start_observed()
    for key in KEYS[1:]:
        for value in (False, True):
            daemon.change(key, value)
    assert daemon.calls("org.kvt.RuntimeManager")
    assert {call.destination for call in transcript.calls("Introspect")} == {SERVICE}
