# Completion of hwdef for bash: verbs, options, types, properties, and the members of the container that the
# line names. The command itself knows what may come next.
_hwdef() {
    local line current word IFS=$'\n'
    # Bash breaks words at ":" and "=", which belong to ours.
    line=${COMP_LINE:0:COMP_POINT}
    local -a words=()
    read -r -a words -d '' <<<"${line// /$'\n'}"
    [[ $line == *' ' ]] && words+=('')
    current=${words[-1]}
    COMPREPLY=()
    while read -r word; do
        case $word in
            '<file>') compopt -o filenames; COMPREPLY+=($(compgen -f -- "$current")) ;;
            '<directory>') compopt -o filenames; COMPREPLY+=($(compgen -d -- "$current")) ;;
            *=) compopt -o nospace; COMPREPLY+=("$word") ;;
            *) COMPREPLY+=("$word") ;;
        esac
    done < <("${words[0]}" _complete -- "${words[@]:1}" 2>/dev/null)
    # What stands in front of the last ":" or "=" is no part of what bash replaces.
    local start=${current%"${current##*[:=]}"} i
    if [[ -n $start ]]; then
        for i in "${!COMPREPLY[@]}"; do COMPREPLY[i]=${COMPREPLY[i]#"$start"}; done
    fi
}
complete -F _hwdef hwdef
