# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The example agents, and the code that generators make of the interface file for clients."""

import contextlib

import pytest
from jeepney import HeaderFields, new_method_call, new_signal

from testbed.bus import BUS, LIMITS_CALLS, SERVICE, SWITCH, start_bus, stop_bus, write_of
from testbed.files import POLICY_FILE
from testbed.plugins import BUILD
from testbed.policies import KEYS, default_of
from testbed.program import Program
from testbed.waiting import wait_until

CLIENTS = BUILD / "tests/clients"
AGENTS = {
    "python": ["/usr/bin/python3", "/usr/share/doc/libgovd-dev/examples/agent-python/agent.py"],
    "qt": [CLIENTS / "agent-qt/agent-qt"],
    "sdbus": [CLIENTS / "agent-sdbus/agent-sdbus"],
}
WRITES = [  # user, argument, what the agent says of it, and the policy after it
    ("mdm", "CameraEnabled=off", "CameraEnabled is set", False),
    ("mdm", "BrowserEnabled=on", "BrowserEnabled is refused", False),  # a plugin locks it
    ("guest", "CameraEnabled=off", "CameraEnabled is not allowed: PID ", True),
]
GENERATED = """\
1
1
lens
1
45
1
1
PolicyChanged NfcEnabled 0
PolicyChanged CameraEnabled 0
PolicyChanged UsbDevicesEnabled 0
SwitchChanged lens 0
"""


@pytest.fixture
def daemon(process):
    """The daemon without a monitor of the bus, which would not outlive the bus."""
    return process


@pytest.fixture(params=AGENTS)
def agent(request):
    """Starts an agent as a user."""
    with contextlib.ExitStack() as started:
        yield lambda *arguments, user="mdm": started.enter_context(
            Program([*AGENTS[request.param], *arguments], user))


def wait_for_lines(agent, line, count):
    """Waits until an agent has printed a line so many times."""
    wait_until(lambda: agent.out.splitlines().count(line) == count)


def test_all_policies_are_read(agent, daemon):
    daemon.start()
    lines = {f"{key} {'on' if default_of(key) else 'off'}" for key in KEYS[1:]}
    running = agent()
    wait_until(lambda: lines <= set(running.out.splitlines()))
    assert set(running.out.splitlines()) - lines == {"the daemon is there"}


@pytest.mark.parametrize("user, argument, said, value", WRITES)
def test_results_of_writes_are_told_apart(agent, daemon, lock_plugin, user, argument, said, value):
    plugin = lock_plugin("BrowserEnabled")
    daemon.start()
    plugin.set_locked("BrowserEnabled")
    agent(argument, user=user).wait_for_out(said)
    assert daemon.policy(argument.split("=")[0]) is value


def test_unknown_policy_is_not_written(agent, daemon):
    daemon.start()
    running = agent("TelepathyEnabled=off", "CameraEnabled=off")
    running.wait_for_out("CameraEnabled is set\n")
    assert "TelepathyEnabled is no policy\n" in running.out
    assert daemon.has_no_value("TelepathyEnabled")


def test_policy_without_value_gets_one(agent, daemon, lock_plugin):
    plugin = lock_plugin("BrowserEnabled", "NfcEnabled")
    plugin.set_locked("BrowserEnabled", "NfcEnabled")
    daemon.start()
    plugin.set_locked()
    running = agent("NfcEnabled=off")
    running.wait_for_out("NfcEnabled off\n")
    assert "NfcEnabled has no value\n" in running.out
    assert "BrowserEnabled has no value\n" in running.out


@pytest.mark.parametrize("text, after", [("0", True), ("true", "true")])
def test_value_that_is_no_boolean(agent, daemon, text, after):
    """One that reads as is wished stays."""
    daemon.start()
    daemon.change("NfcEnabled", text == "0")
    assert daemon.set("NfcEnabled", text, "s") is True
    running = agent("NfcEnabled=on")
    running.wait_for_out("NfcEnabled is set\n")
    assert "NfcEnabled holds no boolean\n" in running.out
    assert daemon.policy("NfcEnabled") == after
    assert running.out.count("NfcEnabled is set\n") == 1


