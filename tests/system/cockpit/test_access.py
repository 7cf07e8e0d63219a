# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The page without a mouse, for a screen reader, in both themes, at a desk and on a phone."""

import os
import pathlib

import pytest
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from testbed.bus import read_of, write_of
from testbed.files import replace, write
from testbed.plugins import FILE_LOCK_FILE, FILE_SWITCH_FILE

CAMERA = "CameraEnabled"
AXE = pathlib.Path(os.environ["GOVD_BUILD"], "cockpit/node_modules/axe-core/axe.min.js")
PICTURES = os.environ.get("GOVD_PICTURES")  # a folder for a picture of each view


def press(page, *keys):
    """Presses keys, whatever has the focus."""
    ActionChains(page.driver).send_keys(*keys).perform()


def focused(page):
    """The name of what has the focus."""
    return page.run("""const focused = document.activeElement;
        return focused.getAttribute("aria-label") ?? focused.textContent;""")


def tab_to(page, name):
    """Presses Tab until something with this name has the focus. Raises LookupError."""
    for _ in range(30):
        press(page, Keys.TAB)
        if focused(page).startswith(name):
            return
    raise LookupError(name)


def test_everything_works_with_the_keyboard(page, root):
    tab_to(page, "Search policies")
    press(page, "camera")
    assert [row[0] for row in page.rows()] == [CAMERA]
    tab_to(page, CAMERA)
    press(page, Keys.ENTER)
    page.answer()
    press(page, Keys.ESCAPE)
    assert focused(page) == CAMERA
    tab_to(page, f"{CAMERA} is stored as on")
    press(page, Keys.SPACE)
    page.answer()
    tab_to(page, "Turn off")
    press(page, Keys.ENTER)
    page.patiently(lambda: "The change was made" in page.words())
    tab_to(page, "Close")
    press(page, Keys.ENTER)
    assert focused(page) == f"{CAMERA} is stored as on"
    assert root.ask(read_of(CAMERA))[0][1] is False


def test_focus_stays_when_the_device_changes(page, root):
    tab_to(page, f"{CAMERA} is stored as on")
    root.ask(write_of(CAMERA, False))
    page.patiently(lambda: page.row(CAMERA)[1] == "off")
    assert focused(page) == f"{CAMERA} is stored as on"


def violations(page):
    """What the checker of accessibility finds in the page: rules, and where they are broken."""
    page.run(AXE.read_text())
    found = page.driver.execute_async_script("""
        const done = arguments[0];
        axe.run().then(({ violations }) => done(violations), (error) => done(String(error)));""")
    return [(rule["id"], [node["html"] for node in rule["nodes"]]) for rule in found]


def look(page, name):
    """Checks what can be seen; no part of it is wider than the window."""
    assert violations(page) == [], name
    assert page.run("return document.documentElement.scrollWidth <= innerWidth"), name
    if PICTURES:
        page.driver.switch_to.default_content()
        page.driver.save_screenshot(f"{PICTURES}/{name}.png")
        page.enter_page()


@pytest.fixture(params=["light", "dark"])
def theme(request, page):
    """The theme that is chosen in Cockpit."""
    page.run("localStorage.setItem('shell:style', arguments[0])", request.param)
    yield request.param
    page.run("localStorage.removeItem('shell:style')")


@pytest.fixture(params=[("desktop", 1280, 800), ("phone", 390, 844)], ids=lambda size: size[0])
def size(request, page):
    """The size of the window."""
    name, width, height = request.param
    page.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
    yield name
    page.driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def test_every_view_is_accessible(page, root, theme, size):
    write(FILE_LOCK_FILE, "[lock]\npolicies=LocationEnabled\n")
    replace(FILE_SWITCH_FILE, "[lens]\npolicies=CameraEnabled\nvalue=true\n"
                              "[radio]\npolicies=BluetoothEnabled;WlanEnabled\nvalue=false\n")
    root.ask(write_of("UsbStorageEnabled", False))
    page.driver.refresh()  # so that Cockpit's frame takes up the theme, too
    page.enter_page()
    page.patiently(lambda: page.row("WlanEnabled")[1] == page.row("UsbStorageEnabled")[1] == "off")
    dark = page.run("return document.documentElement.classList.contains('pf-v5-theme-dark')")
    assert dark is (theme == "dark")
    look(page, f"policies-{theme}-{size}")
    page.press(CAMERA)
    page.answer()
    look(page, f"details-{theme}-{size}")
    page.press("Close")
    page.ask(CAMERA)
    look(page, f"confirm-{theme}-{size}")
    page.press("Close")
    page.show("Switches")
    page.row("lens")
    look(page, f"switches-{theme}-{size}")
    page.show("History")
    page.row("UsbStorageEnabled", 3)
    look(page, f"history-{theme}-{size}")
    page.show("Policies")
