# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Loading of the access-switch plugin, and the daemon without one."""

import os
import pathlib

import pytest

from testbed.files import OpenWatch
from testbed.plugins import SWITCH_PLUGIN, SwitchPlugin, TestPlugin

LOAD_WARNING = f'warning|default|Failed to load plugin "{SWITCH_PLUGIN}" "'


@pytest.mark.parametrize("make, remove, warned", [
    (lambda path: path.symlink_to("/nonexistent.so"), pathlib.Path.unlink, False),
    (pathlib.Path.mkdir, pathlib.Path.rmdir, True)], ids=["link to nothing", "directory"])
def test_what_is_no_file_is_no_plugin(daemon, make, remove, warned):
    SWITCH_PLUGIN.parent.mkdir(parents=True, exist_ok=True)
    make(SWITCH_PLUGIN)
    try:
        daemon.start_observed()
        lines = daemon.complaints()
        assert len(lines) == warned and all(line.startswith(LOAD_WARNING) for line in lines)
        assert daemon.switch_keys() == []
    finally:
        remove(SWITCH_PLUGIN)


@pytest.mark.parametrize("library, warned", [
    ("notalibrary.txt", True), ("noroot.so", True), ("unresolved.so", True),
    ("noobject.so", False), ("otherinterface.so", False), ("impostor.so", False)])
def test_file_that_is_of_no_use(daemon, library, warned):
    with TestPlugin(library, SWITCH_PLUGIN):
        daemon.start_observed()
        lines = daemon.complaints()
        assert len(lines) == warned and all(line.startswith(LOAD_WARNING) for line in lines)
        daemon.forget()
        assert daemon.switch_keys() == []
        assert daemon.switch("cellular") is False
        assert daemon.set_switch("cellular", True) is False
        daemon.change("CameraEnabled", False)
        assert daemon.complaints() == []


def test_useless_plugin_is_unloaded(daemon):
    """Qt keeps the plugin's code in memory, but its object is deleted."""
    with TestPlugin("impostor.so", SWITCH_PLUGIN) as plugin:
        daemon.start()
        assert plugin.calls() == ["made", "deleted"]


@pytest.mark.parametrize("is_link", [False, True])
def test_root_object_decides_what_a_plugin_is(daemon, is_link):
    with TestPlugin("mislabelled.so", SWITCH_PLUGIN) as plugin:
        if is_link:
            target = plugin.path.rename(f"{plugin.path}.real")
            plugin.path.symlink_to(target)
        daemon.start_observed()
        assert daemon.switch_keys() == ["mislabelled"]
        assert daemon.complaints() == []
        if is_link:
            target.unlink()


def test_plugin_is_loaded_once(daemon, switches):
    switches.set_switch("cellular", [1], True)
    watch = OpenWatch(switches.path)
    daemon.start_observed()
    assert daemon.complaints() == []
    opened = watch.count
    assert opened > 0
    assert daemon.switch_keys() == ["cellular"]
    assert daemon.switch("cellular") is True
    assert daemon.set_switch("cellular", False) is True
    assert daemon.switch("cellular") is False
    assert daemon.policy("CameraEnabled") is False
    assert watch.count == opened
    # Each object of the plugin holds its pipe open.
    descriptors = pathlib.Path(f"/proc/{daemon.pid}/fd").iterdir()
    assert sum(os.readlink(path).endswith(".so.orders") for path in descriptors) == 1


def test_plugin_installed_later_is_seen_at_the_next_start(daemon):
    daemon.start()
    assert daemon.switch_keys() == []
    with SwitchPlugin() as plugin:
        plugin.set_switch("cellular", [], True)
        assert daemon.switch_keys() == []
        assert daemon.switch("cellular") is False
        assert daemon.set_switch("cellular", True) is False
        assert plugin.calls() == []
        assert daemon.stop() == 0
        daemon.start()
        assert daemon.switch_keys() == ["cellular"]


def test_plugin_removed_later_goes_on_working(daemon, switches):
    switches.set_switch("cellular", [], True)
    daemon.start()
    switches.path.unlink()
    assert daemon.switch_keys() == ["cellular"]
    assert daemon.set_switch("cellular", False) is True
    assert daemon.switch("cellular") is False
