# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""govctl watch, and the commands that it runs."""

import datetime
import signal

import pytest
from jeepney import HeaderFields, new_method_call, new_signal

from testbed import bus, govctl
from testbed.fakedaemon import FakeDaemon
from testbed.waiting import wait_until

CAMERA = "CameraEnabled"


def connection_of(client, pid):
    """The unique name of the connection of a process."""
    names = client.ask(new_method_call(bus.BUS, "ListNames"))[0]
    name, = [name for name in names if name.startswith(":") and client.process_of(name) == pid]
    return name


def forged(key, destination=None):
    """An announcement that a policy is on."""
    message = new_signal(bus.POLICY, "PolicyChanged", "sv", (key, ("b", True)))
    if destination:
        message.header.fields[HeaderFields.destination] = destination
    return message


def results(outcome):
    """The results in the output lines of a run."""
    return [govctl.valid(line)["result"] for line in outcome.lines]


def test_shows_policies(process):
    process.start()
    with govctl.watch(user="guest") as watch:
        process.change(CAMERA, False)
        watch.wait_for_out("policy   CameraEnabled  off\n")
        process.change(CAMERA, True)
        watch.wait_for_out("policy   CameraEnabled  on\n")
        watch.process.send_signal(signal.SIGINT)
        outcome = watch.finish()
    assert (outcome.code, len(outcome.lines)) == (-signal.SIGINT, 2)


def test_shows_switches_and_what_they_force(process, switches):
    switches.set_switch("spy", [1], True)
    process.start()
    with govctl.watch() as watch:
        assert process.set_switch("spy", False) is True
        watch.wait_for_out("policy   CameraEnabled  off\n")
        watch.wait_for_out("switch   spy  off\n")


def test_shows_locks(process, lock_plugin):
    lock = lock_plugin(CAMERA)
    process.start()
    with govctl.watch() as watch:
        lock.set_locked(CAMERA)
        lock.announce(CAMERA, True)
        watch.wait_for_out("policy   CameraEnabled  off\n")


