# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Completion of command lines."""

from testbed.sim.commandline import COMMON_OPTIONS
from testbed.sim.facts import ROWS


def candidates(words, verbs, labels):
    """The completions of the last word, which is unfinished. `labels` returns the labels of the
    media that are plugged in."""
    *before, last = words or [""]
    known_options = [option for verb in verbs.values() for option in verb.options + COMMON_OPTIONS]
    taking = {f"--{option.name}" for option in known_options if option.value}
    given = [word for word, previous in zip(before, ["", *before])
             if not word.startswith("-") and previous not in taking]
    verb = verbs.get(given[0]) if given else None
    if before and before[-1] in taking:
        known = ()
    elif last.startswith("-"):
        options = (verb.options if verb else ()) + COMMON_OPTIONS
        known = [f"--{option.name}" for option in options]
    elif not given:
        known = verbs
    else:
        known = known_words(verb, given[1:], labels) if verb else ()
    return [word for word in known if word.startswith(last)]


def known_words(verb, given, labels):
    """The words that can follow the given ones of a verb."""
    if verb.name == "expect" and given:
        row = ROWS.get(given[0])
        places = [*([row.names or labels] if row.name else []), row.values] if row else []
        given = given[1:]
    elif verb.name == "unplug":
        places = [labels]
    else:
        places = [argument.known for argument in verb.arguments]
    known = places[len(given)] if len(given) < len(places) else ()
    return known() if callable(known) else known
