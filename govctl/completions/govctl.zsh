#compdef govctl
# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
#
# Completion of govctl for zsh. The candidates come from "govctl complete".

local line unfinished=$PREFIX
local -a candidates
# The shell has already removed an open quote from the word.
[[ -z $compstate[quote] ]] && unfinished=${(Q)PREFIX}
for line in ${(f)"$(govctl complete --timeout 0.5 -- "${(@Q)words[2,CURRENT-1]}" "$unfinished" 2>/dev/null)"}; do
    candidates+=("${${line%%$'\t'*}//:/\\:}:${line#*$'\t'}")
done
_describe -V 'govctl' candidates
