#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks that the library exports only names of its public namespaces and classes. Argument: the library.
set -euo pipefail

symbols=$(nm --dynamic --defined-only "$1")
names=$(sed -n 's/^[0-9a-f]* [^A] \(.*\)@@QUILL_[0-9.]*$/\1/p' <<<"$symbols")
[[ $(grep -vc ' A ' <<<"$symbols") == $(wc -l <<<"$names") ]] || { echo "Some names have no version." >&2 && exit 1; }
public='^_Z((T[VIS])?NK?(15CameraInterface|7Imaging|17KestrelExceptions|9Utilities|12OrvexAdapter(5CGigE|8readGigE)|5CSHA1|5win32|13QuillInternal)|14getZephVersion|15isZephInstalled)'
internal='SimulatedAdapter|OrvexCamera|Usb3VisionAdapter|N4Base|8nlohmann'
[[ -n $names ]] || { echo "The library exports nothing." >&2 && exit 1; }
if grep -Ev "$public" <<<"$names" || grep -E "$internal" <<<"$names"; then
    echo "These names must be hidden." >&2
    exit 1
fi
