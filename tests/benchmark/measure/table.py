# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A table of results, for people and for programs."""


class Table:
    """Rows of which the first cell is a name and the others are numbers or texts."""

    def __init__(self, title, *columns):
        self.title = title
        self.columns = ("", *columns)
        self.rows = []

    def add(self, name, *cells):
        """One more row."""
        self.rows.append((name, *cells))

    def as_text(self):
        """The table as Markdown."""
        texts = [[_text(cell) for cell in row] for row in (self.columns, *self.rows)]
        widths = [max(map(len, column)) for column in zip(*texts)]
        lines = [_line(row, widths) for row in texts]
        rule = "|-" + "-|-".join("-" * width for width in widths) + "-|"
        return "\n".join([self.title, "", lines[0], rule, *lines[1:], ""])

    def as_data(self):
        """The table as an object for JSON."""
        return {"title": self.title,
                "rows": [dict(zip(("name", *self.columns[1:]), row)) for row in self.rows]}


def _line(row, widths):
    cells = [cell.ljust(width) if index == 0 else cell.rjust(width)
             for index, (cell, width) in enumerate(zip(row, widths))]
    return "| " + " | ".join(cells) + " |"


def _text(cell):
    if cell is None:
        return "-"
    if isinstance(cell, float):
        return f"{cell:.2f}" if abs(cell) < 10 else f"{cell:,.1f}"
    return f"{cell:,}" if isinstance(cell, int) else str(cell)
