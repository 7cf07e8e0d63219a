# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""How the daemon finds out whether a caller may change a value, as Daemon.messages() has it, and
who decides on a call."""

from jeepney import HeaderFields, MessageType

from testbed.bus import BUS

DENIED = "org.freedesktop.DBus.Error.AccessDenied"
DONE, REFUSED_BY_BUS, REFUSED_BY_DAEMON = "done", "refused by the bus", "refused by the daemon"


def process_query(caller):
    """The first question about a client; in a list, as it may be followed by others."""
    return [("call", "GetConnectionUnixProcessID", caller.unique_name)]


def queries(caller):
    """Both questions; the second one comes when the first has not decided."""
    return process_query(caller) + [("call", "GetConnectionUnixUser", caller.unique_name)]


def asked(daemon):
    """All questions about clients."""
    return [words for words in daemon.messages()
            if words[0] == "call" and words[1].startswith("GetConnection")]


def refusal(pid):
    """What Client.refusal() gives a process that may change nothing."""
    return (DENIED, f"PID {pid} is not in pellora-mdm group")


def denial(pid):
    """The same, as the daemon says it."""
    return ("error", *refusal(pid))


def verdict(reply):
    """What has become of a call, by the reply or the error to it, which must be a refusal."""
    fields = reply.header.fields
    if reply.header.message_type == MessageType.method_return:
        return DONE
    assert fields[HeaderFields.error_name] == DENIED, reply.body
    return REFUSED_BY_BUS if fields[HeaderFields.sender] == BUS.bus_name else REFUSED_BY_DAEMON
