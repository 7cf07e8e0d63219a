# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Fixtures of all tests of the installed daemon."""

import contextlib

import pytest

from testbed.bus import Client


@pytest.fixture
def client():
    """Opens clients of the bus as any user; they are closed after the test."""
    with contextlib.ExitStack() as opened:
        yield lambda user="root", **keywords: opened.enter_context(Client(user, **keywords))


@pytest.fixture
def root(client):
    """A client of root."""
    return client("root")


@pytest.fixture
def guest(client):
    """A client of a user without rights."""
    return client("guest")
