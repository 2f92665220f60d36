#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the tool as people do: the documented commands print what they print elsewhere, cameras answer as documented, and a command ends
# when it is interrupted or nobody reads what it prints. Arguments: source folder, the tool, Wine.
set -euo pipefail
source=$1 tool=$2 wine=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir bin
printf '#!/bin/sh\nexec "%s" "%s" "$@"\n' "$wine" "$tool" >bin/quill
chmod +x bin/quill
fail() {
    echo "$*" >&2
    exit 1
}

bash "$source/Tests/Package/documented-commands.sh" "$source" "$work/bin"

PATH=$work/bin:$PATH
for camera in 41500101 41500102 41500103 90001; do
    quill conform "$camera" >conform.txt || fail "$camera: $(tail --lines 5 conform.txt)"
done

# Files have names of any language; one that exists is replaced.
for _ in 1 2; do
    quill capture 41500102 -o 'Bild 検査 é.png' >/dev/null
done
[[ $(head --bytes 4 'Bild 検査 é.png' | tail --bytes 3) == PNG && $(find . -name '*.part') == '' ]] || fail "No PNG file was written."
quill capture 41500102 -o nowhere/x.png 2>refusal.txt && fail "A folder that does not exist was written to."
grep --quiet --fixed-strings "quill: Cannot write nowhere/x.png: No such file or directory" refusal.txt || fail "$(<refusal.txt)"
quill capture 41500102 -o - --type pnm >picture.pnm
[[ $(head --bytes 2 picture.pnm) == P5 && $(stat --format %s picture.pnm) -gt $((1280 * 1024)) ]] || fail "Standard output holds no picture."

quill stream 41500102 --raw -o - --seconds 600 2>/dev/null | head --bytes 100000 >/dev/null || fail "The end of a pipe is a failure."

# An interrupt ends a command that waits with 130. endsWhenInterrupted INPUT ARGUMENTS...: once it has printed something.
endsWhenInterrupted() {
    local process status=0 input i
    mkfifo input
    exec {input}<>input # which never ends
    printf '%s' "$1" >&"$input"
    : >printed.txt
    env --default-signal=INT "$wine" "$tool" "${@:2}" <input >printed.txt 2>&1 &
    process=$!
    for ((i = 0; i < 600; ++i)); do
        [[ -s printed.txt ]] && break
        sleep .1
    done
    kill -INT "$process"
    wait "$process" || status=$?
    exec {input}>&-
    rm input
    ((status == 130)) || fail "${*:2} ends with $status after an interrupt: $(<printed.txt)"
}
endsWhenInterrupted '' watch
endsWhenInterrupted '' stream 41500102
endsWhenInterrupted $'list\n' shell
