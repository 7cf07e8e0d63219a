# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The simulator's command line, and its completion in shells."""

import pytest

from testbed.simulator import do, run, shell
from testbed.sim.commandline import COMMON_OPTIONS, program_help, verb_help
from testbed.sim.verbs import VERBS

OPTION = "see govd-sim --help"


@pytest.mark.parametrize("arguments, message", [
    ("", "no verb given; see govd-sim --help"),
    ("stauts", 'unknown verb "stauts"; did you mean status'),
    ("frobnicate", 'unknown verb "frobnicate"; known are device, status, services, '),
    ("--nonsense status", f"Unknown option 'nonsense'; {OPTION}"),
    ("--watch status", f"Unknown option 'watch'; {OPTION}"),
    ("launch --watch clock", f"Unknown option 'watch'; {OPTION}"),
    ("status --one --two", f"Unknown options: one, two; {OPTION}"),
    ("status --json=1", f"Unexpected value after '--json'; {OPTION}"),
    ("launch", "too few arguments; use: govd-sim launch APP"),
    ("launch clock camera", "too many arguments; use: govd-sim launch APP"),
    ("launch browser", 'unknown APP "browser"; did you mean browserpwa, browserstandalone?'),
    ("plug ubs", 'unknown word "ubs"; did you mean usb?'),
    ("certified maybe", 'unknown word "maybe"; known are yes, no'),
    ("stop adio", 'unknown SERVICE "adio"; did you mean audio?'),
    ("heal usbmods", 'unknown SERVICE "usbmods"; did you mean usbmodes?'),
    ("fail audio errr", 'unknown word "errr"; did you mean error?'),
    ("fail audio slow", 'slow takes seconds, from 0 to 3600, not ""'),
    ("fail audio slow soon", "slow takes seconds"),
    ("fail audio slow -- -1", "slow takes seconds"),
    ("fail audio slow nan", "slow takes seconds"),
    ("fail audio slow 1e9", "slow takes seconds"),
    ("fail audio error 3", "only slow takes seconds"),
    ("reset audio", "too many arguments; use: govd-sim reset"),
    ("expect", "too few arguments; use: govd-sim expect WHAT [NAME] VALUE"),
    ("expect micro off", 'unknown WHAT "micro"; did you mean microphone?'),
    ("expect microphone", "too few arguments; use: govd-sim expect microphone on|off"),
    ("expect microphone x on", "too many arguments; use: govd-sim expect microphone on|off"),
    ("expect running clock", "too few arguments; use: govd-sim expect running APP yes|no"),
    ("expect running clck no", 'unknown APP "clck"; did you mean clock?'),
    ("expect microphone yes", 'unknown value "yes"; known are on, off'),
    ("expect events many", 'events is a number, not "many"'),
    ("status --timeout soon", '--timeout takes seconds, from 0.001 to 86400, not "soon"'),
    ("status --timeout 0", "--timeout takes seconds"),
    ("status --timeout", f"Missing value after '--timeout'; {OPTION}"),
])
def test_wrong_usage(arguments, message):
    text = run(*arguments.split())
    assert (text.code, text.out, text.err.count("\n")) == (2, "", 1)
    assert text.err.startswith(f"govd-sim: {message}")


def test_unknown_label_gets_the_nearest(device):
    do("plug usb --label PHOTOS")
    outcome = run("unplug PHOTSO")
    assert outcome.code == 2
    assert outcome.err == 'govd-sim: "PHOTSO" is not plugged in; did you mean PHOTOS?\n'


def test_only_unplug_suggests_labels(device):
    do("plug usb --label usbstick")
    assert run("plug usb --label a/b").err == 'govd-sim: "a/b" cannot be a label\n'


def test_nearest_in_json():
    error = run("stop storag --json").json["error"]
    assert (error["name"], error["nearest"]) == ("unknown", ["storage"])


