# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The daemon exports only the symbols that lock plugins resolve against it."""

import re
import subprocess

EXPORTED = {f"SourceRestriction::{member}" for member in (
    "SourceRestriction()", "metaObject() const", "name()", "policyIsLocked(QString const&)",
    "policyIsLockedChanged(QString const&, bool)", "qt_metacall(QMetaObject::Call, int, void**)",
    "qt_metacast(char const*)", "staticMetaObject", "supportedPolicies()", "~SourceRestriction()",
)} | {f"{what} for SourceRestriction" for what in ("typeinfo", "typeinfo name", "vtable")}


def test_exported_symbols():
    names = subprocess.run(["nm", "--dynamic", "--defined-only", "--demangle",
                            "--format=just-symbols", "/usr/sbin/govd"],
                           check=True, text=True, stdout=subprocess.PIPE).stdout
    # Qt 6 has templates in its headers that its libraries and each of their users export; and newer
    # linkers export what the C library looks for in a program.
    others = re.compile(r"\bQMeta(Type|Sequence)::|^_IO_stdin_used$")
    assert {name for name in names.splitlines() if not others.search(name)} == EXPORTED
