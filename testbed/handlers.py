# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What the handlers of each policy do to the services, one row for each policy and service."""

from dataclasses import dataclass

from testbed.services import small

# Object and interface that the handlers call; a service can have its state on another interface.
TARGETS = {
    small.ApplicationSandbox: ("/org/pelloraos/appjaild1", "org.pelloraos.appjaild1"),
    small.AudioPolicy: ("/org/freedesktop/ohm/mdm", "org.freedesktop.ohm.mdm"),
    small.DeveloperMode: ("/", "org.kvt.developermode"),
    small.DeviceSentry: ("/org/brinos/DeviceSentry1/Usb", "org.freedesktop.DBus.Properties"),
    small.NetworkTechnology: ("/net/connman/technology/wifi", "net.connman.Technology"),
    small.RuntimeManager: ("/org/kvt/RuntimeManager/Control1", "org.kvt.RuntimeManager.Control1"),
    small.UsbModes: ("/com/meego/usb_moded", "com.meego.usb_moded"),
}
RUNNING = ("org.kvt.camera", "org.kvt.browserpwa", "org.kvt.browserstandalone", "org.kvt.messages")
DIRECT, WATCHED = "direct", "watched"  # at once; as soon as the service is on the bus


@dataclass(frozen=True)
class Handler:
    """What a policy does to a service. Pairs stand in the order off, on."""
    key: str
    service: type
    calls_of: tuple  # the calls, each (member, signature, argument, ...)
    failure_of: tuple  # the line of the log for each call that fails
    attribute: str  # of the service's class, which holds its state
    state_of: tuple  # with all other policies on
    routes: tuple = (WATCHED,)  # each makes the same calls

    def __str__(self):
        return f"{self.key}-{self.service.__name__}"

    def calls(self, value, route=None):
        """The calls, as Daemon.calls() has them: those of one route or, if none is named, all."""
        calls = [(self.service.NAME, *TARGETS[self.service], *call)
                 for call in self.calls_of[value]]
        return calls * (1 if route else len(self.routes))

    def failures(self, value, errors):
        """The log lines when the calls end in these errors, each a name and a text."""
        return [self.failure_of[value].format(argument=call[-1], name=name, text=text)
                for call, (name, text) in zip(self.calls(value), errors)]

    def state(self, service):
        """The present state of the service."""
        return getattr(service, self.attribute)


def denylist(key, *applications):
    """The application sandbox puts these on its denylist."""
    quoted = ", ".join(f'"{name}"' for name in applications)
    return Handler(key, small.ApplicationSandbox, (
        [("AddToGlobalDenylist", "as", list(applications))],
        [("RemoveFromGlobalDenylist", "as", list(applications))]), (
        f"warning|default|Failed to add packages to global denylist: ({quoted})",
        f"warning|default|Failed to remove packages from global denylist: ({quoted})"),
        "denylist", (set(applications), set()))


def termination(key, *applications):
    """The runtime manager ends these applications, one by one; it starts none again."""
    others = [name for name in RUNNING if name not in applications]
    return Handler(key, small.RuntimeManager,
                   ([("Terminate", "s", name) for name in applications], []),
                   ('info|default|Terminating "{argument}" "{text}"', None),
                   "running", (others, others), (DIRECT,))


def usb_mode(key, mode):
    """The USB-mode service offers this mode or hides it."""
    modes = {"developer_mode", "mtp_mode"}
    return Handler(key, small.UsbModes, (
        [("set_whitelisted", "sb", mode, False)], [("set_whitelisted", "sb", mode, True)]), (
        f'warning|default|Failed to disable USB mode "{mode}" "{{name}}"',
        f'warning|default|Failed to enable USB mode "{mode}" "{{name}}"'),
        "whitelist", (modes - {mode}, modes))


MICROPHONE = Handler(
    "MicrophoneEnabled", small.AudioPolicy,
    ([("Set", "ss", "microphone", "disabled")], [("Set", "ss", "microphone", "enabled")]),
    ('warning|default|Failed to disable microphone "{name}"',
     'warning|default|Failed to enable microphone "{name}"'),
    "microphone", (False, True))
TETHERING = Handler(
    "InternetSharingEnabled", small.NetworkTechnology,
    ([("SetProperty", "sv", "Tethering", False)], []),
    ('warning|default|Failed to disable internet sharing: QDBusError("{name}", "{text}")', None),
    "tethering", (False, False))
REMOTE_ACCESS = Handler(
    "DeveloperModeEnabled", small.DeveloperMode, ([("SetRemoteConnectionEnabled", "b", False)], []),
    ("warning|default|Failed to disable remote access in developer mode.", None),
    "remote_connection", (False, False), (DIRECT, WATCHED))
USB_DEVICES = Handler(
    "UsbDevicesEnabled", small.DeviceSentry,
    tuple([("Set", "ssv", "org.brinos.DeviceSentry1.UsbManager", "Enabled", value)]
          for value in (False, True)),
    2 * ("warning|default|Failed to disable USB devices connection.",),
    "value", (False, True), (DIRECT,))

HANDLERS = (  # those of one service in the order of the policies' numbers
    denylist("CameraEnabled", "org.kvt.cameralockscreen", "org.kvt.camera"),
    TETHERING,
    usb_mode("UsbDeveloperModeEnabled", "developer_mode"),
    usb_mode("UsbMediaTransferEnabled", "mtp_mode"),
    denylist("MicrophoneEnabled"),
    MICROPHONE,
    termination("BrowserEnabled", "org.kvt.browserstandalone", "org.kvt.browserpwa"),
    denylist("BrowserEnabled", "org.kvt.browserstandalone", "org.kvt.browserpwa"),
    denylist("VoiceCallsEnabled", "voicecall-ui"),
    termination("MessagesEnabled", "org.kvt.messages"),
    denylist("MessagesEnabled", "org.kvt.messages"),
    denylist("UserReportExportEnabled"),
    REMOTE_ACCESS,
    usb_mode("DeveloperModeEnabled", "developer_mode"),
    USB_DEVICES,
)


def calls_of(key, value, route):
    """The calls that enforce a policy on one route."""
    return [call for handler in HANDLERS if handler.key == key and route in handler.routes
            for call in handler.calls(value, route)]


def one_pass(values, service):
    """The calls to a service when all policies are enforced once; those without a value are on."""
    return [call for handler in HANDLERS if handler.service is service
            for call in handler.calls(values.get(handler.key, True))]
