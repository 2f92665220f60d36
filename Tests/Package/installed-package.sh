#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs a build, moves it to another folder, and builds and runs a small project with it, through CMake and through pkg-config.
# Arguments: source folder, build folder, compiler, library folder below the prefix, CMake generator; folder of the Python package below the
# prefix, and its interpreter.
set -euo pipefail
sourceFolder=$1 buildFolder=$2 compiler=$3 libraryFolder=$4 generator=$5 pythonFolder=$6 python=$7
consumer=$sourceFolder/Tests/Package/consumer

fail() {
    echo "$*" >&2
    exit 1
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$buildFolder" --prefix "$work/staged" >/dev/null

# An edited list of cameras survives another installation, an unedited one is renewed.
list=$work/staged/share/quillcamera/TestCameraList.json
example=${list%.json}.example.json
cmp --silent "$list" "$sourceFolder/Data/TestCameraList.json" || fail "The list of cameras is not installed."
for edited in '{}' ''; do
    echo "$edited" >"$list"
    [[ -n $edited ]] || echo "$edited" >"$example" # as an older version left both
    cmake --install "$buildFolder" --prefix "$work/staged" >/dev/null
    if [[ -n $edited ]]; then
        [[ $(<"$list") == "$edited" ]] || fail "An edited list of cameras was overwritten."
    else
        cmp --silent "$list" "$example" || fail "An unedited list of cameras was not renewed."
    fi
done
# Uninstalling leaves an edited list, and nothing else.
cp -r "$work/staged" "$work/removed"
echo '{}' >"$work/removed/share/quillcamera/TestCameraList.json"
sed "s|$work/staged|$work/removed|" "$buildFolder/install_manifest.txt" >"$work/manifest"
cmake "-DMANIFEST=$work/manifest" -P "$sourceFolder/cmake/QuillUninstall.cmake" >/dev/null
[[ $(find "$work/removed" -not -type d -printf '%P') == share/quillcamera/TestCameraList.json ]] || fail "Uninstalling leaves or removes too much."

mv "$work/staged" "$work/moved"
package=$work/moved
library=$package/$libraryFolder/libquillcamera.so

# Tool and Python package find the library by themselves; other programs need LD_LIBRARY_PATH.
if [[ -e $package/bin/quill ]]; then
    "$package/bin/quill" --version >/dev/null
fi
if [[ -e $package/$pythonFolder/quillcamera ]]; then
    PYTHONPATH=$package/$pythonFolder PYTHONDONTWRITEBYTECODE=1 "$python" -c 'import quillcamera; assert quillcamera.cameras()'
    [[ -e $package/$pythonFolder/quillcamera/py.typed ]] || fail "The Python package is not typed."
fi
export LD_LIBRARY_PATH=$package/$libraryFolder

# The application has a header with the name of every public one, first on its include path.
own=$work/own
(cd "$package/include/quillcamera" && find . -name '*.h' -not -name Quill.h) | while read -r header; do
    mkdir -p "$own/$(dirname "$header")"
    echo '#error "This header belongs to the application."' >"$own/$header"
done

cmake -S "$consumer" -B "$work/cmake" -G "$generator" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="-I$own" \
    -DCMAKE_PREFIX_PATH="$package" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/consumer"

export PKG_CONFIG_PATH=$package/$libraryFolder/pkgconfig
# shellcheck disable=SC2046 # flags are words
"$compiler" -std=c++17 "-I$own" "$consumer/main.cpp" -o "$work/consumer" $(pkg-config --cflags --libs quillcamera)
"$work/consumer"

# Tests of applications control the devices in software.
if [[ -e $package/include/quillcamera-devices ]]; then
    mkdir "$work/devices"
    cp "$sourceFolder/Examples/MisbehavingCamera.cpp" "$sourceFolder/Tests/Package/devices-consumer/CMakeLists.txt" "$work/devices"
    cmake -S "$work/devices" -B "$work/devices/build" -G "$generator" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$package" >/dev/null
    cmake --build "$work/devices/build" >/dev/null
    "$work/devices/build/misbehaving_camera"
fi

# The C interface: the documented build line word for word, the documented CMake project, and a program that uses all of it.
if [[ -e $package/include/quillcamera.h ]]; then
    mkdir "$work/c"
    cp "$sourceFolder/Examples/C/first_steps.c" "$sourceFolder/Tests/Package/c-consumer/CMakeLists.txt" "$work/c"
    (cd "$work/c" && eval "$(grep '^cc ' "$sourceFolder/docs/c.md")" && ./first_steps >/dev/null)
    cmake -S "$work/c" -B "$work/c/build" -G "$generator" -DCMAKE_PREFIX_PATH="$package" >/dev/null
    cmake --build "$work/c/build" >/dev/null
    "$work/c/build/first_steps" >/dev/null
    # shellcheck disable=SC2046 # flags are words
    cc -std=c11 -Wall -Wextra -pedantic -Werror "$sourceFolder/Tests/Bindings/C/areas.c" -o "$work/areas" \
        $(pkg-config --cflags --libs quillcamera-c) -lm
    "$work/areas"
fi

# Nothing in the package refers to the folders or the libraries with which it was built.
if grep --recursive --binary-files=without-match --fixed-strings \
    -e "$sourceFolder" -e "$buildFolder" -e "$work" "$package"; then
    fail "These files of the package contain the folders in which it was built."
fi
if readelf --string-dump=.rodata "$library" | grep --text --fixed-strings "$sourceFolder/Shared"; then
    fail "The library contains paths of its sources."
fi
if grep --recursive --extended-regexp '#include.*(opencv|nlohmann)' "$package/include"; then
    fail "Public headers include headers of other libraries."
fi

# The umbrella header includes all public headers.
cd "$package/include/quillcamera"
missing=$(comm -23 <(find . -name '*.h' -printf '%P\n' | grep -v '^Quill.h$' | sort) \
    <(sed -n 's/^#include "\(.*\)"$/\1/p' Quill.h | sort))
[[ -z $missing ]] || fail "Quill.h does not include: $missing"

# The library neither requests an executable stack nor has a search path.
readelf --program-headers --wide "$library" | grep -q 'GNU_STACK.* RW ' || fail "The library's stack is executable."
if readelf --dynamic "$library" | grep -E 'RPATH|RUNPATH|TEXTREL'; then
    fail "The library has a search path or text relocations."
fi
readelf --dynamic "$library" | grep -q 'FLAGS_1.*NOW' || fail "The library's symbols are not bound at load time."
readelf --program-headers "$library" | grep -q GNU_RELRO || fail "The library's relocations stay writable."
