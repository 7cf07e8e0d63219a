# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The verbs of the client about the device: status, can and dump."""

import pytest

from testbed import govctl
from testbed.files import POLICY_FILE, write

CAMERA = "CameraEnabled"


def test_status_is_content_with_a_fresh_daemon(process):
    process.start()
    text = govctl.run("status")
    assert text.code == 0
    assert "user root" in text.out
    result = govctl.result("status")
    assert (result["owner"]["user"], result["answers"]) == (0, True)
    assert (result["file"], result["differences"]) == ("read", [])


def test_status_lists_differences(process, lock_plugin):
    lock = lock_plugin(CAMERA)
    process.start()
    lock.set_locked(CAMERA)
    assert govctl.run("status").code == 0
    write(POLICY_FILE, POLICY_FILE.read_text().replace("VpnEnabled=true", "VpnEnabled=false"))
    text = govctl.run("status")
    assert text.code == 1
    assert "  CameraEnabled: off, stored on: locked, or the file was edited\n" in text.out
    assert "  VpnEnabled: on, stored off: " in text.out
    assert [policy["reason"] for policy in govctl.run("status --json").result["differences"]] == [
        "lock", "file"]


@pytest.mark.parametrize("harm, code, words, file", [
    (lambda: POLICY_FILE.parent.chmod(0o700), 0, "this user may not read", "unreadable"),
    (lambda: write(POLICY_FILE, "x\n"), 1, "is malformed: nothing can be saved", "malformed"),
    (POLICY_FILE.unlink, 0, "is missing", "missing")], ids=["unreadable", "malformed", "missing"])
def test_status_tells_of_the_file(process, harm, code, words, file):
    process.start()
    harm()
    text = govctl.run("status", user="guest")
    assert text.code == code
    assert f"policy.conf, which {words}\n" in text.out
    assert govctl.result("status", user="guest")["file"] == file


def test_status_knows_what_it_does_not_know():
    assert govctl.run("status").out == "service   not there\n"
    assert govctl.run("status", environment=govctl.NO_BUS).out == "service   not known\n"


@pytest.mark.parametrize("user, right", [
    ("root", "root"), ("mdm", "member"), ("agent", "member"), ("operator", "group"),
    ("deputy", "none"), ("pretender", "none"), ("guest", "none")])
def test_can_gives_the_reason(process, user, right):
    """The daemon decides, so its answer must agree."""
    allowed = right != "none"
    text = govctl.run("can", user=user)
    assert text.code == (0 if allowed else 1)
    assert text.out.startswith("yes: " if allowed else "no: ")
    result = govctl.result("can", user=user)
    assert (result["right"], result["allowed"]) == (right, allowed)
    process.start()
    assert govctl.run("set CameraEnabled off", user=user).code == (0 if allowed else 4)


def test_dump_has_everything(process):
    process.start()
    people = govctl.run("dump")
    assert people.code == 0
    assert len(people.lines) > 100
    assert govctl.valid(people.out)
    result = govctl.result("dump")
    assert govctl.policy_in(result, CAMERA)["value"] is True
    file = result["files"][0]
    assert (file["path"], file["values"][CAMERA]) == (str(POLICY_FILE), True)
    assert result["caller"]["user"] == "root"
