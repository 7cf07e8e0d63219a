# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
#
# Completion of govctl for fish. The program itself knows what can follow.

function __govctl_candidates
    set -l words (commandline --tokenize --cut-at-cursor --current-process)
    # What may not be whole yet, as a word with an open quote, fish compares better itself. But a
    # dash asks for options.
    set -l unfinished (string match -- '-*' (commandline --cut-at-cursor --current-token); or echo)
    govctl complete --timeout 0.5 -- $words[2..] $unfinished 2>/dev/null
end
complete --command govctl --no-files --arguments '(__govctl_candidates)'
