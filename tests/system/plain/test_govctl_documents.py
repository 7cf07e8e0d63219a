# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Verbs and options of the client are the same in the schema of its output, its help, its
completion and its manual page."""

import json
import pathlib
import re

import pytest

from testbed import govctl, manuals

SCHEMA = json.loads(govctl.SCHEMA.read_text())
VERBS = SCHEMA["properties"]["verb"]["enum"][1:]  # the first is that of no verb
PAGE = manuals.source("govctl.1")
SCRIPTS = ("bash-completion/completions/govctl", "zsh/vendor-completions/_govctl",
           "fish/vendor_completions.d/govctl.fish")
each_verb = pytest.mark.parametrize("verb", VERBS)


def completed(*words):
    """The completions of the last of these words."""
    outcome = govctl.run("complete", "--json", "--", *words)
    return [candidate["word"] for candidate in outcome.result["candidates"]]


def help_of(verb=""):
    """The help of a verb, or of all."""
    return govctl.run(f"{verb} --help").out


def options_in(text):
    """The options in a help."""
    lines = re.findall(r"^  (-\S+)", text, re.MULTILINE)
    return sorted(name for line in lines for name in line.split(","))


def options_on(page):
    """The options in a section of the manual page."""
    return sorted(word for term in manuals.terms(page) for word in term.split()
                  if word.startswith("-"))


def verbs_on(page):
    """The verbs on the manual page, each with what stands below it."""
    return {re.match("[a-z]+( [a-z]+)?(?= |$)", heading)[0]: text
            for heading, text in manuals.entries(page).items()}


def forms():
    """Each verb with its arguments and its summary, from the help."""
    text = help_of().partition("\nVerbs:\n")[2].partition("\n\n")[0]
    rows = [re.split("  +", line.strip(), maxsplit=1) for line in text.split("\n")]
    names = [re.match("[a-z]+( [a-z]+)?(?= |$)", form)[0] for form, _ in rows]
    return dict(zip(names, rows))


def test_schema_has_every_verb():
    schemas = [schema["properties"]["verb"]["const"] for schema in SCHEMA["oneOf"]]
    assert schemas == [None, *VERBS]
    assert len(set(VERBS)) == len(VERBS) > 10


def test_help_has_every_verb():
    assert list(forms()) == VERBS


def test_page_has_every_verb():
    assert sorted(verbs_on(PAGE)) == sorted(VERBS)
    assert sorted(manuals.entries(PAGE)) == sorted(form for form, _ in forms().values())


def test_completion_has_every_verb():
    first = list(dict.fromkeys(verb.split()[0] for verb in VERBS))
    assert completed("") == first
    for word in first:
        second = [verb.split()[1] for verb in VERBS if verb.startswith(f"{word} ")]
        assert not second or completed(word, "") == second


@each_verb
def test_help_of_a_verb(verb):
    form, summary = forms()[verb]
    text = help_of(verb)
    assert text.startswith(f"{summary}\nUsage: govctl {form} [options]\n")
    assert set(options_in(help_of())) <= set(options_in(text))
    for argument in re.findall("[A-Z]+|on.off", form):
        assert re.search(rf"^  {re.escape(argument)} ", text, re.MULTILINE)


@each_verb
def test_completion_has_every_option(verb):
    assert sorted(completed(*verb.split(), "-")) == options_in(help_of(verb))


@each_verb
def test_page_has_every_option(verb):
    own = set(options_in(help_of(verb))) - set(options_in(help_of()))
    assert options_on(verbs_on(PAGE)[verb]) == sorted(own)


def test_page_has_every_common_option():
    assert options_on(manuals.section(PAGE, "OPTIONS")) == options_in(help_of())


@each_verb
def test_completion_has_every_argument(process, switches, verb):
    switches.set_switch("radio", [4], True)
    process.start()
    form, _ = forms()[verb]
    words, arguments = verb.split(), form.removeprefix(verb).split()
    for argument in arguments:  # no holds exist, and any words may be completed
        assert bool(completed(*words, "")) == (argument not in ("[HOLD...]", "[WORD...]"))
        words.append("x")
    if not form.endswith("...]"):
        assert completed(*words, "") == []


def test_page_has_every_exit_code():
    codes = [int(code) for code in manuals.terms(manuals.section(PAGE, "EXIT STATUS"))]
    schema = SCHEMA["properties"]["code"]
    assert codes == list(range(schema["minimum"], schema["maximum"] + 1)) == list(range(9))


@pytest.mark.parametrize("path", SCRIPTS)
def test_every_shell_asks_the_program(path):
    """The scripts contain no verb or option except those of this one call."""
    call = "govctl complete --timeout 0.5 -- "
    script = pathlib.Path("/usr/share", path).read_text()
    assert call in script
    rest = script.replace(call, "")
    options = {option for verb in VERBS for option in options_in(help_of(verb))}
    assert not [option for option in options
                if option.startswith("--") and f" {option} " in rest]
    assert govctl.shell(call).lines
