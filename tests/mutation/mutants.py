# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Makes mutants of a source file: single changes, each of which should make a test fail."""

import re
from dataclasses import dataclass

# Patterns in a line, and their replacements.
REPLACEMENTS = (
    (r" == ", " != "), (r" != ", " == "), (r" < ", " >= "), (r" > ", " <= "), (r" <= ", " > "),
    (r" >= ", " < "), (r" && ", " || "), (r" \|\| ", " && "), (r"(?<=[( ])!(?=[a-zA-Z_:(])", ""),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"\bisEmpty\(\)", "isNull()"),
    (r" \? (.+?) : ([^;]+)", r" ? \2 : \1"), (r"\breturn;", ""),
    (r"(?<![\w.\"])0(?![\w.\"x])", "1"), (r"(?<![\w.\"])1(?![\w.\"])", "2"),
)
CALL = re.compile(r"^\s+[A-Za-z_:][\w:.>()-]*\(.*\);$")  # a statement that is one call
ROW = re.compile(r"^\s+\{.*\},?$")  # a row of a table on one line
SKIPPED = re.compile(r"^\s*(//|#|Q_|using |static_assert|namespace |class |struct |template)"
                     r"|qWarning|qCritical|qInfo|Q_DISABLE|operator|delete;|default;")


@dataclass(frozen=True)
class Mutant:
    """One changed line, or two that changed places; `line` counts from 1."""
    path: str
    line: int
    before: str
    after: str

    def __str__(self):
        after = " ".join(self.after.split()) or "(nothing)"
        return f"{self.path}:{self.line}: {' '.join(self.before.split())} -> {after}"

    def apply(self, text):
        """The text of the file with the change."""
        lines = text.split("\n")
        count = self.before.count("\n") + 1
        assert "\n".join(lines[self.line - 1:self.line - 1 + count]) == self.before
        lines[self.line - 1:self.line - 1 + count] = self.after.split("\n")
        return "\n".join(lines)


def mutants_of(path, text):
    """All changes of a file that this module knows."""
    lines = text.split("\n")
    for number, line in enumerate(lines, 1):
        if SKIPPED.search(line):
            continue
        for pattern, replacement in REPLACEMENTS:
            for match in re.finditer(pattern, line):
                if inside_text(line, match.start()):
                    continue
                changed = line[:match.start()] + match.expand(replacement) + line[match.end():]
                yield Mutant(path, number, line, changed)
        if ROW.match(line):
            yield Mutant(path, number, line, "")
        elif CALL.match(line):
            yield Mutant(path, number, line, ";")  # it can be all that a condition is about
            following = lines[number] if number < len(lines) else ""
            if CALL.match(following) and following != line:
                yield Mutant(path, number, f"{line}\n{following}", f"{following}\n{line}")


def inside_text(line, position):
    """Whether a place in a line is inside a string or behind the beginning of a comment."""
    before = line[:position]
    return before.count('"') % 2 == 1 or "//" in before
