# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon gives back the memory of what it was sent."""

import pytest

from testbed.bus import Client, write_of
from testbed.processes import resident

TEXT = "x" * (1 << 20)
WRITES = 40


@pytest.mark.parametrize("signature, value", [
    ("s", TEXT), ("as", [TEXT]), ("ay", TEXT.encode()), ("(s)", (TEXT,)), ("a{ss}", {"key": TEXT}),
    ("v", ("s", TEXT)), ("a(s)", [(TEXT,)]), ("a{sv}", {"key": ("(s)", (TEXT,))})])
def test_values(daemon, signature, value):
    with Client("mdm") as agent:
        for _ in range(WRITES):
            agent.ask(write_of("CameraEnabled", value, signature))
    assert resident(daemon) < WRITES / 2 * len(TEXT)
