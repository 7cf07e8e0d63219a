# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The documentation as installed: manual pages are rendered, and links lead to what is there."""

import pathlib
import re
import subprocess

import pytest

from testbed import manuals, simulator

SHARE = pathlib.Path("/usr/share")
PAGES = [page for package in ("govd", "libgovd-dev")
         for page in sorted(SHARE.glob(f"doc/{package}/**/*.md"))]
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


def test_manual_page_of_the_daemon_has_its_options():
    usage = subprocess.run(["/usr/sbin/govd", "--help"], check=True, capture_output=True, text=True)
    options = manuals.terms(manuals.section(manuals.source("govd.8"), "OPTIONS"))
    assert options == sorted(re.findall(r"^  (--\w+)  ", usage.stdout, re.MULTILINE)) != []


def test_there_are_pages():
    assert {page.parent.name for page in PAGES} >= {"govd", "libgovd-dev"}


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_links_lead_to_what_is_installed(page):
    links = re.findall(r"\]\(([^)#:\s]+)(?:#[^)]*)?\)", page.read_text())
    assert [link for link in links if not (page.parent / link).exists()] == []


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_manual_pages_that_are_named_are_installed(page):
    named = set(re.findall(r"\b((?:govd|govctl|org\.kvt\.Pol)[\w.-]*)\((\d)\)", page.read_text()))
    assert [name for name, section in named if not installed(f"{name}.{section}").exists()] == []
