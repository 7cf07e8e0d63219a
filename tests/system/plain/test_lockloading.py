# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Which files in the folder of lock plugins are loaded, how, and what is logged about others."""

import os
import pathlib
import shutil

import pytest

from testbed import files
from testbed.daemon import announcement
from testbed.plugins import LOCK_PLUGINS, TestPlugin

CAMERA, BROWSER = "CameraEnabled", "BrowserEnabled"
BUILT = pathlib.Path(os.environ["GOVD_BUILD"], "tests/plugins/lock")
CHILD_NOTES = pathlib.Path("/run/govd-test-child")
INTRODUCTION = ["name", "supportedPolicies"]


@pytest.fixture(autouse=True)
def no_plugins():
    """No folder of lock plugins before the test, and none after it."""
    shutil.rmtree(LOCK_PLUGINS, ignore_errors=True)
    CHILD_NOTES.unlink(missing_ok=True)
    yield
    shutil.rmtree(LOCK_PLUGINS, ignore_errors=True)


def install(plugin, file, size=None):
    """Puts a built plugin, or so many bytes of it, among the lock plugins."""
    content = (BUILT / f"govd-test-{plugin}.so").read_bytes()
    files.write(LOCK_PLUGINS / file, content[:size])


def plugin_lines(daemon):
    """The daemon's own lines of the log about plugins; Qt 6 adds one about an empty library."""
    return [line for line in daemon.logged() if "lugin" in line and "|qt." not in line]


def is_failure(line, path):
    """Whether this is the line about a file that cannot be loaded, with a reason. It has the path
    without the quotes and escapes of other lines."""
    start = f"warning|default|Cannot load plugin {path}: "
    return line.startswith(start) and len(line) > len(start) + 20


def child_notes():
    """The records of the plugin "child"."""
    return CHILD_NOTES.read_text().splitlines()


def test_without_a_folder_everything_is_free(daemon):
    assert not LOCK_PLUGINS.exists()
    daemon.start_observed()
    assert plugin_lines(daemon) == []
    assert daemon.policy(CAMERA) is True
    daemon.change(CAMERA, False)


@pytest.mark.parametrize("file, loaded", [
    ("lock.so", True), ("lock.1.so", True), ("my löck.so", True), ("lock.so.1", False),
    ("lock.so~", False), ("lock", False), ("lockso", False), (".lock.so", False),
    ("folder.so/lock.so", False)])
def test_files_named_so_are_loaded(daemon, lock_plugin, file, loaded):
    plugin = lock_plugin(CAMERA, file=file)
    daemon.start_observed()
    plugin.set_locked(CAMERA)
    assert bool(plugin.calls()) is loaded
    assert daemon.policy(CAMERA) is not loaded
    assert plugin_lines(daemon) == []


def test_each_plugin_is_asked_once_for_its_name_and_its_keys(daemon, lock_plugin):
    one = lock_plugin(CAMERA, file="one.so", name="one")
    two = lock_plugin(file="two.so", name="two")
    daemon.start()
    one.announce(CAMERA, False)
    assert daemon.policy(CAMERA) is True
    daemon.change(CAMERA, False)
    assert one.calls()[:2] == INTRODUCTION
    assert [one.calls().count(question) for question in INTRODUCTION] == [1, 1]
    assert two.calls() == INTRODUCTION


def test_keys_are_fixed_at_start(daemon, lock_plugin):
    plugin = lock_plugin(CAMERA)
    daemon.start()
    plugin.state = {"name": "lock", "supported": [BROWSER], "locked": [BROWSER, CAMERA]}
    assert daemon.policy(CAMERA) is False
    assert daemon.policy(BROWSER) is True


def test_plugin_added_later_is_not_loaded(daemon, lock_plugin):
    daemon.start()
    plugin = lock_plugin(CAMERA)
    plugin.set_locked(CAMERA)
    assert daemon.policy(CAMERA) is True
    assert plugin.calls() == []


