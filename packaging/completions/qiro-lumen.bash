# bash completion for qiro-lumen. The program itself says what may come next (its hidden
# command __complete), so new commands, options and the plug-ins of the folder are offered
# without changes here.
_qiro_lumen() {
    local cur=${COMP_WORDS[COMP_CWORD]}
    local line
    local -a lines
    mapfile -t lines < <("${COMP_WORDS[0]}" __complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
    COMPREPLY=()
    for line in "${lines[@]}"; do
        case $line in
        @folders)
            compopt -o filenames
            mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -d -- "$cur")
            ;;
        @files)
            compopt -o filenames
            mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$cur")
            ;;
        *=) COMPREPLY+=("$line") && compopt -o nospace ;;
        # A plug-in name that the shell would split or expand goes in quoted.
        *[[:space:]\'\"\$\&\;\(\)\|\<\>\`\\]*) COMPREPLY+=("$(printf '%q' "$line")") ;;
        *) COMPREPLY+=("$line") ;;
        esac
    done
}
complete -F _qiro_lumen qiro-lumen
