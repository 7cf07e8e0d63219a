# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The services that enforce policies or that the daemon asks, one class for each."""

import dbus

from testbed.services.service import PROPERTIES, Refusal, Service, on_loop


class AudioPolicy(Service):
    """Switches the microphone on and off."""
    NAME = "org.freedesktop.ohm.mdm"

    def __init__(self):
        super().__init__()
        self.microphone = True

    def create(self):
        self.add_object("/org/freedesktop/ohm/mdm", self.NAME, [("Set", "ss", "", self._set)])

    def _set(self, item, value):
        if item != "microphone":
            raise Refusal(f"There is no {item}")
        if value not in ("enabled", "disabled"):
            raise Refusal(f"{value} is no state")
        self.microphone = value == "enabled"
        self.changed()


class ApplicationSandbox(Service):
    """Keeps applications on its denylist from running."""
    NAME = "org.pelloraos.appjaild1"

    def __init__(self):
        super().__init__()
        self.denylist = set()

    def create(self):
        self.add_object("/org/pelloraos/appjaild1", self.NAME, [
            ("AddToGlobalDenylist", "as", "", self._add),
            ("RemoveFromGlobalDenylist", "as", "", self._remove)])

    def _add(self, applications):
        self._replace(applications, self.denylist | set(map(str, applications)))

    def _remove(self, applications):
        self._replace(applications, self.denylist - set(map(str, applications)))

    def _replace(self, named, denylist):
        if "" in named:
            raise Refusal("An application has an identifier")
        self.denylist = denylist
        self.changed()


class UsbModes(Service):
    """Offers a computer at the USB port the modes on its whitelist."""
    NAME = "com.meego.usb_moded"
    MODES = ("charging_only", "developer_mode", "mass_storage", "mtp_mode")

    def __init__(self):
        super().__init__()
        self.whitelist = set(self.MODES)

    def create(self):
        self.add_object("/com/meego/usb_moded", self.NAME, [
            ("set_whitelisted_modes", "s", "", self._set_all),
            ("set_whitelisted", "sb", "", self._set_one)])

    def _set_all(self, joined):
        self._replace({str(mode) for mode in joined.split(",") if mode})

    def _set_one(self, mode, is_whitelisted):
        modes = {str(mode)}
        self._check(modes)
        self._replace(self.whitelist | modes if is_whitelisted else self.whitelist - modes)

    def _replace(self, modes):
        self._check(modes)
        self.whitelist = modes
        self.changed()

    def _check(self, modes):
        if not modes <= set(self.MODES):
            raise Refusal("There is no such mode")


class NetworkTechnology(Service):
    """The wireless network of the connection manager, and its tethering."""
    NAME = "net.connman"
    PATH, INTERFACE = "/net/connman/technology/wifi", "net.connman.Technology"
    WRITABLE = ("Powered", "Tethering", "TetheringIdentifier", "TetheringPassphrase")

    def __init__(self):
        super().__init__()
        self.properties = {
            "Name": dbus.String("WiFi"), "Type": dbus.String("wifi"),
            "Powered": dbus.Boolean(True), "Connected": dbus.Boolean(False),
            "Tethering": dbus.Boolean(False), "TetheringIdentifier": dbus.String(""),
            "TetheringPassphrase": dbus.String("")}

    def create(self):
        self.add_object(self.PATH, self.INTERFACE, [
            ("GetProperties", "", "a{sv}", lambda: self.properties),
            ("SetProperty", "sv", "", self._set)])

    @property
    def tethering(self):
        """Whether the device is a hotspot."""
        return bool(self.properties["Tethering"])

    @on_loop
    def set_tethering(self, is_tethering):
        """Switches the hotspot on or off, as the device's user does."""
        self._set("Tethering", dbus.Boolean(is_tethering))

    def _set(self, name, value):
        if name not in self.WRITABLE:
            raise Refusal(f"{name} cannot be set", "net.connman.Error.InvalidProperty")
        if type(value) is not type(self.properties[name]):
            raise Refusal(f"{name} is of another type", "net.connman.Error.InvalidArguments")
        if self.properties[name] != value:
            self.properties[name] = value
            if self.present:
                self.signal(self.PATH, self.INTERFACE, "PropertyChanged", "sv", name, value)
            self.changed()


