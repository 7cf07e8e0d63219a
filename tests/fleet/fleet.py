# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The devices of tests/fleet/run, and Ansible with the collection, as an administrator has it."""

import concurrent.futures
import json
import os
import pathlib
import subprocess

CHECKOUT = pathlib.Path(__file__).parents[2]
PACKAGES = CHECKOUT / "build" / "packages"
DEVICES = [f"device{number}" for number in range(1, 9)]
KIOSKS = DEVICES[-2:]
REPOSITORY = DEVICES[5]  # the device with an apt repository of the packages
BASELINE = {"CameraEnabled": False, "UsbStorageEnabled": False, "BrowserEnabled": True}
EXCEPTIONS = {"CameraEnabled": True, "BrowserEnabled": False}
SSH = ["-i", os.path.join(os.environ["GOVD_FLEET"], "key"), "-o", "UserKnownHostsFile=/dev/null",
       "-o", "StrictHostKeyChecking=no", "-o", "LogLevel=ERROR",
       "-o", "ServerAliveInterval=1", "-o", "ServerAliveCountMax=5"]


class Results(list):
    """What Ansible tells of each task on each device, in the order of their ends."""

    def of(self, device):
        """The last result of the device."""
        return [entry for entry in self if entry["device"] == device][-1]

    def having(self, **members):
        """The devices with a result that has these members."""
        return {entry["device"] for entry in self if members.items() <= entry.items()}


class Fleet:
    """The inventory and the installed collection in a directory."""

    def __init__(self, directory):
        self._directory = directory
        hosts = {name: {"ansible_host": address_of(name)} for name in DEVICES}
        hosts[REPOSITORY]["govd_directory"] = ""
        inventory = {"devices": {
            "hosts": hosts,
            "vars": {"ansible_user": "root", "ansible_python_interpreter": "/usr/bin/python3",
                     "ansible_ssh_common_args": " ".join(SSH), "govd_baseline": BASELINE,
                     "govd_directory": str(PACKAGES), "govd_packages": [
                         "govd", "govctl", "govd-plugins", "libpellorapolicy1",
                         "libpelloraaccesscontrol1", "libsystemsettings1"]},
            "children": {"kiosks": {"hosts": dict.fromkeys(KIOSKS, {}),
                                    "vars": {"govd_exceptions": EXCEPTIONS}}}}}
        (directory / "inventory.json").write_text(json.dumps(inventory))
        self.environment = {
            **os.environ, "ANSIBLE_INVENTORY": str(directory / "inventory.json"),
            "ANSIBLE_COLLECTIONS_PATH": str(directory), "ANSIBLE_FORKS": "8",
            "ANSIBLE_PIPELINING": "1", "ANSIBLE_TIMEOUT": "5",
            "ANSIBLE_CALLBACK_PLUGINS": str(CHECKOUT / "tests/fleet/callbacks"),
            "ANSIBLE_CALLBACKS_ENABLED": "record", "ANSIBLE_LOAD_CALLBACK_PLUGINS": "1",
            "GOVD_RECORD": str(directory / "record")}
        subprocess.run(["ansible-galaxy", "collection", "install", CHECKOUT / "fleet/ansible",
                        "-p", directory], check=True, env=self.environment)

    def start(self, *command):
        """Starts a program of Ansible; finish() has its results. Its output goes to a file, because
        a pipe would stay open as long as ssh keeps its connections for the next program."""
        (self._directory / "record").write_text("")
        with open(self._directory / "output", "wb") as output:
            return subprocess.Popen(command, env=self.environment, stdout=output, stderr=output)

    def finish(self, process):
        """The results of a program of Ansible, whose output a failing test shows."""
        process.wait()
        print((self._directory / "output").read_text())
        lines = (self._directory / "record").read_text().splitlines()
        return Results(json.loads(line) for line in lines)

    def start_module(self, name, hosts="devices", options=(), **arguments):
        """Starts a module of the collection."""
        given = ["-a", json.dumps(arguments)] if arguments else []
        return self.start("ansible", hosts, "-m", f"govd.device.{name}", *given, *options)

    def module(self, *arguments, **keywords):
        """Runs a module, with the arguments of start_module()."""
        return self.finish(self.start_module(*arguments, **keywords))

    def playbook(self, name, *options):
        """Runs a playbook of the collection."""
        return self.finish(self.start("ansible-playbook", f"govd.device.{name}", *options))


def make_repository(device):
    """Gives a device an apt repository of the packages."""
    subprocess.run(["scp", *SSH, "-q", "-r", PACKAGES, f"root@{address_of(device)}:/srv/packages"],
                   check=True)
    on(device, """
        set -e; cd /srv/packages
        dpkg-scanpackages . >Packages
        echo "deb [trusted=yes] file:/srv/packages ./" >/etc/apt/sources.list.d/govd.list
        apt-get update -o Dir::Etc::SourceList=sources.list.d/govd.list -o Dir::Etc::SourceParts=-
    """)


def address_of(device):
    """The device's address."""
    return f"10.77.0.{device.removeprefix('device')}"


def login(device, command):
    """The words that run a command on a device."""
    shared = ["-o", "ControlMaster=auto", "-o", "ControlPersist=60", "-o", "ControlPath=/tmp/%h"]
    return ["ssh", *SSH, *shared, f"root@{address_of(device)}", command]


def on(device, command, code=0, **keywords):
    """Runs a command on a device, which has to end with this code; its output."""
    process = subprocess.run(login(device, command), text=True, stdout=subprocess.PIPE,
                             timeout=60, check=False, **keywords)
    assert process.returncode == code, (command, process.stdout)
    return process.stdout


def everywhere(function):
    """The results of a function for each device."""
    with concurrent.futures.ThreadPoolExecutor(len(DEVICES)) as pool:
        return dict(zip(DEVICES, pool.map(function, DEVICES)))


def govctl(device, arguments, code=0, **keywords):
    """The document of the client on a device."""
    return json.loads(on(device, f"govctl --json {arguments}", code, **keywords))


def values(device):
    """How each policy of a device reads."""
    return {entry["key"]: entry["value"] for entry in govctl(device, "list")["result"]["policies"]}
