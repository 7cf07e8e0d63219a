# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Text forms of the device: its state on one screen, its services, and a line for each call."""

import os
import re
import unicodedata

from testbed.sim import names
from testbed.sim.names import application_word
from testbed.sim.output import BAD, FAINT, GOOD, STRONG, as_json
from testbed.sim.text import on_off, printable


def status(state, output):
    """The state of the device as text for one screen."""
    def switch(key):
        return output.paint(GOOD if state[key] else BAD, on_off(state[key]))

    def words(key):
        return ", ".join(printable(application_word(word)) for word in state[key])

    rows = (("camera", f"{switch('camera')}  {output.paint(FAINT, names.CAMERA_MARKER)}"),
            ("microphone", switch("microphone")),
            ("USB devices", switch("usb")),
            ("USB modes", words("usbModes")),
            ("tethering", switch("tethering")),
            ("remote access", switch("remoteAccess")),
            ("certified", "yes" if state["certified"] else "no"),
            ("denylist", words("denylist")),
            ("running", words("running")),
            ("storage", *(medium_line(medium, output) for medium in state["storage"])),
            ("services", faulty_services(state["services"], output)),
            ("last events", *(printable(event["text"]) for event in state["events"])))
    return output.paint(STRONG, "Device") + "\n" + "".join(
        f"  {label if number == 0 else '':16}{line or output.paint(FAINT, '-')}\n"
        for label, *lines in rows for number, line in enumerate(lines or [""]))


def medium_line(medium, output):
    """A medium, on one line."""
    place = (output.paint(GOOD, f"mounted at {medium['mountPoint']}") if medium["mounted"]
             else output.paint(BAD, "not mounted"))
    return f"{medium['label']} ({medium['kind']}), {place}"


def service_state(service, output):
    """The state of a service: it runs, is stopped, or has a fault."""
    if not service["present"]:
        return output.paint(BAD, "stopped")
    if service["fault"] != "none":
        return output.paint(BAD, f"fails: {service['fault']}")
    return output.paint(GOOD, "runs")


def faulty_services(services, output):
    """The services that are stopped or have a fault."""
    return ", ".join(f"{service['word']} {service_state(service, output)}" for service in services
                     if not service["present"] or service["fault"] != "none"
                     ) or output.paint(GOOD, "all run")


def service_list(state, output):
    """The services, one on each line."""
    return "".join(f"{service['word']:10} {service['name']:26}  "
                   f"{names.SERVICES[service['word']]:50}  {service_state(service, output)}\n"
                   for service in state["services"])


def call_line(happening, output):
    """A Happening, on one line."""
    what = happening.path if happening.origin == "file" else (
        f"{happening.method}({printable(as_json(happening.arguments)[1:-1])})")
    outcome = [output.paint(BAD, happening.error.rpartition(".")[2])] if happening.error else []
    outcome += [output.paint(GOOD, f"{key}: {before} -> {now}")
                for key, before, now in happening.changes]
    local = happening.time.astimezone()
    time = f"{local:%H:%M:%S}.{local.microsecond // 1000:03}"
    return (f"{output.paint(FAINT, time)}  {output.paint(STRONG, f'{happening.origin:10}')} "
            f"{what:46}  {', '.join(outcome) or output.paint(FAINT, '-')}\n")


def call_object(happening):
    """A Happening as an object for JSON."""
    time = happening.time.isoformat(timespec="milliseconds").replace("+00:00", "Z")
    return {"time": time, "origin": happening.origin, "path": happening.path,
            "method": happening.method or None, "arguments": list(happening.arguments),
            "error": happening.error or None,
            "changes": [{"what": key, "from": before, "to": now}
                        for key, before, now in happening.changes]}


def screen(text):
    """Clears the terminal and shows as much of a text as fits on it."""
    try:
        columns, rows = os.get_terminal_size(1)
    except OSError:
        columns, rows = 0, 0
    lines = text.split("\n")
    if 0 < rows < len(lines):
        lines = [*lines[:rows - 1], ""]
    if columns:
        lines = [clipped(line, columns) for line in lines]
    return "\033[H\033[2J" + "\n".join(lines)


def clipped(line, columns):
    """The line cut to so many columns, with all its colour codes, which have no width."""
    result = ""
    for part in re.split(r"(\033\[\d+m)", line):
        for piece in part if not part.startswith("\033") else [part]:
            columns -= piece[0] != "\033" and not unicodedata.category(piece[0]).startswith("M")
            if piece[0] == "\033" or columns >= 0:
                result += piece
    return result
