# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Plugins in the daemon's plugin folders: those of the tests and those of the product."""

import contextlib
import json
import os
import pathlib
import shutil
import sysconfig

from testbed.files import replace
from testbed.waiting import wait_until

BUILD = pathlib.Path(os.environ["GOVD_BUILD"])
LIBRARIES = BUILD / "tests/system/libraries"
BUILT = BUILD / "tests/plugins/build"
FILE_LOCK = BUILD / "sdk/plugins/libfilelock.so"
FILE_LOCK_FILE = pathlib.Path("/etc/govd/filelock.conf")
FILE_SWITCH = BUILD / "sdk/plugins/libpelloraswitchplugin.so"
FILE_SWITCH_FILE = pathlib.Path("/etc/govd/fileswitch.conf")
KIOSK = BUILD / "tests/plugins/example/kiosk.so"
SWITCH_PLUGIN = pathlib.Path("/usr/lib64/libpellorapolicy/plugin/libpelloraswitchplugin.so")
LOCK_PLUGINS = pathlib.Path("/usr/lib", sysconfig.get_config_var("MULTIARCH"), "govd")
CONTROL = pathlib.Path("/run/govd-test")


@contextlib.contextmanager
def installed(library, path):
    """Installs a library as a plugin as long as the context lasts."""
    path.parent.mkdir(parents=True, exist_ok=True)
    shutil.copy(library, path)
    try:
        yield
    finally:
        path.unlink()


class TestPlugin:
    """A plugin that acts by its state, which it reads anew in every call, so that a change applies
    from the next call on. It records each call. A context that removes it."""
    __test__ = False

    def __init__(self, library, path, **state):
        self.path = path
        CONTROL.mkdir(exist_ok=True)
        self._state, self._calls, self._orders = (
            CONTROL / f"{path.name}.{ending}" for ending in ("state", "calls", "orders"))
        path.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(BUILT / library, path)
        self._calls.write_text("")
        self._orders.unlink(missing_ok=True)
        os.mkfifo(self._orders, 0o600)
        self.state = state

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for path in (self.path, self._state, self._calls, self._orders):
            path.unlink(missing_ok=True)

    @property
    def state(self):
        """The state of the plugin. This is a copy: assign it to change the state."""
        return json.loads(self._state.read_text())

    @state.setter
    def state(self, state):
        replace(self._state, json.dumps(state))

    def calls(self, since=0):
        """The recorded calls without the first ones: operation and arguments, with blanks."""
        return self._calls.read_text().split("\n")[:-1][since:]

    def wait_for_call(self, text, since=0):
        """Waits for a record of a call, or of another event, that holds this text."""
        return wait_until(lambda: [line for line in self.calls(since) if text in line])[0]

    def order(self, **order):
        """Sends an order to the plugin in the running daemon and waits until it is done."""
        before = len(self.calls())
        # O_NONBLOCK: without a plugin that reads, this fails at once instead of waiting.
        pipe = os.open(self._orders, os.O_WRONLY | os.O_NONBLOCK)
        os.write(pipe, json.dumps(order).encode() + b"\n")
        os.close(pipe)
        self.wait_for_call("done", before)


class SwitchPlugin(TestPlugin):
    """The access-switch plugin of the tests. Its state:

    "switches"   from the switch's key to
        "types"     the numbers of the policies that it governs
        "value"     what keyValue gives: true or false; a whole number gives a failure code, text a
                    value of a wrong type, None an invalid value
        "result"    what setKeyValue gives (default 0); with 0 the new value is kept in "value"
        "announce"  when an accepted value is announced: "inside" the call (default), "later" from
                    the event loop, or "never"
    "unknown"    failure code for keys that are no switches (default -1)
    "hold"       the operations that do not return while they are listed here
    """

    def __init__(self):
        super().__init__("switchplugin.so", SWITCH_PLUGIN)

    def set_switch(self, key, types, value):
        """Adds or replaces a switch."""
        self.set_entries(key, types=list(types), value=value)

    def set_entries(self, key, **entries):
        """Changes some entries of a switch."""
        state = self.state
        state.setdefault("switches", {}).setdefault(key, {}).update(entries)
        self.state = state

    def value(self, key):
        """The present "value" of a switch."""
        return self.state["switches"][key]["value"]

    def hold(self, operation):
        """Makes an operation wait, once called, until release(); recorded as "holding"."""
        self.state = {**self.state, "hold": [operation]}

    def release(self):
        """Lets all operations return."""
        self.state = {**self.state, "hold": []}

    def announce(self, key, value):
        """Emits keyValueChanged in the running daemon. Returns when that is done."""
        self.order(key=key, value=value)


class LockPlugin(TestPlugin):
    """A source restriction of the tests, in the file `file`. Its state: "name", the keys that it
    has "supported", and those that it has "locked"."""

    def __init__(self, file, name, supported):
        super().__init__("lockplugin.so", LOCK_PLUGINS / file, name=name, supported=list(supported))

    def set_locked(self, *keys):
        """Locks these keys and no others, without an announcement."""
        self.state = {**self.state, "locked": list(keys)}

    def announce(self, key, locked, **details):
        """Emits the signal about a key in the running daemon; thread=True: from another thread."""
        self.order(key=key, locked=locked, **details)

    def end_event_loop(self, code):
        """Has the plugin end the daemon's event loop."""
        self.order(exit=code)
