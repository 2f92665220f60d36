#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks that the commands that README.md shows at a prompt print the output shown. Arguments: source folder, folder of the quill tool.
set -euo pipefail
export PATH="$2:$PATH"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ln -s "$1/Data" "$work/Data"
cd "$work"

sed -n '/^```console$/,/^```$/{/^```/!p}' "$1/README.md" >expected
grep '^\$ ' expected | while IFS= read -r line; do
    echo "$line"
    bash -c "${line#\$ }" 2>&1 || true
done >printed
diff --unified expected printed
