#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks that every block of C, C++ and CMake in the documents equals, except for the licence, a file that is built and run elsewhere in the
# tests.
# Argument: source folder.
set -euo pipefail
cd "$1"
built=(Examples/*.cpp Examples/C/* Tests/Package/consumer/* Tests/Package/c-consumer/* Tests/Package/devices-consumer/*)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
awk -v work="$work" '
    /^```(c|cpp|c\+\+|cmake)$/ { name = FILENAME; gsub("/", "_", name); block = work "/" name ":" FNR; next }
    /^```/ { block = "" }
    block { print > block }' README.md CONTRIBUTING.md docs/*.md docs/guide/*.md

blocks=("$work"/README.md:*)
[[ -e ${blocks[0]} ]] || { echo "README.md contains no code." >&2 && exit 1; }
status=0
for block in "$work"/*; do
    matched=false
    for file in "${built[@]}"; do
        cmp --silent "$block" <(sed '1{/SPDX-License-Identifier/{N;d}}' "$file") && matched=true
    done
    $matched || { echo "The code after ${block##*/} is not a file that is built." >&2 && status=1; }
done
exit $status
