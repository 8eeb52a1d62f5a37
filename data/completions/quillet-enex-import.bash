# bash completion for quillet-enex-import
_quillet_enex_import() {
    local current=${COMP_WORDS[COMP_CWORD]}
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--debug --web-clippings-as-notes --json --service -v --verbose -q --quiet \
            --version -h --help" -- "$current")
    else
        # Exports first, and directories for the last argument.
        mapfile -t COMPREPLY < <(compgen -f -X '!*.[eE][nN][eE][xX]' -- "$current"; compgen -d -- "$current")
    fi
}
complete -o filenames -F _quillet_enex_import quillet-enex-import
