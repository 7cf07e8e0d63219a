# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A policy is a boolean in practice, but a client may write a value of any type."""

import pytest

from testbed import files
from testbed.bus import read_of, write_of
from testbed.daemon import changed, event_text

CAMERA = "CameraEnabled"
KEPT = [  # a value's signature and the value, its boolean reading and its text
    ("b", True, True, "true"),
    ("b", False, False, "false"),
    ("y", 255, True, "255"),
    ("y", 0, False, "0"),
    ("n", -32768, True, "-32768"),
    ("n", 0, False, "0"),
    ("q", 65535, True, "65535"),
    ("q", 0, False, "0"),
    ("i", -7, True, "-7"),
    ("i", 0, False, "0"),
    ("u", 4294967295, True, "4294967295"),
    ("u", 0, False, "0"),
    ("x", -9223372036854775808, True, "-9223372036854775808"),
    ("x", 0, False, "0"),
    ("t", 18446744073709551615, True, "18446744073709551615"),
    ("t", 0, False, "0"),
    ("d", 1.5, True, "1.5"),
    ("d", 0.0, False, "0"),
    ("s", "yes", True, "yes"),
    ("s", "no", True, "no"),
    ("s", "00", True, "00"),
    ("s", "FALSE", False, "FALSE"),
    ("s", "False", False, "False"),
    ("s", "false", False, "false"),
    ("s", "0", False, "0"),
    ("s", "", False, ""),
    ("o", "/a/path", False, ""),
    ("g", "a{sv}", False, ""),
    ("ay", b"abc", True, "abc"),
    ("ay", b"0", False, "0"),
    ("ay", b"a\0b", True, "a"),
    ("ay", b"", False, ""),
    ("as", ["one"], False, "one"),
    ("as", ["one", "two"], False, ""),
    ("as", [], False, ""),
    ("ai", [-1, 1], False, ""),
    ("ai", [], False, ""),
    ("ab", [True], False, ""),
    ("ad", [0.5], False, ""),
    ("ao", ["/a"], False, ""),
    ("aas", [["a"], ["b", "c"]], False, ""),
    ("av", [("i", 1), ("s", "x")], False, ""),
    ("a{sv}", {"a": ("b", True), "b": ("s", "x")}, False, ""),
    ("a{sv}", {}, False, ""),
    ("a{ss}", {"k": "v"}, False, ""),
    ("a{us}", {5: "v"}, False, ""),
    ("a{sa{sv}}", {"k": {"l": ("ai", [3])}}, False, ""),
    ("(b)", (True,), False, ""),
    ("(bs)", (True, "x"), False, ""),
    ("(i(sd))", (1, ("x", 2.5)), False, ""),
    ("a(si)", [("x", 1), ("y", 2)], False, ""),
    ("v", ("b", True), False, ""),
    ("v", ("v", ("s", "x")), False, ""),
    ("v", ("ai", [3]), False, ""),
]
DEEP = {"list": ("av", [("b", True), ("a{sv}", {"h": ("h", 0)})])}
REFUSED = [
    # A value with a descriptor would cost the daemon one for each reader.
    ("h", 0),
    ("v", ("h", 0)),
    ("ah", [0]),
    ("a{sh}", {"in": 0}),
    ("av", [("i", 1), ("h", 0)]),
    ("a{sv}", {"out": ("i", 1), "in": ("h", 0)}),
    ("a{sv}", DEEP),
    ("v", ("a{sv}", DEEP)),
    # The bus library cannot send these to a reader.
    ("g", ""),
    ("v", ("g", "")),
    ("v", ("v", ("g", ""))),
]
REPLACED = [  # as in KEPT
    ("i", 7, True, "7"),
    ("s", "yes", True, "yes"),
    ("d", 2.5, True, "2.5"),
    ("o", "/a/path", False, ""),
    ("g", "ai", False, ""),
    ("ay", b"abc", True, "abc"),
    ("as", ["one", "two"], False, ""),
    ("ai", [1, 2], False, ""),
    ("a{sv}", {"a": ("b", True)}, False, ""),
    ("(bs)", (True, "x"), False, ""),
    ("v", ("b", True), False, ""),
]
SAME = [  # a stored value and a new one that counts as the same
    (("b", True), ("y", 1)), (("b", True), ("d", 1.0)), (("b", True), ("s", "yes")),
    (("b", False), ("s", "FALSE")), (("b", True), ("ay", b"x")), (("b", False), ("ay", b"")),
    (("i", 1), ("b", True)), (("i", -1), ("u", 4294967295)), (("x", -1), ("t", 2**64 - 1)),
    (("n", 44), ("s", "65580")), (("y", 44), ("ay", b" 300")), (("i", 1), ("s", "\u00a01")),
    (("d", 1.0), ("d", 1.0 + 1e-15)), (("d", 9007199254740992.0), ("x", 9007199254740993)),
    (("d", 1.5), ("s", "1.50")), (("s", "1"), ("i", 1)), (("s", "01"), ("y", 1)),
    (("s", "true"), ("b", True)), (("s", "0.1"), ("d", 0.1)), (("s", "x"), ("as", ["x"])),
    (("s", "a"), ("ay", b"a\0b")), (("s", "\ufffd"), ("ay", b"\xff")), (("ay", b"7"), ("x", 7)),
    (("ay", b"true"), ("b", True)), (("ay", b"x"), ("s", "x")), (("as", ["x"]), ("s", "x")),
    (("as", ["x", "y"]), ("as", ["x", "y"])),
]
DIFFERENT = [
    (("b", True), ("i", 2)), (("b", True), ("s", "")), (("b", True), ("as", ["true"])),
    (("i", 1), ("s", "yes")), (("i", 0), ("s", "")), (("i", 0), ("x", 4294967296)),
    (("y", 65), ("s", "A")), (("d", 1.0), ("s", "1.000000000000001")), (("d", 0.0), ("d", 1e-15)),
    (("s", "yes"), ("b", True)), (("s", "01"), ("i", 1)), (("s", "True"), ("b", True)),
    (("s", "x"), ("as", ["x", "x"])), (("s", "1.50"), ("d", 1.5)), (("ay", b"a\0b"), ("s", "a")),
    (("ay", b"x"), ("as", ["x"])), (("as", ["1"]), ("i", 1)), (("as", [""]), ("as", [])),
    (("o", "/a"), ("o", "/a")), (("o", "/a"), ("s", "/a")), (("g", "i"), ("g", "i")),
    (("(b)", (True,)), ("(b)", (True,))), (("ai", []), ("ai", [])), (("a{sv}", {}), ("a{sv}", {})),
    (("v", ("b", True)), ("b", True)),
]


