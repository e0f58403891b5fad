# Completion of tarnel's command line in bash. What there is to type, the tool's help says.
_tarnel() {
    local word=${COMP_WORDS[COMP_CWORD]} command='' position words
    for ((position = 1; position < COMP_CWORD; ++position)); do
        if [[ ${COMP_WORDS[position]} != -* ]]; then
            command=${COMP_WORDS[position]}
            break
        fi
    done
    if [[ $word == -* ]]; then
        words=$("$1" $command --help 2>/dev/null | grep -oE -- '--[a-z][a-z-]*')
    elif [[ -z $command ]]; then
        words=$("$1" --help 2>/dev/null | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p')
    elif [[ $command == show && $position -eq COMP_CWORD-1 ]]; then
        words=$("$1" show --help 2>/dev/null | sed -nE 's/.*One of //p' | tr -d ,)
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o filenames -F _tarnel tarnel
