#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks that the header compiles alone, as C11 and as C++17, and that the library exports what it declares and nothing else.
# Arguments: header, library, C compiler, C++ compiler.
set -euo pipefail
header=$1 library=$2

warnings=(-Wall -Wextra -pedantic -Werror -Wno-pragma-once-outside-header -fsyntax-only)
"$3" -x c -std=c11 "${warnings[@]}" -Wstrict-prototypes "$header"
"$4" -x c++ -std=c++17 "${warnings[@]}" "$header"

declared=$(grep -A1 '^QUILL_C_API' "$header" | grep -o 'quill_[a-z0-9_]*(' | tr -d '(' | sort)
exported=$(nm --dynamic --defined-only "$library" | sed -n 's/^[0-9a-f]* [^A] \(.*\)@@QUILL_C_[0-9.]*$/\1/p' | sort)
(($(wc -l <<<"$declared") == $(grep -c '^QUILL_C_API' "$header"))) || { echo "Not all declarations were found." >&2 && exit 1; }
diff --unified <(echo "$declared") <(echo "$exported")

