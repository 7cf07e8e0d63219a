# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The manual pages in the form in which they are written, taken apart."""

import pathlib
import re

FOLDER = pathlib.Path(__file__).parents[1] / "docs/man"


def source(page):
    """The text of a page, by its name and section: "govd.8"."""
    return (FOLDER / f"{page}.md").read_text()


def section(page, name):
    """What stands below a heading of the first rank."""
    return f"\n{page}\n# ".partition(f"\n# {name}\n")[2].partition("\n# ")[0]


def entries(page):
    """The headings of the second rank, each with what stands below it."""
    parts = re.split(r"^##? (.*)$", page, flags=re.MULTILINE)
    ranks = re.findall(r"^(##?) ", page, re.MULTILINE)
    return {heading: text for rank, heading, text in zip(ranks, parts[1::2], parts[2::2])
            if rank == "##"}


def terms(text):
    """The terms in the lists of a text, without marks: "-q, --quiet" gives "-q --quiet"."""
    return sorted(term.replace("`", "").replace("*", "").replace(",", "")
                  for term in re.findall(r"^- (`[^:\n]*):[ \n]", text, re.MULTILINE))
