# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The tools of the other tests, where these would still pass without a check: what says that
nothing happened, and what a service refuses."""

import pathlib

import pytest
from jeepney import DBusAddress, new_method_call

from testbed import files
from testbed.bus import write_of
from testbed.processes import held
from testbed.services import small
from testbed.services.storage import Block

LOGS = DBusAddress("/org/kvtlabs/SystemLogs", *2 * [small.SystemLogs.NAME])
RUNTIME = DBusAddress("/org/kvt/RuntimeManager/Control1", small.RuntimeManager.NAME,
                      "org.kvt.RuntimeManager.Control1")
DEVELOPER = DBusAddress("/", *2 * [small.DeveloperMode.NAME])
WIFI = DBusAddress("/net/connman/technology/wifi", "net.connman", "net.connman.Technology")
AUDIO = DBusAddress("/org/freedesktop/ohm/mdm", *2 * [small.AudioPolicy.NAME])
MODES = DBusAddress("/com/meego/usb_moded", *2 * [small.UsbModes.NAME])
SANDBOX = DBusAddress("/org/pelloraos/appjaild1", *2 * [small.ApplicationSandbox.NAME])
USB = DBusAddress(small.DeviceSentry.PATH, small.DeviceSentry.NAME,
                  "org.freedesktop.DBus.Properties")
ENABLED = (small.DeviceSentry.INTERFACE, "Enabled")


def test_settling_waits_for_the_daemon(daemon, root, transcript):
    daemon.start()
    with held([daemon.pid]):
        root.call(write_of("CameraEnabled", False))
        root.settle()
        transcript.settle_bus()
        assert transcript.signals("PolicyChanged") == []
    # Its effects are seen even if the daemon handles it late.
    transcript.settle()
    assert len(transcript.signals("PolicyChanged")) == 1


def test_files_tell_whether_they_were_written():
    path = pathlib.Path("/etc/policy/policy.d/a.conf")
    assert files.snapshot(path) is None
    files.write(path, "# comment\n[other]\nA=1\n[policy]\nB=true\nC=a=b\n")
    assert files.stored(path) == {"B": "true", "C": "a=b"}
    before = files.snapshot(path)
    assert files.snapshot(path) == before
    files.replace(path, path.read_bytes())
    assert files.snapshot(path) != before
    files.reset()
    assert files.snapshot(path) is None
    assert path.parent.parent.is_dir()


def test_storage_is_mounted_once(storage, root):
    storage.appear()
    path = storage.plug(Block("sda1"))
    filesystem = DBusAddress(path, storage.NAME, "org.freedesktop.UDisks2.Filesystem")
    mount, unmount = (new_method_call(filesystem, member, "a{sv}", ({},))
                      for member in ("Mount", "Unmount"))
    assert root.ask(mount) == ("/run/media/sda1",)
    assert root.refusal(mount)[0].endswith("UDisks2.Error.AlreadyMounted")
    root.ask(unmount)
    assert storage.blocks[path].mount_points == ()
    assert root.refusal(unmount)[0].endswith("UDisks2.Error.NotMounted")


@pytest.mark.parametrize("call, name", [
    ((LOGS, "sendEventStringAlt", "ss", "x", "x"), "InvalidArgs"),
    ((LOGS, "sendEventStringAlt", "sss", "", "INFO_LEVEL", "x"), "InvalidArgs"),
    ((LOGS, "sendEventStringAlt", "sss", "x", "x", "x"), "InvalidArgs"),
    ((RUNTIME, "Terminate", None), "InvalidArgs"),
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
    ((AUDIO, "Get", None), "UnknownMethod"),
    ((AUDIO.with_interface("a.b"), "Set", "ss", "x", "x"), "UnknownMethod"),
    ((DBusAddress("/a", *2 * [small.AudioPolicy.NAME]), "Set", "ss", "x", "x"), "UnknownObject"),
])
def test_arguments_are_checked(services, system_logs, device_information, root, call, name):
    changes = []
    for service in (*services.values(), system_logs, device_information):
        service.appear()
        service.changed = lambda: changes.append(call)
    address, member, signature, *values = call
    error, _ = root.refusal(new_method_call(address, member, signature, tuple(values)))
    assert error.rpartition(".")[2] == name
    assert changes == []
