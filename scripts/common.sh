# SPDX-License-Identifier: Apache-2.0

# Sourced by the scripts of this folder: installs the packages they need, and builds.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit

# Debian packages, line by line: the tools; those of the library; of its GenICam adapter; of the devices in software; of the quill tool; of its
# server; of the Python package; of the GStreamer plug-in and its tests; of tests and benchmarks.
quillPackages=(
    g++ cmake ninja-build pkg-config
    libopencv-core-dev libopencv-imgproc-dev nlohmann-json3-dev
    libaravis-dev libusb-1.0-0-dev libxml2-dev
    nettle-dev
    libcli11-dev libfmt-dev libpng-dev libtiff-dev libedit-dev
    libboost-dev libturbojpeg0-dev
    python3-dev python3-numpy pybind11-dev python3-pytest python3-mypy python3-matplotlib
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev libgstrtspserver-1.0-dev
    gstreamer1.0-tools gstreamer1.0-plugins-base-apps gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
    libgtest-dev libgmock-dev libbenchmark-dev libssl-dev libtiff-tools libraw-bin aravis-tools aravis-tools-cli python3-jsonschema
)

# Those of the thorough tests, which need a browser. npm, where it is installed, gets the checks of accessibility.
quillThoroughPackages=(chromium chromium-driver nodejs python3-selenium)

# Those of scripts/docs.
quillDocumentPackages=(doxygen python3-sphinx python3-myst-parser furo)

# Those of scripts/packages.
quillPackagingPackages=(debhelper dh-python lintian mmdebstrap)

# Those of scripts/check.
quillCheckPackages=(clang-format clang-tidy clang similarity-tester codespell abigail-tools)

isInstalled() {
    [[ "$(dpkg-query --show --showformat '${db:Status-Status}' "$1" 2>/dev/null)" == installed ]]
}

# Installs missing packages; if that is not possible, prints their names and the command that installs them, and exits.
ensurePackages() {
    local package missing=() asRoot=()
    for package in "${quillPackages[@]}"; do
        isInstalled "$package" || missing+=("$package")
    done
    ((${#missing[@]})) || return 0

    ((EUID == 0)) || asRoot=(sudo --non-interactive)
    if "${asRoot[@]}" true 2>/dev/null; then
        echo "Installing ${missing[*]}" >&2
        # A package source that cannot be reached does not matter if another one has the packages.
        "${asRoot[@]}" apt-get update --quiet >&2 || true
        if "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install --quiet --yes --no-install-recommends "${missing[@]}" >&2; then
            return 0
        fi
    fi
    echo "These packages are missing: ${missing[*]}" >&2
    echo "Install them with: sudo apt-get install --no-install-recommends ${missing[*]}" >&2
    exit 1
}

compilerLauncher=()
if command -v ccache >/dev/null; then
    compilerLauncher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi

# Configures a preset of CMakePresets.json and builds all targets, or only those named.
buildPreset() {
    local preset=$1
    shift
    cmake --preset "$preset" "${compilerLauncher[@]}" >&2
    cmake --build --preset "$preset" --parallel 2 ${1+--target "$@"} >&2
}

# What scripts/check allows: tests in percent of the code that they test, and equal tokens in two places.
maximumTestShare=33
longestRepetition=130

# Lines of C, C++ and Python in these folders, without blank and comment lines.
codeLines() {
    {
        find "$@" -name '*.h' -o -name '*.cpp' -o -name '*.c' | xargs cat | grep --invert-match --extended-regexp '^\s*(//.*)?$'
        find "$@" -name '*.py' | xargs --no-run-if-empty cat | grep --invert-match --extended-regexp '^\s*(#.*)?$'
    } | wc --lines
}

# Lines of tests in per mille of those of library, adapters, bindings, devices in software and tool.
testShare() { echo $((1000 * $(codeLines Tests) / $(codeLines Shared Adapters Bindings Platform Tools))); }

printTestShare() {
    local share
    share=$(testShare)
    echo "Tests: $(codeLines Tests) lines for $(codeLines Shared Adapters Bindings Platform Tools) lines of code, $((share / 10)).$((share % 10)) % (at most $maximumTestShare %)"
}
