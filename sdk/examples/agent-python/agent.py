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
        self.batch = {}  # the answers to the reads in flight
        self.changed = set()  # policies for the next batch
        self.owner = ""
        self.bus = dbus.SystemBus()
        self.bus.add_signal_receiver(self.on_change, "PolicyChanged", POLICY, SERVICE, PATH)
        self.bus.watch_name_owner(SERVICE, self.on_owner)  # tells the present owner, too

    def call(self, interface, method, signature, arguments, on_reply, on_error):
        self.bus.call_async(SERVICE, PATH, interface, method, signature, arguments,
                            on_reply, on_error, timeout=TIMEOUT)

    def on_owner(self, owner):
        say("the daemon is there" if owner else "the daemon is away")
        self.owner, self.batch = owner, {}
        if owner:
            self.read(self.policies)

    def on_change(self, key, _):
        if key in self.policies:
            self.read([key])

    def read(self, keys):
        self.changed.update(keys)
        # One batch at a time: the bus limits the calls of a client that have no answer yet.
        if self.batch or not self.changed:
            return
        batch = self.batch = dict.fromkeys(self.changed)
        self.changed.clear()
        for key in batch:
            self.call(POLICY, "KeyValue", "s", (key,),
                      lambda value, key=key: batch.update({key: value}),
                      # Later it is the time-out of a policy without a value.
                      lambda error: self.batch is batch and self.report("a read", error))
        # Answered last: a policy that has no answer by then has no value.
        self.call(SWITCH, "Keys", "", (), lambda _: self.take(batch),
                  lambda error: self.report("a read", error))

    def take(self, batch):
        for key, value in batch.items():
            word = word_for(value)
            if self.words.get(key) != word:
                say(key, word)
            self.words[key] = word
            wish = self.wishes.get(key, word)
            if wish != word:
                self.write(key, wish == "on")
        self.batch = {}
        self.read([])

    def write(self, key, value):
        self.call(POLICY, "SetKeyValue", "sv", (key, dbus.Boolean(value)),
                  lambda accepted: say(key, "is set" if accepted else "is refused"),
                  lambda error: self.report(key, error))

    def report(self, what, error):
        denied = error.get_dbus_name() == "org.freedesktop.DBus.Error.AccessDenied"
        if denied and what in self.wishes:
            say(what, "is not allowed:", error.get_dbus_message())
            return
        say(what, "has no answer:", error.get_dbus_name())
        if self.owner:  # else on_owner() reads again; a new connection has no unanswered calls
            sys.exit(1)


if not all(re.fullmatch("[^=]+=(on|off)", wish) for wish in sys.argv[1:]):
    print("usage: agent.py [POLICY=on|off]...", file=sys.stderr)
    sys.exit(2)
listed = subprocess.run(["govctl", "list", "--keys"], stdout=subprocess.PIPE, text=True, check=True)
DBusGMainLoop(set_as_default=True)
agent = Agent(listed.stdout.split(), dict(wish.split("=") for wish in sys.argv[1:]))
GLib.MainLoop().run()
