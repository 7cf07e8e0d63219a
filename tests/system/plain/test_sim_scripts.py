# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Scripts for the simulated device: those that are shipped, and those that fail."""

import json
import pathlib

import pytest

from testbed.processes import held
from testbed.simulator import Sim, do, run, shell

EXAMPLES = pathlib.Path("/usr/share/govd-sim/examples")
NAMES = ["browser-killed", "camera-ban", "failing-service", "service-comes-back",
         "stick-unmounted"]


@pytest.fixture
def script(tmp_path):
    """Runs a script of this text with these options."""
    path = tmp_path / "test.sim"

    def run_text(text, *options):
        path.write_text(text)
        return run("run", *options, str(path))
    run_text.path = path
    return run_text


def test_examples_are_these(device):
    assert sorted(path.stem for path in EXAMPLES.iterdir()) == NAMES


@pytest.mark.parametrize("name", NAMES)
def test_examples_run_twice(device, daemon, name):
    for _ in range(2):
        # One script needs a start of the daemon without a service, the others need the service.
        if name == "service-comes-back":
            if daemon.running:
                daemon.stop()
            do("reset")
            do("stop audio")
        if not daemon.running:
            daemon.start()
        outcome = run("run", "--timeout", "60", str(EXAMPLES / f"{name}.sim"))
        assert outcome.code == 0, outcome


@pytest.mark.parametrize("name", NAMES)
def test_examples_need_the_daemon(device, name):
    assert run(f"run --timeout 0.2 {EXAMPLES}/{name}.sim").code in (1, 5)


def test_failing_line_ends_the_script(device, script):
    line = "expect running camera yes --timeout 0.2"
    outcome = script(f"# first\n\nlaunch clock\n  {line}\nlaunch messages\n")
    assert outcome.code == 1
    assert outcome.err == (f'govd-sim: {script.path}, line 4, "{line}": running camera is no, not '
                           "yes, after 0.2 s\n")
    assert outcome.out == f"  3  launch clock\n  4  {line}\n"
    do("expect running messages no")


def test_govctl_line_can_fail(device, script):
    outcome = script("govctl set CamraEnabled off\n")
    assert outcome.code == 2
    assert outcome.err == (f'govd-sim: {script.path}, line 1, "govctl set CamraEnabled off": '
                           'unknown policy "CamraEnabled"; did you mean CameraEnabled?\n')
    assert script("govctl get CameraEnabled\n").code == 5
    missing = shell(f"PATH=/nowhere $SIM run {script.path}")
    assert missing.code == 2
    assert "govctl cannot be started; install it" in missing.err


@pytest.mark.parametrize("line, reason", [
    ("lunch clock", 'unknown verb "lunch"; did you mean launch?'),
    ("launch clck", 'unknown APP "clck"; did you mean clock?'),
    ('plug usb --label "A', "a quotation mark is missing"),
    ("device", "this cannot stand in a script"),
    ("run other.sim", "this cannot stand in a script"),
    ("complete st", "this cannot stand in a script"),
    ("status --watch", "this cannot stand in a script"),
    ("--help", "this cannot stand in a script"),
    ("govd-sim", "no verb given; see govd-sim --help"),
    ('""', "no verb given; see govd-sim --help"),
])
def test_bad_lines_fail_before_anything_is_run(device, script, line, reason):
    outcome = script(f"govd-sim launch camera\n{line}\n")
    assert (outcome.code, outcome.err.count("\n")) == (2, 1)
    assert outcome.err.startswith(f'govd-sim: {script.path}, line 2, "{line}": {reason}')
    do("expect running camera no")


@pytest.mark.parametrize("path", ["/tmp/nowhere.sim", "/tmp"])
def test_unreadable(path):
    outcome = run("run", path)
    assert (outcome.code, outcome.err.count("\n")) == (2, 1)
    assert outcome.err.startswith('govd-sim: cannot read the script "')
    assert outcome.err.endswith("check its name and rights\n")


def test_words_with_blanks(device, script):
    assert script('plug usb --label "MY  PHOTOS"\nexpect storage "MY  PHOTOS" mounted\n').code == 0


def test_json_only(device, script):
    outcome = script("launch clock\ngovctl get CameraEnabled\n", "--json")
    assert (outcome.code, outcome.err) == (5, "")
    documents = [json.loads(line) for line in outcome.out.splitlines()]
    assert [(document["verb"], document["code"]) for document in documents] == [
        ("run", 0), ("launch", 0), ("run", 0), ("get", 5), ("run", 5)]
    assert documents[0]["result"] == {"line": 1, "text": "launch clock"}


def test_timeout_is_for_each_line(device, script):
    outcome = script("expect microphone on\nexpect camera on\n", "--timeout", "0.3")
    assert outcome.err.endswith("after 0.3 s\n")


@pytest.mark.parametrize("line, seconds", [
    ("govctl get CameraEnabled", "0.3"),
    ("govctl get CameraEnabled --timeout 0.2", "0.2"),
    ("govctl --timeout=0.2 status", "0.2"),
])
def test_timeout_is_for_lines_of_govctl(daemon, script, line, seconds):
    daemon.start()
    with held([daemon.pid]):
        outcome = script(line, "--timeout", "0.3")
    assert outcome.code == 6
    assert f": no answer within {seconds} s;" in outcome.err


def test_warnings_of_govctl_are_shown(tmp_path, script):
    """With success and with failure; the reason of a failure is in the failure only."""
    govctl = tmp_path / "govctl"
    govctl.write_text('#!/bin/sh\necho warning >&2\n'
                      '[ "$1" = well ] || { echo govctl: end >&2; exit 3; }\n')
    govctl.chmod(0o700)
    script.path.write_text("govctl well\ngovctl badly\n")
    with Sim(shell=f"PATH={tmp_path}:$PATH; export PATH; $SIM run {script.path}") as sim:
        outcome = sim.finish()
    assert outcome.code == 3
    assert outcome.err == ("warning\nwarning\n"
                           f'govd-sim: {script.path}, line 2, "govctl badly": end\n')
