# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Removable media, known by their labels."""

import itertools

from testbed.services.service import Refusal
from testbed.services.storage import Block, Drive
from testbed.sim import names
from testbed.sim.text import printable, quoted

# By the kind of the medium: the bus of its drive, its label, and the prefix of the drive's name.
KINDS = {"usb": ("usb", "STICK", "usb"), "card": ("sdio", "CARD", "mmcblk")}


class Ports:
    """The ports of a device with this storage service."""

    def __init__(self, storage):
        self._storage = storage
        self._storage.mounts_at_once = True

    def plug(self, kind, label):
        """Plugs a medium in, by default with a free label. Returns its label."""
        if kind not in KINDS:
            raise Refusal(f"there is no port for {quoted(kind)}", names.UNKNOWN)
        if label in (".", "..") or "/" in label or printable(label) != label:
            raise Refusal(f"{quoted(label)} cannot be a label", names.UNKNOWN)
        if label in self._labels():
            raise Refusal(f"{quoted(label)} is plugged in already; unplug it or choose another "
                          "label", names.REFUSED)
        bus, first, prefix = KINDS[kind]
        drives = [drive.id for drive in self._storage.drives.values()]
        drive = first_free(drives, (f"{prefix}{number}" for number in itertools.count()))
        label = str(label) or first_free(self._labels(), itertools.chain(
            [first], (f"{first}{number}" for number in itertools.count(2))))
        path = self._storage.plug(Drive(drive, bus=bus))
        self._storage.plug(Block(f"{drive}p1", drive=path, label=label))
        return label

    def unplug(self, label):
        """Pulls a medium out, by default the only one. Returns its label."""
        labels = self._labels()
        if not label and len(labels) != 1:
            raise Refusal(f"say which one to unplug: {', '.join(labels)}" if labels
                          else "nothing is plugged in", names.UNKNOWN)
        wanted = label or labels[0]
        if wanted not in labels:
            raise Refusal(f"{quoted(wanted)} is not plugged in", names.UNKNOWN)
        path, block = next(row for row in self._storage.blocks.items() if row[1].label == wanted)
        self._storage.unplug(path)
        self._storage.unplug(block.drive)
        return wanted

    def media(self):
        """The plugged media: rows of kind, label and mount point, which is empty if unmounted."""
        kinds = {bus: kind for kind, (bus, _, _) in KINDS.items()}
        return [(kinds[self._storage.drives[block.drive].bus], block.label,
                 block.mount_points[0] if block.mount_points else "")
                for _, block in sorted(self._storage.blocks.items())]

    def _labels(self):
        return [block.label for _, block in sorted(self._storage.blocks.items())]


def first_free(taken, candidates):
    """The first of the candidates that is not in use."""
    return next(candidate for candidate in candidates if candidate not in taken)
