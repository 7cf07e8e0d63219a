# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The services of the test bed: each keeps its state and checks its arguments."""

import pytest
from jeepney import DBusAddress, HeaderFields, new_method_call

from testbed.services import small
from testbed.services.storage import Block, Drive

LOGS = DBusAddress("/org/kvtlabs/SystemLogs", *2 * [small.SystemLogs.NAME])
RUNTIME = DBusAddress("/org/kvt/RuntimeManager/Control1", small.RuntimeManager.NAME,
                      "org.kvt.RuntimeManager.Control1")
DEVELOPER = DBusAddress("/", *2 * [small.DeveloperMode.NAME])
WIFI = DBusAddress("/net/connman/technology/wifi", "net.connman", "net.connman.Technology")
AUDIO = DBusAddress("/org/freedesktop/ohm/mdm", *2 * [small.AudioPolicy.NAME])
MODES = DBusAddress("/com/meego/usb_moded", *2 * [small.UsbModes.NAME])
SANDBOX = DBusAddress("/org/pelloraos/appjaild1", *2 * [small.ApplicationSandbox.NAME])
FEATURES, USB = (DBusAddress(kind.PATH, kind.NAME, "org.freedesktop.DBus.Properties")
                 for kind in (small.DeviceInformation, small.DeviceSentry))
CERTIFIED = (small.DeviceInformation.INTERFACE, "isOsCertified")
ENABLED = (small.DeviceSentry.INTERFACE, "Enabled")
STORAGE = DBusAddress("/org/freedesktop/UDisks2", "org.freedesktop.UDisks2",
                      "org.freedesktop.DBus.ObjectManager")
CLOSE = (AUDIO, "Set", "ss", "microphone", "disabled")


@pytest.fixture
def ask(root):
    """Calls a method of a service; the values of the answer."""
    return lambda address, member, signature=None, *values: root.ask(
        new_method_call(address, member, signature, values))


@pytest.fixture
def refusal(root):
    """Makes a call that must fail. Returns the name of the error."""
    return lambda address, member, signature=None, *values: root.refusal(
        new_method_call(address, member, signature, values))[0]


def test_log_keeps_events(system_logs, ask):
    system_logs.appear()
    assert ask(LOGS, "sendEventStringAlt", "sss", "kind", "INFO_LEVEL", "text") == ()
    assert system_logs.events == [("kind", "INFO_LEVEL", "text")]


def test_device_information_can_be_read(device_information, ask, refusal):
    device_information.appear()
    device_information.set(True)
    assert ask(FEATURES, "Get", "ss", *CERTIFIED) == (("b", True),)
    assert ask(FEATURES, "GetAll", "s", CERTIFIED[0]) == ({"isOsCertified": ("b", True)},)
    assert refusal(FEATURES, "Set", "ssv", *CERTIFIED, ("b", False)).endswith("PropertyReadOnly")


def test_applications_are_terminated(runtime_manager, ask, refusal):
    runtime_manager.appear()
    for application in ("org.a", "org.b", "org.a"):
        runtime_manager.start(application)
    assert runtime_manager.running == ["org.a", "org.b"]
    ask(RUNTIME, "Terminate", "s", "org.a")
    assert runtime_manager.running == ["org.b"]
    assert refusal(RUNTIME, "Terminate", "s", "org.a") == "org.kvt.RuntimeManager.Error.NotRunning"


def test_usb_devices_are_switched(device_sentry, ask):
    device_sentry.appear()
    for value in (False, True):
        ask(USB, "Set", "ssv", *ENABLED, ("b", value))
        assert device_sentry.value is value
        assert ask(USB, "Get", "ss", *ENABLED) == (("b", value),)


def test_remote_access_is_switched(developer_mode, ask):
    developer_mode.appear()
    assert developer_mode.remote_connection
    ask(DEVELOPER, "SetRemoteConnectionEnabled", "b", False)
    assert not developer_mode.remote_connection


def test_tethering_is_switched(network, ask):
    network.appear()
    network.set_tethering(True)
    assert ask(WIFI, "GetProperties")[0]["Tethering"] == ("b", True)
    ask(WIFI, "SetProperty", "sv", "Tethering", ("b", False))
    assert not network.tethering


def test_microphone_is_switched(audio_policy, ask):
    audio_policy.appear()
    for value in ("disabled", "enabled"):
        ask(AUDIO, "Set", "ss", "microphone", value)
        assert audio_policy.microphone is (value == "enabled")


def test_mode_whitelist_is_kept(usb_modes, ask):
    usb_modes.appear()
    assert usb_modes.whitelist == set(small.UsbModes.MODES)
    for member, signature, values, whitelist in (
            ("set_whitelisted_modes", "s", ["developer_mode,developer_mode"], {"developer_mode"}),
            ("set_whitelisted", "sb", ["mtp_mode", True], {"developer_mode", "mtp_mode"}),
            ("set_whitelisted", "sb", ["developer_mode", False], {"mtp_mode"}),
            ("set_whitelisted_modes", "s", [""], set())):
        ask(MODES, member, signature, *values)
        assert usb_modes.whitelist == whitelist


