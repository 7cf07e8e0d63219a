# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A service that never answers: the change is accepted, the daemon goes on, and the service gets
the next change when it answers again. The daemon reads no introspection data, which would cost
another time-out, or memory without limit.

Normally the silent service leaves the bus after the call. With GOVD_HOLD it stays, and the daemon
waits for the bus library's time-out.
"""

import os

import pytest

from testbed import files
from testbed.bus import write_of
from testbed.services.service import SILENCE

LONG = "GOVD_HOLD" in os.environ


@pytest.mark.parametrize("name, policy, member", [
    ("audio_policy", "MicrophoneEnabled", "Set"),
    ("usb_modes", "UsbDeveloperModeEnabled", "set_whitelisted"),
    ("application_sandbox", "VoiceCallsEnabled", "AddToGlobalDenylist"),
    ("network", "InternetSharingEnabled", "SetProperty"),
    ("developer_mode", "DeveloperModeEnabled", "SetRemoteConnectionEnabled"),
    ("device_sentry", "UsbDevicesEnabled", "Set"),
    ("runtime_manager", "MessagesEnabled", "Terminate"),
])
def test_daemon_goes_on(daemon, transcript, root, request, name, policy, member):
    service = request.getfixturevalue(name)
    service.appear()
    daemon.start()
    service.fail(SILENCE)
    write = root.call(write_of(policy, False))
    transcript.wait_for(lambda message: message.kind == "call" and message.member == member
                        and message.destination == service.NAME)
    if not LONG:
        service.leave()
    # The sum of the time-outs of all calls of one change and of all waiting tasks.
    assert root.answer(write, 3600).body == (True,)
    assert daemon.policy(policy) is False
    assert files.stored()[policy] == "false"
    service.mend()
    service.calls.clear()
    service.appear()
    daemon.change(policy, True)
    daemon.change(policy, False)
    assert member in [call.member for call in service.calls]
    assert daemon.running
    assert not [call for call in transcript.calls("Introspect")
                if call.destination == service.NAME]
