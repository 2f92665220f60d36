#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs "quill network" against a camera in software that is at the other end of a cable. Arguments: the tool, the camera's program, and which
# one that is: "aravis" or "software".
set -euo pipefail
quill=$1 program=$2 kind=$3

source "$(dirname "$0")/../../scripts/own-network.sh"
enterOwnNetwork "$0" "$@"
plugCable
failures=0

# Runs the tool and compares its exit code with a pattern, and what it prints with a regular expression. An examination may find that this
# computer's buffers are small, therefore [01]. On a busy computer the camera may miss the time in which it must answer to be listed; then
# the tool runs again. expect CODE PATTERN ARGUMENT...
expect() {
    local code wanted=$1 pattern=$2 text end=$((SECONDS + 30))
    shift 2
    while
        code=0
        text=$("$quill" "$@" 2>&1) || code=$?
        [[ $code == 3 && $wanted != 3 ]] && ((SECONDS < end))
    do :; done
    # shellcheck disable=SC2053 # a pattern
    if [[ $code != $wanted ]] || ! grep -Eq -- "$pattern" <<<"$text"; then
        printf 'quill %s ended with %s instead of %s, or printed no "%s":\n%s\n' "$*" "$code" "$wanted" "$pattern" "$text" >&2
        failures=$((failures + 1))
    fi
}

if [[ $kind == software ]]; then
    options=(--card camera0 --address 192.168.7.2 --serial 1 --vendor Test)
    camera=Test-1
else
    options=(-i 192.168.7.2 -s 1)
    camera=Aravis-1
fi
mkfifo "$work/input"
"${there[@]}" "$program" "${options[@]}" <>"$work/input" >"$work/camera.log" 2>&1 &
processes+=($!)
export QUILL_GENICAM=eth1
listed() { "$quill" list | grep -q "^$camera "; }
await listed

expect 0 '^Camera IP Address +192\.168\.7\.2 ' network "$camera"
expect 0 '"card": "eth1"' network "$camera" --json
expect 0 '^packet size = 1400$' network "$camera" --packet-size 1400
expect 0 '^packet delay in ns = 2000$' network "$camera" --packet-delay 2000
expect 0 '^heartbeat in ms = 5000$' network "$camera" --heartbeat 5000
expect 0 '^Heartbeat Time-out +5000 ms$' network "$camera"
# A virtual card runs at 10 gigabits: (1400 + 38) x 8 / 10 ns, four times by 0.9, less one.
expect 0 '^packet delay in ns = 3963$' network "$camera" --share 4
expect '[01]' 'round trip .* of 20 lost' network "$camera" --test
expect '[01]' 'sudo ip link set eth1 mtu 9000' network "$camera" --test
expect 2 '--force: .192\.168\.7\.9. has no mask' network "$camera" --force 192.168.7.9
expect 2 '--force: The argument "192\.168\.7\.0" is invalid' network "$camera" --force 192.168.7.0/24
expect 3 'not found' network nobody
expect 1 'for GenICam cameras on the network' network 90001

if [[ $kind == aravis ]]; then
    expect 1 'can keep no persistent address' network "$camera" --persistent 192.168.7.9/24
    expect 1 'fault +firewall +No test packet' network "$camera" --test
    exit $((failures > 0))
fi

expect 0 'next start on = 192\.168\.7\.9, mask 255\.255\.255\.0, gateway 192\.168\.7\.1' \
    network "$camera" --persistent 192.168.7.9/24,192.168.7.1 --dhcp no
expect 0 '^Stored for it +192\.168\.7\.9, mask' network "$camera"
expect 0 '^DHCP +off' network "$camera"
expect 0 'off$' network "$camera" --persistent no
expect 0 '^Persistent Address +off' network "$camera"

# What the card lets through, the cable may not.
expect '[01]' 'good +firewall' network "$camera" --test
ip link set eth1 mtu 9000
expect '[01]' 'hint +packet size +Packets of 9000 bytes do not arrive' network "$camera" --test
expect 0 '9000' network "$camera" --packet-size 9000
expect 1 "quill network $camera --packet-size 1500" network "$camera" --test
"${there[@]}" ip link set camera0 mtu 9000
expect '[01]' 'those of 9000 bytes arrive' network "$camera" --test
expect 0 '^Packet Size +9000 bytes' network "$camera" # which the examination left as it was
echo 'no-test-packets on' >"$work/input"
await grep -q 'ok no-test-packets' "$work/camera.log"
expect 1 'fault +firewall +No test packet' network "$camera" --test

# One that another program controls can be looked at, not changed.
echo 'deny on' >"$work/input"
await grep -q 'ok deny' "$work/camera.log"
expect 0 '^Controlled by +another program' network "$camera"
expect 1 'Another program.* controls it' network "$camera" --packet-size 1500
expect '[01]' 'firewall +Not examined\. Another program' network "$camera" --test
expect 1 'The camera refuses: access denied' network "$camera" --force 192.168.7.9/24
echo 'deny off' >"$work/input"
await grep -q 'ok deny off' "$work/camera.log"

# A connected camera is changed through its own connection.
printf 'get %s Width\nnetwork %s --packet-size 1300\nnetwork %s\nnetwork %s --force 192.168.7.9/24\n' \
    "$camera" "$camera" "$camera" "$camera" >"$work/script"
areChangedWhileConnected() {
    "$quill" shell <"$work/script" >"$work/shell.log" 2>&1 || true
    for line in '^packet size = 1300$' '^Controlled by +this program' 'connected: disconnect it first'; do
        grep -Eq "$line" "$work/shell.log" || return 1
    done
}
await areChangedWhileConnected

# An address of another network: it is listed, and says why it cannot be used.
expect 0 '^address = 10\.0\.0\.5, mask 255\.255\.255\.0$' network "$camera" --force 10.0.0.5/24
expect 1 'Its address 10\.0\.0\.5 is not on the network of eth1 \(192\.168\.7\.1/24\)' get "$camera" Width
expect 1 "quill network $camera --force 192\.168\.7\.5/24" network "$camera" --test
expect 1 '^Camera IP Address +10\.0\.0\.5' network "$camera"
mac=$( ("$quill" network "$camera" --json 2>/dev/null || true) | sed -n 's/.*"hardwareAddress": "\(.*\)".*/\1/p')
expect 0 '^address = 192\.168\.7\.9' network "$mac" --force 192.168.7.9/24
expect 0 '^Camera IP Address +192\.168\.7\.9' network "$camera"
echo 'silent on' >"$work/input"
await grep -q 'ok silent' "$work/camera.log"
expect 4 'does not answer at 192\.168\.7\.2' network "$mac" --force 192.168.7.2/24
exit $((failures > 0))
