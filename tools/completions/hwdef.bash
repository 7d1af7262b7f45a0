# Completion of hwdef for bash: verbs, options, types, properties, and the members of the container that the
# line names. The command itself knows what may come next.
_hwdef() {
    local line=${COMP_LINE:0:COMP_POINT} current start option word
    local -a words=()
    # Bash breaks words at ":" and "=", which belong to ours. A blank behind a backslash breaks none.
    # shellcheck disable=SC2162
    IFS=$' \t' read -a words <<<"$line"
    [[ $line == *[$' \t'] && $line != *\\[$' \t'] ]] && words+=('')
    local -i last=${#words[@]}-1 n
    current=${words[last]}
    for ((n = 1; n < last; ++n)); do
        # shellcheck disable=SC2088
        [[ ${words[n]} == "~/"* ]] && words[n]=$HOME${words[n]:1}
    done
    # What stands in front of the last ":" or "=" is no part of what bash replaces.
    start=${current%"${current##*[:=]}"}
    [[ $current == -*=* ]] && option=${current%%=*}= || option=
    COMPREPLY=()
    while IFS= read -r word; do
        case $word in
            '<file>' | '<directory>')
                # Bash quotes these by itself.
                compopt -o filenames
                [[ $word == '<file>' ]] && word=-f || word=-d
                while IFS= read -r word; do
                    COMPREPLY+=("${word#"${start#"$option"}"}")
                done < <(compgen "$word" -- "${current#"$option"}")
                ;;
            *)
                [[ $word == *= ]] && compopt -o nospace
                # The names of members are anybody's, and what is put in here is run when Enter is pressed.
                printf -v word %q "${word#"$start"}"
                COMPREPLY+=("$word")
                ;;
        esac
    done < <("${words[0]}" _complete -- "${words[@]:1}" 2>/dev/null)
}
complete -F _hwdef hwdef
