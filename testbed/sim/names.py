# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What the device is made of, by the words that the command line has for it."""

# Those that policies govern, and one that none does.
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
LONGEST_DELAY = 3600  # seconds that an answer can be late
MEDIA = ("usb", "card")
CAMERA_MARKER = "/var/lib/govd/camera_enabled"

# The object by which the device is seen and handled.
SERVICE = INTERFACE = "org.kvt.DeviceSimulator"
PATH = "/org/kvt/DeviceSimulator"
UNKNOWN = "org.kvt.DeviceSimulator.Error.Unknown"  # the order names what the device does not know
REFUSED = "org.kvt.DeviceSimulator.Error.Refused"  # the device cannot do it as it is now


def application_word(identifier):
    """The word for an application; another one keeps its identifier."""
    return identifier.rpartition(".")[2] if identifier in APPLICATIONS else identifier
