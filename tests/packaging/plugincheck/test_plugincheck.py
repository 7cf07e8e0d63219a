# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What govd-plugin-check tells of plugins that are right, or wrong in one way each."""

import os
import pathlib
import shutil
import subprocess

import pytest

BUILD = pathlib.Path(os.environ["GOVD_BUILD"])
PLUGINS = BUILD / "tests/packaging/plugincheck/plugins"
ODD = BUILD / "tests/plugins/build"
PROGRAM = "/usr/bin/govd-plugin-check"
SOUND, DOUBTFUL, USELESS, WRONG_USAGE = range(4)  # exit codes
UNSAVABLE = "keyPolicyTypes() lists a switch that can never be set: "

# A plugin, the exit code, and how each complaint begins.
COMPLAINTS = [
    (PLUGINS / "missing.so", USELESS, "does not exist"),
    (PLUGINS, USELESS, "is no file"),
    (ODD / "notalibrary.txt", USELESS, "is no shared library"),
    (ODD / "noroot.so", USELESS, "is no plugin"),
    (ODD / "unresolved.so", USELESS, "cannot be loaded: "),
    (PLUGINS / "missingfunction.so", USELESS, "cannot be loaded: "),
    (ODD / "noobject.so", USELESS, "has no root object"),
    (ODD / "otherinterface.so", USELESS,
     'Q_PLUGIN_METADATA names the interface "org.govd.test.OtherInterface"',
     "the root object is of the class OtherInterface"),
    (ODD / "impostor.so", USELESS, "the root object is of the class Impostor"),
    (ODD / "mislabelled.so", DOUBTFUL,
     'Q_PLUGIN_METADATA names the interface "org.govd.test.Mislabelled"'),
    (PLUGINS / "noiid.so", USELESS, "is no plugin"),
    (PLUGINS / "nointerfaces.so", USELESS,
     "the root object derives from SourceRestriction but does not say so"),
    (PLUGINS / "wrongclass.so", USELESS,
     "the root object answers to the interface of SourceRestriction but does not derive"),
    (PLUGINS / "nopolicies.so", DOUBTFUL, "supportedPolicies() lists no policy"),
    (PLUGINS / "strangepolicies.so", DOUBTFUL, "name() is empty",
     'supportedPolicies() lists "NoPolicy"', 'supportedPolicies() lists "cameraenabled"'),
    (PLUGINS / "chatty.so", USELESS, "policyIsLocked() emits"),
    (PLUGINS / "noswitches.so", DOUBTFUL, "keyPolicyTypes() lists no switch"),
    (PLUGINS / "strangeswitches.so", DOUBTFUL,
     'the switch "%2" governs number 999,', 'keyValue("a") gives a int (5)',
     'the switch "b" governs number 0,', 'the switch "b" governs number 999,',
     'the switch "c" governs no policy', "governed more than once"),
    (PLUGINS / "unsavableswitches.so", USELESS, UNSAVABLE, UNSAVABLE,
     UNSAVABLE + 'Key file cannot hold the key "two\\nlines"'),
    (PLUGINS / "chattyswitch.so", USELESS, "keyValue() or keyPolicyTypes() emits"),
]


def run(*arguments):
    """Runs the checker to its end."""
    return subprocess.run([PROGRAM, *arguments], text=True, capture_output=True, check=False)


def check(path):
    """The exit code for a plugin, and the kinds and texts of its lines, one for each finding."""
    done = run(path)
    lines = done.stdout.splitlines()
    assert all(line.startswith(f"{path}: ") for line in lines)
    return done.returncode, [line.removeprefix(f"{path}: ").split(": ", 1) for line in lines]


@pytest.mark.parametrize("path, code, beginnings", [
    (path, code, beginnings) for path, code, *beginnings in COMPLAINTS],
    ids=[row[0].stem for row in COMPLAINTS])
def test_complaints(path, code, beginnings):
    found, lines = check(path)
    complaints = [text for kind, text in lines if kind in ("warning", "error")]
    assert len(complaints) == len(beginnings)
    for text, beginning in zip(complaints, beginnings):
        assert text.startswith(beginning)
    assert found == code
    assert ("error" in dict(lines)) == (code == USELESS)


def test_sound_lock_plugin():
    assert check(PLUGINS / "locked.so") == (SOUND, [
        ["note", 'a lock plugin named "test"'],
        ["note", "can lock: BrowserEnabled, CameraEnabled"],
        ["note", "locks now: CameraEnabled"]])


def test_sound_switch_plugin():
    code, lines = check(PLUGINS / "soundswitch.so")
    assert code == SOUND
    switch = 'the switch "slider" is on and governs: CameraEnabled, MicrophoneEnabled'
    assert ["note", switch] in lines


def test_plugin_of_another_qt(tmp_path):
    """The two bytes behind the mark and the format of the meta data are the version of Qt."""
    library = bytearray((PLUGINS / "locked.so").read_bytes())
    mark = library.index(b"QTMETADATA !")
    assert library[mark + 13] == 5
    library[mark + 14] = 99
    path = tmp_path / "other.so"
    path.write_bytes(library)
    code, (error,) = check(path)
    assert (code, error[0]) == (USELESS, "error")
    assert "was built with Qt 5.99." in error[1]


@pytest.mark.parametrize("size", [0, 1, 3, 64, 4000, 9000])
def test_damaged_files(tmp_path, size):
    path = tmp_path / "cut.so"
    path.write_bytes((PLUGINS / "locked.so").read_bytes()[:size])
    code, ((kind, _),) = check(path)
    assert (code, kind) == (USELESS, "error")


def test_name_that_the_daemon_passes_over(tmp_path):
    code, lines = check(shutil.copy(PLUGINS / "locked.so", tmp_path / "plugin.so.1"))
    assert (code, [kind for kind, _ in lines].count("warning")) == (DOUBTFUL, 1)


@pytest.mark.parametrize("arguments, code", [
    ([], WRONG_USAGE), (["--loud"], WRONG_USAGE), (["one.so", "two.so"], WRONG_USAGE),
    (["--help"], SOUND)])
def test_usage(arguments, code):
    assert run(*arguments).returncode == code


def test_symbols_are_those_of_the_daemon():
    """Otherwise it would refuse plugins that the daemon loads, or accept others."""
    daemon, checker = (subprocess.run(
        ["nm", "-D", "--defined-only", "--format=just-symbols", program], check=True,
        stdout=subprocess.PIPE).stdout for program in ("/usr/sbin/govd", PROGRAM))
    assert daemon == checker != b""
