# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The USB-mode service gets all allowed modes once, and single ones from then on."""

import itertools

import pytest

from testbed import files
from testbed.handlers import one_pass, usb_mode
from testbed.services.service import DEATH, ERROR, answer, error, late
from testbed.services.small import UsbModes

DEVELOPER, MEDIA = "developer_mode", "mtp_mode"
KEYS = USB_DEVELOPER_MODE, USB_MEDIA_TRANSFER, DEVELOPER_MODE = (
    "UsbDeveloperModeEnabled", "UsbMediaTransferEnabled", "DeveloperModeEnabled")
MODES = dict(zip(KEYS, (DEVELOPER, MEDIA, DEVELOPER)))
SET_ALL = "set_whitelisted_modes"
UNKNOWN = "org.freedesktop.DBus.Error.ServiceUnknown"


def set_all(modes):
    """The call with the full list: the modes joined by commas."""
    return ("com.meego.usb_moded", "/com/meego/usb_moded", "com.meego.usb_moded", SET_ALL, "s",
            modes)


def set_one(key, value):
    """The calls that carry out one policy."""
    return usb_mode(key, MODES[key]).calls(value)


def store(*values):
    """Stores these values of the three policies for the next start, and returns them."""
    stored = dict(zip(KEYS, values))
    files.store(stored)
    return stored


def sent_modes(daemon):
    """The modes of the only full list that was sent, in alphabetical order."""
    call, = [call for call in daemon.calls() if call[3] == SET_ALL]
    assert call == set_all(call[-1])
    return sorted(call[-1].split(","))


def list_failure(name):
    """The log line when the full list cannot be sent."""
    return f'warning|default|Failed to update USB mode whitelist "{name}"'


def mode_failure(key, value, name):
    """The lines of the log when a mode cannot be sent."""
    return usb_mode(key, MODES[key]).failures(value, [(name, "")])


@pytest.mark.parametrize("values", itertools.product([False, True], repeat=3), ids=str)
def test_whitelist_has_the_allowed_modes(daemon, usb_modes, values):
    """The list contains a mode twice if two policies allow it."""
    allowed = [mode for mode, value in zip(MODES.values(), values) if value]
    store(*values)
    daemon.start()
    usb_modes.appear()
    assert daemon.calls()[0][3] == SET_ALL
    assert sent_modes(daemon) == (sorted(allowed) or [""])
    assert daemon.logged() == []


def test_locked_policy_counts_as_forbidden(daemon, usb_modes, lock_plugin):
    lock = lock_plugin(USB_MEDIA_TRANSFER, USB_DEVELOPER_MODE)
    daemon.start_observed()
    lock.set_locked(USB_MEDIA_TRANSFER)
    usb_modes.appear()
    assert sent_modes(daemon) == [DEVELOPER, DEVELOPER]


def test_policy_without_its_switch_counts_as_forbidden(daemon, usb_modes, switches):
    switches.set_switch("usb", [13, 14], True)
    daemon.start_observed()
    switches.set_entries("usb", value=False)
    usb_modes.appear()
    assert sent_modes(daemon) == [DEVELOPER]


def test_whitelist_is_sent_once_and_before_the_modes(daemon, usb_modes):
    """The tasks of the start follow it: for the stored values, and for all policies again."""
    values = store(False, True, False)
    daemon.start()
    usb_modes.appear()
    assert daemon.calls() == [set_all(MEDIA)] + 2 * one_pass(values, UsbModes)
    daemon.forget()
    daemon.change(USB_MEDIA_TRANSFER, False)
    daemon.change(USB_MEDIA_TRANSFER, True)
    assert daemon.calls() == set_one(USB_MEDIA_TRANSFER, False) + set_one(USB_MEDIA_TRANSFER, True)


@pytest.mark.parametrize("value, modes", [(True, DEVELOPER), (False, "")])
def test_whitelist_at_start_has_the_known_values(daemon, usb_modes, value, modes):
    """The first policy is enforced while the others have no value; their modes follow."""
    usb_modes.appear()
    values = store(value, True, True)
    daemon.start_observed()
    assert daemon.calls(UsbModes.NAME) == [set_all(modes)] + 2 * one_pass(values, UsbModes)


