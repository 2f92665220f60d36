#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs a build, builds programs with the installation, and runs them in a folder whose path has 300 characters, not all of them ASCII.
# Arguments: source folder, build folder, CMake generator, architecture, Wine.
set -euo pipefail
source=$1 build=$2 generator=$3 arch=$4 wine=$5

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/plain" >/dev/null

# buildWith FOLDER: a CMake project with the installation, as its user builds it.
buildWith() {
    cmake -S "$1" -B "$1/build" -G "$generator" "-DCMAKE_TOOLCHAIN_FILE=$source/cmake/toolchain-windows.cmake" "-DQUILL_WINDOWS_ARCH=$arch" \
        "-DQuillCamera_DIR=$work/plain/lib/cmake/QuillCamera" >/dev/null
    cmake --build "$1/build" >/dev/null
    cp "$1"/build/*.exe "$work/plain/bin"
}
for project in consumer c-consumer devices-consumer; do
    mkdir "$work/$project"
    cp "$source/Tests/Package/$project"/* "$work/$project"
done
cp "$source/Examples/C/first_steps.c" "$work/c-consumer"
cp "$source/Examples/MisbehavingCamera.cpp" "$work/devices-consumer"
buildWith "$work/consumer"
buildWith "$work/c-consumer"
buildWith "$work/devices-consumer"
mkdir "$work/first-steps"
sed 's/main\.cpp/FirstSteps.cpp/' "$source/Tests/Package/consumer/CMakeLists.txt" | sed 's/consumer/cpp_first_steps/' >"$work/first-steps/CMakeLists.txt"
cp "$source/Examples/FirstSteps.cpp" "$work/first-steps"
buildWith "$work/first-steps"

folder=$work/Prüfstand\ 検査
while ((${#folder} < 299)); do
    folder+=/$(printf '%*s' "$((299 - ${#folder} > 60 ? 59 : 299 - ${#folder}))" '' | tr ' ' k)
done
mkdir -p "$(dirname "$folder")"
mv "$work/plain" "$folder"
cd "$work"
run() { "$wine" "$folder/bin/$1.exe" "${@:2}" | tr -d '\r'; }
run consumer
run misbehaving_camera >/dev/null
run first_steps >/dev/null # C
diff --unified "$source/Tests/Package/first-steps.txt" <(run cpp_first_steps "$source/Data/coffee-bayer-rggb-600x400.raw" && sha256sum coffee.ppm)
