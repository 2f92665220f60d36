#compdef quill
# SPDX-License-Identifier: Apache-2.0
# Completion of quill in zsh: a file _quill of $fpath, or: source <(quill completion zsh)
_quill() {
    local -a candidates
    candidates=("${(@f)$(command quill completion words -- "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}")
    candidates=(${candidates:#})
    if ((${#candidates})); then
        compadd -S '' -- ${(M)candidates:#*=}
        compadd -- ${candidates:#*=}
    else
        _files
    fi
}
if [[ $funcstack[1] == _quill ]]; then _quill "$@"; else compdef _quill quill; fi
