# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What a person with administrative access does in the page."""

import pytest
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from testbed import govctl, unit
from testbed.browser import Browser, add_user
from testbed.bus import SWITCH, read_of, write_of
from testbed.files import write
from testbed.plugins import FILE_LOCK_FILE
from testbed.processes import held
from testbed.waiting import wait_until

CAMERA = "CameraEnabled"
NFC = "NfcEnabled"


def value_of(client, key):
    """The effective value of a policy."""
    return client.ask(read_of(key))[0][1]


def writes_of(key):
    """What the journal has of writes to a policy."""
    return govctl.run("history", key, "--json").result["writes"]


def test_policy_is_changed_when_that_is_confirmed(page, root):
    said = page.ask(CAMERA)
    assert "CameraEnabled: on → off" in said
    assert "removes /var/lib/govd/camera_enabled" in said
    assert value_of(root, CAMERA) is True
    assert "is not in force: org.pelloraos.appjaild1" in page.confirm("Turn off")
    assert value_of(root, CAMERA) is False
    page.patiently(lambda: page.row(CAMERA)[1:] == ["off", "as stored", "not in force", ""])
    assert not page.toggle(CAMERA).is_selected()


def test_window_without_news_closes(page, root):
    page.ask("DeveloperShellEnabled")
    assert page.confirm("Turn off") == ""
    page.patiently(lambda: page.row("DeveloperShellEnabled")[1] == "off")
    assert value_of(root, "DeveloperShellEnabled") is False


def test_nothing_is_changed_without_confirmation(page, root):
    before = writes_of(CAMERA)
    page.ask(CAMERA)
    page.press("Close")
    assert page.toggle(CAMERA).is_selected()
    assert value_of(root, CAMERA) is True
    assert writes_of(CAMERA) == before


def test_other_change_in_between_is_confirmed_anew(page, root):
    page.ask(CAMERA)
    assert root.ask(write_of("lens", False, address=SWITCH)) == (True,)
    page.press("Turn off")
    page.patiently(lambda: "changed meanwhile" in page.words())
    assert "CameraEnabled: on → off" not in page.words()
    assert govctl.run("export", "--json").result["policy"][CAMERA] is True
    page.confirm("Turn off")
    assert govctl.run("export", "--json").result["policy"][CAMERA] is False


def test_window_tells_that_the_daemon_does_nothing_itself(page):
    assert "NfcEnabled: nothing but the announcement" in page.ask(NFC)


def test_window_stays_during_a_change(page):
    page.ask(CAMERA)
    with held([unit.main_pid()]):
        page.press("Turn off")
        ActionChains(page.driver).send_keys(Keys.ESCAPE, Keys.ESCAPE).perform()
    page.patiently(lambda: "The change was made" in page.words())
    page.press("Close")


def test_answer_of_another_client_is_told(page):
    """The page says what went wrong, and goes on when the client is the right one again."""
    page.ask(CAMERA)
    page.run("""window.spawn = cockpit.spawn;
        cockpit.spawn = (words, options) => window.spawn(["echo", "{}"], options);""")
    page.press("Turn off")
    page.patiently(lambda: "could not go on" in page.words())
    page.press("Close")
    assert govctl.run("set", NFC, "off").code in (0, 8)
    page.patiently(lambda: "could not go on" in page.text("#notices"))
    page.run("cockpit.spawn = window.spawn")
    assert govctl.run("set", "BackupEnabled", "off").code in (0, 8)
    page.patiently(lambda: page.row("BackupEnabled")[1] == page.row(NFC)[1] == "off")
    assert page.run("return document.getElementById('notices').textContent") == ""


def test_lock_is_seen_and_refuses(page):
    write(FILE_LOCK_FILE, "[lock]\npolicies=CameraEnabled\n")
    page.patiently(lambda: page.row(CAMERA)[1:3] == ["off", "locked, or its file was edited"])
    words = govctl.run("set", "--dry-run", CAMERA, "off", "--json").document["error"]["message"]
    assert words in page.ask(CAMERA)
    assert not page.run("return document.querySelector('dialog .pf-m-primary')")


def test_switch_says_what_it_governs_and_forces_it(page, root):
    page.show("Switches")
    assert page.row("lens")[1] == "CameraEnabled, NfcEnabled"
    assert "CameraEnabled: on → off" in page.ask("lens")
    page.confirm("Turn off")
    page.patiently(lambda: not page.toggle("lens").is_selected())
    page.show("Policies")
    page.patiently(lambda: page.row(NFC)[1:3] == ["off", "switch lens is off"])
    assert page.toggle(NFC).is_selected()  # it is stored as on


def test_details_are_those_of_the_client(page, root):
    root.ask(write_of(CAMERA, False))
    page.patiently(lambda: page.row(CAMERA)[1] == "off")
    page.press(CAMERA)
    said = page.answer()
    explained = govctl.run("explain", CAMERA, "--json").result
    seen = govctl.run("verify", CAMERA, "--json").result["policies"][0]["seen"]
    for text in (*explained["effects"]["on"], *explained["effects"]["off"], *seen):
        assert text in said
    assert "lens, which is on" in said
    assert "by root: on → off" in said


def test_export_is_what_the_client_exports(page):
    page.press("Export")
    file = page.downloads / "policies.conf"
    wait_until(file.exists)
    assert file.read_text() == govctl.run("export").out


@pytest.fixture
def file(tmp_path):
    """A file of the person who applies it."""
    return tmp_path / "wanted.conf"


def choose(page, file, text):
    """Chooses a file with this text to be applied, and returns what the window says."""
    file.write_text(text)
    page.one("input[type=file]").send_keys(str(file))
    return page.answer()


def test_file_is_applied_when_that_is_confirmed(page, root, file):
    said = choose(page, file, "[policy]\nCameraEnabled=false\n[switch]\nlens=false\n")
    assert "policy CameraEnabled: on → off" in said and "switch lens: on → off" in said
    assert "Not listed: what the switches force" in said
    assert value_of(root, CAMERA) is True
    page.confirm("Apply")
    assert govctl.run("export", "--json").result["switch"] == {"lens": False}


def test_bad_file_is_not_offered(page, file):
    assert "Camera" in choose(page, file, "[policy]\nCamera=false\n")
    assert not page.run("return document.querySelector('dialog .pf-m-primary')")


def test_file_that_changes_nothing_is_not_offered(page, file):
    assert "Nothing changes" in choose(page, file, "[policy]\nCameraEnabled=true\n")
    assert not page.run("return document.querySelector('dialog .pf-m-primary')")


def test_access_is_gained_and_dropped_with_cockpit(daemon):
    with Browser("admin") as page:
        assert "Read-only" in page.text("#notices")
        assert not page.toggle(CAMERA).is_enabled()
        assert not page.button("Apply a file").is_enabled()
        page.gain_access()
        page.patiently(page.toggle(CAMERA).is_enabled)
        assert "Read-only" not in page.run("return document.body.textContent")
        page.drop_access()
        page.patiently(lambda: not page.toggle(CAMERA).is_enabled())


def test_member_of_the_group_needs_no_more(daemon):
    add_user("officer", "pellora-mdm")
    with Browser("officer") as page:
        page.patiently(page.toggle(CAMERA).is_enabled)
        page.ask(CAMERA)
        page.confirm("Turn off")
    assert writes_of(CAMERA)[-1]["user"] == "officer"