def test_forged_change_of_the_owner_is_not_believed(agent, daemon, guest):
    daemon.start()
    running = agent("CameraEnabled=off")
    wait_for_lines(running, "CameraEnabled off", 1)
    forged = new_signal(BUS, "NameOwnerChanged", "sss", (SERVICE, ":1.0", ""))
    for name in guest.ask(new_method_call(BUS, "ListNames"))[0]:
        forged.header.fields[HeaderFields.destination] = name
        guest.send(forged)
    daemon.change("CameraEnabled", True)
    wait_for_lines(running, "CameraEnabled off", 2)
    assert "the daemon is away\n" not in running.out


def test_changes_and_restarts_are_followed(agent, daemon):
    running = agent("CameraEnabled=off")
    running.wait_for_out("the daemon is away\n")
    daemon.start()
    wait_for_lines(running, "CameraEnabled off", 1)
    daemon.change("CameraEnabled", True)
    wait_for_lines(running, "CameraEnabled off", 2)
    daemon.kill()
    wait_for_lines(running, "the daemon is away", 2)
    text = POLICY_FILE.read_text().replace("NfcEnabled=true", "NfcEnabled=false")
    POLICY_FILE.write_text(text.replace("CameraEnabled=false", "CameraEnabled=true"))
    daemon.start()
    wait_for_lines(running, "NfcEnabled off", 1)
    wait_for_lines(running, "CameraEnabled off", 3)
    daemon.change("NfcEnabled", True)
    wait_for_lines(running, "NfcEnabled on", 2)


def test_no_change_of_a_burst_is_lost(agent, daemon, switches, root):
    switches.set_switch("all", range(1, 46), True)
    daemon.start()
    running = agent("CameraEnabled=off")
    wait_for_lines(running, "CameraEnabled off", 1)
    for value in 3 * (False, True):
        root.call(write_of("all", value, address=SWITCH))
    root.call(write_of("CameraEnabled", True))
    root.ask(write_of("NfcEnabled", False))
    wait_until(lambda: daemon.policy("CameraEnabled") is False and running.out.rfind(
        "NfcEnabled off\n") > running.out.rfind("NfcEnabled on\n"))
    assert running.process.poll() is None


def test_agent_with_many_unanswered_calls(agent, daemon, lock_plugin, switches, root):
    """It ends at the bus's limit of them. Without a limit it goes on."""
    plugin = lock_plugin(*KEYS[2:])
    plugin.set_locked(*KEYS[2:])
    switches.set_switch("most", range(2, 46), True)
    daemon.start()
    plugin.set_locked()
    running = agent("CameraEnabled=off")
    running.wait_for_out("CameraEnabled is set\n")
    if not LIMITS_CALLS:
        for count in range(2, 8):
            daemon.set_switch("most", not daemon.switch("most"))
            root.call(write_of("CameraEnabled", True))
            wait_for_lines(running, "CameraEnabled is set", count)
        return
    wait_until(lambda: daemon.set_switch("most", not daemon.switch("most"))
               and running.process.poll() is not None)
    assert running.finish().code == 1
    assert running.out.endswith(" has no answer: org.freedesktop.DBus.Error.LimitsExceeded\n")
    daemon.change("CameraEnabled", True)
    agent("CameraEnabled=off").wait_for_out("CameraEnabled is set\n")


def test_agent_ends_with_the_bus(agent):
    running = agent()
    running.wait_for_out("the daemon is away\n")
    stop_bus()
    try:
        assert running.finish().code == 1
    finally:
        start_bus()


def test_wrong_argument(agent):
    outcome = agent("CameraEnabled=maybe").finish()
    assert outcome.code == 2
    assert outcome.err.startswith("usage: agent")


@pytest.mark.parametrize("generator", ["gdbus", "qt", "sdbus"])
def test_generated_code_works(daemon, switches, generator):
    switches.set_switch("lens", [1, 45], True)
    daemon.start()
    with Program([CLIENTS / f"generated/calls-{generator}"]) as calls:
        outcome = calls.finish()
    assert (outcome.code, outcome.err, outcome.out) == (0, "", GENERATED)
