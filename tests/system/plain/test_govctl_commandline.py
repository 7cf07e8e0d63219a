# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The client's command line and output streams."""

import re

import pytest

from testbed import govctl

ON_TERMINAL = ("script -qec 'govctl get CameraEnabled' /dev/null; "
               "script -qec 'govctl list' /dev/null")

WRONG_USAGE = [
    ("frobnicate", 'unknown verb "frobnicate"; see govctl --help'),
    ("help", 'unknown verb "help"; see govctl --help'),
    ("x", 'unknown verb "x"; see govctl --help'),
    ("lst", 'unknown verb "lst"; did you mean list?'),
    ("switch", "switch needs one of: list, get, set"),
    ("switch lst", 'unknown verb "switch lst"; did you mean switch list'),
    ("list --ofx", 'unknown option "--ofx"; did you mean --off?'),
    ("list --xyz=1", 'unknown option "--xyz"; see govctl --help'),
    ("--nonsense list", 'unknown option "--nonsense"; see govctl --help'),
    ("s", 'unknown verb "s"; did you mean set, switch list'),
    ("list --json=no", "--json takes no value"),
    ("list --color red", '--color takes auto, always, never, not "red"'),
    ("get wifi", 'unknown policy "wifi"; did you mean WlanEnabled?'),
    ("status extra", "too many arguments; use: govctl status"),
    ("list extra", 'unknown policy "extra"'),
    ("set CameraEnabled off --for ever", "--for takes a time like 90m"),
    ("get", "too few arguments; use: govctl get KEY"),
    ("set CameraEnabled", "too few arguments; use: govctl set KEY on|off"),
    ("set CameraEnabled maybe", "a value is on or off"),
    ("switch set radio 2", "a value is on or off"),
    ("list --timeout", "--timeout needs a value; see govctl --help"),
    ("list --timeout soon", '--timeout takes seconds, from 0.001 to 86400, not "soon"'),
    ("list --timeout 0", "--timeout takes seconds"),
    ("list --timeout -1", "--timeout takes seconds"),
    ("list --timeout nan", "--timeout takes seconds"),
    ("list --timeout inf", "--timeout takes seconds"),
    ("list --timeout 1e9", "--timeout takes seconds"),
    ("get CameraEnabled --exec x", 'unknown option "--exec"'),
    ("get NoPolicy", 'unknown policy "NoPolicy"; "govctl list --keys" names them'),
    ("get PolicyType::CameraEnabled", "unknown policy"),
    ("get cameraenabled", 'unknown policy "cameraenabled"; did you mean CameraEnabled?'),
]


@pytest.mark.parametrize("arguments, message", WRONG_USAGE, ids=[row[0] for row in WRONG_USAGE])
def test_wrong_usage(arguments, message):
    text = govctl.run(arguments)
    assert (text.code, text.out, text.err.count("\n")) == (2, "", 1)
    assert text.err.startswith(f"govctl: {message}")
    json = govctl.run("--json", *arguments.split())
    assert json.code == 2 and json.error


def test_empty_names():
    verb, policy = govctl.shell("govctl ''"), govctl.run("get", "")
    assert verb.err == 'govctl: unknown verb ""; see govctl --help\n'
    assert policy.err == 'govctl: unknown policy ""; "govctl list --keys" names them\n'


def test_unknown_name_cannot_steer_the_terminal():
    nasty = govctl.run("get", "\033[31m\n")
    assert (nasty.code, nasty.err.count("\n"), "\033" in nasty.err) == (2, 1, False)


@pytest.mark.parametrize("arguments", [
    "--json --timeout 9 switch get radio", "switch --json get --timeout=9 radio",
    "switch get radio --timeout 9 --json", "--json switch get -- radio",
    "sw g radio --js --timeout 1 --timeout 9"])
def test_options_stand_anywhere(process, switches, arguments):
    switches.set_switch("radio", [4], True)
    process.start()
    assert govctl.run(arguments).result["value"] is True


@pytest.mark.parametrize("arguments, usage", [
    ("--help --json", "govctl VERB [options]"),
    ("switch set --help", "govctl switch set SWITCH on|off [options]")])
def test_help_is_text(arguments, usage):
    text = govctl.run(arguments)
    assert text.code == 0
    assert f"\nUsage: {usage}\n" in text.out


def test_version_is_text():
    assert re.fullmatch(r"govctl \d+\.\d+\.\d+\n", govctl.run("-v").out)


def test_no_program_name():
    """The kernel adds an empty name if the caller passes no arguments at all."""
    named = govctl.shell("exec -a '' govctl list --keys")
    assert named.code == 0
    assert "CameraEnabled" in named.lines
    assert govctl.shell("exec -a '' govctl lst").code == 2


def test_no_environment(process):
    process.start()
    bare = govctl.shell("exec env -i /usr/bin/govctl get CameraEnabled")
    assert (bare.out, bare.err) == ("on\n", "")


@pytest.mark.parametrize("script, environment, coloured", [
    ("govctl list --color always", {}, True),
    ("govctl list", {}, False),
    ("script -qec 'govctl list --color never' /dev/null", {}, False),
    (ON_TERMINAL, {}, True),
    (ON_TERMINAL, {"NO_COLOR": "1"}, False),
    (ON_TERMINAL, {"NO_COLOR": ""}, True),
    (ON_TERMINAL, {"TERM": "dumb"}, False)])
def test_colour_only_on_a_terminal(process, script, environment, coloured):
    process.start()
    outcome = govctl.shell(script, environment={"TERM": "xterm", **environment})
    assert "Enabled" in outcome.out or "on" in outcome.out
    assert ("\033" in outcome.out) == coloured


def test_lines_fold_at_the_terminals_width():
    narrow = govctl.shell("script -qec 'stty cols 40; govctl --help; govctl get x' /dev/null")
    assert "Usage" in narrow.out
    assert max(len(line.strip()) for line in narrow.lines) <= 40
    assert max(len(line) for line in govctl.run("--help").lines) > 80


def test_lines_for_programs_do_not_fold(process, switches):
    key = "a switch with a name longer than a line"
    switches.set_switch(key, [], True)
    process.start()
    for verb, line in [("export", f"{key}=true"), ("switch list --keys", key),
                       ("list --fields key,key,key", 2 * "CameraEnabled\t" + "CameraEnabled")]:
        narrow = govctl.shell(f"script -qec 'stty cols 30; govctl {verb}' /dev/null")
        assert line in narrow.lines


def test_long_names_are_cut():
    cut = govctl.run("get", 5000 * "x")
    assert cut.code == 2
    assert len(cut.err) < 200


@pytest.mark.parametrize("trap", ["trap '' PIPE; ", ""], ids=["ignored signal", "signal"])
@pytest.mark.parametrize("arguments", ["list --keys", "list --keys --json", "--help", "can"])
def test_reader_that_has_gone(arguments, trap):
    gone = govctl.shell(f"{trap}{govctl.PIPE_WITHOUT_READER}govctl {arguments} >&3")
    assert (gone.code, gone.err) == (0, "")


def test_full_disk():
    full = govctl.shell("govctl list --keys >/dev/full")
    assert (full.code, full.err.count("\n")) == (7, 1)
    assert full.err.startswith("govctl: cannot write the result")


def test_closed_output(process):
    process.start()
    assert govctl.shell("govctl set CameraEnabled off >&- 2>&- <&-").code == 0
    assert process.policy("CameraEnabled") is False
