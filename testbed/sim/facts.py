# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Facts about the device, derived from its state; "expect" waits for them."""

from dataclasses import dataclass

from testbed.sim.commandline import check_count, unknown_name, usage
from testbed.sim.names import FAULTS, IDENTIFIERS, SERVICES, USB_MODES, application_word
from testbed.sim.text import on_off, quoted

ON_OFF, YES_NO = ("on", "off"), ("yes", "no")


@dataclass(frozen=True)
class Row:
    """A kind of fact."""
    values: tuple = ()  # the possible values; empty for a number
    name: str = ""  # what the help calls its name, if it has one
    names: tuple = ()  # the possible names; empty when any name is allowed
    otherwise: str = ""  # the value for a name that the state does not contain


ROWS = {
    "camera": Row(ON_OFF),
    "certified": Row(YES_NO),
    "denied": Row(YES_NO, "APP", tuple(IDENTIFIERS), "no"),
    "events": Row(),
    "fault": Row(("none", *FAULTS), "SERVICE", tuple(SERVICES)),
    "microphone": Row(ON_OFF),
    "remote-access": Row(ON_OFF),
    "running": Row(YES_NO, "APP", tuple(IDENTIFIERS), "no"),
    "service": Row(("present", "absent"), "SERVICE", tuple(SERVICES)),
    "storage": Row(("mounted", "unmounted", "absent"), "LABEL", otherwise="absent"),
    "tethering": Row(ON_OFF),
    "usb": Row(ON_OFF),
    "usb-mode": Row(YES_NO, "MODE", USB_MODES, "no"),
}


def facts_of(state):
    """The values of all facts, by "WORD" or "WORD NAME"."""
    facts = {word: on_off(state[word]) for word in ("camera", "microphone", "tethering", "usb")}
    facts |= {"certified": "yes" if state["certified"] else "no",
              "events": str(state["eventCount"]), "remote-access": on_off(state["remoteAccess"])}
    for word, members in (("denied", "denylist"), ("running", "running"), ("usb-mode", "usbModes")):
        facts |= {f"{word} {application_word(member)}": "yes" for member in state[members]}
    for medium in state["storage"]:
        facts[f"storage {medium['label']}"] = "mounted" if medium["mounted"] else "unmounted"
    for service in state["services"]:
        facts[f"service {service['word']}"] = "present" if service["present"] else "absent"
        facts[f"fault {service['word']}"] = service["fault"].partition(" ")[0]
    return facts


def value_of(facts, key):
    """The value of a fact by its key, which `facts` need not contain."""
    return facts.get(key, ROWS[key.partition(" ")[0]].otherwise)


def changes_between(before, now):
    """The differences: rows of key, value before and value now."""
    rows = [(key, value_of(before, key), value_of(now, key)) for key in sorted({*before, *now})]
    return [row for row in rows if row[1] != row[2]]


def check_expectation(arguments):
    """Raises Failure unless the words are a fact: a word, a name if it takes one, and a value."""
    if not arguments:
        return
    word = arguments[0]
    row = ROWS[word]
    count = 3 if row.name else 2
    form = " ".join(filter(None, ["expect", word, row.name, "|".join(row.values) or "NUMBER"]))
    check_count(arguments, count, count, form)
    if row.names and arguments[1] not in row.names:
        raise unknown_name(row.name, arguments[1], row.names)
    if row.values and arguments[-1] not in row.values:
        raise unknown_name("value", arguments[-1], row.values)
    if not row.values and not (arguments[-1].isascii() and arguments[-1].isdigit()):
        raise usage(f"{word} is a number, not {quoted(arguments[-1])}")
