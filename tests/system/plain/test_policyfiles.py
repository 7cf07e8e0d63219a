# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Which policy files are read, in which order, and their state afterwards."""

import os
import pathlib

import pytest

from testbed import files
from testbed.files import POLICY_FILE, OpenWatch
from testbed.policies import KEYS

CAMERA, MICROPHONE = "CameraEnabled", "MicrophoneEnabled"
FOLDER = POLICY_FILE.parent / "policy.d"
SEED = FOLDER / "seed.conf"
PLACES = {  # without a policy file
    "empty folder": lambda: FOLDER.mkdir(),
    "file in the folder's place": lambda: files.store({CAMERA: False}, FOLDER),
    "nothing but a folder below": lambda: (FOLDER / "below").mkdir(parents=True),
    "pipe that nobody writes to": lambda: FOLDER.mkdir() or os.mkfifo(FOLDER / "pipe"),
    "link to nowhere": lambda: FOLDER.mkdir() or (FOLDER / "link").symlink_to("/nowhere"),
}


def test_single_file_is_read_alone(daemon):
    files.store({MICROPHONE: False})
    files.store({CAMERA: False}, SEED)
    before = files.snapshot(SEED)
    watch = OpenWatch(FOLDER)
    daemon.start()
    assert daemon.policy(MICROPHONE) is False
    assert daemon.policy(CAMERA) is True
    assert watch.count == 0
    assert files.snapshot(SEED) == before


def test_empty_single_file_hides_the_folder(daemon):
    files.store({})
    files.store({CAMERA: False}, SEED)
    daemon.start()
    assert daemon.policy(CAMERA) is True


def test_folder_is_a_seed(daemon):
    files.store({CAMERA: False}, SEED)
    watch = OpenWatch(FOLDER)
    daemon.start_observed()
    assert daemon.policy(CAMERA) is False
    assert watch.count > 0
    assert daemon.complaints() == []
    assert daemon.stop() == 0
    assert len(files.stored()) == len(KEYS)
    assert POLICY_FILE.read_text().startswith("[policy]\nCameraEnabled=false\nNoPolicy=true\n")

    # From now on the folder is not read.
    files.store({CAMERA: True}, SEED)
    watch = OpenWatch(FOLDER)
    daemon.start()
    assert daemon.policy(CAMERA) is False
    assert watch.count == 0


@pytest.mark.parametrize("is_allowed", [False, True])
@pytest.mark.parametrize("first, last", [
    ("a.conf", "B.conf"), ("A.conf", "b.conf"), ("10-base", "20-site"), ("a", "a.conf"),
    ("policy1.conf", "Policy2.conf")])
def test_last_file_by_name_decides(daemon, first, last, is_allowed):
    files.store({CAMERA: is_allowed}, FOLDER / last)
    files.store({CAMERA: not is_allowed}, FOLDER / first)
    daemon.start()
    assert daemon.policy(CAMERA) is is_allowed


def test_files_are_applied_in_turn(daemon, application_sandbox):
    for name, is_allowed in [("B.conf", True), ("a.conf", False), ("c.conf", False)]:
        files.store({CAMERA: is_allowed}, FOLDER / name)
    application_sandbox.appear()
    daemon.start_observed()
    camera = ["org.kvt.cameralockscreen", "org.kvt.camera"]
    assert [(call[3], call[5]) for call in daemon.calls(application_sandbox.NAME)][:3] == [
        ("AddToGlobalDenylist", camera), ("RemoveFromGlobalDenylist", camera),
        ("AddToGlobalDenylist", camera)]


@pytest.mark.parametrize("name, is_read", [
    ("seed.txt", True), ("seed", True), ("seed.conf~", True), ("a 'seed' \"file\"", True),
    (".seed.conf", False), ("below/seed.conf", False)])
def test_entries_of_a_folder(daemon, name, is_read):
    files.store({CAMERA: False}, FOLDER / name)
    daemon.start_observed()
    assert daemon.policy(CAMERA) is not is_read
    assert daemon.complaints() == []


@pytest.mark.parametrize("make", PLACES.values(), ids=PLACES.keys())
def test_places_without_entries(daemon, make):
    make()
    daemon.start_observed()
    assert daemon.policy(CAMERA) is True
    assert len(files.stored()) == len(KEYS)
    assert daemon.complaints() == []


def test_locked_policy_is_not_taken_from_a_file(daemon, lock_plugin):
    files.store({CAMERA: True, MICROPHONE: False}, SEED)
    lock = lock_plugin(CAMERA)
    lock.set_locked(CAMERA)
    daemon.start_observed()
    assert CAMERA not in files.stored()
    assert daemon.policy(MICROPHONE) is False
    lock.set_locked()
    assert daemon.has_no_value(CAMERA)
    assert daemon.complaints() == []


def test_link_to_a_file_is_the_file(daemon):
    elsewhere = pathlib.Path("/tmp/elsewhere/seed")
    files.store({CAMERA: False}, elsewhere)
    FOLDER.mkdir()
    (FOLDER / "link").symlink_to(elsewhere)
    daemon.start()
    assert daemon.policy(CAMERA) is False


@pytest.mark.parametrize("target", ["/nowhere", "/etc/passwd/inside", POLICY_FILE])
def test_link_to_nowhere_is_no_file(daemon, target):
    POLICY_FILE.symlink_to(target)
    files.store({CAMERA: False}, SEED)
    daemon.start()
    assert daemon.policy(CAMERA) is False
    assert files.stored()[CAMERA] == "false"
