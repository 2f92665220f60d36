#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the commands that docs/gstreamer.md shows at a prompt, one block after another, in a network of the test's own. Each must
# succeed; one that ends in & runs until its block ends. Arguments: source folder, folder of the plug-in, folder of the programs.
set -euo pipefail
if [[ ${4-} != inside ]]; then
    for options in --net "--net --map-root-user"; do
        # shellcheck disable=SC2086 # options are words
        if unshare $options true 2>/dev/null; then
            exec unshare $options bash "$0" "$@" inside
        fi
    done
    echo "Skipped: this system permits no network of one's own (unshare --net)."
    exit 77
fi
ip link set lo up
export GST_PLUGIN_PATH=$2 PATH=$3:$PATH

work=$(mktemp -d)
job=
trap '[[ -z $job ]] || kill "$job" 2>/dev/null; rm -rf "$work"' EXIT
cd "$work"
export GST_REGISTRY=$work/registry

endJob() {
    [[ -n $job ]] || return 0
    kill "$job"
    wait "$job" 2>/dev/null || true
    job=
}

commands=0
while IFS= read -r line; do
    line=${line//autovideosink/fakevideosink}
    case $line in
    '```'*) endJob ;;
    '$ '*' &')
        line=${line#\$ } line=${line% &}
        echo "$line &"
        : >"$work/started" # no line of an earlier job is left when the shell comes to wait
        eval "exec $line" >>"$work/started" 2>&1 &
        job=$!
        until [[ -s $work/started ]]; do kill -0 "$job" || exit 1; sleep 0.1; done # its first line says that it runs
        ;;
    '$ '*)
        echo "${line#\$ }"
        eval "${line#\$ }" >"$work/printed" 2>&1 </dev/null || { cat "$work/printed" && exit 1; }
        commands=$((commands + 1))
        ;;
    esac
done < <(sed -n '/^```console$/,/^```$/p' "$1/docs/gstreamer.md")
((commands >= 8)) || { echo "Only $commands commands were found." && exit 1; }
for picture in received.png served.png; do
    [[ $(head -c 4 "$picture" | tail -c 3) == PNG ]] || { echo "$picture is no picture." && exit 1; }
done
