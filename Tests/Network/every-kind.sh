#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs one program of the examples on a device in software, a simulated camera and a GenICam camera. Arguments: the program, its argument,
# and the program of the GenICam camera.
set -euo pipefail
program=$1 frame=$2 camera=$3

source "$(dirname "$0")/../../scripts/own-network.sh"
enterOwnNetwork "$0" "$@"
plugCable
cd "$work"
export QUILL_GENICAM=eth1
"${there[@]}" "$camera" --card camera0 --address 192.168.7.2 --serial 1 </dev/null >/dev/null &
processes+=($!)
for serialNumber in Quill-1 41500101 90001; do
    await "$program" "$frame" "$serialNumber" # until the camera runs
    rm coffee.ppm
    "$program" "$frame" "$serialNumber" | grep --extended-regexp 'Exposure is 12\.50*, at most [1-9]'
    [[ -s coffee.ppm ]]
done
