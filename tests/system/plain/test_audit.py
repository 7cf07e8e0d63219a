# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Changes of policies are recorded in the system log and with the system-log service."""

import syslog

import pytest

from testbed import files
from testbed.daemon import changed, event_text
from testbed.services.service import DEATH, ERROR, SILENCE, answer, standstill
from testbed.waiting import wait_until

CAMERA = "CameraEnabled"
KIND, LEVEL = "security-policy-changed", "INFO_LEVEL"
COW = "\U0001f404"
TEXTS = {  # key, old value (empty: none), new value and text
    "percent sign": ("100%", "50%", "5%", "Policy 100% changed. Old value 50%. New value 5%."),
    "letters of C formats": ("%s%n", "%d", "%x",
                             "Policy %s%n changed. Old value %d. New value %x."),
    "two percent signs": ("%%1%%", "", "x", "Policy %%% changed. Old value x. New value %3."),
    "beyond ASCII": ("K\u00fche", "\u03b1", COW,
                     f"Policy K\u00fche changed. Old value \u03b1. New value {COW}."),
    # Each step replaces the lowest place-holder, also one that an inserted text contains.
    "first place in the key": ("a%1", "b", "c", "Policy ab changed. Old value c. New value %3."),
    "second place in the key": ("a%2", "b", "c", "Policy ab changed. Old value b. New value c."),
    "third place in the key": ("a%3", "b", "c", "Policy ac changed. Old value b. New value c."),
    "high place in the key": ("a%9", "b", "c", "Policy a%9 changed. Old value b. New value c."),
    "third place in the old value": ("a", "b%3", "c",
                                     "Policy a changed. Old value bc. New value c."),
    "first place in the old value": ("a", "b%1", "c",
                                     "Policy a changed. Old value bc. New value %3."),
    "places in the new value": ("a", "b", "%1%2%3",
                                "Policy a changed. Old value b. New value %1%2%3."),
    "line break in a value": ("a", "b\nc", "d\te",
                              "Policy a changed. Old value b\nc. New value d\te."),
}


def test_change_is_recorded_in_both_places(daemon, system_log, system_logs):
    system_logs.appear()
    daemon.start()
    before = len(system_log.records())
    daemon.change(CAMERA, False)
    text = "Policy CameraEnabled changed. Old value true. New value false."
    assert daemon.records() == [text]
    record, = system_log.records(before)
    assert record.priority == syslog.LOG_USER | syslog.LOG_INFO
    assert record.program == "govd"
    assert system_logs.events == [(KIND, LEVEL, text)]


def test_event_goes_to_the_right_object(daemon, transcript):
    daemon.start()
    daemon.change(CAMERA, False)
    transcript.settle()
    call, = transcript.calls("sendEventStringAlt")
    assert (call.destination, call.path, call.interface, call.signature) == (
        "org.kvtlabs.SystemLogs", "/org/kvtlabs/SystemLogs", "org.kvtlabs.SystemLogs", "sss")


def test_events_give_the_history(daemon):
    daemon.start()
    for signature, value in [("b", False), ("i", 5), ("s", "five"), ("s", ""), ("i", -1),
                             ("b", True)]:
        assert daemon.set(CAMERA, value, signature) is True
    texts = ["true", "false", "5", "five", "", "-1", "true"]
    assert daemon.records() == [event_text(CAMERA, old, new) for old, new in zip(texts, texts[1:])]


@pytest.mark.parametrize("key, old, new, text", TEXTS.values(), ids=TEXTS.keys())
def test_text_is_filled_in_one_after_the_other(daemon, system_logs, key, old, new, text):
    system_logs.appear()
    daemon.start()
    if old:
        assert daemon.set(key, old, "s") is True
    daemon.forget()
    assert daemon.set(key, new, "s") is True
    assert daemon.records() == [text]
    wait_until(lambda: system_logs.events and system_logs.events[-1] == (KIND, LEVEL, text))


def test_service_that_comes_later_gets_later_events(daemon, system_logs):
    daemon.start()
    daemon.change(CAMERA, False)
    daemon.forget()
    system_logs.appear()
    assert daemon.said() == []  # nothing is sent again
    daemon.change(CAMERA, True)
    assert daemon.said() == changed(CAMERA, False, True)
    wait_until(lambda: system_logs.events)
    assert system_logs.events == [(KIND, LEVEL, event_text(CAMERA, False, True))]


@pytest.mark.parametrize("fault", [ERROR, answer("si", "thanks", 7), SILENCE, DEATH])
def test_fault_of_the_service_changes_nothing(daemon, system_logs, fault):
    system_logs.appear()
    system_logs.fail(fault)
    daemon.start()
    for value in (False, True):
        daemon.change(CAMERA, value)
    assert daemon.said() == changed(CAMERA, True, False) + changed(CAMERA, False, True)
    assert daemon.records() == [event_text(CAMERA, True, False), event_text(CAMERA, False, True)]
    assert daemon.logged() == []


def test_writes_do_not_wait_for_the_service(daemon, transcript, system_logs):
    system_logs.appear()
    daemon.start()
    texts = ["", *map(str, range(1, 11))]
    changes = list(zip(texts, texts[1:]))
    with standstill():
        for _, new in changes:
            assert daemon.set("Count", int(new), "i") is True
        assert daemon.said() == [words for old, new in changes
                                 for words in changed("Count", old, new, True)]
        calls = transcript.calls("sendEventStringAlt")
        answers = [message for message in transcript.messages()
                   if any(message.is_reply_to(call) for call in calls)]
        assert answers == []
    expected = [event_text("Count", old, new) for old, new in changes]
    wait_until(lambda: len(system_logs.events) == 10)
    assert [text for _, _, text in system_logs.events] == expected
    assert daemon.records() == expected
    assert daemon.logged() == []


@pytest.mark.parametrize("file", [None, files.POLICY_FILE,
                                  files.POLICY_FILE.parent / "policy.d/seed.conf"])
def test_start_neither_records_nor_announces_policies(daemon, transcript, file):
    if file:
        files.store({CAMERA: False, "BrowserEnabled": True}, file)
    daemon.start_observed()
    assert daemon.records() == []
    assert transcript.calls("sendEventStringAlt") == []
    assert daemon.announcements() == []
    assert daemon.policy(CAMERA) is (file is None)
