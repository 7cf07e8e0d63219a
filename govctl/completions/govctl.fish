# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
#
# Completion of govctl for fish. The candidates come from "govctl complete".

function __govctl_candidates
    set -l words (commandline --tokenize --cut-at-cursor --current-process)
    # The unfinished word, which can hold an open quote, is left out: fish filters the candidates
    # itself. Only a leading dash is passed on, because options are completed only after one.
    set -l unfinished (string match -- '-*' (commandline --cut-at-cursor --current-token); or echo)
    govctl complete --timeout 0.5 -- $words[2..] $unfinished 2>/dev/null
end
complete --command govctl --no-files --arguments '(__govctl_candidates)'
