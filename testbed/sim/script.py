# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Scripts: lines of the program's own verbs, and of govctl."""

import dataclasses
import re
import subprocess
from dataclasses import dataclass

from testbed.sim.commandline import Request, parse, usage
from testbed.sim.output import FAINT, NO, PROGRAM, USAGE, Failure, Output, write
from testbed.sim.text import printable, quoted

WORD = re.compile(r'(?:[^\s"]|"[^"]*")+')


@dataclass(frozen=True)
class Line:
    """A line with a verb; comments and empty lines are skipped."""
    number: int
    text: str
    words: list  # without the name of this program; "govctl" stays
    request: Request | None  # unless it is a line for govctl


def read_script(path, verbs):
    """The lines of a script, all checked but those for govctl. Raises Failure."""
    try:
        with open(path, encoding="utf-8", errors="replace", newline="\n") as file:
            lines = file.read().split("\n")
    except (OSError, ValueError) as fault:
        reason = getattr(fault, "strerror", None) or "not a name"
        raise usage(f"cannot read the script {quoted(path)} ({reason}); check its name and rights"
                    ) from fault
    found = []
    for number, text in enumerate(map(str.strip, lines), 1):
        if text and not text.startswith("#"):
            try:
                found.append(read_line(number, text, verbs))
            except Failure as failure:
                raise at_line(path, number, text, failure) from failure
    return found


def read_line(number, text, verbs):
    """A line of a script. Raises Failure."""
    # WORD alone would accept an open quote, up to the end of the line.
    if text.count('"') % 2:
        raise usage("a quotation mark is missing")
    words = [word for word in (word.replace('"', "") for word in WORD.findall(text)) if word]
    if words[:1] == [PROGRAM]:
        words = words[1:]
    if words[:1] == ["govctl"]:
        return Line(number, text, words, None)
    request = parse(words, verbs)
    if not request.verb or not request.verb.is_for_scripts or "watch" in request.options:
        raise usage("this cannot stand in a script")
    return Line(number, text, words, request)


def at_line(path, number, text, failure):
    """The failure with the line's place in front of its message."""
    place = f'{printable(path)}, line {number}, "{printable(text)}"'
    return dataclasses.replace(failure, message=f"{place}: {failure.message}")


def run_script(request, output, verbs):
    """Runs a script up to the first line that fails. Raises Failure."""
    path = request.arguments[0]
    for line in read_script(path, verbs):
        output.write({"line": line.number, "text": line.text},
                     f"{output.paint(FAINT, f'{line.number:3}')}  {printable(line.text)}\n")
        try:
            run_line(line, request)
        except Failure as failure:
            raise at_line(path, line.number, line.text, failure) from failure


def run_line(line, script):
    """Runs a line with the script's options, which its own options override. Raises Failure."""
    if line.request is None:
        run_govctl(line, script)
        return
    request = line.request
    if "timeout" not in request.options:
        request = dataclasses.replace(request, timeout=script.timeout)
    request.verb.run(request, Output(script.is_json or request.is_json, request.verb.name))


def run_govctl(line, script):
    """Runs a line of govctl; its own options stand after the script's, so they override them."""
    options = ["--json"] if script.is_json else []
    if "timeout" in script.options:
        options += ["--timeout", script.options["timeout"]]
    try:
        ended = subprocess.run(["govctl", *options, *line.words[1:]], stderr=subprocess.PIPE,
                               check=False)
    except OSError as fault:
        raise Failure(USAGE, "no-govctl",
                      "govctl cannot be started; install it where PATH leads") from fault
    errors = ended.stderr.decode(errors="replace").splitlines(keepends=True)
    last = f"exit code {abs(ended.returncode)}"
    if ended.returncode and errors:
        last = errors.pop().strip().removeprefix("govctl: ")
    write(2, "".join(errors).encode())
    if ended.returncode:
        raise Failure(ended.returncode if ended.returncode > 0 else NO, "govctl", last)