def test_restarted_service_gets_no_whitelist(daemon, usb_modes):
    usb_modes.appear()
    daemon.start()
    usb_modes.leave()
    daemon.forget()
    usb_modes.appear()
    daemon.change(USB_MEDIA_TRANSFER, False)
    assert daemon.calls() == set_one(USB_MEDIA_TRANSFER, False)


def test_failed_mode_does_not_send_the_whitelist_again(daemon, usb_modes):
    usb_modes.appear()
    daemon.start_observed()
    assert len(sent_modes(daemon)) == 1
    daemon.forget()
    usb_modes.fail(ERROR, "set_whitelisted")
    daemon.change(USB_MEDIA_TRANSFER, False)
    usb_modes.mend()
    daemon.change(USB_MEDIA_TRANSFER, True)
    assert daemon.calls() == set_one(USB_MEDIA_TRANSFER, False) + set_one(USB_MEDIA_TRANSFER, True)


def test_last_change_decides_about_a_shared_mode(daemon, usb_modes):
    """The mode is off although another policy allows it, and on although another forbids it."""
    usb_modes.appear()
    daemon.start()
    daemon.change(DEVELOPER_MODE, False)
    assert daemon.calls(UsbModes.NAME) == set_one(DEVELOPER_MODE, False)
    assert usb_modes.whitelist == {MEDIA}
    daemon.change(USB_DEVELOPER_MODE, False)
    daemon.forget()
    daemon.change(USB_DEVELOPER_MODE, True)
    assert daemon.calls(UsbModes.NAME) == set_one(USB_DEVELOPER_MODE, True)
    assert usb_modes.whitelist == {DEVELOPER, MEDIA}


def test_whitelist_is_sent_again_after_a_failure(daemon, usb_modes):
    """The list is sent before each task until the service accepts it; the tasks run in any case."""
    usb_modes.fail(error("org.example.Refused"), SET_ALL)
    values = store(False, True, False)
    daemon.start()
    usb_modes.appear()
    tasks = 2 * one_pass(values, UsbModes)
    assert daemon.calls() == [call for task in tasks for call in (set_all(MEDIA), task)]
    assert daemon.logged() == 6 * [list_failure("org.example.Refused")]
    daemon.forget()
    usb_modes.mend()
    daemon.change(USB_DEVELOPER_MODE, True)
    daemon.change(USB_MEDIA_TRANSFER, False)
    assert sent_modes(daemon) == [DEVELOPER, MEDIA]
    assert daemon.calls()[1:] == (set_one(USB_DEVELOPER_MODE, True)
                                  + set_one(USB_MEDIA_TRANSFER, False))
    assert daemon.logged() == []


def test_death_of_the_service_is_a_failure_of_the_whitelist(daemon, usb_modes):
    usb_modes.fail(DEATH, SET_ALL)
    daemon.start()
    usb_modes.appear()
    lines = [line for key in 2 * KEYS
             for line in (list_failure(UNKNOWN), *mode_failure(key, True, UNKNOWN))]
    assert daemon.logged() == [list_failure("org.freedesktop.DBus.Error.NoReply"), *lines[1:]]


@pytest.mark.parametrize("fault", [late(0.2), answer("i", 7), answer("b", False),
                                   answer("as", ["a", "b"])])
def test_odd_answer_to_the_whitelist_is_success(daemon, usb_modes, fault):
    usb_modes.fail(fault, SET_ALL)
    store(False, True, False)
    daemon.start()
    usb_modes.appear()
    assert sent_modes(daemon) == [MEDIA]
    assert daemon.logged() == []


def test_service_that_has_left_without_its_whitelist_fails_twice(daemon, usb_modes):
    usb_modes.fail(ERROR, SET_ALL)
    usb_modes.appear()
    daemon.start()
    usb_modes.leave()
    daemon.forget()
    daemon.change(USB_MEDIA_TRANSFER, False)
    assert daemon.logged() == [list_failure(UNKNOWN),
                               *mode_failure(USB_MEDIA_TRANSFER, False, UNKNOWN)]
    assert sent_modes(daemon) == [DEVELOPER, DEVELOPER]
