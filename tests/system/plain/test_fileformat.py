# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The contents of a policy file: how they are read, and what a rewrite keeps of them."""

import pytest

from testbed import files
from testbed.files import POLICY_FILE

CAMERA, MICROPHONE = "CameraEnabled", "MicrophoneEnabled"
SEED = POLICY_FILE.parent / "policy.d/seed.conf"
# The default of the policy is true, so only a value that reads as false makes a difference.
FALSE = [b"false", b"0", b"false  ", b"  false", b"false\r"]
NOT_FALSE = [b"true", b"1", b"no", b"off", b"False", b"FALSE", b"falsely", b"false # for good",
             b"false;false;", b'"false"', b"00", b"-1", b"", b"\xff\xfe"]
NOT_THE_POLICY = [
    "[switch]\nCameraEnabled=false\n",
    "[Policy]\nCameraEnabled=false\n",
    "[policy]\n[other]\nCameraEnabled=false\n[policy]\n",
    "[policy]\ncameraEnabled=false\n",
    "[policy]\nCameraEnabledX=false\n",
    "[policy]\n#CameraEnabled=false\n",
    "[policy]\nCameraEnabled[de]=false\n",
    "[policy]\n1=false\n",
    "[policy]\n",
]
NO_KEY_FILE = [b"", b"CameraEnabled: false\n", b"CameraEnabled=false\n",
               b"[policy\nCameraEnabled=false\n", b"\x7fELF\0\0[policy]\nCameraEnabled=false\n"]


@pytest.mark.parametrize("value, is_allowed", [(value, False) for value in FALSE]
                         + [(value, True) for value in NOT_FALSE])
def test_values_are_booleans(daemon, value, is_allowed):
    files.write(POLICY_FILE,
                b"[policy]\nCameraEnabled=" + value + b"\nMicrophoneEnabled=false\n")
    daemon.start_observed()
    assert daemon.policy(CAMERA) is is_allowed
    assert daemon.policy(MICROPHONE) is False
    # Whatever the file had, the event has a plain value.
    assert files.stored()[CAMERA] == files.text_of(is_allowed)
    assert daemon.complaints() == []


@pytest.mark.parametrize("content", NOT_THE_POLICY)
def test_lines_that_do_not_name_the_policy(daemon, content):
    files.write(POLICY_FILE, content)
    daemon.start_observed()
    assert daemon.policy(CAMERA) is True
    assert files.stored()[CAMERA] == "true"
    assert daemon.complaints() == []


def test_broken_seed_is_used_up_to_the_error(daemon):
    # The daemon does not check whether loading the file has failed.
    files.write(SEED, "[policy]\nCameraEnabled=false\nthis is no line of a key file\n"
                      "MicrophoneEnabled=false\n")
    daemon.start_observed()
    assert daemon.policy(CAMERA) is False
    assert daemon.policy(MICROPHONE) is True
    assert daemon.complaints() == []


@pytest.mark.parametrize("content", NO_KEY_FILE)
def test_seed_that_is_no_key_file_is_skipped(daemon, content):
    files.write(SEED, content)
    daemon.start_observed()
    assert daemon.policy(CAMERA) is True
    assert daemon.complaints() == []
    assert SEED.read_bytes() == content


def test_broken_seed_leaves_other_seeds_alone(daemon):
    files.write(SEED, "no key file")
    files.store({CAMERA: False}, SEED.with_name("a"))
    files.store({MICROPHONE: False}, SEED.with_name("z"))
    daemon.start()
    assert daemon.policy(CAMERA) is daemon.policy(MICROPHONE) is False
