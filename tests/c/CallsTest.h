// SPDX-License-Identifier: MIT
// What the test of the C interface's calls shares between its files.
#ifndef CALLS_TEST_H
#define CALLS_TEST_H

#include <Vistrel/CInterface.h>

#define COUNT(array) ((int)(sizeof(array) / sizeof(array)[0]))

void check(bool isTrue, int line, const char* what);
bool answers(int32_t expected, int32_t code); // and remembers that the code has been seen
#define CHECK(condition) check(condition, __LINE__, #condition)
#define ANSWERS(expected, call) check(answers(expected, call), __LINE__, #expected " by " #call)

extern int32_t subject; // what is looked at, for the report: number of a property or feature, or a code
extern int tag;         // all user data
extern VTAppHandle app;
extern VTWindowHandle window;
extern VTActionHandle action;
extern VTWindowHandle closedWindow; // by the user
extern void* ended[10];             // no handles, or no longer

VTWindowHandle newWindow(void);
VTActionHandle newAction(VTWindowHandle of);
void runLoop(void (*step)(void)); // which is called when the loop is idle
void leave(void);                 // ends the loop
void onThread(void* (*work)(void*), void* argument);

// What a property or a handle can be written to.
union Value {
    unsigned char bytes[1000];
    double number;
    void* handle;
};

enum Type { INT32, DOUBLE, BOOL, CSTR, DATA };

int32_t getAny(enum Type type, VTHandle handle, int32_t number, void* value, size_t* size);
size_t snapshot(unsigned char* to, size_t capacity); // all that can be read of the window and the action
int32_t setFeature(int signature, VTWindowHandle of, int32_t feature, bool on);

void testFaultsWithoutApp(void);
void testFaults(void);
void testProperties(void);
void testFeatures(void);

#endif
