# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The shipped bus policy: its text, and its effect on the bus."""

import pathlib
from xml.etree import ElementTree

import pytest
from jeepney import DBusAddress, new_method_call

from testbed.bus import BUS, POLICY, SERVICE, SWITCH, read_of, write_of
from testbed.callers import DENIED, DONE, REFUSED_BY_BUS, verdict

pytestmark = pytest.mark.bus

POLICY_FILE = pathlib.Path("/usr/share/dbus-1/system.d/org.kvt.PolicyManager.conf")


def address(interface):
    """The daemon's object, under an interface or, with None, without one."""
    return DBusAddress(POLICY.object_path, SERVICE, interface)


PEER, PROPERTIES = address("org.freedesktop.DBus.Peer"), address("org.freedesktop.DBus.Properties")
READS = {
    "policy": read_of("CameraEnabled"),
    "switch": read_of("none", SWITCH),
    "policies of a switch": new_method_call(SWITCH, "KeyPolicyTypes", "s", ("none",)),
    "switches": new_method_call(SWITCH, "Keys"),
    "introspection": new_method_call(address("org.freedesktop.DBus.Introspectable"), "Introspect"),
    "ping": new_method_call(PEER, "Ping"),
    "machine": new_method_call(PEER, "GetMachineId"),
    "properties": new_method_call(PROPERTIES, "GetAll", "s", (POLICY.interface,)),
}
NOT_OFFERED = {
    "member": new_method_call(POLICY, "Reset"),
    "writing a property": new_method_call(PROPERTIES, "Set", "s", (POLICY.interface,)),
    "interface": read_of("key", address("org.example.Other")),
}


def test_rules_are_about_the_daemon_only():
    policies = list(ElementTree.parse(POLICY_FILE).getroot())
    assert {policy.tag for policy in policies} == {"policy"}
    rules = 0
    for policy in policies:
        assert len(policy.attrib) == 1  # exactly one of context, user and group
        if policy.get("context") == "mandatory":
            continue
        for rule in policy:
            rules += 1
            assert rule.tag == "allow"  # everything else is refused by default
            if "own" in rule.attrib:
                assert policy.attrib == {"user": "root"}
                assert rule.attrib == {"own": SERVICE}
            else:
                assert rule.keys() == ["send_destination", "send_interface", "send_member"]
                assert rule.get("send_destination") == SERVICE
    assert rules > 0


def test_one_rule_holds_whatever_other_files_allow():
    mandatory = ElementTree.parse(POLICY_FILE).findall("policy[@context='mandatory']/*")
    assert [(rule.tag, rule.attrib) for rule in mandatory] == [
        ("deny", {"send_destination": SERVICE, "min_fds": "1"})]


@pytest.mark.parametrize("user", ["mdm", "agent", "operator", "deputy", "guest"])
def test_only_root_may_own_the_name(lasting_daemon, client, user):
    request = new_method_call(BUS, "RequestName", "su", (SERVICE, 0))
    assert client(user).refusal(request)[0] == DENIED


@pytest.mark.parametrize("user", ["guest", "root"])
@pytest.mark.parametrize("read", READS)
def test_everybody_may_read(lasting_daemon, client, read, user):
    assert verdict(client(user).send_and_get_reply(READS[read])) == DONE


@pytest.mark.parametrize("user", ["root", "mdm", "agent", "operator", "guest"])
@pytest.mark.parametrize("call", [write_of("CameraEnabled", False, address=address(None)),
                                  read_of("CameraEnabled", address(None))], ids=["write", "read"])
def test_call_without_an_interface_is_refused(lasting_daemon, client, call, user):
    assert verdict(client(user).send_and_get_reply(call)) == REFUSED_BY_BUS


@pytest.mark.parametrize("user", ["guest", "root"])
@pytest.mark.parametrize("call", NOT_OFFERED)
def test_what_the_daemon_does_not_offer_is_refused(lasting_daemon, client, call, user):
    assert verdict(client(user).send_and_get_reply(NOT_OFFERED[call])) == REFUSED_BY_BUS
