# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon frees the memory of messages that it was sent."""

import pytest

from testbed import unit
from testbed.bus import Client, write_of
from testbed.processes import resident

MIB = 1 << 20
TEXT = "x" * MIB
WRITES = 60

# Values of a mebibyte, by their signature.
VALUES = {"s": TEXT, "as": [TEXT], "(s)": (TEXT,), "a(s)": [(TEXT,)], "a{ss}": {"key": TEXT},
          "a{sv}": {"key": ("(s)", (TEXT,))}}


@pytest.mark.parametrize("signature", VALUES)
def test_values(lasting_daemon, signature):
    write = write_of("CameraEnabled", VALUES[signature], signature)
    with Client("mdm") as agent:
        for _ in range(WRITES):
            assert agent.ask(write) == (True,)
    assert resident(unit.main_pid()) < WRITES * MIB * 3 / 4
