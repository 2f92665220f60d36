#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Installs the accessibility checks into a folder, once. Ends with 1 where the registry of packages cannot be reached.
# install-axe.sh FOLDER
set -eu
folder=$1
script="$folder/node_modules/axe-core/axe.min.js"
[ -f "$script" ] || timeout 120 npm install --silent --no-audit --no-fund --ignore-scripts --prefix "$folder" axe-core@4.10 >/dev/null 2>&1
[ -f "$script" ]
