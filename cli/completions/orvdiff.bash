# Completion of orvdiff for bash. The program itself knows its commands, options and what they take.

_orvdiff()
{
    local cur words cword line word typed=() isPath=
    _get_comp_words_by_ref -n =: cur words cword || return
    for word in "${words[@]:1:cword}"; do  # as they are typed: without their quotes
        word=${word#[\"\']}
        word=${word%[\"\']}
        typed+=("${word//\\/}")
    done
    # bash replaces only what stands behind the last of the characters that part words for it.
    local kept=${typed[-1]%"${typed[-1]##*[=:]}"}
    [[ $COMP_WORDBREAKS == *[=:]* ]] || kept=
    while IFS= read -r line; do
        [[ $line == :paths ]] && isPath=1 && compopt -o filenames && continue
        line=${line%%$'\t'*}
        COMPREPLY+=("${line#"$kept"}")
    done < <("${words[0]/#\~\//$HOME/}" __complete "${typed[@]}" 2>/dev/null)
    if [[ $isPath && ${COMPREPLY[0]-} == */ && ${#COMPREPLY[@]} -eq 1 ]]; then
        compopt -o nospace  # a folder leads further
    fi
}

complete -F _orvdiff orvdiff