def test_later_plugin_of_a_name_replaces_the_earlier(daemon, lock_plugin):
    """Later means later in the listing of the folder, whose order is not defined."""
    lock_plugin(CAMERA, file="one.so", name="same").set_locked(CAMERA)
    lock_plugin(BROWSER, file="two.so", name="same").set_locked(BROWSER)
    listing = os.listdir(LOCK_PLUGINS)
    is_two_later = listing.index("two.so") > listing.index("one.so")
    daemon.start_observed()
    assert plugin_lines(daemon) == []
    assert daemon.policy(CAMERA) is is_two_later
    assert daemon.policy(BROWSER) is not is_two_later


def test_replaced_plugin_is_ignored(daemon, lock_plugin):
    plugins = [lock_plugin(CAMERA, file=file, name="same") for file in ("one.so", "two.so")]
    daemon.start()
    replaced, kept = sorted(plugins, key=lambda plugin: "supportedPolicies" in plugin.calls())
    replaced.set_locked(CAMERA)
    replaced.announce(CAMERA, False)
    replaced.announce(CAMERA, True)
    assert daemon.announcements() == []
    assert daemon.policy(CAMERA) is True
    assert not [call for call in replaced.calls() if call.startswith(("policyIs", "supported"))]
    kept.announce(CAMERA, False)
    assert daemon.announcements() == [announcement(CAMERA, True)]


def test_plugins_are_children_of_the_restriction_in_the_main_thread(daemon):
    install("child", "child.so")
    daemon.start()
    CHILD_NOTES.write_text("")
    assert daemon.policy(CAMERA) is True
    assert child_notes() == ["PolicyRestriction", "main thread"]


def test_plugins_are_deleted_when_the_daemon_ends(daemon):
    install("child", "child.so")
    daemon.start()
    CHILD_NOTES.write_text("")
    assert daemon.stop() == 0
    assert child_notes() == ["deleted by its parent"]


def test_replaced_plugin_has_no_parent(daemon):
    install("child", "one.so")
    install("child", "two.so")
    daemon.start()
    assert daemon.stop() == 0
    assert child_notes().count("deleted by its parent") == 1


@pytest.mark.parametrize("library", ["notalibrary.txt", "noroot.so"])
@pytest.mark.parametrize("file", ["broken.so", 'a "b" 100% %s ö.so'])
def test_file_that_is_no_plugin_is_reported(daemon, library, file):
    with TestPlugin(library, LOCK_PLUGINS / file) as plugin:
        daemon.start_observed()
        line, = plugin_lines(daemon)
        assert is_failure(line, plugin.path)


@pytest.mark.parametrize("plugin, size", [("unresolved", None), ("child", 4000), ("child", 0)])
def test_library_that_cannot_be_loaded_is_reported(daemon, plugin, size):
    install(plugin, "broken.so", size)
    daemon.start_observed()
    line, = plugin_lines(daemon)
    assert is_failure(line, LOCK_PLUGINS / "broken.so")
    assert plugin != "unresolved" or "govdTestNowhere" in line


def test_plugin_of_another_kind_is_skipped_silently(daemon):
    with TestPlugin("otherinterface.so", LOCK_PLUGINS / "other.so"):
        daemon.start_observed()
        assert plugin_lines(daemon) == []
        assert daemon.policy(CAMERA) is True
        # It stays loaded.
        assert "/govd/other.so" in pathlib.Path(f"/proc/{daemon.pid}/maps").read_text()


def test_failures_do_not_stop_the_others(daemon, lock_plugin):
    with (TestPlugin("notalibrary.txt", LOCK_PLUGINS / "a.so") as first,
          TestPlugin("otherinterface.so", LOCK_PLUGINS / "c.so"),
          TestPlugin("noroot.so", LOCK_PLUGINS / "d.so") as third):
        lock_plugin(CAMERA, file="b.so", name="one").set_locked(CAMERA)
        lock_plugin(BROWSER, file="e.so", name="two").set_locked(BROWSER)
        daemon.start_observed()
        one, two = sorted(plugin_lines(daemon))
        assert is_failure(one, first.path) and is_failure(two, third.path)
        assert daemon.policy(CAMERA) is False
        assert daemon.policy(BROWSER) is False
