# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Completion of the client's command line in the shells."""

import pytest

from testbed import govctl

# A shell with a command that is completed like the client and records its arguments.
SETUP = """source /usr/share/bash-completion/completions/govctl
show() { printf '%s\\n' "$@" >answer; }
complete -F _govctl show
bind 'set bell-style none'
"""
ODD_NAMES = ("Parental control", "co:lon", "a=b: c", "$(id) \"'x")


@pytest.mark.parametrize("keys, arguments", [
    ("sta\t", "status"),
    ("get Camera\t", "get|CameraEnabled"),
    ("watch --on\t", "watch|--once"),
    ("set CameraEnabled o\tn", "set|CameraEnabled|on"),
    ("--timeout=3 get Cam\t", "--timeout=3|get|CameraEnabled"),
    ("--timeout 3 get Cam\t", "--timeout|3|get|CameraEnabled"),
    ("get 'Cam\t", "get|CameraEnabled"),
    ("swit\tget Par\t", "switch|get|Parental control"),
    ('switch get "Par\t', "switch|get|Parental control"),
    ("switch get 'Parental c\t", "switch|get|Parental control"),
    ("switch get Parental\\ c\t", "switch|get|Parental control"),
    ('switch get "Par"ental\\ c\t', "switch|get|Parental control"),
    ("switch get Par'ental c\t", "switch|get|Parental control"),
    ('switch get "Parental control" --qu\t', "switch|get|Parental control|--quiet"),
    ("switch get co:\t", "switch|get|co:lon"),
    ("switch get co:l\t", "switch|get|co:lon"),
    ("switch get 'co:\t", "switch|get|co:lon"),
    ("switch get co\\:l\t", "switch|get|co:lon"),
    ("switch get a\t", "switch|get|a=b: c"),
    ("switch get a=\t", "switch|get|a=b: c"),
    ("switch get a=b:\\ \t", "switch|get|a=b: c"),
    ('switch get "\\$\t', "switch|get|$(id) \"'x"),
    ("switch get \\$\t", "switch|get|$(id) \"'x"),
    ("switch get '$\t", "switch|get|$(id) \"'x")])
def test_bash_completes(process, switches, tmp_path, keys, arguments):
    for name in ODD_NAMES:
        switches.set_switch(name, [4], True)
    process.start()
    (tmp_path / "setup").write_text(SETUP)
    terminal = govctl.shell(
        f"cd {tmp_path}; script -qec 'bash --noprofile --rcfile setup -i' /dev/null",
        text=f"show {keys}\nexit\n", environment={"TERM": "xterm", "INPUTRC": "/dev/null"})
    answer = tmp_path / "answer"
    assert answer.exists(), terminal.out
    assert answer.read_text().rstrip("\n").replace("\n", "|") == arguments


@pytest.mark.parametrize("line, candidates", [
    ("sw", "switch"),
    ("switch ", "list get set"),
    ("switch set ", "radio"),
    ("switch set radio ", "on off"),
    ("switch set radio o", "on off"),
    ("switch set radio on ", ""),
    ("nonsense ", ""),
    ("list CameraE", "CameraEnabled"),
    ("list VpnEnabled CameraE", "CameraEnabled"),
    ("watch ra", "radio"),
    ("diff /etc/pass", "/etc/passwd /etc/passwd-"),
    ("get CameraE", "CameraEnabled"),
    ("get camerae", ""),
    ("--timeout ", ""),
    ("--timeout 3 ge", "get"),
    ("--timeout=3 ge", "get"),
    ("get --json Vpn", "VpnEnabled"),
    ("watch --exec ", ""),
    ("watch --exec date --on", "--once"),
    ("get --q", "--quiet"),
    ("get -- Vpn", "VpnEnabled"),
    ("get -- --", ""),
    ("sw se radio ", "on off"),
    ("watch --ex ", ""),
    ("--off", "")])
def test_completion_knows_where_it_is(process, switches, line, candidates):
    switches.set_switch("radio", [4], True)
    process.start()
    found = govctl.run("complete", "--json", "--", *line.split(" ")).result["candidates"]
    assert " ".join(candidate["word"] for candidate in found) == candidates
