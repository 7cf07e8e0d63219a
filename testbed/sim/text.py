# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Texts for people: printable forms, and the known names nearest to an unknown one."""

import unicodedata

MOST_SUGGESTIONS = 3


def printable(text):
    """The text with its control characters written as escapes, so that a name from outside can
    neither send control sequences to the terminal nor begin a new line."""
    return "".join(f"\\u{ord(char):04x}" if unicodedata.category(char) in ("Cc", "Cf")
                   else char for char in text)


def quoted(text):
    """The text printable and in double quotes."""
    return f'"{printable(text)}"'


def on_off(value):
    """A boolean as text."""
    return "on" if value else "off"


def nearest(name, known):
    """The known names that look most like a name, best first, at most three."""
    ranks = [(distance_of(name.lower(), candidate.lower()), candidate) for candidate in known]
    found = [pair for pair in ranks if name and pair[0] is not None]
    found.sort(key=lambda pair: pair[0])
    return [candidate for _, candidate in found[:MOST_SUGGESTIONS]]


def distance_of(name, known):
    """The distance of a known name from a name; None when it is too large. A known name that
    contains the name is nearer than one that is spelt like it."""
    if known.startswith(name):
        return 0
    if len(name) > 2 and name in known:
        return 1
    # The beginning of the known name counts too: the name may be misspelt and incomplete.
    distance = min(edit_distance(name, known), edit_distance(name, known[:len(name)]))
    limit = max(1, len(name) // 3)
    # A distance of the whole length means that the names have nothing in common.
    return distance + 1 if distance <= limit and distance < len(name) else None


def edit_distance(a, b):
    """The number of characters to insert, delete, replace or swap with the next to make b of a."""
    rows = [list(range(len(b) + 1))]
    for i, char in enumerate(a, 1):
        row = [i]
        for j, other in enumerate(b, 1):
            row.append(min(rows[-1][j - 1] + (char != other), rows[-1][j] + 1, row[-1] + 1))
            if i > 1 and j > 1 and char == b[j - 2] and a[i - 2] == other:
                row[j] = min(row[j], rows[-2][j - 2] + 1)
        rows.append(row)
    return rows[-1][-1]
