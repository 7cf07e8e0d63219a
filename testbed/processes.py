# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Inspects and stops processes."""

import contextlib
import ctypes
import os
import pathlib
import signal

from testbed.unit import shown

PTRACE_ATTACH = 16
ANY_THREAD = 0x40000000  # __WALL


def open_descriptors(pid):
    """The number of a process's open file descriptors."""
    return len(os.listdir(f"/proc/{pid}/fd"))


def resident(pid):
    """The resident memory of a process, in bytes."""
    pages = int(pathlib.Path(f"/proc/{pid}/statm").read_text().split()[1])
    return pages * os.sysconf("SC_PAGE_SIZE")


def processes_of(unit):
    """The process ids of a unit."""
    group = pathlib.Path("/sys/fs/cgroup" + shown("ControlGroup", unit))
    return [int(number) for number in (group / "cgroup.procs").read_text().split()]


def thread_of(pid, name):
    """The thread id of the only thread of a process with this name."""
    thread, = [task for task in pathlib.Path(f"/proc/{pid}/task").iterdir()
               if (task / "comm").read_text().strip() == name[:15]]
    return int(thread.name)


@contextlib.contextmanager
def held(processes):
    """Stops these processes (SIGSTOP) as long as the context lasts."""
    for process in processes:
        os.kill(process, signal.SIGSTOP)
    try:
        yield
    finally:
        for process in processes:
            os.kill(process, signal.SIGCONT)


class Frozen:
    """A context in which ptrace stops one thread; the other threads of its process run on."""

    def __init__(self, thread):
        self._thread = thread

    def __enter__(self):
        ready, told = os.pipe()
        self._tracer = os.fork()
        if self._tracer == 0:
            try:
                ctypes.CDLL(None).ptrace(PTRACE_ATTACH, self._thread, None, None)
                os.waitpid(self._thread, ANY_THREAD)
                os.write(told, b"+")
                os.waitpid(self._thread, ANY_THREAD)  # the process may be killed meanwhile
            finally:
                os._exit(0)
        os.close(told)
        os.read(ready, 1)
        os.close(ready)

    def __exit__(self, *_):
        os.kill(self._tracer, signal.SIGKILL)
        os.waitpid(self._tracer, 0)