class RuntimeManager(Service):
    """Runs applications, and ends them."""
    NAME = "org.kvt.RuntimeManager"

    def __init__(self):
        super().__init__()
        self.running = []

    def create(self):
        self.add_object("/org/kvt/RuntimeManager/Control1", "org.kvt.RuntimeManager.Control1",
                        [("Terminate", "s", "", self._terminate)])

    @on_loop
    def start(self, application):
        """Starts an application, as the device's user does."""
        if application not in self.running:
            self.running.append(application)
            self.changed()

    def _terminate(self, application):
        if not application:
            raise Refusal("An application has an identifier")
        if application not in self.running:
            raise Refusal(f"{application} is not running",
                          "org.kvt.RuntimeManager.Error.NotRunning")
        self.running.remove(application)
        self.changed()


class SystemLogs(Service):
    """Keeps the events that programs record."""
    NAME = "org.kvtlabs.SystemLogs"
    LEVELS = ("DEBUG_LEVEL", "INFO_LEVEL", "WARNING_LEVEL", "ERROR_LEVEL")

    def __init__(self):
        super().__init__()
        self.events = []  # kind, level and text of each

    def create(self):
        self.add_object("/org/kvtlabs/SystemLogs", self.NAME,
                        [("sendEventStringAlt", "sss", "", self._add)])

    def _add(self, kind, level, text):
        if not kind:
            raise Refusal("An event needs a kind")
        if level not in self.LEVELS:
            raise Refusal(f"{level} is no level")
        self.events.append((str(kind), str(level), str(text)))
        self.changed()


class PropertyService(Service):
    """A service with one object that has one boolean property."""
    PATH = INTERFACE = PROPERTY = ""
    WRITABLE = False

    def __init__(self, value):
        super().__init__()
        self.value = value

    def create(self):
        mock = self.add_object(self.PATH, self.INTERFACE)
        mock.AddProperty(self.INTERFACE, self.PROPERTY, dbus.Boolean(self.value))
        if self.WRITABLE:
            mock.setters[self.PROPERTY] = self.set

    @on_loop
    def set(self, value):
        """Sets the property, and announces the change of a writable one."""
        if self.value == bool(value):
            return
        self.value = bool(value)
        if self.present:
            self.object(self.PATH).props[self.INTERFACE][self.PROPERTY] = dbus.Boolean(value)
            if self.WRITABLE:
                changed = dbus.Dictionary({self.PROPERTY: dbus.Boolean(value)}, signature="sv")
                self.signal(self.PATH, PROPERTIES, "PropertiesChanged", "sa{sv}as",
                            self.INTERFACE, changed, dbus.Array([], signature="s"))
        self.changed()


class DeviceInformation(PropertyService):
    """Has the property whether the system is certified."""
    NAME = "org.kvt.deviceinfo"
    PATH, INTERFACE = "/org/kvt/deviceinfo/Features", "org.kvt.deviceinfo.Features"
    PROPERTY = "isOsCertified"

    def __init__(self):
        super().__init__(False)


class DeviceSentry(PropertyService):
    """Allows or forbids USB devices."""
    NAME = "org.brinos.DeviceSentry1"
    PATH, INTERFACE = "/org/brinos/DeviceSentry1/Usb", "org.brinos.DeviceSentry1.UsbManager"
    PROPERTY, WRITABLE = "Enabled", True

    def __init__(self):
        super().__init__(True)


class DeveloperMode(Service):
    """Switches remote access for developers on and off."""
    NAME = "org.kvt.developermode"

    def __init__(self):
        super().__init__()
        self.remote_connection = True

    def create(self):
        self.add_object("/", self.NAME, [("SetRemoteConnectionEnabled", "b", "", self._set)])

    def _set(self, is_enabled):
        self.remote_connection = bool(is_enabled)
        self.changed()
