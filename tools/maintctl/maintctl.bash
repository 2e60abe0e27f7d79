# Completion of maintctl for bash: the program itself says what may stand next.
# shellcheck shell=bash

_maintctl()
{
    local line=${COMP_LINE:0:COMP_POINT} candidate typed
    local -a words
    read -ra words <<<"$line"
    if [[ $line == *[[:blank:]] ]]; then
        words+=('')
    fi
    typed=${words[-1]}
    # bash replaces what stands behind the last of these characters, so the rest is taken away.
    local kept=
    if [[ $typed == *=* && $COMP_WORDBREAKS == *=* ]]; then
        kept=${typed%"${typed##*=}"}
    fi
    COMPREPLY=()
    while IFS= read -r candidate; do
        COMPREPLY+=("${candidate#"$kept"}")
    done < <("${words[0]}" complete "${words[@]:1}" 2>/dev/null)
    if [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *= ]]; then
        compopt -o nospace
    fi
}

complete -o default -F _maintctl maintctl
