# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A callback of Ansible that writes each result of a task on a device as a line of JSON."""

import json
import os

from ansible.plugins.callback import CallbackBase


class CallbackModule(CallbackBase):
    """Writes to the file in GOVD_RECORD."""
    CALLBACK_VERSION = 2.0
    CALLBACK_TYPE = "aggregate"
    CALLBACK_NAME = "record"

    def _record(self, outcome, result):
        entry = {"device": result._host.get_name(), "task": result._task.get_name(),
                 "outcome": outcome, **result._result}
        with open(os.environ["GOVD_RECORD"], "a", encoding="utf-8") as file:
            file.write(json.dumps(entry, default=str) + "\n")

    def v2_runner_on_ok(self, result):
        self._record("ok", result)

    def v2_runner_on_failed(self, result, ignore_errors=False):
        self._record("failed", result)

    def v2_runner_on_unreachable(self, result):
        self._record("unreachable", result)
