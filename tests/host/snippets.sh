#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Compiles the C++ of the documents, without the toolkit's headers: snippets.sh <source folder> <work folder> <compiler>
# A block that begins with an #include is a whole file; any other is the body of a function after snippet.h.
set -euo pipefail
source=$1 work=$2 compiler=$3
rm -rf "$work"
mkdir -p "$work"

# A block keeps its lines' numbers, so that the compiler names the place in the document.
for document in README.md docs/hosting.md; do
    awk -v document="$source/$document" -v prefix="$work/$(basename "$document" .md)" '
        /^```/ && file { if (!whole) print "}" >file; close(file); file = ""; next }
        /^```cpp$/ { file = prefix "-" NR ".cpp"; first = 1; next }
        file && first {
            first = 0
            whole = /^#include/
            if (!whole) print "#include \"snippet.h\"\nvoid snippet([[maybe_unused]] Vistrel::Window& window)\n{" >file
            printf "#line %d \"%s\"\n", NR, document >file
        }
        file { print >file }' "$source/$document"
    compgen -G "$work/$(basename "$document" .md)-*.cpp" >/dev/null || { echo "FAIL: no C++ found in $document"; exit 1; }
done

for file in "$work"/*.cpp; do
    printf '#ifdef QT_VERSION\n#error "This needs the toolkit."\n#endif\n' >>"$file"
    echo "$file"
    "$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I"$source/include" \
        -I"$source/tests/host" "$file"
done
