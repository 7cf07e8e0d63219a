# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The manual pages as installed against their source."""

import pathlib
import re

import pytest

from testbed import manuals, simulator

SHARE = pathlib.Path("/usr/share")
MANUALS = sorted(page.stem for page in manuals.FOLDER.glob("*.md"))


def installed(manual):
    """Where the manual page NAME.SECTION is installed."""
    return SHARE / f"man/man{manual[-1]}" / manual


@pytest.fixture(scope="module", autouse=True)
def with_the_simulator():
    """Installs the one package whose manual page a plain installation leaves out."""
    simulator.install()


@pytest.mark.parametrize("manual", MANUALS)
def test_manual_page_has_what_its_source_has(manual):
    page = installed(manual).read_text()
    source = manuals.source(manual)
    for rank, macro in (("#", "SH"), ("##", "SS")):
        headings = re.findall(rf"^\.{macro} (.*)$", page, re.MULTILINE)
        assert [heading.replace("\\-", "-") for heading in headings] == re.findall(
            rf"^{rank} (.*)$", source, re.MULTILINE)
    assert len(re.findall(r"^\.TP$", page, re.MULTILINE)) == len(manuals.terms(source))
    assert not re.search(r"`|\*\*|\]\(", page)


@pytest.mark.parametrize("manual", MANUALS)
def test_manual_page_names_itself(manual):
    name, _, section = manual.rpartition(".")
    lines = installed(manual).read_text().splitlines()
    assert lines[1].startswith(f'.TH "{name.upper()}" "{section}" "20')
    assert lines[2] == ".SH NAME"
    assert lines[3].startswith(f"{name} - ".replace("-", r"\-"))
