# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Parses a command line by the table of verbs, and makes the help text from it."""

import re
import textwrap
from collections.abc import Callable
from dataclasses import dataclass, field

from testbed.sim.output import PROGRAM, USAGE, Failure
from testbed.sim.text import nearest, printable, quoted

HELP_COLUMN, HELP_WIDTH = 23, 79
SHORTEST_TIMEOUT, LONGEST_TIMEOUT, TIMEOUT = 0.001, 86400, "5"


@dataclass(frozen=True)
class Option:
    """An option; one without a `value` is a flag."""
    name: str
    description: str
    value: str = ""
    letter: str = ""

    def form(self):
        """How the help writes it."""
        value = f" <{self.value}>" if self.value else ""
        return (f"-{self.letter}, " if self.letter else "") + f"--{self.name}{value}"


COMMON_OPTIONS = (
    Option("json", "Write JSON to standard output, failures included, and nothing else."),
    Option("timeout", "How long to wait for answers, and for what is expected (default: 5).",
           "SECONDS"),
    Option("help", "Print help and exit.", letter="h"),
    Option("version", "Print the version and exit.", letter="v"),
)


@dataclass(frozen=True)
class Argument:
    """A place on the command line of a verb."""
    name: str  # as help and messages write it; "A|B" when only these words are allowed
    description: str
    known: tuple = ()  # the allowed words; empty when any word is allowed
    is_optional: bool = False
    is_repeated: bool = False  # whether it can stand there any number of times

    def form(self):
        """How the help writes it."""
        name = self.name + (" ..." if self.is_repeated else "")
        return f"[{name}]" if self.is_optional else name

    def kind(self):
        """The word's kind, for messages."""
        return "word" if "|" in self.name else self.name


@dataclass(frozen=True)
class Verb:
    """A verb. `run` takes the request and the output, and raises Failure. `check` checks what the
    rows of the arguments cannot describe; it runs before their count is checked."""
    name: str
    summary: str
    run: Callable
    arguments: tuple = ()
    options: tuple = ()
    check: Callable = lambda arguments: None
    is_for_scripts: bool = True

    def form(self):
        """How the verb and its arguments are written."""
        return " ".join([self.name, *(argument.form() for argument in self.arguments)])


@dataclass
class Request:
    """A parsed command line with checked arguments."""
    verb: Verb | None
    arguments: list = field(default_factory=list)
    options: dict = field(default_factory=dict)  # by name; a flag has an empty value
    timeout: float = 0.0

    @property
    def is_json(self):
        """Whether the results are written as JSON."""
        return "json" in self.options


def parse(words, verbs):
    """Parses a command line without the name of the program. Raises Failure."""
    before, rest = {}, list(words)
    take_options(rest, COMMON_OPTIONS, before)
    name = rest.pop(0) if rest else None
    verb = verbs.get(name)
    if name is not None and verb is None:
        raise unknown_name("verb", name, list(verbs))
    request = Request(verb, options=before)
    if verb:
        request.arguments = take_all(rest, verb.options + COMMON_OPTIONS, request.options)
    if "help" in request.options or "version" in request.options:
        return request
    if verb is None:
        raise usage(f"no verb given; see {PROGRAM} --help")
    request.timeout = seconds("--timeout", request.options.get("timeout", TIMEOUT),
                              SHORTEST_TIMEOUT, LONGEST_TIMEOUT)
    check_arguments(verb, request.arguments)
    return request


def named_verb(words, verbs):
    """The name of the verb on a command line, even if that is wrong otherwise; or None."""
    rest = list(words)
    try:
        take_options(rest, COMMON_OPTIONS, {})
    except Failure:
        return None
    return rest[0] if rest and rest[0] in verbs else None


def asks_for_json(words):
    """Whether a command line asks for JSON, even if it is wrong in other respects."""
    return "--json" in (words[:words.index("--")] if "--" in words else words)


def take_all(rest, options, found):
    """Takes options from the full line and returns the other words. Raises Failure."""
    arguments = []
    while rest:
        if take_options(rest, options, found):
            return arguments + rest
        arguments += rest[:1]
        del rest[:1]
    return arguments


