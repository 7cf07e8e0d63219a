# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
#
# Completion of govctl for bash. The candidates come from "govctl complete".

# Splits the line as far as the cursor into words, without their quotes: bash itself would leave
# the quotes and break words at "=" and ":". The last word is unfinished; the line editor replaces
# no more of it than what comes after the first $kept characters.
_govctl_split() {
    local line=${COMP_LINE:0:COMP_POINT} blank=$' \t\n' word='' is_word='' before=0 i char
    words=() kept=0 quote=''
    for ((i = 0; i < ${#line}; ++i)); do
        char=${line:i:1}
        if [[ $char == "$quote" ]]; then
            quote='' kept=$before
        elif [[ $char == \\ && $quote != \' ]]; then
            char=${line:i+1:1}
            i=$((i + 1))
            # Between double quotes, a backslash before other characters is an ordinary one.
            [[ -n $quote && $char != [\"\\\$\`] ]] && word+=\\
            word+=$char is_word=1
        elif [[ -z $quote && $char == [\"\'] ]]; then
            quote=$char before=$kept kept=${#word} is_word=1
        elif [[ -z $quote && $blank == *"$char"* ]]; then
            [[ -n $is_word ]] && words+=("$word")
            word='' is_word='' kept=0
        else
            word+=$char is_word=1
            [[ -z $quote && $COMP_WORDBREAKS == *"$char"* ]] && kept=${#word}
        fi
    done
    words+=("$word")
}

# Prints the end of a word, quoted as the line needs it where a quote may be open.
_govctl_quoted() {
    local text=$1
    case $quote in
    \') text=${text//\'/\'\\\'\'} ;;
    \") text=$(sed 's/[\\"$`]/\\&/g' <<<"$text") ;;
    *) [[ -n $text ]] && printf -v text %q "$text" ;;
    esac
    printf '%s\n' "$text"
}

_govctl() {
    local words kept quote candidate
    _govctl_split
    COMPREPLY=()
    while IFS=$'\t' read -r candidate _; do
        COMPREPLY+=("$(_govctl_quoted "${candidate:kept}")")
    done < <(govctl complete --timeout 0.5 -- "${words[@]:1}" 2>/dev/null)
}
complete -F _govctl govctl
