# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon's questions to the bus about a caller, as Daemon.messages() has them, and the errors
that refuse a call."""

from jeepney import HeaderFields, MessageType

from testbed.bus import BUS

DENIED = "org.freedesktop.DBus.Error.AccessDenied"
DONE, REFUSED_BY_BUS, REFUSED_BY_DAEMON = "done", "refused by the bus", "refused by the daemon"


def process_query(caller):
    """A list of the first question about a client, for its process id."""
    return [("call", "GetConnectionUnixProcessID", caller.unique_name)]


def queries(caller):
    """Both questions: the second one is for the user, if the process alone gives no right."""
    return process_query(caller) + [("call", "GetConnectionUnixUser", caller.unique_name)]


def asked(daemon):
    """All questions about clients."""
    return [words for words in daemon.messages()
            if words[0] == "call" and words[1].startswith("GetConnection")]


def refusal(pid):
    """What Client.refusal() returns for a write of a process without rights."""
    return (DENIED, f"PID {pid} is not in pellora-mdm group")


def denial(pid):
    """What Daemon.messages() has for this refusal."""
    return ("error", *refusal(pid))


def verdict(reply):
    """The outcome of a call by its reply: done, refused by the bus, or refused by the daemon."""
    fields = reply.header.fields
    if reply.header.message_type == MessageType.method_return:
        return DONE
    assert fields[HeaderFields.error_name] == DENIED, reply.body
    return REFUSED_BY_BUS if fields[HeaderFields.sender] == BUS.bus_name else REFUSED_BY_DAEMON
