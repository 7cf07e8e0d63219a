# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
#
# Completion of govd-sim for bash. The candidates come from "govd-sim complete".

_govd_sim() {
    local words=() word candidate
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        words+=("${word//[\"\'\\]/}")
    done
    while read -r candidate; do
        # Within an open quote, blanks need no escape.
        [[ ${COMP_WORDS[COMP_CWORD]} == [\"\']* ]] || printf -v candidate %q "$candidate"
        COMPREPLY+=("$candidate")
    done < <(govd-sim complete --timeout 0.5 -- "${words[@]}" 2>/dev/null)
    [[ ${words[0]-} != run ]] || compopt -o default
}
complete -F _govd_sim govd-sim
