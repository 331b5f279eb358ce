// SPDX-License-Identifier: MIT
// The context of the C guide's fragments: each is compiled after this, as the body of SNIPPET.
#pragma once

#include <Vistrel/CInterface.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

void snippet(VTWindowHandle window);
#define SNIPPET void snippet(VTWindowHandle window)
