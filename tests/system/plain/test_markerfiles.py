# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Marker files, which exist while a feature is allowed; one exists while it is forbidden."""

import pytest

from testbed import files
from testbed.daemon import announcement, event
from testbed.markers import MARKERS

each_marker = pytest.mark.parametrize("marker", MARKERS, ids=str)


def store(is_there):
    """Stores values with which the next start makes all markers, or removes them."""
    files.store({marker.key: marker.there == is_there for marker in MARKERS})


@each_marker
def test_file_follows_the_policy(daemon, marker):
    store(False)
    daemon.start()
    for _ in range(2):
        daemon.change(marker.key, marker.there)
        assert marker.path.read_bytes() == b""
        assert list(marker.path.parent.iterdir()) == [marker.path]
        daemon.change(marker.key, not marker.there)
        assert not marker.path.exists()
        assert marker.path.parent.is_dir()
    assert daemon.logged() == []


@each_marker
def test_start_creates_folder_and_file(daemon, marker):
    store(True)
    assert not marker.path.parent.exists()
    daemon.start_observed()
    assert marker.path.read_bytes() == b""
    assert daemon.complaints() == []


@each_marker
def test_start_removes_the_file(daemon, marker):
    store(False)
    files.write(marker.path, "")
    daemon.start_observed()
    assert not marker.path.exists()
    assert daemon.complaints() == []


@each_marker
def test_start_leaves_nothing_behind_where_no_file_belongs(daemon, marker):
    store(False)
    daemon.start_observed()
    assert not marker.path.parent.exists()
    assert daemon.complaints() == []


@each_marker
def test_present_file_is_not_changed(daemon, marker):
    store(True)
    files.write(marker.path, "not the daemon's\n")
    before = files.snapshot(marker.path)
    daemon.start()
    assert files.snapshot(marker.path) == before
    assert daemon.stop() == 0
    assert files.snapshot(marker.path) == before
    daemon.start()
    assert files.snapshot(marker.path) == before
    # Another program makes it between two changes.
    daemon.change(marker.key, not marker.there)
    files.write(marker.path, "not the daemon's\n")
    made = files.snapshot(marker.path)
    daemon.change(marker.key, marker.there)
    assert files.snapshot(marker.path) == made
    assert daemon.logged() == []


@each_marker
def test_missing_file_is_left_missing(daemon, marker):
    store(True)
    daemon.start()
    marker.path.unlink()
    daemon.change(marker.key, not marker.there)
    assert not marker.path.exists()
    assert daemon.logged() == []


@each_marker
def test_other_policies_do_not_touch_the_file(daemon, marker):
    store(True)
    daemon.start()
    marker.path.unlink()  # an enforcement would make it again
    others = {"CameraEnabled", "UserReportExportEnabled", "DeveloperShellEnabled",
              "LocationEnabled", "DeveloperModeEnabled", "UsbDeveloperModeEnabled"}
    for key in others - {marker.key}:
        daemon.change(key, False)
        daemon.change(key, True)
    daemon.change(marker.key, marker.there)  # no change either
    assert not marker.path.exists()


@each_marker
def test_file_in_place_of_the_folder(daemon, marker):
    store(False)
    daemon.start()
    files.write(marker.path.parent, "no folder\n")
    daemon.change(marker.key, marker.there)
    assert daemon.logged() == [marker.cannot_create]
    assert daemon.said() == [event(marker.key, not marker.there, marker.there),
                             announcement(marker.key, marker.there), ("reply", True)]
    assert daemon.policy(marker.key) is marker.there  # the value is stored
    daemon.change(marker.key, not marker.there)
    assert marker.path.parent.read_text() == "no folder\n"
    assert daemon.logged() == [marker.cannot_create]


@each_marker
def test_folder_in_place_of_the_file(daemon, marker):
    store(True)
    files.write(marker.path / "inside", "x")
    daemon.start_observed()
    assert daemon.complaints() == []  # an object of another kind is left as it is
    daemon.forget()
    daemon.change(marker.key, not marker.there)
    assert daemon.logged() == [marker.cannot_remove]
    assert (marker.path / "inside").read_text() == "x"
    # At a start the policy is enforced twice: when it is stored, and again with all others.
    assert daemon.stop() == 0
    daemon.start_observed()
    assert daemon.complaints() == 3 * [marker.cannot_remove]
