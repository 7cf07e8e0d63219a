# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""An announcement of a lock is passed on with the effective value, if the lock has changed."""

import pytest

from testbed import files
from testbed.daemon import announcement
from testbed.files import CAMERA_MARKER

CAMERA, MICROPHONE = "CameraEnabled", "MicrophoneEnabled"


@pytest.fixture
def plugin(daemon, lock_plugin):
    """A plugin that can lock the camera, in a daemon that runs."""
    made = lock_plugin(CAMERA)
    daemon.start()
    return made


@pytest.mark.parametrize("thread", [False, True])
def test_lock_is_announced_as_false(daemon, plugin, thread):
    plugin.set_locked(CAMERA)
    plugin.announce(CAMERA, True, thread=thread)
    assert daemon.announcements() == [announcement(CAMERA, False)]


@pytest.mark.parametrize("stored", [True, False])
def test_freed_policy_is_announced_with_its_stored_value(daemon, plugin, stored):
    daemon.change(CAMERA, stored)
    plugin.set_locked(CAMERA)
    daemon.forget()
    plugin.set_locked()
    plugin.announce(CAMERA, False)
    assert daemon.announcements() == [announcement(CAMERA, stored)]


@pytest.mark.parametrize("thread", [False, True])
@pytest.mark.parametrize("locked", [False, True])
def test_announcement_that_does_not_apply_is_ignored(daemon, plugin, locked, thread):
    plugin.set_locked(*[CAMERA] * locked)
    plugin.announce(CAMERA, not locked, thread=thread)
    assert daemon.announcements() == []
    assert daemon.logged() == []


def test_announcement_without_a_change_is_passed_on(daemon, plugin):
    plugin.announce(CAMERA, False)
    plugin.announce(CAMERA, False)
    assert daemon.announcements() == 2 * [announcement(CAMERA, True)]


def test_announcement_of_another_source_is_passed_on(daemon, lock_plugin):
    one, two = (lock_plugin(CAMERA, file=f"{name}.so", name=name) for name in ("one", "two"))
    daemon.start()
    one.set_locked(CAMERA)
    two.set_locked(CAMERA)
    two.set_locked()
    two.announce(CAMERA, False)
    assert daemon.announcements() == []
    two.announce(CAMERA, True)  # it does not lock the policy itself, but another plugin does
    assert daemon.announcements() == [announcement(CAMERA, False)]
    daemon.forget()
    one.set_locked()
    one.announce(CAMERA, False)
    assert daemon.announcements() == [announcement(CAMERA, True)]


def test_key_that_is_not_listed_is_announced_as_free(daemon, plugin):
    plugin.set_locked(MICROPHONE)
    plugin.announce(MICROPHONE, False)
    assert daemon.announcements() == [announcement(MICROPHONE, True)]
    assert f"policyIsLocked {MICROPHONE}" not in plugin.calls()


def test_key_that_is_not_listed_is_ignored_when_locked(daemon, plugin):
    plugin.set_locked(MICROPHONE)
    plugin.announce(MICROPHONE, True)
    assert daemon.announcements() == []
    assert daemon.policy(MICROPHONE) is True


def test_freed_policy_without_its_switch_is_announced_as_false(daemon, switches, lock_plugin):
    switches.set_switch("privacy", [1], False)
    plugin = lock_plugin(CAMERA)
    daemon.start()
    plugin.announce(CAMERA, False)
    assert daemon.announcements() == [announcement(CAMERA, False)]


def test_freed_policy_without_a_value_is_not_announced(daemon, lock_plugin):
    """A signal without a value cannot be sent."""
    plugin = lock_plugin(CAMERA)
    plugin.set_locked(CAMERA)
    daemon.start()
    plugin.set_locked()
    plugin.announce(CAMERA, False)
    assert daemon.announcements() == []
    plugin.set_locked(CAMERA)
    plugin.announce(CAMERA, True)
    assert daemon.announcements() == [announcement(CAMERA, False)]


@pytest.mark.parametrize("locked", [True, False])
def test_nothing_is_enforced_or_written(daemon, lock_plugin, locked):
    """A lock changes the effective value, not the enforced one."""
    keys = (CAMERA, MICROPHONE, "UsbDevicesEnabled", "BrowserEnabled")
    plugin = lock_plugin(*keys)
    daemon.start()
    plugin.set_locked(*keys * (not locked))
    daemon.forget()
    before = files.snapshot(files.POLICY_FILE), files.snapshot(CAMERA_MARKER)
    assert CAMERA_MARKER.exists()
    plugin.set_locked(*keys * locked)
    for key in keys:
        plugin.announce(key, locked)
    assert daemon.said() == [announcement(key, not locked) for key in keys]
    assert daemon.logged() == []
    assert (files.snapshot(files.POLICY_FILE), files.snapshot(CAMERA_MARKER)) == before
