// SPDX-License-Identifier: MIT
// What a C host cannot do by itself: be the user, and run out of memory.
#ifndef USER_HAND_H
#define USER_HAND_H

#include <Vistrel/CInterface.h>

#ifdef __cplusplus
extern "C" {
#endif

void closeByUser(VTWindowHandle window);
int toolkitWarnings(void); // so far, but for what the system is said to lack

// Makes the nth allocation from now on this thread fail, or none (0). False where the library's allocations are out of
// reach: on Windows it is bound to an operator new of its own, and the race detector wants to have the real one.
bool failAllocation(int nth);

#ifdef __cplusplus
}
#endif

#endif
