# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The lock plugin that reads a file, the example for plugin authors, and what applies when the file
is damaged."""

import os
import pathlib
import shutil
import signal
import stat
import subprocess

import pytest

from testbed import files
from testbed.plugins import FILE_LOCK_FILE as FILE
from testbed.plugins import FILE_LOCK, KIOSK, LOCK_PLUGINS, installed
from testbed.waiting import wait_until

CAMERA, BROWSER, VPN = "CameraEnabled", "BrowserEnabled", "VpnEnabled"
KEPT = pathlib.Path("/var/lib/govd/plugins/filelock.conf")
CAMERA_LOCKED = f"[lock]\npolicies={CAMERA}\n"
IN_FORCE_AGAIN = f"info|default|filelock: {FILE} is good: it is in force"
KIOSK_FOLDER = pathlib.Path("/run/kiosk")
MARKER = KIOSK_FOLDER / "active"


def owned_by_another(path):
    """A file that the daemon may not read."""
    path.write_text("[lock]\npolicies=\n")
    path.chmod(0o600)
    os.chown(path, 7006, 7006)


def endless(path):
    """A file that is too long to be read."""
    path.write_text(CAMERA_LOCKED)
    os.truncate(path, 1 << 40)


DAMAGES = {  # kind of damage, its text in the log, and what makes it
    "malformed": ("is malformed", lambda path: path.write_text("[lock]\npolicies=NoSuchPolicy\n")),
    "zero bytes": ("is malformed", lambda path: path.write_bytes(b"[lock]\npolicies=" + bytes(20))),
    "empty": ("is empty", pathlib.Path.touch),
    "of another owner": ("cannot be read (Permission denied)", owned_by_another),
    "pipe": ("is no regular file", os.mkfifo),
    "endless device": ("is no regular file", lambda path: os.mknod(
        path, stat.S_IFCHR | 0o666, os.makedev(1, 5))),
    "link to nothing": ("is a link to what the daemon does not see",
                        lambda path: path.symlink_to("/srv/not/there")),
    "link to itself": ("cannot be read (Too many levels of symbolic links)",
                       lambda path: path.symlink_to(FILE)),
    "endless": ("is larger than a mebibyte", endless),
}
each_damage = pytest.mark.parametrize("kind", DAMAGES)


@pytest.fixture
def kiosk():
    """The example, which locks the browser while a marker is there."""
    KIOSK_FOLDER.mkdir()
    with installed(KIOSK, LOCK_PLUGINS / "kiosk.so"):
        yield
    shutil.rmtree(KIOSK_FOLDER, ignore_errors=True)


def damage(kind):
    """Replaces the file in one step by an object of another kind; its text in the log."""
    fault, make = DAMAGES[kind]
    draft = FILE.with_suffix(".draft")
    make(draft)
    draft.rename(FILE)
    return fault


def kept(fault):
    """The log line when the last good content stays in force."""
    return f"warning|default|filelock: {FILE} {fault}: its last good content is in force"


def never_good(fault):
    """The log line when there has been no good content."""
    return (f"warning|default|filelock: {FILE} {fault}, and no good content is known: "
            "nothing is in force")


def lines(daemon):
    """The lines of the log about the plugin."""
    return [line for line in daemon.logged() if "filelock" in line]


def wait_for_announcement(transcript, key, value):
    """Waits until a policy has been announced with this value."""
    transcript.wait_for(lambda message: message.member == "PolicyChanged"
                        and message.arguments == (key, value))


def test_without_a_file_nothing_is_locked(daemon, file_lock):
    daemon.start_observed()
    assert daemon.policy(CAMERA) is True
    assert lines(daemon) == []


def test_locks_what_the_file_lists(daemon, file_lock):
    FILE.write_text(f"[lock]\npolicies={CAMERA};{BROWSER}\n")
    daemon.start()
    assert [daemon.policy(key) for key in (CAMERA, BROWSER, VPN)] == [False, False, True]
    assert daemon.set(CAMERA, True) is False


@pytest.mark.parametrize("edit", [files.write, files.replace])
def test_follows_an_edit(daemon, file_lock, transcript, edit):
    daemon.start()
    edit(FILE, CAMERA_LOCKED)
    wait_for_announcement(transcript, CAMERA, False)
    assert daemon.policy(CAMERA) is False
    edit(FILE, f"[lock]\npolicies={BROWSER}\n")
    wait_for_announcement(transcript, CAMERA, True)
    wait_for_announcement(transcript, BROWSER, False)
    assert daemon.policy(CAMERA) is True


def test_malformed_file_is_logged_once(daemon, file_lock, transcript):
    daemon.start()
    files.replace(FILE, CAMERA_LOCKED)
    wait_for_announcement(transcript, CAMERA, False)
    files.replace(FILE, "policies=\n")
    daemon.wait_for_log(kept("is malformed"))
    files.replace(FILE, "still no key file\n")
    files.replace(FILE, "[lock]\npolicies=NfcEnabled;NfcEnabledd\n")
    assert daemon.policy(CAMERA) is False
    files.replace(FILE, "[lock]\npolicies=\n")
    wait_for_announcement(transcript, CAMERA, True)
    assert lines(daemon).count(kept("is malformed")) == 1


@each_damage
def test_damaged_file_keeps_what_it_held(daemon, file_lock, kind):
    FILE.write_text(CAMERA_LOCKED)
    daemon.wrapper = ["setpriv", "--bounding-set=-all"]
    daemon.start_observed()
    assert lines(daemon) == []
    fault = damage(kind)
    daemon.wait_for_log(kept(fault))
    assert daemon.policy(CAMERA) is False
    assert daemon.stop() == 0
    daemon.forget()
    daemon.start_observed()
    assert daemon.policy(CAMERA) is False
    assert daemon.set(CAMERA, True) is False
    assert daemon.policy(VPN) is True
    assert lines(daemon) == [kept(fault)]


@each_damage
def test_file_damaged_from_the_first_counts_for_nothing(daemon, file_lock, kind):
    fault = damage(kind)
    daemon.wrapper = ["setpriv", "--bounding-set=-all"]
    daemon.start_observed()
    assert daemon.policy(CAMERA) is True
    assert lines(daemon) == [never_good(fault)]
    assert not KEPT.exists()


def test_mended_file_is_in_force(daemon, file_lock):
    FILE.write_text(CAMERA_LOCKED)
    daemon.start()
    fault = damage("pipe")
    daemon.wait_for_log(kept(fault))
    files.replace(FILE, f"[lock]\npolicies={VPN}\n")
    daemon.wait_for_log(IN_FORCE_AGAIN)
    assert daemon.set(CAMERA, True) is True
    assert daemon.set(VPN, True) is False
    assert lines(daemon) == [kept(fault), IN_FORCE_AGAIN]


def test_removed_file_is_forgotten(daemon, file_lock):
    """Without the file nothing is locked, and its old content does not return."""
    FILE.write_text(CAMERA_LOCKED)
    daemon.start()
    FILE.unlink()
    daemon.wait_for_log(f"info|default|filelock: {FILE} is not there: nothing is in force")
    assert not KEPT.exists()
    assert daemon.stop() == 0
    damage("malformed")
    daemon.forget()
    daemon.start_observed()
    assert lines(daemon) == [never_good("is malformed")]
    assert daemon.set(CAMERA, True) is True


def test_file_lost_while_the_daemon_was_stopped_keeps_its_locks(daemon, file_lock):
    """As after a failed mount: the kept content applies, also when the file is damaged at the next
    start."""
    FILE.write_text(CAMERA_LOCKED)
    daemon.start()
    assert daemon.stop() == 0
    for lose in (FILE.unlink, lambda: FILE.parent.rename("/etc/govd.away")):
        lose()
        daemon.forget()
        daemon.start_observed()
        assert daemon.set(CAMERA, True) is False
        assert kept("is not there") in lines(daemon)
        assert daemon.stop() == 0
    pathlib.Path("/etc/govd.away").rename(FILE.parent)
    damage("empty")
    daemon.start()
    assert daemon.set(CAMERA, True) is False


def test_directory_that_goes_keeps_what_its_file_held(daemon, file_lock):
    with files.mounted(FILE.parent, "-t", "tmpfs", "locks"):
        FILE.write_text(CAMERA_LOCKED)
        daemon.start()
        assert daemon.set(CAMERA, True) is False
    daemon.signal(signal.SIGHUP)
    FILE.with_suffix(".other").touch()  # the directory below is followed as well
    assert daemon.set(CAMERA, True) is False
    assert KEPT.read_text() == CAMERA_LOCKED


def test_check_of_the_plugin_changes_nothing(daemon, file_lock):
    FILE.write_text(CAMERA_LOCKED)
    daemon.wrapper = ["setpriv", "--bounding-set=-all"]
    daemon.start()
    daemon.wait_for_log(kept(damage("of another owner")))
    shown = pathlib.Path("/run/govd/filelock.json")
    before = files.snapshot(KEPT), files.snapshot(shown)
    subprocess.run(["govd-plugin-check", FILE_LOCK], check=True, stdout=subprocess.DEVNULL)
    assert (files.snapshot(KEPT), files.snapshot(shown)) == before


def test_state_that_could_not_be_kept_is_kept_later(daemon, file_lock):
    daemon.start()
    KEPT.parent.mkdir(parents=True, exist_ok=True)
    with files.read_only("/var/lib/govd"):
        files.replace(FILE, CAMERA_LOCKED)
        wait_until(lambda: daemon.set(CAMERA, True) is False)
    daemon.wait_for_log(kept(damage("malformed")))
    wait_until(lambda: KEPT.exists() and KEPT.read_text() == CAMERA_LOCKED)


def test_kill_loses_nothing(daemon, file_lock):
    daemon.start()
    files.replace(FILE, CAMERA_LOCKED)
    daemon.wait_for_log(IN_FORCE_AGAIN)
    daemon.kill()
    damage("empty")
    daemon.start()
    assert daemon.set(CAMERA, True) is False


def test_kept_for_root_alone_and_written_when_it_changes(daemon, file_lock):
    FILE.write_text(CAMERA_LOCKED)
    daemon.start()
    before = files.snapshot(KEPT)
    assert KEPT.read_text() == CAMERA_LOCKED
    assert KEPT.stat().st_mode == stat.S_IFREG | 0o600
    assert KEPT.parent.stat().st_mode == stat.S_IFDIR | 0o700
    assert KEPT.parent.parent.stat().st_mode == stat.S_IFDIR | 0o755
    assert daemon.stop() == 0
    daemon.start()
    assert files.snapshot(KEPT) == before
    files.replace(FILE, f"{CAMERA_LOCKED}# more\n")
    wait_until(lambda: KEPT.read_text() == f"{CAMERA_LOCKED}# more\n")


def test_state_that_cannot_be_kept_is_logged(daemon, file_lock):
    KEPT.parent.mkdir(parents=True)
    FILE.write_text(CAMERA_LOCKED)
    with files.read_only("/var/lib/govd"):
        daemon.start_observed()
        assert daemon.set(CAMERA, True) is False
        line, = lines(daemon)
        assert line.startswith("warning|default|filelock: ") and str(KEPT) in line
        daemon.stop()


def test_damaged_kept_state_counts_for_nothing(daemon, file_lock):
    files.write(KEPT, "[lock]\npolicies=NoSuchPolicy\n")
    damage("empty")
    daemon.start_observed()
    lost, bad = lines(daemon)
    assert lost == (f"warning|default|filelock: the last good content is lost: {KEPT} is malformed")
    assert bad == never_good("is empty")
    assert daemon.set(CAMERA, True) is True


def test_link_is_followed(daemon, file_lock):
    profile = FILE.parent / "profile"
    profile.write_text(CAMERA_LOCKED)
    FILE.symlink_to("profile")
    daemon.start()
    assert daemon.set(CAMERA, True) is False
    profile.write_text("[lock]\npolicies=\n")
    wait_until(lambda: daemon.set(CAMERA, True))


def test_example_locks_while_its_marker_is_there(daemon, kiosk):
    daemon.start_observed()
    assert daemon.policy(BROWSER) is True
    MARKER.touch()
    wait_until(lambda: daemon.policy(BROWSER) is False)
    assert daemon.set(BROWSER, True) is False
    MARKER.unlink()
    wait_until(lambda: daemon.policy(BROWSER) is True)
    assert not [line for line in daemon.logged() if "kiosk" in line]


def test_marker_of_the_example_that_comes_during_the_start(daemon, kiosk, tmp_path):
    """Stops the daemon when the plugin has looked for the marker, makes it, and lets it go on."""
    calls = tmp_path / "calls"
    daemon.wrapper = ["strace", "-o", calls, "-P", MARKER, "-e",
                      "inject=%file:signal=SIGSTOP:when=1"]
    daemon.launch()
    wait_until(lambda: calls.exists() and "stopped by SIGSTOP" in calls.read_text())
    MARKER.touch()
    daemon.signal(signal.SIGCONT)
    daemon.wait_until_ready()
    wait_until(lambda: daemon.policy(BROWSER) is False)


def test_missing_folder_of_the_example_is_logged(daemon, kiosk):
    KIOSK_FOLDER.rmdir()
    daemon.start_observed()
    assert [line for line in daemon.logged() if "kiosk" in line] == [
        'warning|default|kiosk: cannot watch "/run/kiosk" so nothing will be locked']
