#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Checks that the shared library exports what the public headers declare and nothing else:
# exported_symbols.sh <folder of public headers> <library> <nm> or, for a DLL, <objdump>
set -euo pipefail
export LC_ALL=C
headers=$1 library=$2 tool=$3
failures=0

fail() {
    echo "FAIL: $1:"
    echo "$2"
    failures=$((failures + 1))
}

if [[ $library == *.dll ]]; then
    mangled=$("$tool" -p "$library" | awk '/^\[Ordinal\/Name Pointer\] Table/ { on = 1; next } !NF { on = 0 } on { print $NF }')
else
    mangled=$("$tool" -D --defined-only "$library" | awk '{print $NF}')
fi
[ -n "$mangled" ] || { echo "FAIL: $library exports nothing"; exit 1; }

# The linker adds the last five on some systems.
c_names=$(grep -v '^_Z' <<<"$mangled" | grep -vxE '_init|_fini|_edata|_end|__bss_start' | sort || true)
c_functions=$(grep -ohE '^VISTREL_EXPORT [^;(]*\(' "$headers"/CInterface.h | sed -E 's/.*[ *]([A-Za-z0-9]+)\($/\1/' | sort)
[ "$c_names" = "$c_functions" ] ||
    fail "exported with C linkage and declared for it differ" "$(diff <(echo "$c_names") <(echo "$c_functions"))"
symbols=$(grep '^_Z' <<<"$mangled" | c++filt)

# The owner of each symbol: "Vistrel::Surface" for all members of that class, its virtual table and its type.
owners=$(sed -E 's/^(vtable|VTT|typeinfo|typeinfo name|guard variable) for //; s/^(non-virtual|virtual) thunk to //' <<<"$symbols")
foreign=$(grep -v '^Vistrel::' <<<"$owners" || true)
[ -z "$foreign" ] || fail "exported, but not of this library" "$foreign"

classes=$(grep -ohE 'class VISTREL_EXPORT [A-Za-z]+' "$headers"/*.h | awk '{print $3}' | sort -u)
functions=$(find "$headers" -name '*.h' ! -name CInterface.h -exec grep -ohE '^VISTREL_EXPORT [^;(]*\(' {} + | sed -E 's/.*[ *&]([A-Za-z]+)\($/\1/' | sort -u)
[ -n "$classes$functions" ] || { echo "FAIL: found no declarations in $headers"; exit 1; }
declared=$classes$'\n'$functions

undeclared=$(sed -E 's/^Vistrel::([A-Za-z_]+).*/\1/' <<<"$owners" | sort -u | grep -vxF "$declared" || true)
[ -z "$undeclared" ] || fail "exported, but in no public header" "$undeclared"

inner=$(grep '::PrivateData' <<<"$owners" || true)
[ -z "$inner" ] || fail "inner classes of public ones are exported" "$inner"

for class in $classes; do
    # A class without instances has only functions.
    if grep -qhF "    $class() = delete;" "$headers"/*.h; then
        grep -qF "Vistrel::$class::" <<<"$symbols" || fail "not exported" "Vistrel::$class"
        continue
    fi
    grep -qF "Vistrel::$class::~$class()" <<<"$symbols" || fail "not exported" "Vistrel::$class::~$class()"
done
for function in $functions; do
    grep -q "^Vistrel::$function(" <<<"$symbols" || fail "not exported" "Vistrel::$function"
done

echo "$(wc -l <<<"$symbols") symbols of $library checked"
[ $failures -eq 0 ]
