# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Texts for people: what is safe to print, and which known name an unknown one looks like."""

import unicodedata

MOST_SUGGESTIONS = 3


def printable(text):
    """The text with its control characters written as escapes, so that a name from outside can
    neither steer the terminal nor begin a new line."""
    return "".join(f"\\u{ord(letter):04x}" if unicodedata.category(letter) in ("Cc", "Cf")
                   else letter for letter in text)


def quoted(text):
    """The text printable and in double quotes."""
    return f'"{printable(text)}"'


def on_off(value):
    """A switch as text."""
    return "on" if value else "off"


def nearest(name, known):
    """The known names that look most like a name, best first, at most three."""
    ranks = [(unlikeness(name.lower(), candidate.lower()), candidate) for candidate in known]
    found = [pair for pair in ranks if name and pair[0] is not None]
    found.sort(key=lambda pair: pair[0])
    return [candidate for _, candidate in found[:MOST_SUGGESTIONS]]


def unlikeness(name, known):
    """How unlike a name a known one is; None when it is too unlike to be meant. Whoever types part
    of a name means that name rather than one that is spelt like the part."""
    if known.startswith(name):
        return 0
    if len(name) > 2 and name in known:
        return 1
    # People misspell beginnings, too: compare with as much of the name as was typed.
    distance = min(edit_distance(name, known), edit_distance(name, known[:len(name)]))
    bearable = max(1, len(name) // 3)
    # Whoever has to replace every letter meant another name.
    return distance + 1 if distance <= bearable and distance < len(name) else None


def edit_distance(a, b):
    """The number of letters to insert, delete, replace or swap with the next until a is b."""
    rows = [list(range(len(b) + 1))]
    for i, letter in enumerate(a, 1):
        row = [i]
        for j, other in enumerate(b, 1):
            row.append(min(rows[-1][j - 1] + (letter != other), rows[-1][j] + 1, row[-1] + 1))
            if i > 1 and j > 1 and letter == b[j - 2] and a[i - 2] == other:
                row[j] = min(row[j], rows[-2][j - 2] + 1)
        rows.append(row)
    return rows[-1][-1]
