# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The page in Cockpit, seen with a real browser through a real login."""

import contextlib
import pathlib
import tempfile

from selenium import webdriver
from selenium.common.exceptions import WebDriverException
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

from testbed import unit
from testbed.waiting import wait_until

PASSWORD = "Only-for-tests-7"
# Without the network that a browser looks for, and for a server that signs its own certificate.
OPTIONS = ("headless=new", "no-sandbox", "disable-gpu", "disable-quic", "no-first-run",
           "disable-background-networking", "disable-component-update", "disable-sync",
           "ignore-certificate-errors", "force-prefers-reduced-motion", "window-size=1280,900")


def add_user(name, group):
    """Adds a user who can log in to Cockpit."""
    secret = unit.run("openssl", "passwd", "-6", PASSWORD)
    unit.run("useradd", "-m", "-s", "/bin/bash", "-p", secret, "-G", group, name)


class Browser:
    """A browser window in which a user has logged in to Cockpit. A context that ends it."""

    address = "https://localhost:9090"

    def __init__(self, user):
        self._folder = tempfile.TemporaryDirectory()
        self.downloads = pathlib.Path(self._folder.name, "downloads")
        options = Options()
        for option in (*OPTIONS, f"user-data-dir={self._folder.name}/profile"):
            options.add_argument(f"--{option}")
        options.add_experimental_option(
            "prefs", {"download.default_directory": str(self.downloads)})
        self.driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
        self._log_in(user)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.driver.quit()
        self._folder.cleanup()

    def _log_in(self, user):
        def loaded():  # not at once where the network's addresses have just changed
            self.driver.get(self.address + "/govd")
            return self.driver.find_element(By.ID, "login-user-input")
        self.patiently(loaded).send_keys(user)
        self.one("#login-password-input").send_keys(PASSWORD)
        self.one("#login-button").click()
        self.enter_page()

    def enter_page(self, host="localhost"):
        """Goes into the frame of the page of a host, and waits for its first look."""
        def entered():
            self.driver.switch_to.default_content()
            self.driver.switch_to.frame(f"cockpit1:{host}/govd")
            return self.driver.find_element(By.CSS_SELECTOR, "nav [aria-current]")
        try:
            self.patiently(entered)
        except TimeoutError as error:
            self.driver.switch_to.default_content()
            seen = self.driver.find_element(By.TAG_NAME, "body").text
            raise AssertionError(f"no page, but: {seen}") from error

    def reload(self):
        """Opens the page anew. Cockpit's frame around it stays: it would have to come back in 15
        seconds, or Cockpit would end the login."""
        self.enter_page()
        self.run("document.body.remove(); location.reload()")
        self.enter_page()

    def gain_access(self, host="localhost"):
        """Gains administrative access to a host with Cockpit's own button."""
        self.driver.switch_to.default_content()
        self.press("Limited access")
        self.one(".pf-c-modal-box input[type=password]").send_keys(PASSWORD + Keys.ENTER)
        self.patiently(lambda: self.button("Administrative access"))
        self.enter_page(host)

    def drop_access(self):
        """Drops administrative access with Cockpit's own button."""
        self.driver.switch_to.default_content()
        self.press("Administrative access")
        self.press("Limit access")
        self.patiently(lambda: self.button("Limited access"))
        self.enter_page()

    @staticmethod
    def patiently(act):
        """The result of `act`, once it is true. Elements may come, go and be replaced meanwhile."""
        def attempt():
            with contextlib.suppress(WebDriverException, LookupError):
                return act()
        return wait_until(attempt)

    def one(self, selector):
        """The element that a CSS selector finds first, once there is one that can be seen."""
        return self.patiently(lambda: next(
            (element for element in self.driver.find_elements(By.CSS_SELECTOR, selector)
             if element.is_displayed() or element.tag_name == "input"), None))

    def button(self, text):
        """The button with this text, once it is there."""
        return self.patiently(lambda: next(
            (element for element in self.driver.find_elements(By.CSS_SELECTOR, "button")
             if element.is_displayed() and element.text.strip() == text), None))

    def press(self, text):
        """Clicks the button with this text, once that can be done."""
        self.patiently(lambda: self.button(text).click() or True)

    def confirm(self, text):
        """Makes the change that the window offers under this name. Returns what the window says
        afterwards, and closes it; an empty text if it has closed by itself."""
        self.press(text)
        self.patiently(lambda: not self.words() or "The change was made" in self.words())
        words = self.words()
        if words:
            self.press("Close")
        return words

    def words(self):
        """The text of the window above the page; empty when there is none."""
        return self.run("return document.querySelector('dialog')?.textContent ?? ''")

    def text(self, selector):
        """The text of an element as it is seen."""
        return self.one(selector).text

    def rows(self):
        """The texts of the cells in the rows of the table that can be seen, without headings."""
        return self.run("""return [...document.querySelectorAll("tbody tr")]
            .filter((row) => row.checkVisibility())
            .map((row) => [...row.cells].map((cell) => cell.textContent));""")

    def row(self, key, column=0):
        """The texts of the first row that has this text in the column, once there is one."""
        return self.patiently(lambda: next(
            (cells for cells in self.rows() if cells[column] == key), None))

    def toggle(self, key):
        """The switch beside a policy or an access switch."""
        return self.patiently(lambda: next(
            (element for element in self.driver.find_elements(By.CSS_SELECTOR, "input[role=switch]")
             if element.get_attribute("aria-label").startswith(f"{key} is ")), None))

    def ask(self, key):
        """Clicks the switch, and returns what the window says that would happen."""
        self.run("arguments[0].click()", self.toggle(key))
        return self.answer()

    def answer(self):
        """The text of the window, once the device has answered."""
        return self.patiently(lambda: (words := self.words()) and "Asking" not in words and words)

    def show(self, view):
        """Goes to a view: Policies, Switches or History."""
        self.patiently(lambda: self.driver.find_element(By.LINK_TEXT, view).click() or True)

    def fill(self, name, text):
        """Writes into the field with this name, or chooses in it."""
        self.run("""
            const field = document.querySelector(`[aria-label="${arguments[0]}"]`);
            field.value = arguments[1];
            field.dispatchEvent(new Event(field.tagName === "SELECT" ? "change" : "input"));
            """, name, text)

    def run(self, script, *arguments):
        """The result of a script in the page."""
        return self.driver.execute_script(script, *arguments)
