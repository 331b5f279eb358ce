// SPDX-License-Identifier: MIT
// The test of the C interface's calls, in strict C99: its frame, and what only a certain moment brings about.
#include "CallsTest.h"
#include "UserHand.h"

#include <pthread.h>
#include <stdio.h>
#include <string.h>

int tag;
VTAppHandle app;
VTWindowHandle window;
VTActionHandle action;
int32_t subject;

// Checks --------------------------------------------------------------------------------------------------------------

static int failures;

// The numbers of VTResult, which stay as they are.
static const int32_t allCodes[] = {0,     -1000, -1001, -1002, -1003, -1004, -1005, -1006, -2000, -2001,
                                   -2002, -3000, -3400, -3500, -3600, -3601, -3700, -3801, -3802, -4000,
                                   -4001, -4002, -4003, -4004, -4005, -4006, -4100, -4101, -4200};

static bool isSeen[COUNT(allCodes)];

bool answers(int32_t expected, int32_t code)
{
    for (int i = 0; i < COUNT(allCodes); ++i)
        isSeen[i] = isSeen[i] || allCodes[i] == code;
    return code == expected;
}

void check(bool isTrue, int line, const char* what)
{
    if (isTrue)
        return;
    ++failures;
    printf("FAIL: line %d, of %d: %s\n", line, subject, what);
}

// What there is to call on --------------------------------------------------------------------------------------------

VTWindowHandle closedWindow;
void* ended[10];
static void* stale[5]; // of an application that has ended

static void (*atIdle)(void);

static void idle(void* user)
{
    (void)user;
    if (atIdle)
        atIdle();
}

void leave(void)
{
    VTAppExit(app, 0);
}

void runLoop(void (*step)(void))
{
    atIdle = step;
    ANSWERS(VT_OK, VTAppExec(app, NULL));
    atIdle = NULL;
}

void onThread(void* (*work)(void*), void* argument)
{
    pthread_t thread;
    CHECK(pthread_create(&thread, NULL, work, argument) == 0);
    CHECK(pthread_join(thread, NULL) == 0);
}

VTWindowHandle newWindow(void)
{
    VTWindowHandle one = NULL;
    ANSWERS(VT_OK, VTWindowCreate(app, &one, &tag));
    return one;
}

VTActionHandle newAction(VTWindowHandle of)
{
    VTActionHandle one = NULL;
    ANSWERS(VT_OK, VTWindowAddAction(of, VT_PLACE_MENU, "Menu", "Entry", NULL, NULL, &tag, &one));
    return one;
}

static void begin(void)
{
    const char* const arguments[] = {"calls", NULL};
    VTAppHandle none = NULL;
    ANSWERS(VT_ERROR_NULL_POINTER, VTAppCreate(-1, NULL, NULL));
    ANSWERS(VT_ERROR_NULL_RESULT, VTAppCreate(-1, arguments, NULL));
    ANSWERS(VT_ERROR_APPLICATION_FAILED, VTAppCreate(-1, arguments, &none));
    ANSWERS(VT_ERROR_APPLICATION_FAILED, VTAppCreate(2, arguments, &none));
    ANSWERS(VT_ERROR_NO_APPLICATION, VTAppGetGlobal(&none));
    ANSWERS(VT_OK, VTAppCreate(1, arguments, &app));
    ANSWERS(VT_ERROR_APPLICATION_EXISTS, VTAppCreate(-1, NULL, NULL));
    ANSWERS(VT_ERROR_APPLICATION_EXISTS, VTAppCreate(1, arguments, &none));
    CHECK(none == NULL);
    ANSWERS(VT_OK, VTAppAddIdleMethod(app, idle, NULL));
    ANSWERS(VT_OK, VTSetPropBool(app, VT_APP_QUIT_ON_LAST_WINDOW_CLOSED, false));

    window = newWindow();
    action = newAction(window);
    ANSWERS(VT_OK, VTWindowAddSetupMode(window, "Twice", ""));
    closedWindow = newWindow();
    const VTWindowHandle gone = newWindow();
    void* const all[] = {&tag, gone, newAction(window), newAction(gone), newAction(closedWindow)};
    memcpy(ended, all, sizeof all);
    memcpy(ended + COUNT(all), stale, sizeof stale);
    ANSWERS(VT_OK, VTActionDestroy(all[2]));
    ANSWERS(VT_OK, VTWindowDestroy(gone));
    closeByUser(closedWindow);
    runLoop(leave);
}

static void end(void)
{
    void* const all[] = {app, window, closedWindow, action, newWindow()};
    memcpy(stale, all, sizeof all);
    ANSWERS(VT_OK, VTAppDestroy(app));
}

// What is left: moments and chance ------------------------------------------------------------------------------------

static int goneCalls;
static VTWindowHandle closing, doomed;
static VTActionHandle doomedAction;

static void isBusy(void)
{
    ANSWERS(VT_ERROR_APPLICATION_BUSY, VTAppDestroy(app));
    ANSWERS(VT_ERROR_APPLICATION_BUSY, VTAppExec(app, NULL));
}

static void onGone(void* user)
{
    CHECK(user == &tag);
    ++goneCalls;
    isBusy();
    // The window itself outlasts this callback, its handles do not.
    ANSWERS(VT_OK, VTWindowDestroy(doomed));
    ANSWERS(VT_ERROR_WRONG_HANDLE, VTWindowDestroy(doomed));
    ANSWERS(VT_ERROR_WRONG_HANDLE, VTActionDestroy(doomedAction));
}

