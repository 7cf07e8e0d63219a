# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Names of policies on the client's command line, and suggestions for unknown ones."""

import pytest

from testbed import govctl
from testbed.policies import KEYS


def near(name):
    """The failure for an unknown name."""
    outcome = govctl.run("get", name, "--json")
    assert (outcome.code, outcome.error) == (2, "unknown-policy")
    return outcome.document["error"]


@pytest.mark.parametrize("name, first", [
    ("camera", "CameraEnabled"), ("CamraEnabled", "CameraEnabled"),
    ("CaemraEnabled", "CameraEnabled"), ("cammera", "CameraEnabled"),
    ("CAMERAENABLED", "CameraEnabled"), ("storage", "UsbMassStorageEnabled"),
    ("frobnicate", None), ("x", None), ("v", "VpnEnabled"), ("", None),
], ids=["part of it", "a letter missing", "two swapped", "beginning misspelt", "case", "middle",
        "nothing like it", "one letter", "one letter, the first", "nothing"])
def test_nearest_name(name, first):
    assert next(iter(near(name).get("nearest", [])), None) == first


def test_all_that_are_near():
    usb = [key for key in KEYS if key.startswith("Usb")]
    assert len(usb) > 3
    assert near("Usb")["nearest"][:len(usb)] == usb


@pytest.mark.parametrize("word, keys", [
    ("wifi", ["WlanEnabled"]), ("WiFi", ["WlanEnabled"]), ("gps", ["LocationEnabled"]),
    ("mic", ["MicrophoneEnabled"]),
    ("tethering", ["InternetSharingEnabled", "UsbNetworkEnabled"]), ("sms", ["MessagesEnabled"])])
def test_other_words(word, keys):
    failure = near(word)
    assert failure["nearest"][:len(keys)] == keys
    assert "--keys" not in failure["message"]


@pytest.mark.parametrize("pattern, keys", [
    ("VpnEnabled", ["VpnEnabled"]),
    ("*Storage*", ["UsbMassStorageEnabled", "UsbStorageEnabled"]),
    ("[VN][pf]?Enabled", ["VpnEnabled", "NfcEnabled"]),
    ("Vpn* [N]fc*", ["VpnEnabled", "NfcEnabled"])])
def test_patterns(pattern, keys):
    assert govctl.run(f"list --keys {pattern}").lines == keys


@pytest.mark.parametrize("pattern", ["Vpn", "X*", "[", "[z-a]"])
def test_pattern_that_fits_nothing(pattern):
    none = govctl.run("list", "--keys", pattern)
    assert (none.code, none.err.count("\n")) == (2, 1)
