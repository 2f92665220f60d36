# SPDX-License-Identifier: Apache-2.0
# Completion of quill in bash: eval "$(quill completion bash)"
# A blank is part of a name. Bash splits a word at its signs of equality, and keeps the quotes in it.
_quill() {
    local IFS=$'\n' word words=() isJoined= candidate
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        if [[ $isJoined || $word == = ]] && ((${#words[@]})); then
            words[-1]+=$word
        else
            words+=("$word")
        fi
        isJoined=
        [[ $word != = ]] || isJoined=1
    done
    words=("${words[@]//[\"\'\\]/}")
    local begun=${words[-1]} raw=${COMP_WORDS[COMP_CWORD]} left=
    [[ $begun != *=* ]] || left=${begun%%=*}=
    for candidate in $(command quill completion words -- "${words[@]}" 2>/dev/null); do
        candidate=${candidate#"$left"}
        [[ $raw == [\"\']* ]] || candidate=$(printf %q "$candidate")
        COMPREPLY+=("$candidate")
    done
    [[ ${#COMPREPLY[@]} -ne 1 || ${COMPREPLY[0]} != *= ]] || compopt -o nospace
}
complete -o default -F _quill quill
