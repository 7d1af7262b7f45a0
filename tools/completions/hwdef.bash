# Completion of hwdef for bash: verbs, options, types, properties, and the members of the container that the
# line names. The command itself knows what may come next.

# Splits a line into the words that bash would make of it, quotes and backslashes taken away, the last one as far
# as it is written; leaves the words in `words` and a quote that is still open in `quote`.
_hwdef_split() {
    local line=$1 letter word='' begun=''
    local -i i
    words=() quote=''
    for ((i = 0; i < ${#line}; ++i)); do
        letter=${line:i:1}
        case $quote in
            "'") [[ $letter == "'" ]] && quote='' || word+=$letter ;;
            '"')
                if [[ $letter == '"' ]]; then
                    quote=''
                else
                    [[ $letter == '\' && ${line:i+1:1} == [\"\\\$\`] ]] && ((++i))
                    word+=${line:i:1}
                fi
                ;;
            *)
                case $letter in
                    [[:blank:]])
                        [[ $begun ]] && words+=("$word")
                        word='' begun=''
                        ;;
                    "'" | '"') quote=$letter begun=1 ;;
                    '\') ((++i)); word+=${line:i:1} begun=1 ;;
                    *) word+=$letter begun=1 ;;
                esac
                ;;
        esac
    done
    words+=("$word")
}

_hwdef() {
    local current start option word quote
    local -a words
    _hwdef_split "${COMP_LINE:0:COMP_POINT}"
    local -i last=${#words[@]}-1 n
    current=${words[last]}
    for ((n = 1; n < last; ++n)); do
        # shellcheck disable=SC2088
        [[ ${words[n]} == "~/"* ]] && words[n]=$HOME${words[n]:1}
    done
    # Bash breaks words at ":" and "=" outside of quotes; what stands in front of the last one is no part of what
    # it replaces.
    start=${current%"${current##*[:=]}"}
    [[ $quote ]] && start=''
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
                word=${word#"$start"}
                case $quote in
                    '"') word=${word//[\"\\\$\`]/\\&} ;;
                    "'") [[ $word == *"'"* ]] && continue ;;
                    *) printf -v word %q "$word" ;;
                esac
                COMPREPLY+=("$word")
                ;;
        esac
    done < <("${words[0]}" _complete -- "${words[@]:1}" 2>/dev/null)
}
complete -F _hwdef hwdef
