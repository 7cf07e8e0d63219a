# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The manual page of the simulated device against the tables of the program."""

import re

import pytest

from testbed import manuals
from testbed.services import small
from testbed.sim import device, names, output
from testbed.sim.commandline import COMMON_OPTIONS
from testbed.sim.facts import ROWS
from testbed.sim.verbs import VERBS

PAGE = manuals.source("govd-sim.1")


def entry_of(verb):
    """The heading of a verb on the page, and what stands below it."""
    return next(entry for entry in manuals.entries(PAGE).items()
                if entry[0].split()[0] == verb)


def options_on(page):
    """The options on a part of the page."""
    return [term for term in manuals.terms(page) if term.startswith("-")]


def forms(options):
    """The options in a table of the program, as the page writes them."""
    return sorted(re.sub("[<>,]", "", option.form()) for option in options)


def test_page_has_every_verb():
    assert sorted(entry.split()[0] for entry in manuals.entries(PAGE)) == sorted(VERBS)


@pytest.mark.parametrize("verb", VERBS.values(), ids=VERBS)
def test_page_has_all_of_a_verb(verb):
    heading, entry = entry_of(verb.name)
    for argument in verb.arguments:
        assert all(word in heading for word in argument.name.split("|"))
    assert options_on(entry) == forms(verb.options)


def test_page_has_every_common_option():
    assert options_on(manuals.section(PAGE, "OPTIONS")) == forms(COMMON_OPTIONS)


def test_page_has_every_fact():
    _, entry = entry_of("expect")
    assert manuals.terms(entry) == sorted(
        " ".join([word, row.name, "|".join(row.values) or "NUMBER"]).replace("  ", " ")
        for word, row in ROWS.items())


def test_page_has_every_word():
    for mode in names.USB_MODES:
        assert f"`{mode}`" in entry_of("expect")[1]
    for application in names.IDENTIFIERS:
        assert f"`{application}`" in entry_of("launch")[1]


def test_page_has_every_exit_code():
    assert [int(code) for code in manuals.terms(manuals.section(PAGE, "EXIT STATUS"))] == [
        output.DONE, output.NO, output.USAGE, output.REFUSED, output.NO_DEVICE, output.NO_ANSWER,
        output.NO_OUTPUT]


def test_names_match_the_services():
    assert sorted(device.KINDS) == list(names.SERVICES) == sorted(names.SERVICES)
    assert sorted(device.FAULTS) == sorted(["none", *names.FAULTS])
    assert names.USB_MODES == small.UsbModes.MODES
