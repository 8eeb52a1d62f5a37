# bash completion for quillet-note
_quillet_note() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    if [[ $COMP_CWORD -eq 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -W "show export check --version -h --help" -- "$current")
    elif [[ $command == export && $previous == --to ]]; then
        mapfile -t COMPREPLY < <(compgen -W "html rtf rtfd markdown text json" -- "$current")
    elif [[ $command == export && ( $previous == -o || $previous == --output ) ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    elif [[ $command == export && $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--to -o --output -h --help" -- "$current")
    elif [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "-h --help" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -d -- "$current") # a note package is a directory
    fi
}
complete -o filenames -F _quillet_note quillet-note
