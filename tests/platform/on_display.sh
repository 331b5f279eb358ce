#!/bin/bash
# SPDX-License-Identifier: MIT
# Runs a program on a virtual display of its own, with a window manager: on_display.sh PROGRAM [ARGUMENT]...
. "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"
on_virtual_display "$@"