def test_is_json_lines(process):
    process.start()
    with govctl.watch("--once", "--json") as watch:
        before = datetime.datetime.now(datetime.timezone.utc)
        process.change(CAMERA, False)
        outcome = watch.finish()
    event, = results(outcome)
    assert outcome.code == 0
    assert (event["kind"], event["key"], event["value"]) == ("policy", CAMERA, False)
    time = datetime.datetime.strptime(event["time"], "%Y-%m-%dT%H:%M:%S.%f%z")
    assert event["time"].endswith("Z")
    assert time >= before.replace(microsecond=before.microsecond // 1000 * 1000)


def test_follows_the_daemon_across_a_restart(process):
    process.start()
    with govctl.watch("--once", "--json") as watch:
        assert process.stop() == 0
        watch.wait_for_out('"kind":"service"')
        process.start()
        watch.wait_for_out('"value":true')
        process.change(CAMERA, False)
        events = results(watch.finish())
    assert [(event["key"], event["value"]) for event in events] == [
        (bus.SERVICE, False), (bus.SERVICE, True), (CAMERA, False)]


def test_first_announcement_of_a_new_daemon_is_shown():
    """The daemon may announce as soon as it has the name."""
    with FakeDaemon():
        watch = govctl.watch("--once")
    with watch, FakeDaemon() as fresh:
        fresh.announce(CAMERA)
        lines = watch.finish().lines
    assert [line.split()[-3:] for line in lines] == [
        ["service", bus.SERVICE, "off"], ["service", bus.SERVICE, "on"], ["policy", CAMERA, "on"]]


def test_signals_of_others_are_ignored(process, root, guest):
    process.start()
    with govctl.watch("--once") as watch:
        target = connection_of(root, watch.process.pid)
        for stranger in (root, guest):
            stranger.send(forged("VpnEnabled"))
            stranger.send(forged("NfcEnabled", target))
            stranger.settle()  # the bus has passed them on before the next messages
        process.change(CAMERA, False)
        line, = watch.finish().lines
    assert CAMERA in line


def test_ends_when_the_reader_has_gone(process):
    process.start()
    with govctl.Shell(f"{govctl.PIPE_WITHOUT_READER}exec govctl watch >&3") as watch:
        watch.wait_for_err(govctl.WATCHING)
        process.change(CAMERA, False)
        outcome = watch.finish()
    assert (outcome.code, outcome.err) == (0, f"govctl: {govctl.WATCHING}")


def test_ends_when_the_bus_is_gone():
    with FakeDaemon(), govctl.watch() as watch:
        try:
            bus.stop_bus()
            outcome = watch.finish()
        finally:
            bus.start_bus()
    assert outcome.code == 5
    assert "cannot reach the system bus" in outcome.err


def test_runs_a_command(process):
    process.start()
    command = 'echo "ran $GOVCTL_KIND $GOVCTL_KEY $GOVCTL_VALUE"'
    with govctl.watch("--once", "--exec", command) as watch:
        process.change(CAMERA, False)
        outcome = watch.finish()
    assert (outcome.code, outcome.lines[1]) == (0, "ran policy CameraEnabled off")


def test_runs_nothing_of_a_name(process, switches, tmp_path):
    name = f"$(touch {tmp_path}/pwned); `touch {tmp_path}/pwned` \"'\n"
    switches.set_switch(name, [], True)
    process.start()
    with govctl.watch("--once", "--exec", f'printf %s "$GOVCTL_KEY" >{tmp_path}/key') as watch:
        switches.announce(name, False)
        assert watch.finish().code == 0
    assert (tmp_path / "key").read_text() == name
    assert [path.name for path in tmp_path.iterdir()] == ["key"]


def test_takes_a_command_in_any_locale(process, tmp_path):
    process.start()
    with govctl.watch("--once", "--exec", f"printf %s 'ü' >{tmp_path}/umlaut",
                      environment={"LC_ALL": "C"}) as watch:
        process.change(CAMERA, False)
        assert watch.finish().code == 0
    assert (tmp_path / "umlaut").read_bytes() == b"\xc3\xbc"


@pytest.mark.parametrize("command, complaint", [
    ("exit 3", "exit code 3"), ("kill -9 $$", "ended by signal 9")])
def test_failing_command_is_reported(process, command, complaint):
    process.start()
    with govctl.watch("--once", "--exec", command) as watch:
        process.change(CAMERA, False)
        outcome = watch.finish()
    assert outcome.code == 0
    assert complaint in outcome.err


def test_commands_keep_the_order(process, tmp_path):
    """Each command waits until the test lets it end, so the events behind it wait as well."""
    ticket = tmp_path / "pass"
    process.start()
    command = f'until rm {ticket} 2>/dev/null; do sleep 0.01; done; echo "ran $GOVCTL_VALUE"'
    with govctl.watch("--exec", command) as watch:
        for value in (False, True, False):
            process.change(CAMERA, value)
        for _ in range(3):
            ticket.touch()
            wait_until(lambda: not ticket.exists())
        wait_until(lambda: watch.out.count("ran ") == 3)
        ran = [line for line in watch.out.split("\n") if line.startswith("ran ")]
    assert ran == ["ran off", "ran on", "ran off"]


def test_command_leaves_json_alone(process):
    process.start()
    with govctl.watch("--once", "--json", "--exec", "echo noise") as watch:
        process.change(CAMERA, False)
        outcome = watch.finish()
    assert len(results(outcome)) == 1
    assert "noise\n" in outcome.err


def test_some_keys(process, switches):
    switches.set_switch("radio", [4], True)
    process.start()
    with govctl.watch("Camera*", "radio") as watch:
        process.change("VpnEnabled", False)
        process.change(CAMERA, False)
        process.set_switch("radio", False)
        watch.wait_for_out("switch   radio  off\n")
        first, second = watch.out.splitlines()
    assert first.endswith("policy   CameraEnabled  off") and "switch   radio  off" in second
    assert govctl.run("watch nothing --once").code == 2


@pytest.mark.parametrize("key, pattern", [("a/b", "a*"), ("x[1]", "x[1]")])
def test_switches_with_unusual_keys(process, switches, key, pattern):
    switches.set_switch(key, [4], True)
    process.start()
    with govctl.watch(pattern) as watch:
        switches.announce(key, False)
        watch.wait_for_out(f"switch   {key}  off\n")


def test_waits_for_a_daemon(process):
    assert govctl.run("watch --once").code == 5
    with govctl.watch("--wait") as watch:
        process.start()
        watch.wait_for_out("service")
        process.change(CAMERA, False)
        watch.wait_for_out("policy   CameraEnabled  off\n")
