# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""How the daemon finds out whether a caller may change a value, as Daemon.messages() has it."""

DENIED = "org.freedesktop.DBus.Error.AccessDenied"


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
