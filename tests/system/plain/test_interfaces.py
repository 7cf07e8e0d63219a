# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon's interfaces on the bus, that there are no others, and the form of its messages."""

import pathlib
import xml.etree.ElementTree

import pytest
from jeepney import DBusAddress, HeaderFields, new_method_call

from testbed import manuals
from testbed.bus import POLICY, SERVICE, SWITCH, introspection, read_of, silent, write_of
from testbed.daemon import changed

CAMERA = "CameraEnabled"
STANDARD = "org.freedesktop.DBus."
VALUE = ("b", False)
DESCRIPTIONS = {
    POLICY.interface: """\
interface name=org.kvt.PolicyManager.Policy
 signal name=PolicyChanged
  arg name=key type=s direction=out
  arg name=value type=v direction=out
 method name=KeyValue
  arg name=key type=s direction=in
  arg type=v direction=out
 method name=SetKeyValue
  arg name=key type=s direction=in
  arg name=value type=v direction=in
  arg type=b direction=out
""",
    # The result of SetKeyValue is described as a number, but sent as a boolean.
    SWITCH.interface: """\
interface name=org.kvt.PolicyManager.Switch
 signal name=SwitchChanged
  arg name=key type=s direction=out
  arg name=value type=v direction=out
 method name=KeyValue
  arg name=key type=s direction=in
  arg type=v direction=out
 method name=SetKeyValue
  arg name=key type=s direction=in
  arg name=value type=v direction=in
  arg type=i direction=out
 method name=KeyPolicyTypes
  arg name=key type=s direction=in
  arg type=ai direction=out
 method name=Keys
  arg type=as direction=out
"""}
OF_THE_MANAGER = [  # methods of the class that must not be on the bus, with arguments
    ("updatePolicyValue", "sv", (CAMERA, VALUE)),
    ("enforceSwitchPolicies", "sv", (CAMERA, VALUE)),
    ("onPolicyIsLockedChanged", "sb", (CAMERA, True)),
    ("setupPolicies", "", ()),
    ("setPolicyValue", "svb", (CAMERA, VALUE, False)),
    ("policyChanged", "sv", (CAMERA, VALUE)),
    ("PolicyChanged", "sv", (CAMERA, VALUE)),
    ("keyValue", "s", (CAMERA,)),
    ("deleteLater", "", ()),
]
REPLIES = [  # their signatures and values
    (read_of(CAMERA), "v", ("b", True)),
    (write_of(CAMERA, False), "b", True),
    (read_of("lens", SWITCH), "v", ("b", True)),
    (write_of("lens", False, address=SWITCH), "b", True),  # described as "i"
    (write_of("gate", True, address=SWITCH), "b", False),
    (new_method_call(SWITCH, "KeyPolicyTypes", "s", ("lens",)), "ai", [1, 45]),
    (new_method_call(SWITCH, "Keys"), "as", ["lens"]),
]


def at(interface, path=POLICY.object_path):
    """An address of the daemon."""
    return DBusAddress(path, SERVICE, interface)


def outline(element, indent=""):
    """The lines for an element of introspection data and for those in it."""
    attributes = "".join(f" {name}={value}" for name, value in element.items())
    return [f"{indent}{element.tag}{attributes}",
            *(line for child in element for line in outline(child, indent + " "))]


def described(root):
    """The introspection data of the daemon's object."""
    return xml.etree.ElementTree.fromstring(root.ask(introspection())[0])


def test_object_has_two_interfaces_of_its_own(daemon, root):
    daemon.start()
    node = described(root)
    assert (node.tag, dict(node.items()), node.findall(".//node")) == ("node", {}, [])
    assert [interface.get("name") for interface in node] == [
        POLICY.interface, SWITCH.interface, STANDARD + "Properties", STANDARD + "Introspectable",
        STANDARD + "Peer"]


@pytest.mark.parametrize("name", DESCRIPTIONS)
def test_interface_is_as_described_and_as_installed(daemon, root, name):
    daemon.start()
    description = DESCRIPTIONS[name].splitlines()
    assert outline(described(root).find(f"interface[@name='{name}']")) == description
    file = pathlib.Path(f"/usr/share/dbus-1/interfaces/{name}.xml")
    installed = xml.etree.ElementTree.parse(file).getroot()
    assert [line for child in installed for line in outline(child)] == description


