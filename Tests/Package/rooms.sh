#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Every include of library, bindings, devices and tool is one that the table of rooms in docs/architecture.md allows.
# Argument: source folder.
set -euo pipefail
cd "$1"

list=$(find Shared Adapters Bindings Platform Tools -name '*.h' -o -name '*.cpp')
mapfile -t sources <<<"$list"

awk '
# The rows of the table: room, paths in backticks, what it may use.
FILENAME ~ /architecture\.md$/ {
    if (/^\| Room \|/) { table = 1; next }
    if (!/^\|/) table = 0
    if (!table || /^\|---/) next
    columns = split($0, column, / *\| */)
    room = column[2]
    ++rooms
    count = split(column[3], path, /[` ]+/)
    for (i = 1; i <= count; ++i)
        if (path[i] != "") roomOfPath[path[i]] = room
    count = split(column[columns - 1], other, /, */)
    for (i = 1; i <= count; ++i) {
        if (other[i] in known || other[i] == "nothing" || other[i] ~ /^</) allowed[room, other[i]] = 1
        else fail(room " may use \"" other[i] "\", which is no room above it")
    }
    known[room] = 1
    next
}
function fail(text) { print text; failures++ }
# The longest path of the table that a file begins with.
function roomOf(file,    length_) {
    for (length_ = length(file); length_ > 0; --length_)
        if (substr(file, 1, length_) in roomOfPath) return roomOfPath[substr(file, 1, length_)]
    return ""
}
function simplified(path) {
    while (sub(/[^\/]+\/\.\.\//, "", path)) {}
    return path
}
function resolved(file, name,    folder, i) {
    folder = file
    sub(/[^\/]*$/, "", folder)
    if (simplified(folder name) in source) return simplified(folder name)
    for (i = 1; i in root; ++i) if ((root[i] name) in source) return root[i] name
    return ""
}
BEGIN {
    root[1] = "Shared/include/"; root[2] = "Shared/src/"; root[3] = "Tools/quill/"
    root[4] = "Platform/SoftwareDevices/include/"; root[5] = "Platform/SoftwareDevices/src/"
    root[6] = "Platform/GenICamDevices/include/"; root[7] = "Platform/GenICamDevices/src/"
    root[8] = "Bindings/C/include/"; root[9] = "Bindings/C/src/"
    for (i = 2; i < ARGC; ++i) source[ARGV[i]] = 1
}
FNR == 1 {
    ++files
    room = roomOf(FILENAME)
    if (room == "") fail(FILENAME " is in no room")
}
/^#include "/ {
    split($0, part, "\"")
    file = resolved(FILENAME, part[2])
    # Tool and bindings see the library as an installed package: its public headers, whichever room they are in.
    used = (FILENAME ~ /^(Tools|Bindings)\// && file ~ /^Shared\/include\//) ? "Public headers" : roomOf(file)
    ++arrows
    if (file == "") fail(FILENAME ":" FNR ": no file is " part[2])
    else if (used != room && !((room, used) in allowed)) fail(FILENAME ":" FNR ": " room " may not use " used " (" part[2] ")")
}
# Headers of the C++ library have no extension, those of the system are not counted as libraries.
/^#include <[^>]*[\/.]/ && !/^#include <((sys|sanitizer|net|netinet|arpa)\/.*|(unistd|fcntl|poll|ifaddrs|dlfcn|pthread|cpuid|immintrin|stdbool|stdint|stddef|io|windows|bcrypt|shellapi)\.h)>/ {
    split($0, part, /[<>]/)
    used = part[2] == "Quill.h" ? "Public headers" : part[2] ~ /\// ? "<" substr(part[2], 1, index(part[2], "/") - 1) ">" : "<" part[2] ">"
    ++arrows
    if (!((room, used) in allowed)) fail(FILENAME ":" FNR ": " room " may not use " used)
}
END {
    if (rooms < 20 || files < 200 || arrows < 500) fail("Only " rooms + 0 " rooms, " files + 0 " files and " arrows + 0 " includes were found.")
    exit failures > 0
}' docs/architecture.md "${sources[@]}"
