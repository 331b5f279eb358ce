#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Compiles the C of the guide to the C interface: snippets.sh <source folder> <work folder> <C compiler>
# A block that begins with # is a complete file; any other is the body of a function after snippet.h.
set -euo pipefail
source=$1 work=$2 cc=$3
header=$source/include/Vistrel/CInterface.h constants=$source/include/Vistrel/CConstants.h guide=$source/docs/c-interface.md
rm -rf "$work"
mkdir -p "$work"

# Keeps the line numbers, so that the compiler names the place in the document.
awk -v document="$guide" -v prefix="$work/guide" '
    /^```/ && file { if (!whole) print "}" >file; close(file); file = ""; next }
    /^```c$/ { file = prefix "-" NR ".c"; first = 1; next }
    file && first {
        first = 0
        whole = /^#/
        if (!whole) print "#include \"snippet.h\"\nSNIPPET\n{" >file
        printf "#line %d \"%s\"\n", NR, document >file
    }
    file { print >file }' "$guide"
compgen -G "$work/guide-*.c" >/dev/null || { echo "FAIL: no code found in $guide"; exit 1; }

for file in "$work"/*; do
    echo "$file"
    # The guide declares functions without the attributes for linking on Windows.
    "$cc" -std=c99 -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -Wno-attributes \
        -I"$source/include" -I"$source/tests/host" "$file"
done

# The guide must have every function and every number, and its tables no other numbers.
wanted=$(tr -d '\n' <"$constants" | grep -oE 'VT_[A-Z0-9_]+ = *-?[0-9a-fA-Fx]+' | sed -E 's/ = */ /' | sort)
told=$(sed -nE 's/^\| `(VT_[A-Z0-9_]+)` \| (-?[0-9a-fA-Fx]+) \|.*/\1 \2/p' "$guide" | sort)
[ "$wanted" = "$told" ] || { echo "FAIL: numbers of $constants and of $guide:"; diff <(echo "$wanted") <(echo "$told"); exit 1; }
for function in $(grep -oE '\bVT[A-Z][A-Za-z0-9]+\(' "$header" | tr -d '('); do
    grep -qF "\`$function\`" "$guide" && grep -qE "^[a-z].* \*?$function\(" "$guide" ||
        { echo "FAIL: $guide does not tell of $function"; exit 1; }
done
