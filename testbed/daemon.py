# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The installed daemon as a process of the test, and what it does."""

import contextlib
import os
import pathlib
import signal
import subprocess
import tempfile

from jeepney import HeaderFields, new_method_call

from testbed.bus import SERVICE, SWITCH, Client, introspection, read_of, write_of
from testbed.files import text_of
from testbed.waiting import PATIENCE, wait_until

PROGRAM = "/usr/sbin/govd"
BUS_ITSELF = "org.freedesktop.DBus"
# The second line of the log when a value cannot be saved; it names this file for policies, too.
SAVE_FAILURE = ('warning|default|Failed to save configuration to file'
                ' "/etc/policy/switch.conf"')
# Not enforcement: questions to the bus and about objects, the audit event, and the storage service,
# of which only the order to unmount counts.
NOT_ENFORCING = (BUS_ITSELF, "org.kvtlabs.SystemLogs", "org.kvt.deviceinfo")
QUESTIONS = ("Get", "GetManagedObjects")


class Process:
    """The daemon's process, which ends with its context. Settings apply from the next launch on."""

    def __init__(self):
        self.environment = {}  # variables beside those of the test
        self.wrapper = []  # a command that runs the daemon as its last argument, say strace
        self._process = None
        self._folder = tempfile.TemporaryDirectory()
        self._log = pathlib.Path(self._folder.name) / "log"
        self._log.touch()
        self._client = Client()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.running:
            self.kill()
        self._client.close()
        self._folder.cleanup()

    def launch(self):
        """Starts the process without waiting until it serves."""
        # The leak sanitizer does not work in a process that strace traces.
        own = {"ASAN_OPTIONS": "detect_leaks=0"} if self.wrapper else {}
        pattern = {"QT_MESSAGE_PATTERN": "%{type}|%{category}|%{message}",
                   "QT_FORCE_STDERR_LOGGING": "1"}
        with self._log.open("ab") as log:
            self._process = subprocess.Popen([*self.wrapper, PROGRAM], stderr=log,
                                             env={**os.environ, **pattern, **own,
                                                  **self.environment})

    def start(self):
        """Starts the process and waits until it serves."""
        self.launch()
        self.wait_until_ready()

    def wait_until_ready(self):
        """Waits until the process serves. Raises ChildProcessError when it ends first."""
        def serves():
            if not self.running:
                raise ChildProcessError("the daemon has ended:\n" + "\n".join(self.log()))
            return self._client.process_of(SERVICE) == self.pid
        wait_until(serves)

    @property
    def running(self):
        """Whether the process runs."""
        return self._process is not None and self._process.poll() is None

    @property
    def pid(self):
        """The process id of the daemon, not of a wrapper; 0 when it does not run."""
        if not self.running:
            return 0
        if not self.wrapper:
            return self._process.pid
        # A wrapper runs the daemon as its child, or executes it in its own process.
        task = pathlib.Path(f"/proc/{self._process.pid}/task/{self._process.pid}/children")
        children = task.read_text().split()
        return int(children[0]) if children else self._process.pid

    def wait(self):
        """Waits for the end; returns the exit code, or minus the signal that ended it."""
        return self._process.wait(PATIENCE)

    def stop(self):
        """Ends it by SIGTERM, as the service manager does, and returns its exit code."""
        self.signal(signal.SIGTERM)
        return self.wait()

    def kill(self):
        """Ends it by SIGKILL, if it still runs."""
        with contextlib.suppress(ProcessLookupError):
            self.signal(signal.SIGKILL)
        self.wait()

    def signal(self, number):
        """Sends it a signal. Raises ProcessLookupError when it does not run."""
        pid = self.pid
        if not pid:  # kill(0) would signal the test's own process group
            raise ProcessLookupError("the daemon does not run")
        os.kill(pid, number)

    def log(self, since=0):
        """The lines of its standard error in all starts so far, without the first ones. A
        message has the form "type|category|text", as in "warning|default|Cannot do it"."""
        return self._log.read_text(errors="replace").split("\n")[:-1][since:]

    def wait_for_log(self, text, since=0):
        """Waits for a line of the log that holds this text, and returns it."""
        return wait_until(lambda: [line for line in self.log(since) if text in line])[0]

    def set(self, key, value, signature="b"):
        """Writes a policy as root. Returns the daemon's reply. Raises DBusErrorResponse."""
        return self._client.ask(write_of(key, value, signature))[0]

    def change(self, key, value):
        """Writes a policy as root, which must succeed."""
        assert self.set(key, value) is True

    def policy(self, key):
        """Reads a policy as root. Raises DBusErrorResponse."""
        return self._client.ask(read_of(key))[0][1]

    def switch(self, key):
        """Reads an access switch as root. Raises DBusErrorResponse."""
        return self._client.ask(read_of(key, SWITCH))[0][1]

    def set_switch(self, key, value, signature="b"):
        """Writes an access switch as root. Returns the daemon's reply. Raises DBusErrorResponse."""
        return self._client.ask(write_of(key, value, signature, SWITCH))[0]

    def switch_keys(self):
        """The access switches, in the daemon's order."""
        return self._client.ask(new_method_call(SWITCH, "Keys"))[0]

    def switch_types(self, key):
        """The numbers of the policies that an access switch governs."""
        return self._client.ask(new_method_call(SWITCH, "KeyPolicyTypes", "s", (key,)))[0]

    def has_no_value(self, *keys):
        """Whether these policies have no value: the daemon sends no reply to a read of one."""
        with Client() as reader:
            reads = [reader.call(read_of(key)) for key in keys]
            end = reader.call(introspection())  # the daemon replies to one client in order
            answered = iter(lambda: reader.receive(timeout=PATIENCE).header.fields.get(
                HeaderFields.reply_serial), end)
            return not set(reads) & set(answered)


