#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks that the commands that README.md and the pages of the guide show at a prompt print the output shown, those of a page one after
# another in a folder of its own. Arguments: source folder, folder of the quill tool.
set -euo pipefail
export PATH="$2:$PATH"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

status=0
for page in "$1"/README.md "$1"/docs/guide/*.md; do
    sed -n '/^```console$/,/^```$/{/^```/!p}' "$page" >"$work/expected"
    mkdir "$work/page"
    ln -s "$1/Data" "$work/page/Data"
    (
        cd "$work/page"
        grep '^\$ ' ../expected | while IFS= read -r line; do
            echo "$line"
            bash -c "${line#\$ }" 2>&1 || true
        done || true
    ) >"$work/printed"
    diff --unified --label "$page" --label printed "$work/expected" "$work/printed" || status=1
    rm -r "$work/page"
done
exit $status
