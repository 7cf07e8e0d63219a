# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The simulated device: all services, its ports, and the marker file of the camera."""

import datetime
import math
from dataclasses import dataclass

import dbus

from testbed.services import small
from testbed.services.service import ERROR, SILENCE, Refusal, answer, late
from testbed.services.storage import Storage
from testbed.sim import names
from testbed.sim.facts import changes_between, facts_of
from testbed.sim.markerfile import MarkerFile
from testbed.sim.ports import Ports
from testbed.sim.text import quoted

KINDS = {"audio": small.AudioPolicy, "developer": small.DeveloperMode,
         "info": small.DeviceInformation, "logs": small.SystemLogs,
         "network": small.NetworkTechnology, "runtime": small.RuntimeManager,
         "sandbox": small.ApplicationSandbox, "storage": Storage, "usb": small.DeviceSentry,
         "usbmodes": small.UsbModes}
FAULTS = {"none": lambda seconds: None, "error": lambda seconds: ERROR,
          "silent": lambda seconds: SILENCE, "slow": late,
          "wrong-type": lambda seconds: answer("i", 42)}
SHOWN_EVENTS = 5  # of the last audit events; the state goes over the bus at each change


@dataclass(frozen=True)
class Happening:
    """A call, an order or a change of the marker file, with what it changed."""
    time: datetime.datetime
    origin: str  # the word of the called service, or "person" for an order, or "file"
    path: str  # of the object that was called, or of the file
    method: str = ""  # the called method or the order; empty for a file
    arguments: tuple = ()
    error: str = ""  # the name of the error reply, or "silent" for no reply
    changes: tuple = ()  # rows of changes_between()


class Device:
    """The device, which is on the bus from appear() on. `changed` is called after each change,
    `happened` with each Happening."""

    def __init__(self):
        self.changed = lambda: None
        self.happened = lambda happening: None
        self._camera = MarkerFile(names.CAMERA_MARKER, self._notice_marker)
        self._furnish()

    def _furnish(self):
        self.services = {word: KINDS[word]() for word in names.SERVICES}
        self.ports = Ports(self.services["storage"])
        self._faults = dict.fromkeys(self.services, "none")
        for word, service in self.services.items():
            service.changed = self._tell
            service.called = lambda call, word=word: self.report(word, call)

    def appear(self):
        """Makes all services appear. Raises NameTaken."""
        for service in self.services.values():
            service.appear()
        self._reported = facts_of(self.state())

    def reset(self):
        """Restores the state of the start, except the marker file, with services that have just
        appeared. Raises NameTaken."""
        for service in self.services.values():
            service.leave()
        self._furnish()
        for service in self.services.values():
            service.appear()
        self._tell()

    def service(self, word):
        """The service with this word. Raises Refusal."""
        if word not in self.services:
            raise Refusal(f"there is no service {quoted(word)}", names.UNKNOWN)
        return self.services[word]

    def set_present(self, word, is_present):
        """Makes a service appear or leave. Raises NameTaken, Refusal."""
        service = self.service(word)
        service.appear() if is_present else service.leave()
        self._tell()

    def set_fault(self, word, fault, seconds):
        """Applies a fault to all calls of a service. Raises Refusal."""
        service = self.service(word)
        if not 0 <= seconds <= names.LONGEST_DELAY:  # refuses NaN too
            raise Refusal(f"a delay is {names.LONGEST_DELAY} seconds at most", names.UNKNOWN)
        if fault not in FAULTS:
            raise Refusal(f"there is no fault {quoted(fault)}", names.UNKNOWN)
        service.mend()
        if fault != "none":
            service.fail(FAULTS[fault](seconds))
        self._faults[word] = f"{fault} {seconds:g}" if fault == "slow" else str(fault)
        self._tell()

    def launch(self, word):
        """Starts an application. Raises Refusal."""
        if word not in names.IDENTIFIERS:
            raise Refusal(f"there is no application {quoted(word)}", names.UNKNOWN)
        self.services["runtime"].start(names.IDENTIFIERS[word])

    def state(self):
        """The state of the device as a tree of plain values."""
        of = self.services
        return {
            "camera": self._camera.is_there,
            "microphone": of["audio"].microphone,
            "usb": of["usb"].value,
            "usbModes": sorted(of["usbmodes"].whitelist),
            "denylist": sorted(of["sandbox"].denylist),
            "tethering": of["network"].tethering,
            "remoteAccess": of["developer"].remote_connection,
            "certified": of["info"].value,
            "running": [str(application) for application in of["runtime"].running],
            "storage": [{"kind": kind, "label": label, "mounted": place != "", "mountPoint": place}
                        for kind, label, place in self.ports.media()],
            "services": [{"word": word, "name": service.NAME, "present": service.present,
                          "fault": self._faults[word]} for word, service in of.items()],
            "events": [{"kind": kind, "level": level, "text": text}
                       for kind, level, text in of["logs"].events[-SHOWN_EVENTS:]],
            "eventCount": len(of["logs"].events),
        }

    def report(self, origin, call):
        """Reports a call or an order, with all changes since the last report."""
        is_silent = self._faults.get(origin) == "silent"
        self._report(origin, call.path, str(call.member), plain(call.arguments),
                     "silent" if is_silent else call.error)

    def _notice_marker(self):
        self._tell()
        self._report("file", self._camera.path)

    def _report(self, origin, path, *call):
        now = facts_of(self.state())
        changes = changes_between(self._reported, now)
        self._reported = now
        time = datetime.datetime.now(datetime.timezone.utc)
        self.happened(Happening(time, origin, str(path), *call, changes=changes))

    def _tell(self):
        self.changed()


def plain(value):
    """A D-Bus value as a plain value for JSON."""
    if isinstance(value, dict):
        return {str(key): plain(content) for key, content in value.items()}
    if isinstance(value, (list, tuple)):
        return [plain(member) for member in value]
    if isinstance(value, float):
        return int(value) if value.is_integer() else float(value) if math.isfinite(value) else None
    if isinstance(value, dbus.Boolean):
        return bool(value)
    return value if isinstance(value, (int, str)) else None
