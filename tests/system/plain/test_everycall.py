# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Every member of every interface of the object, those of the standard included, called by every
kind of user, and with arguments of every type and number: the daemon accepts valid calls, refuses
the others, and goes on serving. The members come from the object itself: a new one fails until it
has a row."""

import os
from dataclasses import dataclass
from xml.etree import ElementTree

import pytest
from jeepney import DBusAddress, HeaderFields, MessageType, new_method_call
from jeepney.fds import FileDescriptor

from testbed import files
from testbed.bus import POLICY, SERVICE, SWITCH, Client, introspection
from testbed.users import MAY_WRITE

CAMERA = "CameraEnabled"
STANDARD = "org.freedesktop.DBus."
DENIED, UNKNOWN = "AccessDenied", "UnknownMethod"

# The result of each member for each kind of caller, called with valid arguments: the types of the
# answer, or the error. A write is answered for callers without rights too.
ANSWERS = {
    f"{POLICY.interface}.KeyValue": "v",
    f"{POLICY.interface}.SetKeyValue": ("b", DENIED),
    f"{POLICY.interface}.PolicyChanged": UNKNOWN,
    f"{SWITCH.interface}.KeyValue": "v",
    f"{SWITCH.interface}.SetKeyValue": ("b", DENIED),
    f"{SWITCH.interface}.KeyPolicyTypes": "ai",
    f"{SWITCH.interface}.Keys": "as",
    f"{SWITCH.interface}.SwitchChanged": UNKNOWN,
    f"{STANDARD}Properties.Get": "UnknownInterface",
    f"{STANDARD}Properties.Set": "UnknownInterface",
    f"{STANDARD}Properties.GetAll": "UnknownInterface",
    f"{STANDARD}Properties.PropertiesChanged": UNKNOWN,
    f"{STANDARD}Introspectable.Introspect": "s",
    f"{STANDARD}Peer.Ping": "",
    f"{STANDARD}Peer.GetMachineId": "s",
}


@dataclass(frozen=True)
class Member:
    """A method or a signal of the object, with the types of its arguments."""
    interface: str
    name: str
    takes: str

    def __str__(self):
        return f"{self.interface}.{self.name}"

    def call(self, signature, arguments):
        """A call of it; a signal is called like a method."""
        address = DBusAddress(POLICY.object_path, SERVICE, self.interface)
        return new_method_call(address, self.name, signature, tuple(arguments))


def members():
    """The members as the object describes them."""
    with Client() as client:
        tree = ElementTree.fromstring(client.ask(introspection())[0])
    return [Member(interface.get("name"), member.get("name"),
                   "".join(argument.get("type") for argument in member.findall("arg")
                           if argument.get("direction") == "in"))
            for interface in tree.findall("interface")
            for member in interface if member.tag in ("method", "signal")]


def outcome(client, message):
    """The outcome of a call: the types of the answer, the error, or None for no answer."""
    serial = client.call(message)
    end = client.call(introspection())  # the daemon replies to one client in order
    found = None
    while True:
        reply = client.receive(timeout=60)
        fields = reply.header.fields
        if fields.get(HeaderFields.reply_serial) == end:
            return found
        if fields.get(HeaderFields.reply_serial) == serial:
            found = (fields[HeaderFields.error_name].removeprefix(f"{STANDARD}Error.")
                     if reply.header.message_type == MessageType.error
                     else fields.get(HeaderFields.signature, ""))


SENSIBLE = {"s": CAMERA, "v": ("b", False)}


@pytest.mark.parametrize("user, may_write", MAY_WRITE.items())
def test_every_kind_of_user(process, client, user, may_write):
    process.start()
    before = files.snapshot(files.POLICY_FILE)
    caller = client(user)
    found = {str(member): outcome(caller, member.call(
        member.takes, [SENSIBLE[kind] for kind in member.takes])) for member in members()}
    assert found == {member: answers if isinstance(answers, str) else answers[not may_write]
                     for member, answers in ANSWERS.items()}
    assert process.policy(CAMERA) is not may_write
    assert (files.snapshot(files.POLICY_FILE) == before) is not may_write


def nested(signature, value, container, depth=20):
    """A value deep inside arrays or variants."""
    for _ in range(depth):
        signature, value = (("v", (signature, value)) if container == "v"
                            else (f"a{signature}", [value]))
    return signature, value


def values():
    """Values of every type as (signature, value), alone and as variants, small and large."""
    plain = [
        ("y", 200), ("n", -1 << 15), ("q", (1 << 16) - 1), ("i", -1 << 31), ("u", (1 << 32) - 1),
        ("x", -1 << 63), ("t", (1 << 64) - 1), ("d", float("nan")), ("d", float("-inf")),
        ("b", False), ("b", True), ("h", FileDescriptor(os.dup(0))),
        ("s", ""), ("s", CAMERA), ("s", "cameraenabled"), ("s", "NoPolicy"),
        ("s", "line\nbreak %1%2%s%n \x1b[2J"), ("s", "k" * 10_000), ("s", POLICY.interface),
        ("o", "/"), ("o", POLICY.object_path), ("g", ""), ("g", "a{s(iv)}"),
        ("a{sv}", {"one": ("b", True), "two": ("as", ["x"])}), ("(sib)", ("text", 7, True)),
        ("as", []), ("a{sv}", {}), nested("s", "inside", "a"),
    ]
    large = [("s", "m" * (1 << 20)), ("ay", b"\0" * (1 << 20))]
    return [*plain, *large, *(("v", value) for value in plain + large), ("as", ["alone"]),
            nested("s", "inside", "v")]


def sweep(user):
    """Calls every member with everything: (member, types of the arguments, outcome) of each."""
    key, value = ("s", CAMERA), ("v", ("b", False))
    everything = values()
    shapes = [[], [key, value, value], *(shape for one in everything for shape in (
        [one], [key, one], [one, value], [key, key, one]))]
    found = []
    for member in members():
        with Client(user, descriptors=True) as client:
            for shape in shapes:
                signature = "".join(kind for kind, _ in shape)
                message = member.call(signature, [content for _, content in shape])
                found.append((member, signature, outcome(client, message)))
    return found


def test_root_may_try_everything(process, switches):
    switches.set_switch("cellular", [5], True)
    process.start()
    right = 0
    for member, signature, result in sweep("root"):
        if str(member).startswith(SERVICE):
            fits = signature == member.takes and not member.name.endswith("Changed")
            assert (result != UNKNOWN) is fits, (member, signature, result)
            right += fits
    assert right > 100
    assert process.running
    process.change(CAMERA, False)
    assert process.policy(CAMERA) is False
    assert process.stop() == 0
    process.start()  # the file is still one that the daemon itself can read
    assert process.policy(CAMERA) is False


def test_guest_changes_nothing(process, switches, system_log):
    switches.set_switch("cellular", [5], True)
    process.start()
    before = files.snapshot(files.POLICY_FILE), files.snapshot(files.SWITCH_FILE)
    calls, records = len(switches.calls()), len(system_log.records())
    refused = [result for member, signature, result in sweep("guest")
               if member.name == "SetKeyValue" and signature == "sv"]
    assert len(refused) > 50 and set(refused) == {DENIED}
    assert (files.snapshot(files.POLICY_FILE), files.snapshot(files.SWITCH_FILE)) == before
    assert not [call for call in switches.calls(calls) if call.startswith("setKeyValue")]
    assert system_log.records(records) == []
    assert process.policy(CAMERA) is True
