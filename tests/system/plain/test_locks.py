# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A locked policy reads false and refuses writes; the plugin is asked each time."""

import pytest
from jeepney import HeaderFields, MessageType

from testbed import files
from testbed.bus import read_of
from testbed.daemon import announcement
from testbed.files import CAMERA_MARKER

CAMERA, MICROPHONE = "CameraEnabled", "MicrophoneEnabled"
QUESTION = f"policyIsLocked {CAMERA}"


def test_locked_policy_reads_false(daemon, lock_plugin, root):
    plugin = lock_plugin(CAMERA)
    daemon.start()
    plugin.set_locked(CAMERA)
    assert root.ask(read_of(CAMERA)) == (("b", False),)
    assert daemon.policy(MICROPHONE) is True
    plugin.set_locked()
    assert daemon.policy(CAMERA) is True


def test_unstored_key_reads_false_while_locked(daemon, lock_plugin):
    lock_plugin("NoSuchPolicy").set_locked("NoSuchPolicy")
    daemon.start()
    assert daemon.policy("NoSuchPolicy") is False


@pytest.mark.parametrize("value", [False, True])
def test_write_is_refused_silently(daemon, lock_plugin, root, value):
    plugin = lock_plugin(CAMERA)
    daemon.start()
    daemon.change(CAMERA, not value)
    plugin.set_locked(CAMERA)
    daemon.forget()
    before = files.snapshot(files.POLICY_FILE), files.snapshot(CAMERA_MARKER)
    assert daemon.set(CAMERA, value) is False
    assert (files.snapshot(files.POLICY_FILE), files.snapshot(CAMERA_MARKER)) == before
    assert daemon.said() == [("reply", False)]
    assert daemon.logged() == []
    assert daemon.records() == []
    plugin.set_locked()
    assert daemon.policy(CAMERA) is not value


def test_lock_is_asked_anew_each_time(daemon, lock_plugin):
    plugin = lock_plugin(CAMERA)
    daemon.start()
    before = len(plugin.calls())
    for key in (CAMERA, CAMERA, CAMERA, MICROPHONE):
        assert daemon.policy(key) is True
    assert plugin.calls(before) == 3 * [QUESTION]


def test_second_source_is_asked_only_when_the_first_is_free(daemon, lock_plugin):
    """The order of the two differs between runs, so both orders are tried."""
    plugins = [lock_plugin(CAMERA, file=f"{name}.so", name=name) for name in ("one", "two")]
    daemon.start()

    def asked(*locking, reads):
        for plugin in plugins:
            plugin.set_locked(*[CAMERA] * (plugin in locking))
        before = sum(plugin.calls().count(QUESTION) for plugin in plugins)
        assert daemon.policy(CAMERA) is reads
        return sum(plugin.calls().count(QUESTION) for plugin in plugins) - before
    # One question when the first locks, two when only the second does.
    assert sorted(asked(plugin, reads=False) for plugin in plugins) == [1, 2]
    assert asked(reads=True) == 2


def test_key_that_is_not_listed_is_not_locked(daemon, lock_plugin):
    plugin = lock_plugin(MICROPHONE)
    plugin.set_locked(CAMERA)
    daemon.start()
    assert daemon.policy(CAMERA) is True
    daemon.change(CAMERA, False)
    assert QUESTION not in plugin.calls()


def test_key_that_is_listed_twice_is_locked_like_once(daemon, lock_plugin):
    plugin = lock_plugin(CAMERA, CAMERA)
    daemon.start()
    before = len(plugin.calls())
    assert daemon.policy(CAMERA) is True
    assert plugin.calls(before) == 2 * [QUESTION]
    plugin.set_locked(CAMERA)
    assert daemon.policy(CAMERA) is False
    assert plugin.calls(before) == 3 * [QUESTION]


def test_key_that_no_policy_has_does_no_harm(daemon, lock_plugin):
    plugin = lock_plugin("NoSuchPolicy", "", "cameraenabled")
    plugin.set_locked("NoSuchPolicy", "cameraenabled")
    daemon.start()
    assert daemon.policy(CAMERA) is True
    assert not [call for call in plugin.calls() if call.startswith("policyIsLocked")]


def test_policy_that_is_free_again_takes_changes(daemon, lock_plugin):
    plugin = lock_plugin(CAMERA)
    daemon.start()
    plugin.set_locked(CAMERA)
    assert daemon.set(CAMERA, False) is False
    plugin.set_locked()
    daemon.forget()
    daemon.change(CAMERA, False)
    assert daemon.announcements() == [announcement(CAMERA, False)]
    assert not CAMERA_MARKER.exists()


def test_policy_locked_since_start_has_no_value(daemon, lock_plugin, root):
    """The default was refused like any other write, so a read gets no reply."""
    plugin = lock_plugin(CAMERA)
    plugin.set_locked(CAMERA)
    daemon.start()
    assert daemon.policy(CAMERA) is False
    assert CAMERA not in files.stored()
    plugin.set_locked()
    daemon.forget()
    unanswered = root.call(read_of(CAMERA))
    answered = root.send_and_get_reply(read_of(MICROPHONE))  # replies come in order
    assert answered.header.message_type == MessageType.method_return
    assert answered.header.fields[HeaderFields.reply_serial] != unanswered
    assert daemon.said() == [("reply", True)]
    daemon.change(CAMERA, True)
    assert daemon.policy(CAMERA) is True


def test_policy_locked_since_start_is_enforced_as_off(daemon, lock_plugin, audio_policy):
    audio_policy.appear()
    lock_plugin(CAMERA, MICROPHONE).set_locked(CAMERA, MICROPHONE)
    files.write(CAMERA_MARKER, "")
    files.store({MICROPHONE: True})
    daemon.start_observed()
    assert not CAMERA_MARKER.exists()
    # Not for the stored value, which was refused, but in the pass over all policies.
    call, = daemon.calls("org.freedesktop.ohm.mdm")
    assert call[-2:] == ("microphone", "disabled")


def test_stored_value_of_a_locked_policy_is_not_touched_at_start(daemon, lock_plugin):
    lock_plugin(CAMERA, MICROPHONE).set_locked(CAMERA, MICROPHONE)
    files.store({MICROPHONE: True})
    daemon.start_observed()
    values = files.stored()
    assert values[MICROPHONE] == values["BrowserEnabled"] == "true"
    assert CAMERA not in values
    assert not [line for line in daemon.logged() if "Failed to save" in line]


def test_no_policy_is_not_set_up(daemon, lock_plugin):
    """Number 0 gets a default, for which its lock is asked once, but the pass over all policies
    leaves it out."""
    plugin = lock_plugin("NoPolicy", CAMERA)
    daemon.start_observed()
    assert plugin.calls().count("policyIsLocked NoPolicy") == 1
    assert plugin.calls().count(QUESTION) == 2
