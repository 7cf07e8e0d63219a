# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
#
# Completion of govctl for bash. The program itself knows what can follow.

# Splits the line as far as the cursor into words, without their quotes: bash itself would leave
# the quotes and break words at "=" and ":". The last word is unfinished; the line editor replaces
# no more of it than what comes after the first $kept letters.
_govctl_split() {
    local line=${COMP_LINE:0:COMP_POINT} blank=$' \t\n' word='' is_word='' before=0 i letter
    words=() kept=0 quote=''
    for ((i = 0; i < ${#line}; ++i)); do
        letter=${line:i:1}
        if [[ $letter == "$quote" ]]; then
            quote='' kept=$before
        elif [[ $letter == \\ && $quote != \' ]]; then
            letter=${line:i+1:1}
            i=$((i + 1))
            # Between double quotes, most letters need no backslash and keep it.
            [[ -n $quote && $letter != [\"\\\$\`] ]] && word+=\\
            word+=$letter is_word=1
        elif [[ -z $quote && $letter == [\"\'] ]]; then
            quote=$letter before=$kept kept=${#word} is_word=1
        elif [[ -z $quote && $blank == *"$letter"* ]]; then
            [[ -n $is_word ]] && words+=("$word")
            word='' is_word='' kept=0
        else
            word+=$letter is_word=1
            [[ -z $quote && $COMP_WORDBREAKS == *"$letter"* ]] && kept=${#word}
        fi
    done
    words+=("$word")
}

# Writes the end of a word as it has to stand on the line, where a quote may be open.
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
