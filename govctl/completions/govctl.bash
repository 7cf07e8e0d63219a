# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
#
# Completion of govctl for bash. The program itself knows what can follow.

_govctl() {
    local candidate
    COMPREPLY=()
    while IFS=$'\t' read -r candidate _; do
        COMPREPLY+=("$(printf '%q' "$candidate")")
    done < <(govctl complete --timeout 0.5 -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -F _govctl govctl
