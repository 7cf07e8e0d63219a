# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What the module "state" hands to the client, where no daemon runs: the client tells that."""

import json
import os
import pathlib
import subprocess
import sys

import pytest

COLLECTION = pathlib.Path(__file__).parents[2] / "fleet/ansible"


@pytest.fixture
def failure(tmp_path):
    """Runs the module as Ansible does on a device; what it returns when it fails."""
    place = tmp_path / "ansible_collections/govd"
    place.mkdir(parents=True)
    (place / "device").symlink_to(COLLECTION)

    def run(**arguments):
        process = subprocess.run(
            [sys.executable, "-B", COLLECTION / "plugins/modules/state.py"], check=False,
            input=json.dumps({"ANSIBLE_MODULE_ARGS": arguments}), stdout=subprocess.PIPE,
            env={**os.environ, "PYTHONPATH": str(tmp_path)}, text=True)
        assert process.returncode == 1
        return json.loads(process.stdout)
    return run


@pytest.mark.parametrize("wish", [
    {"CameraEnabled=true\nVpnEnabled": False}, {"#CameraEnabled": False}, {"Camera=Enabled": False},
    {"[CameraEnabled": False}, {" CameraEnabled": False}, {"CameraEnabled ": False}, {"": False},
    {"CameraEnabled": "true\n[switch]\nlens=false"}, {"CameraEnabled": "maybe"},
    {"CameraEnabled": None}, {"CameraEnabled": []}, "CameraEnabled=false"])
@pytest.mark.parametrize("option", ["policies", "switches"])
def test_what_a_state_file_cannot_carry_is_refused(failure, option, wish):
    told = failure(**{option: wish})
    assert option in told["msg"] and "error" not in told


def test_client_is_asked_what_a_state_file_can_carry(failure):
    wish = {"Parental control, \u00e9t\u00e9": "yes", "lens[de]": 0}
    assert failure(switches=wish)["error"]["name"] == "no-service"