@pytest.mark.parametrize("arguments, verb", [
    ("launch clck", "launch"),
    ("status --nonsense", "status"),
    ("--timeout x run A", "run"),
    ("lunch clock", None),
    ("", None),
])
def test_json_names_the_verb(arguments, verb):
    outcome = run("--json", *arguments.split())
    assert outcome.code == 2
    assert outcome.json["verb"] == verb


@pytest.mark.parametrize("arguments, start", [
    ("--help", "Usage: govd-sim VERB [options]\n"),
    ("-h", "Usage: govd-sim VERB [options]\n"),
    ("plug --help", "Usage: govd-sim plug [options] usb|card\n"),
    ("--help --json plug", "Usage: govd-sim plug [options] usb|card\n"),
    ("expect --help", "Usage: govd-sim expect [options] WHAT [NAME] VALUE\n"),
    ("--version", "govd-sim 0."),
])
def test_help_and_version(arguments, start):
    assert do(arguments).startswith(start)


@pytest.mark.parametrize("verb", VERBS.values(), ids=VERBS)
def test_help_has_everything(verb):
    assert verb.summary in program_help(VERBS)
    text = verb_help(verb)
    for option in verb.options + COMMON_OPTIONS:
        assert f"--{option.name}" in text
        assert not option.letter or f"-{option.letter}, " in text
    for argument in verb.arguments:
        assert argument.form() in text
    assert max(map(len, text.splitlines())) < 80


@pytest.mark.parametrize("arguments", ["--json --timeout 9 plug usb --label A",
                                       "plug --label B --json usb",
                                       "plug usb --timeout=9 --json --label=C"])
def test_options_stand_anywhere(device, arguments):
    document = run(arguments).json
    assert document["verb"] == "plug"
    assert document["result"]["label"] in "ABC"
    do("unplug", "--", document["result"]["label"])


@pytest.mark.parametrize("words, candidates", [
    (["st"], ["status", "stop", "start"]),
    (["status", "--w"], ["--watch"]),
    (["--timeout", "3", "plug", ""], ["usb", "card"]),
    (["plug", "usb", "--label", ""], []),
    (["plug", "--json", "c"], ["card"]),
    (["fail", "audio", "s"], ["silent", "slow"]),
    (["expect", "usb"], ["usb", "usb-mode"]),
    (["expect", "usb", ""], ["on", "off"]),
    (["expect", "fault", "aud"], ["audio"]),
    (["expect", "usb-mode", "mtp_mode", "n"], ["no"]),
    (["unplug", ""], []),
    (["lunch", ""], []),
])
def test_candidates(words, candidates):
    assert do("complete", "--", *words).splitlines() == candidates


@pytest.mark.parametrize("words", [["expect", "storage", ""], ["unplug", "M"]])
def test_labels_are_candidates(device, words):
    do("plug", "usb", "--label", "MY PHOTOS")
    document = run("complete", "--json", "--", *words).json
    assert document["result"] == {"candidates": ["MY PHOTOS"]}
    assert do("complete", "--", "unplug", "MY PHOTOS", "") == ""


@pytest.mark.parametrize("line, replies", [
    ("govd-sim laun", ["launch"]),
    ("govd-sim unplug M", [r"MY\ PHOTOS"]),
    (r"govd-sim unplug MY\ ", [r"MY\ PHOTOS"]),
    ('govd-sim unplug "MY', ["MY PHOTOS"]),
    ("govd-sim run ", []),
])
def test_bash_completes(device, line, replies):
    do("plug", "usb", "--label", "MY PHOTOS")
    # Words as bash splits them: an open quote and an escaped blank stay in their word.
    words = line.replace(r"\ ", "\0").split(" ")
    array = " ".join("'" + word.replace("\0", "\\ ") + "'" for word in words)
    outcome = shell("source /usr/share/bash-completion/completions/govd-sim; compopt() { :; };"
                    f"COMP_WORDS=({array}); COMP_CWORD={len(words) - 1}; _govd_sim;"
                    'printf "%s\\n" "${COMPREPLY[@]}"')
    assert [reply for reply in outcome.out.splitlines() if reply] == replies
