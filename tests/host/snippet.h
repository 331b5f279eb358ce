// SPDX-License-Identifier: MIT
// What the C guide's fragments take for granted: they are compiled after this, each as the body of SNIPPET.
#pragma once

#include <Vistrel/CInterface.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

void snippet(VTWindowHandle window);
#define SNIPPET void snippet(VTWindowHandle window)
