#compdef govctl
# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
#
# Completion of govctl for zsh. The program itself knows what can follow.

local line unfinished=$PREFIX
local -a candidates
# Where a quote is open, the shell has taken it off already.
[[ -z $compstate[quote] ]] && unfinished=${(Q)PREFIX}
for line in ${(f)"$(govctl complete --timeout 0.5 -- "${(@Q)words[2,CURRENT-1]}" "$unfinished" 2>/dev/null)"}; do
    candidates+=("${${line%%$'\t'*}//:/\\:}:${line#*$'\t'}")
done
_describe -V 'govctl' candidates