class Daemon(Process):
    """The daemon, with a monitor of the bus, the system log and the daemon's own log.

    said(), calls(), announcements(), records() and logged() return everything since start() or the
    last forget(), in order. A comparison with the expected list also proves that nothing else
    happened.
    """

    def __init__(self, transcript, system_log):
        super().__init__()
        self.transcript = transcript
        self.system_log = system_log
        self._records_start = len(system_log.records())
        self._log_start = 0

    def start(self):
        """Starts the daemon and forgets what happens until it serves."""
        self.start_observed()
        self.forget()

    def start_observed(self):
        """Starts the daemon and keeps what happens until it serves."""
        super().start()
        self.transcript.settle()

    def forget(self):
        """Waits until the daemon has handled all messages so far, then forgets everything."""
        self.transcript.settle()
        self.transcript.clear()
        self._records_start += len(self.records())
        self._log_start = len(self.log())

    def said(self):
        """What the daemon has sent, except to the bus itself: ("call", member, argument, ...),
        ("signal", member, argument, ...), ("reply", argument, ...) or ("error", name)."""
        return [words_of(message) for message in self._sent()
                if message.destination != BUS_ITSELF]

    def messages(self):
        """said() with the daemon's questions to the bus about clients and the texts of errors."""
        return [words_of(message) + (message.arguments if message.kind == "error" else ())
                for message in self._sent() if not is_housekeeping(message)]

    def calls(self, service=None):
        """The calls to the services that enforce policies, or to one of them: (service, path,
        interface, member, signature, argument, ...)."""
        return [(message.destination, message.path, message.interface, message.member,
                 message.signature, *message.arguments) for message in self._sent()
                if is_enforcement(message) and service in (None, message.destination)]

    def has_left_alone(self, service):
        """Whether it has sent the service no message and asked the bus nothing about it."""
        return not [message for message in self._sent()
                    if message.destination == service or message.arguments[:1] == (service,)]

    def announcements(self):
        """The signals among said()."""
        return [words for words in self.said() if words[0] == "signal"]

    def records(self):
        """The texts that it has written to the system log."""
        self.transcript.settle()
        return [record.text for record in self.system_log.records(self._records_start)]

    def logged(self):
        """The lines of its own log."""
        self.transcript.settle()
        return self.log(self._log_start)

    def complaints(self):
        """logged() without the line about an absent USB manager, which each start without that
        service writes."""
        absent = "warning|default|Failed to disable USB devices connection."
        return [line for line in self.logged() if line != absent]

    def _sent(self):
        self.transcript.settle()
        own = self._client.owner(SERVICE)
        assert own, "the daemon that is watched is not there"
        questions = self.transcript.calls("Introspect")
        return self.transcript.messages(
            lambda message: message.sender == own and message.member != "Introspect"
            and not any(message.is_reply_to(question) for question in questions))


def words_of(message):
    """The content of a message, without sender and receiver."""
    if message.kind == "error":
        return ("error", message.error)
    if message.kind == "reply":
        return ("reply", *message.arguments)
    return (message.kind, message.member, *message.arguments)


def is_housekeeping(message):
    """Whether this is a call that the bus library makes for itself."""
    return (message.kind == "call" and message.destination == BUS_ITSELF
            and not message.member.startswith("GetConnection"))


def is_enforcement(message):
    """Whether this is a call that enforces a policy."""
    return (message.kind == "call" and message.destination not in NOT_ENFORCING
            and message.member not in QUESTIONS)


def event_text(key, old, new):
    """The text of the audit event of a change."""
    return f"Policy {key} changed. Old value {text_of(old)}. New value {text_of(new)}."


def event(key, old, new):
    """What said() has for the audit event of a change."""
    return ("call", "sendEventStringAlt", "security-policy-changed", "INFO_LEVEL",
            event_text(key, old, new))


def announcement(key, value):
    """What said() has for the announcement of a policy."""
    return ("signal", "PolicyChanged", key, value)


def changed(key, old, new, value=None):
    """What said() has for a write that changes a policy; `value` is the effective value after it if
    that is not the written one."""
    return [event(key, old, new), announcement(key, new if value is None else value),
            ("reply", True)]