static void onClosed(void* user)
{
    VTActionHandle late = NULL;
    CHECK(user == &tag);
    ANSWERS(VT_ERROR_ACTION_REFUSED, VTWindowAddAction(closing, 1, "Menu", "Text", NULL, onGone, &tag, &late));
    CHECK(late == NULL && goneCalls == 0);
    isBusy();
}

static void testMoments(void)
{
    VTActionHandle own = NULL;
    void* value = NULL;
    int exitCode = 0;
    ANSWERS(VT_OK, VTAppExit(app, 7));
    ANSWERS(VT_OK, VTAppExec(app, &exitCode));
    CHECK(exitCode == 7);
    closing = newWindow();
    ANSWERS(VT_OK, VTSetFeatureNotify(closing, VT_FEATURE_CLOSED, onClosed));
    closeByUser(closing);
    runLoop(leave);
    ANSWERS(VT_ERROR_WINDOW_CLOSED, VTWindowClearSetupModes(closing));
    CHECK(VTWindowIsGood(window) && !VTWindowIsGood(closing));
    ANSWERS(VT_OK, VTWindowDestroy(closing));
    ANSWERS(VT_ERROR_WRONG_HANDLE, VTWindowDestroy(closing));

    doomed = newWindow();
    doomedAction = newAction(doomed);
    ANSWERS(VT_OK, VTWindowAddAction(window, VT_PLACE_TOOL_BAR, NULL, "Text", NULL, onGone, &tag, &own));
    ANSWERS(VT_OK, VTActionGetUserData(own, &value));
    CHECK(value == &tag);
    ANSWERS(VT_OK, VTActionDestroy(own));
    CHECK(goneCalls == 1);

    value = NULL;
    ANSWERS(VT_OK, VTWindowGetUserData(window, &value));
    CHECK(value == &tag);
    ANSWERS(VT_OK, VTWindowGetNativeHandle(window, &value));
    CHECK(value != NULL && value != &tag);
    ANSWERS(VT_OK, VTAppGetGlobal((VTAppHandle*)(void*)&value));
    CHECK(value == app);
}

#define WITHOUT_MEMORY(nth, call)                                                                                      \
    do {                                                                                                               \
        failAllocation(nth);                                                                                           \
        const int32_t code = call;                                                                                     \
        failAllocation(0);                                                                                             \
        ANSWERS(VT_ERROR_EXCEPTION, code);                                                                             \
    } while (0)

static void testMemory(void)
{
    static const uint8_t pixels[64];
    const VTRawImage frame = {pixels, 8, 8, VT_FORMAT_MONO8, NULL};
    static const char longText[] = "A text that is longer than what fits into a string without an allocation";
    VTWindowHandle none = NULL;
    VTActionHandle noAction = NULL;
    if (!failAllocation(0)) {
        printf("SKIP: VT_ERROR_EXCEPTION: the library's allocations cannot be made to fail in this build\n");
        return;
    }
    goneCalls = 0;
    WITHOUT_MEMORY(1, VTWindowCreate(app, &none, &tag));
    WITHOUT_MEMORY(1, VTWindowSetNextFrame(window, &frame));
    WITHOUT_MEMORY(1, VTWindowAddSetupMode(window, longText, ""));
    WITHOUT_MEMORY(1, VTWindowAddFileFormat(window, "memory", NULL, longText));
    WITHOUT_MEMORY(1, VTWindowAddAction(window, VT_PLACE_TOOL_BAR, NULL, "Text", NULL, onGone, &tag, &noAction));
    WITHOUT_MEMORY(2, VTWindowAddAction(window, VT_PLACE_TOOL_BAR, NULL, "Text", NULL, onGone, &tag, &noAction));
    CHECK(none == NULL && noAction == NULL && goneCalls == 0);
    ANSWERS(VT_OK, VTWindowAddSetupMode(window, longText, ""));
    ANSWERS(VT_OK, VTWindowAddFileFormat(window, "memory", NULL, longText));
}

static void testTexts(void)
{
    const char* const unknown = VTResultText(-1);
    CHECK(unknown && *unknown && strcmp(unknown, VTResultText(INT32_MAX)) == 0);
    for (int i = 0; i < COUNT(allCodes); ++i) {
        const char* const text = VTResultText(subject = allCodes[i]);
        CHECK(text && *text && strcmp(text, unknown) != 0);
        for (int j = 0; j < i; ++j)
            CHECK(strcmp(text, VTResultText(allCodes[j])) != 0);
    }
}

int main(void)
{
    testTexts();
    begin();
    end();
    testFaultsWithoutApp();

    begin(); // there are handles of an application that has ended now
    testFaults();
    testMoments();
    testProperties();
    testFeatures();
    testMemory();
    end();

    for (int i = 0; i < COUNT(allCodes); ++i) {
        subject = allCodes[i];
        const bool isElsewhere = subject == VT_ERROR_NO_ANSWER; // where there are users
        CHECK(isSeen[i] || isElsewhere || (subject == VT_ERROR_EXCEPTION && !failAllocation(0)));
    }
    CHECK(toolkitWarnings() == 0);
    printf(failures ? "%d failures\n" : "All well.\n", failures);
    return failures != 0;
}
