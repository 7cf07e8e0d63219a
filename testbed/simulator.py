# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The installed program govd-sim as processes of the test."""

import functools
import json
import os
import subprocess

from testbed import program
from testbed.waiting import wait_until

PROGRAM = "/usr/bin/govd-sim"
READY = "the device is on the bus\n"


@functools.lru_cache(maxsize=None)
def install():
    """Installs the simulator, which is not installed by default."""
    subprocess.run(["cmake", "--install", os.environ["GOVD_BUILD"], "--prefix", "/usr",
                    "--component", "simulator"], check=True, stdout=subprocess.DEVNULL)


class Outcome(program.Outcome):
    """The result of one run of the program."""

    @property
    def json(self):
        """Its standard output, which must be one line of JSON, and nothing on standard error."""
        document = json.loads(self.out)
        assert (document["version"], document["code"], self.err) == (1, self.code, "")
        return document


class Sim(program.Program):
    """The program with these arguments. With `shell`, a bash script runs it as "$SIM"."""
    OUTCOME = Outcome

    def __init__(self, *arguments, shell=None):
        install()
        command = [PROGRAM, *arguments] if shell is None else ["bash", "-c", shell]
        super().__init__(command, environment={"SIM": PROGRAM})

    def results(self, **wanted):
        """The results written so far that have these values."""
        documents = map(json.loads, self.out.split("\n")[:-1])  # the last line may be unfinished
        return [result for result in (document["result"] for document in documents)
                if wanted.items() <= result.items()]


def run(*arguments):
    """Runs the program with these arguments; an argument with blanks is split into words."""
    words = arguments if len(arguments) != 1 else arguments[0].split()
    with Sim(*words) as sim:
        return sim.finish()


def shell(script):
    """Runs a script of bash in which "$SIM" is the program."""
    with Sim(shell=script) as sim:
        return sim.finish()


def do(*arguments):
    """Runs the program, which must succeed, and returns its output."""
    outcome = run(*arguments)
    assert outcome.code == 0, outcome
    return outcome.out


def state():
    """The state of the device."""
    return run("status --json").json["result"]


def start_device(*options):
    """Starts a device and waits until it is on the bus. A context that ends it."""
    device = Sim("device", *options)
    wait_until(lambda: READY in device.err or device.process.poll() is not None)
    assert READY in device.err, device.err
    return device
