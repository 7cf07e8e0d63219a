# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""An agent: prints how all policies read, follows them, and keeps those that it is told to keep.

Usage: agent.py [POLICY=on|off]...

Needs Debian's packages python3-dbus and python3-gi, and govctl."""

import re
import subprocess
import sys

import dbus
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

SERVICE, PATH = "org.kvt.PolicyManager", "/org/kvt/PolicyManager"
POLICY, SWITCH = "org.kvt.PolicyManager.Policy", "org.kvt.PolicyManager.Switch"
TIMEOUT = 120  # seconds


def say(*words):
    print(*words, flush=True)


def word_for(value):
    if value is None:
        return "has no value"
    if not isinstance(value, dbus.Boolean):
        return "holds no boolean"
    return "on" if value else "off"


class Agent:
    """All calls are asynchronous, so that no read without an answer stops the agent."""

    def __init__(self, policies, wishes):
        self.policies = policies
        # The daemon would accept a policy that it does not know.
        for key in wishes.keys() - policies:
            say(key, "is no policy")
        self.wishes = {key: wishes[key] for key in wishes.keys() & policies}
        self.words = {}  # how each policy reads
        self.bus = dbus.SystemBus()
        self.bus.add_signal_receiver(self.on_change, "PolicyChanged", POLICY, SERVICE, PATH)
        self.bus.watch_name_owner(SERVICE, self.on_owner)  # tells the present owner, too

    def call(self, interface, method, signature, arguments, on_reply, on_error):
        self.bus.call_async(SERVICE, PATH, interface, method, signature, arguments,
                            on_reply, on_error, timeout=TIMEOUT)

    def on_owner(self, owner):
        say("the daemon is there" if owner else "the daemon is away")
        if owner:
            self.read(self.policies)

    def on_change(self, key, _):
        if key in self.policies:
            self.read([key])

    def read(self, keys):
        answers = dict.fromkeys(keys)
        for key in keys:
            self.call(POLICY, "KeyValue", "s", (key,),
                      lambda value, key=key: answers.update({key: value}),
                      lambda error: None)  # the time-out of a policy without a value
        # Answered last: a policy that has no answer by then has no value.
        self.call(SWITCH, "Keys", "", (), lambda _: self.take(answers),
                  lambda error: say("no answer:", error.get_dbus_name()))

    def take(self, answers):
        for key, value in answers.items():
            word = word_for(value)
            if self.words.get(key) != word:
                say(key, word)
            self.words[key] = word
            if self.wishes.get(key, word) != word:
                self.write(key, self.wishes[key])

    def write(self, key, wish):
        self.call(POLICY, "SetKeyValue", "sv", (key, dbus.Boolean(wish == "on")),
                  lambda accepted: say(key, "is set" if accepted else "is refused"),
                  lambda error: self.report(key, error))

    def report(self, key, error):
        if error.get_dbus_name() == "org.freedesktop.DBus.Error.AccessDenied":
            say(key, "is not allowed:", error.get_dbus_message())
        else:  # the daemon has gone, or is silent; on_owner() reads again when it is back
            say(key, "has no answer:", error.get_dbus_name())


if not all(re.fullmatch("[^=]+=(on|off)", wish) for wish in sys.argv[1:]):
    sys.exit("usage: agent.py [POLICY=on|off]...")
listed = subprocess.run(["govctl", "list", "--keys"], stdout=subprocess.PIPE, text=True, check=True)
DBusGMainLoop(set_as_default=True)
agent = Agent(listed.stdout.split(), dict(wish.split("=") for wish in sys.argv[1:]))
GLib.MainLoop().run()
