# SPDX-License-Identifier: Apache-2.0

# Sourced by scripts that need a camera at the other end of a cable. Camera and computer are network namespaces, so that nothing leaves them.

# Runs a script again in a network namespace of its own, or exits with 77 where nobody can make one. enterOwnNetwork SCRIPT ARGUMENT...
enterOwnNetwork() {
    [[ ${QUILL_OWN_NETWORK-} != inside ]] || return 0
    local options
    for options in --net "--net --map-root-user"; do
        # shellcheck disable=SC2086 # options are words
        if unshare $options ip link add probe0 type veth peer name probe1 2>/dev/null; then
            QUILL_OWN_NETWORK=inside exec unshare $options bash "$@"
        fi
    done
    echo "Skipped: this system lets nobody make a network namespace with two cards."
    exit 77
}

# Waits until a command succeeds, half a minute at the most.
await() {
    local end=$((SECONDS + 30))
    while ((SECONDS < end)); do
        "$@" >/dev/null 2>&1 && return
        sleep 0.1
    done
    echo "Not within half a minute: $*" >&2
    exit 1
}

# Makes the camera's namespace, where camera0 has the addresses 192.168.7.2 and others; eth1 is 192.168.7.1. ${there[@]} COMMAND... runs
# there. What is in processes and the folder work end with the script.
plugCable() {
    work=$(mktemp -d)
    processes=()
    trap 'kill "${processes[@]}" 2>/dev/null || true; rm -rf "$work"' EXIT
    unshare --net sleep infinity &
    processes+=($!)
    there=(nsenter --net --target "$!")
    isElsewhere() { [[ $(readlink "/proc/${processes[0]}/ns/net") != "$(readlink /proc/self/ns/net)" ]]; }
    await isElsewhere
    ip link set lo up
    ip link add eth1 type veth peer name camera0 netns "${processes[0]}"
    ip address add 192.168.7.1/24 dev eth1
    ip link set eth1 up
    "${there[@]}" ip link set lo up
    local address
    for address in 192.168.7.2/24 192.168.7.9/24 10.0.0.5/24; do
        "${there[@]}" ip address add "$address" dev camera0
    done
    "${there[@]}" ip link set camera0 up
}
