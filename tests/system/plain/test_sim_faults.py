# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Faults around the simulated device: each has one line of text and an exit code."""

import os
import signal
import subprocess
import time

import pytest

from testbed.bus import PROCESS_FILE
from testbed.processes import held
from testbed.simulator import Sim, do, run, shell, start_device
from testbed.waiting import wait_until

NO_DEVICE = ('govd-sim: no device is on the system bus; run "govd-sim device" in another '
             "terminal\n")
REMOTE = ["status", "status --watch", "services", "plug usb", "unplug", "unplug A", "launch clock",
          "stop audio", "start audio", "fail audio error", "heal audio", "certified yes", "reset",
          "expect camera on"]
SECONDS = ["0.05", "0.1", "0.2", "0.3", "0.5", "0.7", "1", "1.3", "1.7", "2"]


def no_answer(seconds, who):
    """The line when the bus or the device does not answer."""
    return (f"govd-sim: no answer within {seconds} s; check that {who} is not stopped, or wait "
            "longer with --timeout\n")


@pytest.fixture
def bus_process():
    """The process of the bus."""
    return int(PROCESS_FILE.read_text())


@pytest.mark.parametrize("arguments", REMOTE)
def test_no_device(arguments):
    outcome = run(*arguments.split())
    assert (outcome.code, outcome.out, outcome.err) == (5, "", NO_DEVICE)


@pytest.mark.parametrize("address, arguments", [
    *[("unix:path=/nowhere", arguments) for arguments in [*REMOTE, "device"]],
    ("tcp:host=x,port=1", "status"), ("nonsense", "status")])
def test_no_bus(monkeypatch, address, arguments):
    monkeypatch.setenv("DBUS_SYSTEM_BUS_ADDRESS", address)
    outcome = run(*arguments.split())
    assert (outcome.code, outcome.out) == (5, "")
    assert outcome.err == "govd-sim: cannot reach the system bus; check that dbus runs\n"


def test_second_device(device):
    second = run("device")
    assert second.code == 3
    assert second.err == ("govd-sim: a device is on this bus already; end it first, or use that "
                          "one\n")
    do("status")


def test_name_of_a_service_is_taken(root):
    root.own("org.freedesktop.UDisks2")
    outcome = run("device")
    assert (outcome.code, outcome.err.count("\n")) == (3, 1)
    assert outcome.err.startswith("govd-sim: the name org.freedesktop.UDisks2 cannot be taken")


@pytest.mark.parametrize("order", ["start network", "reset"])
def test_name_is_taken_meanwhile(device, client, order):
    do("stop network")
    other = client()
    wait_until(lambda: not other.owner("net.connman"))
    other.own("net.connman")
    outcome = run(order)
    assert outcome.code == 3
    assert "net.connman cannot be taken on the bus; end" in outcome.err
    do("expect service network absent")
    other.vanish()
    do("start network")


def test_bus_is_lost(monkeypatch):
    with subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"],
                          stdout=subprocess.PIPE, text=True) as bus:
        monkeypatch.setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.stdout.readline().strip())
        with start_device() as device, Sim("status", "--watch") as watch:
            watch.wait_for_out("last events")
            bus.kill()
            outcome = device.finish()
            assert outcome.code == 5
            assert outcome.err.endswith(
                "govd-sim: the connection to the system bus was lost; check that dbus runs, and "
                "start the device again\n")
            assert watch.finish().code == 5


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_ends_in_order(device, number):
    device.process.send_signal(number)
    assert device.finish().code == 0
    with start_device():
        pass


def test_reader_has_gone():
    launch = "until $SIM launch clock 2>/dev/null; do :; done; $SIM launch camera"
    with Sim(shell="$SIM device | head -n 1; echo ${PIPESTATUS[0]}") as device:
        assert shell(launch).code == 0
        # The reader closes the pipe after the first line, so the next write fails.
        device.wait_for_out('Launch("clock")')
        last = shell("while $SIM launch messages 2>/tmp/err; do :; done; cat /tmp/err >&2")
        assert last.err == NO_DEVICE
        assert device.finish().out.splitlines()[-1] == "0"


def test_full_disk():
    outcome = shell("$SIM --help >/dev/full")
    assert outcome.code == 7
    assert outcome.err.startswith("govd-sim: cannot write the result (")


def test_closed_output():
    with Sim(shell="exec $SIM device >&-"):
        assert shell("until $SIM launch clock 2>/dev/null; do :; done").code == 0
        do("expect running clock yes")


@pytest.mark.parametrize("arguments", ["device", "status", "status --watch", "services", "plug usb",
                                       "unplug A", "expect camera on"])
def test_silent_bus(bus_process, arguments):
    start = time.monotonic()
    with held([bus_process]):
        outcome = run(f"{arguments} --timeout 0.3")
    assert time.monotonic() - start < 20
    assert (outcome.code, outcome.err) == (6, no_answer("0.3", "the system bus"))


def test_bus_falls_silent(device, bus_process, transcript):
    """The bus stops answering after the connection is made."""
    transcript.clear()
    with held([device.process.pid]), Sim("status", "--timeout", "2") as status:
        transcript.wait_for(lambda message: message.member == "Get")
        with held([bus_process]):
            outcome = status.finish()
    assert (outcome.code, outcome.err) == (6, no_answer("2", "the system bus"))


@pytest.mark.parametrize("seconds", SECONDS)
def test_stuck_device(device, seconds):
    """Even if a timer fires too early, the failure is that the device does not answer."""
    with held([device.process.pid]):
        outcome = run(f"status --timeout {seconds}")
    assert (outcome.code, outcome.err) == (6, no_answer(seconds, "the device"))
    do("status --json")


def test_device_that_leaves(device, transcript):
    """The bus reports it, so the program does not wait for its time-out."""
    transcript.clear()
    device.process.send_signal(signal.SIGSTOP)
    with Sim("status", "--timeout", "3600") as status:
        transcript.wait_for(lambda message: message.member == "Get")
        os.kill(device.process.pid, signal.SIGKILL)
        outcome = status.finish()
    assert (outcome.code, outcome.err) == (5, NO_DEVICE)
