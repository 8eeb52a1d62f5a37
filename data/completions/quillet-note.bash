# bash completion for quillet-note
_quillet_note() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    if [[ $COMP_CWORD -eq 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -W "show export check --version --help" -- "$current")
    elif [[ $previous == --to ]]; then
        mapfile -t COMPREPLY < <(compgen -W "html rtf rtfd markdown text json" -- "$current")
    elif [[ ${COMP_WORDS[1]} == export && $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--to -o" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
    fi
}
complete -o filenames -F _quillet_note quillet-note
