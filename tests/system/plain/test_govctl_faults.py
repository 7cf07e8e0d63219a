# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The client without a bus, without a daemon, or without a valid answer: each fault has its exit
code and one line of text, within the time limit."""

import signal
import socket
import subprocess

import pytest

from testbed import govctl
from testbed.fakedaemon import FakeDaemon
from testbed.files import CAMERA_MARKER, store, write

# Every verb that needs an answer of the daemon itself.
ASKING = ("summary", "list", "get CameraEnabled", "set CameraEnabled off", "explain CameraEnabled",
          "switch list", "switch get radio", "switch set radio off", "verify", "export",
          "watch --once", "status", "dump")
asking = pytest.mark.parametrize("verb", ASKING)


@pytest.fixture
def silent_bus(tmp_path):
    """A bus that accepts connections and never answers: the environment with its address."""
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(str(tmp_path / "bus"))
        listener.listen(10)
        yield {govctl.BUS_ADDRESS: f"unix:path={tmp_path}/bus"}


@pytest.fixture
def lawless_bus(tmp_path_factory):
    """A separate bus on which every user may own every name: the path of its socket."""
    folder = tmp_path_factory.mktemp("bus")
    for path in (folder, folder.parent, folder.parent.parent):
        path.chmod(0o755)
    (folder / "bus.conf").write_text(
        f"<busconfig><listen>unix:path={folder}/socket</listen><auth>EXTERNAL</auth>"
        "<policy context='default'><allow user='*'/><allow own='*'/>"
        "<allow send_destination='*'/><allow receive_sender='*'/></policy></busconfig>")
    with subprocess.Popen(
            ["dbus-daemon", "--nofork", "--print-address", f"--config-file={folder}/bus.conf"],
            stdout=subprocess.PIPE) as process:
        assert process.stdout.readline()  # printed when it listens
        yield str(folder / "socket")
        process.kill()


def tells(outcome, verb, text):
    """Whether a run gave one line for people, with this text; "dump" writes its document."""
    return verb == "dump" or (text in outcome.err and outcome.err.count("\n") == 1)


@asking
def test_no_bus(verb):
    text = govctl.run(*verb.split(), environment=govctl.NO_BUS)
    assert text.code == 5
    assert tells(text, verb, "cannot reach the system bus")
    assert govctl.run(f"{verb} --json", environment=govctl.NO_BUS).error == "no-bus"


@asking
def test_silent_bus(silent_bus, verb):
    silent = govctl.run(f"{verb} --json --timeout 0.2", environment=silent_bus)
    assert (silent.code, silent.error) == (6, "no-answer")


def test_silent_bus_and_completion(silent_bus):
    """A completion may lack the switches, but it must not block the shell."""
    silent = govctl.run("--timeout", "0.2", "complete", "--", "switch", "get", "",
                        environment=silent_bus)
    assert (silent.code, silent.out, silent.err) == (0, "", "")


@asking
def test_no_service(verb):
    text = govctl.run(verb)
    assert text.code == 5
    assert tells(text, verb, "start the daemon")
    assert govctl.run(f"{verb} --json").error == "no-service"


@asking
def test_stuck_daemon(process, verb):
    process.start()
    process.signal(signal.SIGSTOP)
    stuck = govctl.run(f"{verb} --json --timeout 0.3")
    assert (stuck.code, stuck.error) == (6, "no-answer")


def test_daemon_stuck_in_a_write(process, switches):
    switches.set_switch("radio", [4], True)
    process.start()
    switches.hold("setKeyValue")
    stuck = govctl.run("switch set radio off --timeout 1")
    assert stuck.code == 6
    assert "no answer within 1 s" in stuck.err
    switches.wait_for_call("holding setKeyValue")
    switches.release()


def test_change_for_a_while_without_systemd(daemon):
    daemon.start()
    refused = govctl.run("set CameraEnabled off --for 1h --json")
    assert (refused.code, refused.error) == (5, "no-timer")
    assert govctl.run("get CameraEnabled").out == "on\n"
    assert govctl.result("holds")["holds"] == []


def test_daemon_that_leaves(daemon, transcript):
    """The bus reports it, so the client does not wait for its time-out."""
    daemon.start()
    daemon.signal(signal.SIGSTOP)
    with govctl.Govctl("get CameraEnabled --timeout 86400 --json") as client:
        transcript.wait_for(lambda message: message.member == "KeyValue")
        daemon.kill()
        left = client.finish()
    assert (left.code, left.error) == (5, "no-service")


@pytest.mark.parametrize("arguments", [
    ["can"], ["list", "--keys"], ["complete", "--", "switch", "get"],
    ["complete", "--", "switch", "get", ""], ["--version"]], ids=" ".join)
def test_others_need_no_daemon(arguments):
    outcome = govctl.run(*arguments, environment=govctl.NO_BUS)
    assert (outcome.code, outcome.err) == (0, "")
    assert bool(outcome.out) == (arguments[-1] != "")


@asking
def test_foreign_owner(lawless_bus, verb):
    with FakeDaemon(user="guest", path=lawless_bus) as impostor:
        foreign = govctl.run(f"{verb} --json",
                             environment={govctl.BUS_ADDRESS: f"unix:path={lawless_bus}"})
        assert (foreign.code, foreign.error) == (5, "foreign-service")
        assert impostor.calls == []


def test_foreign_successor(lawless_bus):
    """Its announcements are not shown, neither before its user is known nor after."""
    environment = {govctl.BUS_ADDRESS: f"unix:path={lawless_bus}"}
    with FakeDaemon(path=lawless_bus):
        watch = govctl.watch("--once", environment=environment)
    with watch:
        with FakeDaemon(user="guest", path=lawless_bus) as impostor:
            impostor.announce("VpnEnabled")
            watch.wait_for_err("not to root")
            impostor.announce("NfcEnabled")
        with FakeDaemon(path=lawless_bus) as successor:
            successor.announce("CameraEnabled")
            lines = watch.finish().lines
    assert len(lines) == 3
    assert lines[-1].endswith("policy   CameraEnabled  on")


@pytest.mark.parametrize("call, answer, verb", [
    ("Policy.KeyValue", ("b", True), "get CameraEnabled"),
    ("Policy.KeyValue", ("",), "get CameraEnabled"),
    ("Policy.KeyValue", ("vi", ("b", True), 1), "get CameraEnabled"),
    ("Switch.Keys", ("s", "radio"), "get CameraEnabled"),
    ("Switch.KeyPolicyTypes", ("as", ["1"]), "switch list"),
    ("Switch.KeyValue", ("i", 1), "switch list"),
    ("Policy.SetKeyValue", ("s", "yes"), "set CameraEnabled off"),
], ids=["no variant", "nothing", "too much", "no list", "no number list", "no switch variant",
        "no truth"])
def test_wrong_answers(call, answer, verb):
    with FakeDaemon() as fake:
        fake.answers[call] = answer
        wrong = govctl.run(f"{verb} --json")
    assert (wrong.code, wrong.error) == (5, "bad-answer")


def test_right_answers():
    """The rows of wrong answers fail only because of the answer that they change."""
    with FakeDaemon() as fake:
        assert govctl.run("get CameraEnabled").out == "on\n"
        assert govctl.run("switch list").out == '"radio"  on  WlanEnabled\n'
        fake.answers["Switch.SetKeyValue"] = ("i", 0)
        assert govctl.run("switch set radio off").code == 3


def test_empty_object():
    """The owner of the name has no object."""
    with FakeDaemon() as fake:
        fake.answers.clear()
        empty = govctl.run("list")
    assert (empty.code, empty.err.count("\n")) == (5, 1)
    assert "does not answer as the daemon does" in empty.err


def test_write_without_effect():
    write(CAMERA_MARKER, "")  # exists while the camera is on
    store({"CameraEnabled": True, "WlanEnabled": True})
    with FakeDaemon():
        policy, switch = govctl.run("set CameraEnabled off"), govctl.run("switch set radio off")
    assert (policy.code, switch.code) == (8, 0)
    assert policy.out.startswith("the daemon accepted off, but CameraEnabled still reads on")
    assert switch.out.startswith('switch "radio" still reads on')
