# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The manual page of the simulated device, as installed, against the tables of the program."""

import pathlib
import re

import pytest

from testbed import simulator
from testbed.services import small
from testbed.sim import device, names, output
from testbed.sim.commandline import COMMON_OPTIONS
from testbed.sim.facts import ROWS
from testbed.sim.verbs import VERBS

PAGE = pathlib.Path("/usr/share/man/man1/govd-sim.1")


@pytest.fixture(scope="module")
def page():
    """The text of the manual page."""
    simulator.install()
    return PAGE.read_text()


def documented(page, macro):
    """The first words of the entries that begin with a macro."""
    return sorted(re.findall(rf"^\.It {macro}([\w-]+)", page, re.MULTILINE))


def entry_of(page, verb):
    """What the page says below a verb, and above the next."""
    return re.search(rf"^\.It Cm {verb}( |$).*?(?=\n\.It Cm |\n\.Sh )", page,
                     re.DOTALL | re.MULTILINE).group()


def test_page_has_every_verb(page):
    assert documented(page, "Cm ") == sorted(VERBS)


@pytest.mark.parametrize("verb", VERBS.values(), ids=VERBS)
def test_page_has_all_of_a_verb(page, verb):
    entry = entry_of(page, verb.name)
    first = entry.split("\n")[0]
    for argument in verb.arguments:
        assert all(word in first for word in argument.name.split("|"))
    for option in verb.options:
        assert f".It Fl -{option.name}" in entry


def test_page_has_every_common_option(page):
    common = page.partition(".Ss Common options")[2].partition("\n.Ss ")[0]
    for option in COMMON_OPTIONS:
        assert f" -{option.name}" in common or f" , -{option.name}" in common
        assert not option.letter or f" {option.letter} , -{option.name}" in common


def test_page_has_no_other_option(page):
    options = [option for verb in VERBS.values() for option in verb.options]
    assert documented(page, "Fl ") == sorted(option.letter or f"-{option.name}"
                                             for option in [*options, *COMMON_OPTIONS])


@pytest.mark.parametrize("word", ROWS)
def test_page_has_every_fact(page, word):
    row = ROWS[word]
    name = f" Ar {row.name}" if row.name else ""
    values = f" Li {' | '.join(row.values)}" if row.values else " Ar NUMBER"
    assert f"\n.It {word}{name}{values}\n" in entry_of(page, "expect")


def test_page_has_every_word(page):
    for mode in names.USB_MODES:
        assert f".Dq {mode}" in entry_of(page, "expect")
    for application in names.IDENTIFIERS:
        assert f".Dq {application}" in entry_of(page, "launch")


def test_page_has_every_exit_code(page):
    section = page.partition(".Sh EXIT STATUS")[2].partition("\n.Sh ")[0]
    assert [int(code) for code in documented(section, "")] == [
        output.DONE, output.NO, output.USAGE, output.REFUSED, output.NO_DEVICE, output.NO_ANSWER,
        output.NO_OUTPUT]


def test_names_match_the_services():
    assert sorted(device.KINDS) == list(names.SERVICES) == sorted(names.SERVICES)
    assert sorted(device.FAULTS) == sorted(["none", *names.FAULTS])
    assert names.USB_MODES == small.UsbModes.MODES
