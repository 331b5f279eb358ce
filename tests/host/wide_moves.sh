#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Checks that a DLL moves vectors of more than 16 bytes only by instructions that need no alignment, because its compiler
# does not align the stack for them: wide_moves.sh <library> <objdump>
set -euo pipefail
wide=$("$2" -d --no-show-raw-insn "$1" | grep '%[yz]mm')
grep -qE 'vmov(up[sd]|dqu)' <<<"$wide" || { echo "FAIL: found no wide vectors"; exit 1; }
if grep -E 'vmov(ap[sd]|dqa(32|64)?) ' <<<"$wide"; then
    echo "FAIL: these need alignment"
    exit 1
fi
