#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs each example, and looks for what it is to print.
# Arguments: source folder, folder of the programs.
set -euo pipefail
data=$1/Data/coffee-bayer-rggb-600x400.raw programs=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
cp "$data" .
head -c 10000 "$data" >table.bin

# The program with its arguments, and a regular expression of a whole line.
examples=(
    "first_steps $data" '.*xposure is 12\.5.*'
    'every_frame' 'Delivered: [1-9][0-9]*'
    'describe_cameras' '    Shutter = Global  \(one of Global Rolling\)'
    'capture_image 41500102 one.ppm' 'one\.ppm: 1280 x 1024'
    'live_statistics 41500102 1' '[0-9.]+ frames/s, captured in [0-9.]+ ms.*'
    'exposure_bracket 41500102' '8\.0+ ms: mean [0-9.]+, [0-9]+ pixels at the top'
    'adjust_properties' 'Video Exposure is now 20\.0+ ms'
    'hot_plug_monitor' '\+ 41500101  Model 613'
    'two_in_step' 'frames [0-9]+ and [0-9]+, [-0-9.e]+ ms apart'
    'write_flash 41500101 0x40000 table.bin' 'verified'
    'convert_folder . 600 400 8 BAYER_RGGB' '.*coffee-bayer-rggb-600x400\.ppm'
    'misbehaving_camera' 'true: a camera that is unplugged ends the wait'
)
status=0
# The first steps print the same on every system, to the byte, and write the same picture.
diff --unified "$1/Tests/Package/first-steps.txt" <("$programs/quill_first_steps" "$data" && sha256sum coffee.ppm) || status=1
if [[ -e $programs/quill_record_pictures ]]; then
    examples+=('record_pictures 41500102 5 pictures' '5 of 5 pictures written')
    # As on a full disk: the end of a recording says what is wrong, and no part of a picture has a picture's name.
    if (trap '' XFSZ && ulimit -f 1 && exec "$programs/quill_record_pictures" 41500102 5 full) >output 2>&1 \
        || ! grep --quiet 'not written: File too large' output || ls full/*.jpg 2>/dev/null; then
        echo "record_pictures without space prints:" && cat output
        status=1
    fi
fi
for ((i = 0; i < ${#examples[@]}; i += 2)); do
    read -ra words <<<"${examples[i]}"
    if ! "$programs/quill_${words[0]}" "${words[@]:1}" </dev/null >output 2>&1 || ! grep --quiet --line-regexp --extended-regexp -e "${examples[i + 1]}" output; then
        echo "${words[*]} ends with $? and prints:" && cat output
        status=1
    fi
done
exit $status