def test_denylist_is_kept(application_sandbox, ask):
    application_sandbox.appear()
    for _ in range(2):
        ask(SANDBOX, "AddToGlobalDenylist", "as", ["org.a", "org.b"])
    ask(SANDBOX, "AddToGlobalDenylist", "as", [])
    assert application_sandbox.denylist == {"org.a", "org.b"}
    ask(SANDBOX, "RemoveFromGlobalDenylist", "as", ["org.a"])
    assert application_sandbox.denylist == {"org.b"}


def test_storage_is_mounted(storage, ask, refusal):
    storage.appear()
    path = storage.plug(Block("sda1"))
    filesystem = DBusAddress(path, storage.NAME, "org.freedesktop.UDisks2.Filesystem")
    assert ask(filesystem, "Mount", "a{sv}", {}) == ("/run/media/sda1",)
    assert storage.blocks[path].mount_points == ("/run/media/sda1",)
    assert refusal(filesystem, "Mount", "a{sv}", {}).endswith("UDisks2.Error.AlreadyMounted")
    ask(filesystem, "Unmount", "a{sv}", {})
    assert storage.blocks[path].mount_points == ()
    assert refusal(filesystem, "Unmount", "a{sv}", {}).endswith("UDisks2.Error.NotMounted")


def test_storage_is_plugged(storage, root):
    storage.appear()

    def listing():
        reply = root.answer(root.call(new_method_call(STORAGE, "GetManagedObjects")))
        assert reply.header.fields[HeaderFields.signature] == "a{oa{sa{sv}}}"
        return set(reply.body[0])
    assert listing() == set()
    drive = storage.plug(Drive("stick"))
    block = storage.plug(Block("sda1", drive=drive))
    assert listing() == {drive, block}
    storage.unplug(block)
    assert listing() == {drive}


@pytest.mark.parametrize("call, name", [
    ((LOGS, "sendEventStringAlt", "ss", "x", "x"), "InvalidArgs"),
    ((LOGS, "sendEventStringAlt", "sss", "", "INFO_LEVEL", "x"), "InvalidArgs"),
    ((LOGS, "sendEventStringAlt", "sss", "x", "x", "x"), "InvalidArgs"),
    ((RUNTIME, "Terminate"), "InvalidArgs"),
    ((RUNTIME, "Terminate", "s", ""), "InvalidArgs"),
    ((USB, "Set", "ssv", *ENABLED, ("s", "x")), "InvalidArgs"),
    ((USB, "Set", "ssb", *ENABLED, True), "InvalidArgs"),
    ((USB, "Set", "ssv", ENABLED[0], "x", ("b", True)), "UnknownProperty"),
    ((USB, "Get", "ss", ENABLED[0], "x"), "UnknownProperty"),
    ((USB, "GetAll", "s", "x.y"), "UnknownInterface"),
    ((DEVELOPER, "SetRemoteConnectionEnabled", "i", 1), "InvalidArgs"),
    ((WIFI, "SetProperty", "sb", "Tethering", False), "InvalidArgs"),
    ((WIFI, "SetProperty", "sv", "Tethering", ("s", "x")), "InvalidArguments"),
    ((WIFI, "SetProperty", "sv", "Type", ("s", "x")), "InvalidProperty"),
    ((AUDIO, "Set", "ss", "x", "enabled"), "InvalidArgs"),
    ((AUDIO, "Set", "ss", "microphone", "x"), "InvalidArgs"),
    ((MODES, "set_whitelisted_modes", "s", "mtp_mode,x"), "InvalidArgs"),
    ((MODES, "set_whitelisted", "sb", "x", True), "InvalidArgs"),
    ((MODES, "set_whitelisted", "ss", "mtp_mode", "x"), "InvalidArgs"),
    ((SANDBOX, "AddToGlobalDenylist", "s", "x"), "InvalidArgs"),
    ((SANDBOX, "AddToGlobalDenylist", "as", [""]), "InvalidArgs"),
    ((AUDIO, "Get"), "UnknownMethod"),
    ((AUDIO.with_interface("a.b"), "Set", "ss", "x", "x"), "UnknownMethod"),
    ((DBusAddress("/a", *2 * [small.AudioPolicy.NAME]), "Set", "ss", "x", "x"), "UnknownObject"),
])
def test_arguments_are_checked(services, system_logs, device_information, refusal, call, name):
    changes = []
    for service in (*services.values(), system_logs, device_information):
        service.appear()
        service.changed = lambda: changes.append(call)
    assert refusal(*call).rpartition(".")[2] == name
    assert changes == []