def test_file_for_clients_says_what_is_sent():
    file = pathlib.Path(f"/usr/share/dbus-1/interfaces/{SERVICE}.xml")
    node = xml.etree.ElementTree.parse(file).getroot()
    for method in node.iter("method"):
        for annotation in method.findall("annotation"):
            method.remove(annotation)
        del method.find("arg[@direction='out']").attrib["name"]
    described_as_sent = DESCRIPTIONS[SWITCH.interface].replace("type=i ", "type=b ")
    assert [line for child in node for line in outline(child)] == [
        *DESCRIPTIONS[POLICY.interface].splitlines(), *described_as_sent.splitlines()]


@pytest.mark.parametrize("name", DESCRIPTIONS)
def test_manual_page_has_every_member(name):
    """In the form "KeyValue(in s key, out v value)", with the types that are sent."""
    file = pathlib.Path(f"/usr/share/dbus-1/interfaces/{SERVICE}.xml")
    interface = xml.etree.ElementTree.parse(file).getroot().find(f"interface[@name='{name}']")
    forms = ["{direction} {type} {name}", "{type} {name}"]
    headings = [f"{member.get('name')}(" + ", ".join(
        forms[member.tag == "signal"].format(**argument.attrib)
        for argument in member.findall("arg")) + ")" for member in interface]
    page = manuals.entries(manuals.source(f"{name}.5"))
    assert sorted(headings) == sorted(heading for heading in page if "(" in heading)


@pytest.mark.parametrize("member, signature, arguments", OF_THE_MANAGER)
def test_methods_of_the_manager_cannot_be_called(daemon, root, member, signature, arguments):
    daemon.start()
    for interface, what in [(None, "Method"), (POLICY.interface, "Method"),
                            (SWITCH.interface, "Method"), ("local.PolicyManager", "Interface"),
                            (SERVICE, "Interface")]:
        error, _ = root.refusal(new_method_call(at(interface), member, signature, arguments))
        assert error == f"{STANDARD}Error.Unknown{what}"
    assert daemon.announcements() == []
    assert daemon.policy(CAMERA) is True


@pytest.mark.parametrize("path", ["/", "/org/kvt", "/org/kvt/PolicyManager/Policy",
                                  "/org/kvt/PolicyManage"])
def test_nothing_is_at_other_paths(daemon, root, path):
    daemon.start()
    root.refusal(read_of(CAMERA, at(POLICY.interface, path)))
    reply = root.send_and_get_reply(
        new_method_call(at(STANDARD + "Introspectable", path), "Introspect"))
    assert "org.kvt.PolicyManager." not in reply.body[0]


@pytest.mark.parametrize("interface", DESCRIPTIONS)
def test_there_are_no_properties(daemon, root, interface):
    daemon.start()
    properties = at(STANDARD + "Properties")
    every = root.send_and_get_reply(new_method_call(properties, "GetAll", "s", (interface,)))
    assert every.header.fields[HeaderFields.signature] == "a{sv}"
    assert every.body == ({},)
    error, _ = root.refusal(new_method_call(properties, "Get", "ss", (interface, "Value")))
    assert error == STANDARD + "Error.UnknownProperty"


@pytest.mark.parametrize("message, signature, value", REPLIES)
def test_replies_have_the_types_of_their_methods(daemon, root, switches, message, signature, value):
    switches.set_switch("lens", [1, 45], True)
    daemon.start()
    reply = root.send_and_get_reply(message)
    assert reply.header.fields[HeaderFields.signature] == signature
    assert reply.body == (value,)


def test_caller_who_wants_no_reply_gets_none(daemon, root):
    daemon.start()
    root.send(silent(write_of(CAMERA, False)))
    daemon.transcript.wait_for(lambda message: message.member == "PolicyChanged")
    assert daemon.said() == changed(CAMERA, True, False)[:-1]
    assert daemon.policy(CAMERA) is False


def test_changes_are_signalled_to_everybody(daemon, root, switches):
    switches.set_switch("lens", [1, 20], True)
    daemon.start()
    switches.announce("lens", False)
    daemon.transcript.settle()
    own = root.owner(SERVICE)
    signals = daemon.transcript.messages(
        lambda message: message.kind == "signal" and message.sender == own)
    assert [(signal.interface, signal.member, signal.arguments) for signal in signals] == [
        (POLICY.interface, "PolicyChanged", (CAMERA, False)),
        (POLICY.interface, "PolicyChanged", ("MicrophoneEnabled", False)),
        (SWITCH.interface, "SwitchChanged", ("lens", False))]
    assert {(signal.destination, signal.path, signal.signature) for signal in signals
            } == {("", POLICY.object_path, "sv")}
