# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The tools of the other tests: each check is shown to fail when it should."""

import os
import pathlib
import pwd
import syslog

import pytest
from jeepney import DBusAddress, new_method_call, new_signal

from testbed import files
from testbed.bus import BUS, SERVICE, read_of, write_of
from testbed.processes import held

NUMBERS = DBusAddress("/", interface="org.govd.test")


def test_owners_of_names_are_known(root, client):
    name, other = "org.govd.test.Name", client()
    assert (root.owner(name), root.process_of(name)) == ("", 0)
    other.own(name)
    assert root.owner(name) == other.unique_name
    assert root.process_of(name) == root.process_of(other.unique_name) != 0
    other.vanish()
    assert (root.owner(name), root.process_of(name)) == ("", 0)


@pytest.mark.parametrize("name", ["root", "mdm", "agent", "operator", "deputy", "pretender",
                                  "guest"])
def test_clients_are_who_they_say(daemon, client, root, name):
    daemon.start()
    account, one = pwd.getpwnam(name), client(name)
    user, = root.ask(new_method_call(BUS, "GetConnectionUnixUser", "s", (one.unique_name,)))
    process = os.stat(f"/proc/{root.process_of(one.unique_name)}")
    assert user == account.pw_uid
    assert (process.st_uid, process.st_gid) == (account.pw_uid, account.pw_gid)
    assert one.ask(read_of("CameraEnabled")) == (("b", True),)


def test_clients_can_leave_before_their_calls_are_handled(daemon, client, transcript):
    daemon.start()
    with held([daemon.pid]):
        one = client()
        one.call(write_of("CameraEnabled", False))
        one.vanish()
    transcript.settle()
    assert [question.arguments for question in transcript.calls("GetConnectionUnixProcessID")
            if question.arguments == (one.unique_name,)]


def test_transcript_has_all_messages_in_order(transcript, root):
    transcript.clear()
    for number in range(100):
        root.send(new_signal(NUMBERS, "Number", "iv", (number, ("b", number % 2 == 0))))
    root.settle()
    transcript.settle()
    messages = transcript.signals("Number")
    assert [message.arguments for message in messages] == [
        (number, number % 2 == 0) for number in range(100)]
    assert {(message.signature, message.sender) for message in messages} == {
        ("iv", root.unique_name)}


def test_transcript_shows_that_nothing_happened(daemon, transcript):
    daemon.start()
    unique = transcript.owner(SERVICE)
    assert unique.startswith(":")
    # A change by root has two questions about the process and one announcement.
    daemon.change("CameraEnabled", False)
    transcript.settle()
    assert len(transcript.calls("GetConnectionUnixProcessID", unique)) == 2
    assert transcript.calls("GetConnectionUnixUser", unique) == []
    assert len(transcript.signals("PolicyChanged")) == 1
    call, = transcript.calls("SetKeyValue")
    reply, = transcript.messages(lambda message: message.is_reply_to(call))
    assert reply.arguments == (True,)
    transcript.clear()
    transcript.settle()
    assert transcript.signals("PolicyChanged") == []


def test_settling_waits_for_the_daemon(daemon, root, transcript):
    daemon.start()
    with held([daemon.pid]):
        root.call(write_of("CameraEnabled", False))
        root.settle()
        transcript.settle_bus()
        assert transcript.signals("PolicyChanged") == []
    # Its effects are seen even if the daemon handles it late.
    transcript.settle()
    assert len(transcript.signals("PolicyChanged")) == 1


def test_system_log_takes_lines(system_log):
    before = len(system_log.records())
    syslog.openlog("bed")
    syslog.syslog(syslog.LOG_INFO, "Policy x changed: 1")
    syslog.syslog(syslog.LOG_DAEMON | syslog.LOG_WARNING, "colons: and [brackets]")
    for _ in range(500):
        syslog.syslog(syslog.LOG_INFO, "many")
    records = system_log.records(before)
    assert len(records) == 502
    assert [(record.priority, record.program, record.text) for record in records[:2]] == [
        (syslog.LOG_USER | syslog.LOG_INFO, "bed", "Policy x changed: 1"),
        (syslog.LOG_DAEMON | syslog.LOG_WARNING, "bed", "colons: and [brackets]")]
    assert system_log.records(before + 502) == []


def test_files_tell_whether_they_were_written():
    path = pathlib.Path("/etc/policy/policy.d/a.conf")
    assert files.snapshot(path) is None
    files.write(path, "# comment\n[other]\nA=1\n[policy]\nB=true\nC=a=b\n")
    assert files.stored(path) == {"B": "true", "C": "a=b"}
    before = files.snapshot(path)
    assert files.snapshot(path) == before
    files.replace(path, path.read_bytes())
    assert files.snapshot(path) != before
    files.reset()
    assert files.snapshot(path) is None
    assert path.parent.parent.is_dir()


def test_disks_can_be_full_or_read_only():
    path = files.POLICY_FILE.parent / "file"
    files.write(path, "content")
    with files.read_only(path.parent):
        assert path.read_text() == "content"
        with pytest.raises(OSError, match="Read-only"):
            path.write_text("other")
    with files.small_disk(path.parent, 4096), path.open("wb", buffering=0) as file:
        assert file.write(b"x" * 8192) == 4096
    assert path.read_text() == "content"
    files.write(path, "again")


def test_log_of_the_daemon_is_seen(daemon, root):
    root.own(SERVICE)
    with pytest.raises(ChildProcessError):
        daemon.launch()
        daemon.wait_until_ready()
    assert daemon.wait() == 1
    assert len([line for line in daemon.log() if line.startswith("critical|")]) == 1
    assert daemon.wait_for_log("critical|default|") in daemon.log()
    assert daemon.log(len(daemon.log())) == []


def test_daemon_can_be_wrapped(daemon, tmp_path):
    trace = tmp_path / "trace"
    daemon.wrapper = ["strace", "-f", "-o", str(trace), "-e", "trace=%file"]
    daemon.environment["QT_HASH_SEED"] = "0"
    daemon.start()
    assert os.readlink(f"/proc/{daemon.pid}/exe") == "/usr/sbin/govd"
    assert b"QT_HASH_SEED=0" in pathlib.Path(f"/proc/{daemon.pid}/environ").read_bytes()
    assert daemon.stop() == 0
    assert "/etc/policy/policy.conf" in trace.read_text()


def test_daemon_can_be_killed_and_started_again(daemon, root):
    daemon.start()
    first = daemon.pid
    daemon.kill()
    assert (daemon.running, daemon.pid, daemon.wait()) == (False, 0, -9)
    daemon.start()
    assert daemon.pid not in (0, first)
    assert root.process_of(SERVICE) == daemon.pid
    assert daemon.stop() == 0