def take_options(rest, options, found):
    """Takes the options at the beginning of the line, up to "--"; returns whether it was there."""
    known = {f"--{option.name}": option for option in options}
    known |= {f"-{option.letter}": option for option in options if option.letter}
    unknown = []
    while rest and rest[0].startswith("-") and rest[0] != "-":
        word = rest.pop(0)
        if word == "--":
            complain_about(unknown)
            return True
        name, equals, value = word.partition("=")
        if name not in known:
            unknown.append(printable(name.lstrip("-")))
            continue
        option = known[name]
        if equals and not option.value:
            raise usage(f"Unexpected value after '{name}'; see {PROGRAM} --help")
        if option.value and not equals:
            if not rest:
                raise usage(f"Missing value after '{name}'; see {PROGRAM} --help")
            value = rest.pop(0)
        found[option.name] = value
    complain_about(unknown)
    return False


def complain_about(unknown):
    """Raises the Failure for unknown options."""
    if len(unknown) == 1:
        raise usage(f"Unknown option '{unknown[0]}'; see {PROGRAM} --help")
    if unknown:
        raise usage(f"Unknown options: {', '.join(unknown)}; see {PROGRAM} --help")


def check_arguments(verb, arguments):
    """Raises Failure unless the verb takes these arguments."""
    for word, place in zip(arguments, verb.arguments):
        if place.known and word not in place.known:
            raise unknown_name(place.kind(), word, place.known)
    # The verb's own check comes first: its message is more exact than one about the count.
    verb.check(arguments)
    least = len([place for place in verb.arguments if not place.is_optional])
    is_endless = any(place.is_repeated for place in verb.arguments)
    check_count(arguments, least, None if is_endless else len(verb.arguments), verb.form())


def check_count(arguments, least, most, form):
    """Raises Failure unless the number of arguments is allowed; `most` can be None."""
    if len(arguments) < least:
        raise usage(f"too few arguments; use: {PROGRAM} {form}")
    if most is not None and len(arguments) > most:
        raise usage(f"too many arguments; use: {PROGRAM} {form}")


def seconds(name, text, least, most):
    """Parses a text as seconds. Raises Failure."""
    value = float(text) if re.fullmatch(r"[+-]?(\d+\.?\d*|\.\d+)(e[+-]?\d+)?", text.lower()) else -1
    if not least <= value <= most:
        raise usage(f"{name} takes seconds, from {least:g} to {most:g}, not {quoted(text)}")
    return value


def usage(message):
    """The failure for a wrong command line."""
    return Failure(USAGE, "usage", message)


def unknown_name(kind, name, known):
    """The failure for an unknown name, with the nearest known ones."""
    near = nearest(name, known)
    hint = "" if near else f"; known are {', '.join(known)}"
    return Failure(USAGE, "unknown", f"unknown {kind} {quoted(name)}{hint}", near)


def verb_help(verb):
    """The help about one verb."""
    places = "".join(f" {argument.form()}" for argument in verb.arguments)
    text = (f"Usage: {PROGRAM} {verb.name} [options]{places}\n{verb.summary}\n\nOptions:\n"
            + "".join(map(option_row, verb.options + COMMON_OPTIONS)))
    rows = [row(argument.name, argument.description) for argument in verb.arguments]
    return text + ("\nArguments:\n" + "".join(rows) if rows else "")


def program_help(verbs):
    """The help about the program."""
    return (f"Usage: {PROGRAM} VERB [options]\n"
            "A device in memory: the services that the policy daemon works with.\n\nOptions:\n"
            + "".join(map(option_row, COMMON_OPTIONS)) + "\nVerbs:\n"
            + "".join(f"  {verb.name:10} {verb.summary}\n" for verb in verbs.values())
            + f'\n"{PROGRAM} VERB --help" and {PROGRAM}(1) say more.\n')


def option_row(option):
    """An option in a help text."""
    return row(option.form(), option.description)


def row(form, description):
    """A row of a help text; a long form stands on a line of its own."""
    lines = textwrap.wrap(description, HELP_WIDTH - HELP_COLUMN)
    first = f"  {form}"
    if len(first) < HELP_COLUMN:
        first = first.ljust(HELP_COLUMN) + lines.pop(0)
    return "".join(f"{line}\n" for line in [first, *(" " * HELP_COLUMN + line for line in lines)])
