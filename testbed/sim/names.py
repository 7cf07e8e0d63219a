# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The parts of the device, by their words on the command line."""

# Applications that policies govern, and one that no policy governs.
APPLICATIONS = ("org.kvt.camera", "org.kvt.cameralockscreen", "org.kvt.browserstandalone",
                "org.kvt.browserpwa", "org.kvt.messages", "voicecall-ui", "org.kvt.clock")
IDENTIFIERS = {name.rpartition(".")[2]: name for name in sorted(
    APPLICATIONS, key=lambda name: name.rpartition(".")[2])}

SERVICES = {
    "audio": "opens and closes the microphone",
    "developer": "switches remote access for developers",
    "info": "tells whether the system is certified",
    "logs": "keeps audit events",
    "network": "shares the network connection over Wi-Fi",
    "runtime": "runs and terminates applications",
    "sandbox": "keeps applications on its denylist from starting",
    "storage": "shows, mounts and unmounts storage",
    "usb": "lets USB devices in or keeps them out",
    "usbmodes": "offers the modes of a USB cable",
}
USB_MODES = ("charging_only", "developer_mode", "mass_storage", "mtp_mode")
FAULTS = ("error", "silent", "slow", "wrong-type")
LONGEST_DELAY = 3600  # seconds by which an answer can be delayed
MEDIA = ("usb", "card")
CAMERA_MARKER = "/var/lib/govd/camera_enabled"

# The object that controls the device.
SERVICE = INTERFACE = "org.kvt.DeviceSimulator"
PATH = "/org/kvt/DeviceSimulator"
UNKNOWN = "org.kvt.DeviceSimulator.Error.Unknown"  # the order has an unknown name
REFUSED = "org.kvt.DeviceSimulator.Error.Refused"  # not possible in the device's present state


def application_word(identifier):
    """The word for an application; its identifier when it has no word."""
    return identifier.rpartition(".")[2] if identifier in APPLICATIONS else identifier
