#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compiles the C header as another compiler for Windows does, and runs a program of it, linked with the installed import library and
# without any other runtime than the system's. Arguments: source folder, build folder, architecture, Wine.
set -euo pipefail
source=$1 build=$2 arch=$3 wine=$4

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
compile=(clang "--target=$arch-pc-windows-msvc" -fms-compatibility -fms-extensions -ffreestanding -Wall -Wextra -Werror
    "-I$source/Bindings/C/include" -c)
"${compile[@]}" -std=c11 "$source/Tests/Windows/other_compiler.c" -o program.obj
"${compile[@]}" -std=c++17 -x c++ -fsyntax-only "$source/Tests/Windows/other_compiler.c"
printf 'EXPORTS\nExitProcess%s\n' "$([[ $arch == x86_64 ]] || echo '@4')" >kernel32.def
[[ $arch == x86_64 ]] && machine=i386:x86-64 || machine=i386
llvm-dlltool -k -m $machine -D kernel32.dll -d kernel32.def -l kernel32.lib
lld-link /entry:start /subsystem:console /nodefaultlib /out:program.exe program.obj "$build/Bindings/C/quillcamera-c.lib" kernel32.lib
cp program.exe "$build/bin/other_compiler.exe"
"$wine" "$build/bin/other_compiler.exe"
