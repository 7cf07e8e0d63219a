# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A write of a policy: its effects and their order."""

import pytest

from testbed import files
from testbed.bus import write_of
from testbed.daemon import changed, event, event_text
from testbed.files import CAMERA_MARKER, POLICY_FILE
from testbed.services.service import ERROR
from testbed.systemlog import FullSystemLog

CAMERA = "CameraEnabled"
USB_DEVICES = "UsbDevicesEnabled"


def test_new_value_is_stored_saved_recorded_and_announced(daemon):
    daemon.start()
    assert daemon.policy(CAMERA) is True
    daemon.forget()
    daemon.change(CAMERA, False)
    assert daemon.said() == changed(CAMERA, True, False)
    assert daemon.records() == [event_text(CAMERA, True, False)]
    assert daemon.logged() == []
    assert files.stored()[CAMERA] == "false"
    assert daemon.policy(CAMERA) is False


def test_same_value_is_saved_and_recorded_but_neither_enforced_nor_announced(daemon, device_sentry):
    device_sentry.appear()
    daemon.start()
    content, inode, _ = files.snapshot(POLICY_FILE)
    daemon.change(USB_DEVICES, True)
    assert daemon.said() == [event(USB_DEVICES, True, True), ("reply", True)]
    assert daemon.records() == [event_text(USB_DEVICES, True, True)]
    after = files.snapshot(POLICY_FILE)
    assert after[0] == content
    assert after[1] != inode
    assert daemon.logged() == []


@pytest.mark.parametrize("stored, signature, written, text", [
    (True, "i", 1, "1"), (True, "s", "true", "true"), (True, "s", "yes", "yes"),
    (False, "i", 0, "0"), (False, "s", "false", "false")])
def test_value_that_reads_the_same_counts_as_the_same(daemon, stored, signature, written, text):
    files.store({CAMERA: stored})
    daemon.start()
    assert daemon.set(CAMERA, written, signature) is True
    assert daemon.said() == [event(CAMERA, stored, text), ("reply", True)]
    assert daemon.policy(CAMERA) is stored  # the old value stays
    assert files.stored()[CAMERA] == files.text_of(stored)


def test_every_change_is_announced_once(daemon):
    daemon.start()
    for value in (False, True, True, False):
        daemon.change(CAMERA, value)
    assert daemon.said() == [
        *changed(CAMERA, True, False), *changed(CAMERA, False, True),
        event(CAMERA, True, True), ("reply", True), *changed(CAMERA, True, False)]


@pytest.mark.parametrize("key", ["cameraEnabled", "CAMERAENABLED", "1", "C\u0430meraEnabled",
                                 "Pellora::PolicyValue::CameraEnabled"])
def test_similar_key_is_another_one(daemon, key):
    daemon.start()
    daemon.change(key, False)
    assert daemon.policy(key) is False
    assert daemon.policy(CAMERA) is True
    assert CAMERA_MARKER.exists()
    assert (files.stored()[CAMERA], files.stored()[key]) == ("true", "false")


def test_file_is_written_before_the_system_log_and_that_before_all_else(daemon, root):
    daemon.start()
    with FullSystemLog() as log:
        write = root.call(write_of(CAMERA, False))
        log.wait_for_writer(daemon.pid)
        assert files.stored()[CAMERA] == "false"
        daemon.transcript.settle_bus()
        assert daemon.transcript.calls("sendEventStringAlt") == []
        assert daemon.transcript.signals("PolicyChanged") == []
        assert CAMERA_MARKER.exists()  # not enforced yet
        assert log.take().text == event_text(CAMERA, True, False)
        assert root.answer(write).body == (True,)
    assert not CAMERA_MARKER.exists()
    assert daemon.said() == changed(CAMERA, True, False)


def test_value_is_stored_before_it_is_enforced(daemon, usb_modes):
    # The service gets the whitelist with each task as long as it refuses it.
    usb_modes.fail(ERROR, "set_whitelisted_modes")
    usb_modes.appear()
    daemon.start()
    usb_modes.calls.clear()
    daemon.change("UsbMediaTransferEnabled", False)
    assert [call.arguments for call in usb_modes.calls if call.member == "set_whitelisted_modes"
            ] == [("developer_mode,developer_mode",)]