def start_with(daemon, value):
    """Starts the daemon with a value of the camera; values are equal if Qt can convert them."""
    files.store({CAMERA: value})
    daemon.start()


@pytest.mark.parametrize("signature, value, reading, text", KEPT)
def test_value_is_kept_as_given_and_used_by_its_reading(daemon, root, signature, value, reading,
                                                        text):
    start_with(daemon, not reading)
    assert daemon.set(CAMERA, value, signature) is True
    # File, enforcement and announcement get the boolean reading, the event gets the text.
    assert daemon.said() == changed(CAMERA, not reading, text, reading)
    assert daemon.records() == [event_text(CAMERA, not reading, text)]
    assert files.stored()[CAMERA] == files.text_of(reading)
    assert files.CAMERA_MARKER.exists() == reading
    # Every reader gets the written value.
    for _ in range(2):
        assert root.ask(read_of(CAMERA)) == ((signature, value),)
    assert daemon.logged() == []


@pytest.mark.parametrize("signature, value", REFUSED)
def test_value_that_cannot_be_handed_out_is_refused(daemon, client, signature, value):
    start_with(daemon, True)
    before = files.snapshot(files.POLICY_FILE)
    sender = client(descriptors=True)
    assert sender.ask(write_of(CAMERA, value, signature)) == (False,)
    assert daemon.said() == [("reply", False)]
    assert files.snapshot(files.POLICY_FILE) == before
    assert sender.ask(read_of(CAMERA)) == (("b", True),)


@pytest.mark.parametrize("signature, value, reading, text", REPLACED)
def test_boolean_replaces_anything(daemon, root, signature, value, reading, text):
    start_with(daemon, not reading)
    assert daemon.set(CAMERA, value, signature) is True
    (stored_signature, _), = root.ask(read_of(CAMERA))
    assert stored_signature != "b"
    daemon.forget()
    daemon.change(CAMERA, not reading)
    assert daemon.said() == changed(CAMERA, text, not reading)
    assert root.ask(read_of(CAMERA)) == (("b", not reading),)
    assert files.stored()[CAMERA] == files.text_of(not reading)
    assert files.CAMERA_MARKER.exists() is not reading
    assert daemon.logged() == []


@pytest.mark.parametrize("pairs, times", [(SAME, 1), (DIFFERENT, 2)])
def test_only_a_different_value_is_announced(daemon, pairs, times):
    daemon.start()
    keys = [f"org.example.Wish{number}" for number in range(len(pairs))]
    for key, pair in zip(keys, pairs):
        for signature, value in pair:
            assert daemon.set(key, value, signature) is True
    announced = [key for _, _, key, _ in daemon.announcements()]
    wrong = [pair for key, pair in zip(keys, pairs) if announced.count(key) != times]
    assert wrong == []
