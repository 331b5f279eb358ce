// SPDX-License-Identifier: MIT
// Every function of the C interface with every fault that its comment names, alone and with all others at once: the
// code that it answers, and that nothing was written or changed.
#include "CallsTest.h"

#include <stdio.h>
#include <string.h>

enum Kind { NOTHING, APP, WINDOW, ACTION };

struct Call
{
    const char* name;
    enum Kind kind;
    int32_t (*call)(void* handle);
    int32_t number;     // a property's type; a feature that is right
    int32_t faults[12]; // in the order of the checks
};

// The state of the drive, which runs on one thread at a time.
static const struct Call* now;
static unsigned faultSet; // bit i: faults[i]
static int variant;       // which of the ways there are
static int32_t expected;
static bool isWithoutApp, isElsewhere, isInLoop;

// What calls write to, with nothing written yet, and the capacity that they are told.
static union Value out;
static size_t outSize;
static const uint8_t pixels[64];
static const VTRawImage frame = {pixels, 8, 8, VT_FORMAT_MONO8, NULL};

static unsigned bitOf(int32_t fault) // 0: this call does not know it
{
    for (int i = 0; i < COUNT(now->faults); ++i) {
        if (now->faults[i] == fault)
            return 1u << i;
    }
    return 0;
}

static bool has(int32_t fault)
{
    return faultSet & bitOf(fault);
}

// The one of `count` pointers that the fault makes null.
static void* pointer(int32_t fault, int index, int count, void* good)
{
    return has(fault) && variant % count == index ? NULL : good;
}

static void* result(void)
{
    return pointer(bitOf(VT_ERROR_NULL_RESULT) ? VT_ERROR_NULL_RESULT : VT_ERROR_NULL_POINTER, 0, 1, &out);
}

static int32_t oneOf(int32_t fault, int32_t good, int32_t a, int32_t b, int32_t c)
{
    return !has(fault) ? good : variant % 3 == 0 ? a : variant % 3 == 1 ? b : c;
}

// False when this variant has none.
static bool wrongHandle(void** handle)
{
    void* const live[] = {NULL, app, window, action, closedWindow};
    const enum Kind kinds[] = {NOTHING, APP, WINDOW, ACTION, WINDOW};
    // What is no property has no owner, and is told by any live handle.
    const bool anyLive = has(VT_ERROR_UNKNOWN_PROPERTY);
    if (variant < COUNT(live)) {
        *handle = live[variant];
        return *handle ? kinds[variant] != now->kind && !anyLive : !bitOf(VT_ERROR_NULL_HANDLE);
    }
    *handle = ended[variant - COUNT(live)];
    for (int i = 0; i < COUNT(live); ++i) {
        if (*handle == live[i]) // the address has been given to another one
            return false;
    }
    return true;
}

static bool chooseHandle(void** handle)
{
    void* const good[] = {NULL, app, window, action};
    *handle = has(VT_ERROR_WINDOW_CLOSED) ? closedWindow : good[now->kind];
    if (has(VT_ERROR_NULL_HANDLE))
        *handle = NULL;
    else if (has(VT_ERROR_WRONG_HANDLE))
        return wrongHandle(handle);
    return true;
}

static int32_t featureOf(int32_t right)
{
    if (has(VT_ERROR_UNKNOWN_FEATURE))
        return oneOf(VT_ERROR_UNKNOWN_FEATURE, 0, 0, -right, right + 50);
    return has(VT_ERROR_FEATURE_SIGNATURE) ? 100 + (right + 100 * (variant % 11)) % 1200 : right;
}

// Calls, with the faults of the moment --------------------------------------------------------------------------------

#define CALL(name, expression)                                                                                         \
    static int32_t name(void* h)                                                                                       \
    {                                                                                                                  \
        return expression;                                                                                             \
    }

CALL(appDestroy, faultSet ? VTAppDestroy(h) : VT_OK) // without faults that is `end`
CALL(appExec, (leave(), VTAppExec(h, variant % 2 ? NULL : (void*)&out)))
CALL(appExit, VTAppExit(h, 0))
CALL(appGetGlobal, VTAppGetGlobal(h ? NULL : result()))
CALL(appAddIdleMethod, VTAppAddIdleMethod(h, NULL, NULL))
CALL(windowCreate, VTWindowCreate(h, result(), NULL))
CALL(windowDestroy, VTWindowDestroy(faultSet ? h : newWindow()))
CALL(windowGetNativeHandle, VTWindowGetNativeHandle(h, result()))
CALL(windowGetUserData, VTWindowGetUserData(h, result()))
CALL(windowClearSetupModes, VTWindowClearSetupModes(h))
CALL(windowClearFileFormats, VTWindowClearFileFormats(h))
CALL(actionDestroy, VTActionDestroy(faultSet ? h : newAction(window)))
CALL(actionGetUserData, VTActionGetUserData(h, result()))
CALL(isFeatureSet, VTIsFeatureSet(h, featureOf(now->number), result()))
CALL(sendSignal, VTSendSignal(h, oneOf(VT_ERROR_UNKNOWN_SIGNAL, 1 + variant % 3, 0, 4, -1)))
CALL(feature, setFeature(now->number / 100, h, featureOf(now->number), faultSet != 0))

static int32_t windowIsGood(void* h)
{
    return VTWindowIsGood(h) == (expected == VT_OK) ? expected : VT_ERROR_EXCEPTION;
}

CALL(windowSetNextFrame, VTWindowSetNextFrame(h, variant % 2 ? &frame : NULL))

static const char* unusedName(void)
{
    static char name[20];
    static int count;
    snprintf(name, sizeof name, "x%d", ++count);
    return name;
}

static int32_t windowAddSetupMode(void* h)
{
    static const char* const bad[][2] = {{NULL, ""}, {"Twice", ""}, {"New", NULL}};
    const bool isWrong = has(VT_ERROR_SETUP_MODE);
    return VTWindowAddSetupMode(h, isWrong ? bad[variant % 3][0] : unusedName(), isWrong ? bad[variant % 3][1] : "");
}

static int32_t windowAddFileFormat(void* h)
{
    static const char* const bad[][2] = {{NULL, NULL}, {"", ""}, {".", NULL}, {"a.b", NULL}, {"ok", "a-b"}};
    if (has(VT_ERROR_FILE_FORMAT))
        return VTWindowAddFileFormat(h, bad[variant % 5][0], bad[variant % 5][1], NULL);
    const char* const name = unusedName();
    const int32_t code = VTWindowAddFileFormat(h, name, variant % 2 ? NULL : "", NULL);
    if (code == VT_OK)
        ANSWERS(VT_ERROR_FILE_FORMAT, VTWindowAddFileFormat(h, "other", name, NULL));
    return code;
}

static int32_t windowAddAction(void* h)
{
    const bool isWrong = has(VT_ERROR_ACTION_ARGUMENT);
    const char* const empty = variant % 2 ? NULL : "";
    const int32_t place = oneOf(VT_ERROR_ACTION_ARGUMENT, 1 + variant % 3, 4 * (variant % 2), 1, 1 + variant / 3 % 3);
    const bool hasMenu = isWrong ? variant % 3 != 1 : place == VT_PLACE_MENU;
    const char* const text = isWrong && variant % 3 == 2 ? empty : "Text";
    return VTWindowAddAction(h, place, hasMenu ? "Menu" : empty, text, NULL, NULL, NULL, result());
}

static int32_t messageBox(void* h)
{
    const int32_t kind = oneOf(VT_ERROR_MESSAGE_KIND, VT_MESSAGE_WARNING, 0, 5, -1);
    const int32_t shown = oneOf(VT_ERROR_MESSAGE_BUTTONS, VT_BUTTON_YES, 0x40000, VT_BUTTON_YES, 0);
    const int32_t first = oneOf(VT_ERROR_MESSAGE_BUTTONS, 0, 0, VT_BUTTON_YES | VT_BUTTON_NO, VT_BUTTON_YES);
    void* const title = pointer(VT_ERROR_NULL_POINTER, 0, 3, "title");
    void* const text = pointer(VT_ERROR_NULL_POINTER, 1, 3, "text");
    void* const pressed = pointer(VT_ERROR_NULL_POINTER, 2, 3, &out);
    if (!faultSet)
        return VT_OK; // there is no user for it
    return VTMessageBoxDialogShow(h, kind, title, text, (uint32_t)shown, (uint32_t)first, pressed);
}

static int32_t property(int32_t oneWay)
{
    const int32_t ofType[] = {VT_WINDOW_REFRESH_RATE, VT_WINDOW_ZOOM, VT_WINDOW_PIXEL_CROSSHAIR_VISIBLE,
                              VT_WINDOW_TITLE, VT_WINDOW_GEOMETRY};
    if (has(VT_ERROR_UNKNOWN_PROPERTY))
        return oneOf(VT_ERROR_UNKNOWN_PROPERTY, 0, INT32_MIN, -VT_WINDOW_TITLE, INT32_MAX);
    if (has(VT_ERROR_PROPERTY_TYPE))
        return ofType[(now->number + 1 + variant % 4) % 5];
    return has(VT_ERROR_READ_ONLY) || has(VT_ERROR_WRITE_ONLY) ? oneWay : ofType[now->number];
}

static int32_t setInt32(void* h)
{
    return VTSetPropInt32(h, property(VT_SOURCE_SETUP_MODE_COUNT), oneOf(VT_ERROR_OUT_OF_RANGE, 17, 0, -1, INT32_MIN));
}

CALL(setDouble, VTSetPropDouble(h, property(0), has(VT_ERROR_OUT_OF_RANGE) ? 1000.0 * (variant % 2) : 3.0))
CALL(setBool, VTSetPropBool(h, property(VT_SOURCE_HAS_SETUP), true))

static int32_t setCStr(void* h)
{
    const int32_t number = property(0);
    const bool isRefused = has(VT_ERROR_PROPERTY_REFUSED) && number == VT_WINDOW_TITLE;
    return VTSetPropCStr(h, isRefused ? VT_WINDOW_GEOMETRY_TEXT : number, result() ? "Other" : NULL);
}

static int32_t setData(void* h)
{
    const int32_t place[] = {31, 32, 333, 334};
    const uint32_t lock[] = {INT32_MAX, INT32_MAX, VT_FORMAT_RGBA8};
    const int32_t number = property(VT_WINDOW_BITMAP);
    const bool isRefused = has(VT_ERROR_PROPERTY_REFUSED) && number == VT_WINDOW_GEOMETRY;
    const size_t size = isRefused ? sizeof lock : sizeof place;
    return VTSetPropData(h, isRefused ? VT_WINDOW_BITMAP_LOCK : number,
                         !result()   ? NULL
                         : isRefused ? (const void*)lock
                                     : place,
                         has(VT_ERROR_OUT_OF_RANGE) ? size - 1 : size);
}

static int32_t getProperty(void* h)
{
    const bool isScalar = now->number <= BOOL;
    if (has(VT_ERROR_BUFFER_TOO_SMALL))
        outSize = 15;
    return getAny((enum Type)now->number, h, property(VT_WINDOW_RAISE), isScalar ? result() : &out,
                  isScalar || result() ? &outSize : NULL);
}

// The drive -----------------------------------------------------------------------------------------------------------

#define E(code) VT_ERROR_##code
#define ANY_THREAD E(NO_APPLICATION), E(NULL_HANDLE), E(WRONG_HANDLE)
#define HANDLE ANY_THREAD, E(WRONG_THREAD)
#define RESULT(missing) E(NO_APPLICATION), E(NULL_HANDLE), E(missing), E(WRONG_HANDLE), E(WRONG_THREAD)
#define POINTER RESULT(NULL_POINTER)
#define BOX E(NO_APPLICATION), E(NULL_HANDLE), E(NULL_POINTER), E(WRONG_HANDLE), E(MESSAGE_KIND), E(MESSAGE_BUTTONS)
#define PROPERTY E(UNKNOWN_PROPERTY), E(PROPERTY_TYPE)
#define WRITTEN PROPERTY, E(READ_ONLY), E(OUT_OF_RANGE), E(WINDOW_CLOSED)
#define FEATURE HANDLE, E(UNKNOWN_FEATURE), E(FEATURE_SIGNATURE), E(WINDOW_CLOSED)

static const struct Call calls[] = {
    {"VTAppDestroy", APP, appDestroy, 0, {E(NO_APPLICATION), E(WRONG_HANDLE), E(WRONG_THREAD), E(APPLICATION_BUSY)}},
    {"VTAppExec", APP, appExec, 0, {E(NO_APPLICATION), E(WRONG_HANDLE), E(WRONG_THREAD), E(APPLICATION_BUSY)}},
    {"VTAppExit", APP, appExit, 0, {E(NO_APPLICATION), E(WRONG_HANDLE)}},
    {"VTAppGetGlobal", NOTHING, appGetGlobal, 0, {E(NO_APPLICATION), E(NULL_RESULT)}},
    {"VTAppAddIdleMethod", APP, appAddIdleMethod, 0, {E(NO_APPLICATION), E(WRONG_HANDLE), E(WRONG_THREAD)}},
    {"VTWindowCreate", APP, windowCreate, 0, {E(NO_APPLICATION), E(WRONG_HANDLE), E(NULL_RESULT), E(WRONG_THREAD)}},
    {"VTWindowDestroy", WINDOW, windowDestroy, 0, {HANDLE}},
    {"VTWindowIsGood", WINDOW, windowIsGood, 0, {ANY_THREAD, E(WINDOW_CLOSED)}},
    {"VTWindowGetNativeHandle", WINDOW, windowGetNativeHandle, 0, {POINTER, E(WINDOW_CLOSED)}},
    {"VTWindowGetUserData", WINDOW, windowGetUserData, 0, {POINTER, E(WINDOW_CLOSED)}},
    {"VTWindowSetNextFrame", WINDOW, windowSetNextFrame, 0, {ANY_THREAD, E(WINDOW_CLOSED)}},
    {"VTWindowAddSetupMode", WINDOW, windowAddSetupMode, 0, {HANDLE, E(WINDOW_CLOSED), E(SETUP_MODE)}},
    {"VTWindowClearSetupModes", WINDOW, windowClearSetupModes, 0, {HANDLE, E(WINDOW_CLOSED)}},
    {"VTWindowAddFileFormat", WINDOW, windowAddFileFormat, 0, {HANDLE, E(WINDOW_CLOSED), E(FILE_FORMAT)}},
    {"VTWindowClearFileFormats", WINDOW, windowClearFileFormats, 0, {HANDLE, E(WINDOW_CLOSED)}},
    {"VTWindowAddAction", WINDOW, windowAddAction, 0, {RESULT(NULL_RESULT), E(ACTION_ARGUMENT), E(WINDOW_CLOSED)}},
    {"VTActionDestroy", ACTION, actionDestroy, 0, {HANDLE}},
    {"VTActionGetUserData", ACTION, actionGetUserData, 0, {POINTER}},
    {"VTMessageBoxDialogShow", WINDOW, messageBox, 0, {BOX, E(WINDOW_CLOSED)}},
    {"VTSetPropInt32", WINDOW, setInt32, INT32, {HANDLE, WRITTEN}},
    {"VTSetPropDouble", WINDOW, setDouble, DOUBLE, {HANDLE, PROPERTY, E(OUT_OF_RANGE), E(WINDOW_CLOSED)}},
    {"VTSetPropBool", WINDOW, setBool, BOOL, {HANDLE, PROPERTY, E(READ_ONLY), E(WINDOW_CLOSED)}},
    {"VTSetPropCStr", WINDOW, setCStr, CSTR, {POINTER, PROPERTY, E(WINDOW_CLOSED), E(PROPERTY_REFUSED)}},
    {"VTSetPropData", WINDOW, setData, DATA, {POINTER, WRITTEN, E(PROPERTY_REFUSED)}},
    {"VTGetPropInt32", WINDOW, getProperty, INT32, {POINTER, PROPERTY, E(WINDOW_CLOSED)}},
    {"VTGetPropDouble", WINDOW, getProperty, DOUBLE, {POINTER, PROPERTY, E(WINDOW_CLOSED)}},
    {"VTGetPropBool", WINDOW, getProperty, BOOL, {POINTER, PROPERTY, E(WRITE_ONLY), E(WINDOW_CLOSED)}},
    {"VTGetPropCStr", WINDOW, getProperty, CSTR, {POINTER, PROPERTY, E(WINDOW_CLOSED)}},
    {"VTGetPropData", WINDOW, getProperty, DATA, {POINTER, PROPERTY, E(WINDOW_CLOSED), E(BUFFER_TOO_SMALL)}},
    {"VTSetFeatureCommand", WINDOW, feature, VT_FEATURE_SETUP, {FEATURE}},
    {"VTSetFeatureCount", WINDOW, feature, VT_FEATURE_START_FIXED, {FEATURE}},
    {"VTSetFeatureName", WINDOW, feature, VT_FEATURE_SETUP_MODE, {FEATURE}},
    {"VTSetFeatureQuery", WINDOW, feature, VT_FEATURE_CAN_SETUP, {FEATURE}},
    {"VTSetFeatureText", WINDOW, feature, VT_FEATURE_ACTIVE_SETUP_MODE, {FEATURE}},
    {"VTSetFeatureDouble", WINDOW, feature, VT_FEATURE_FRAME_RATE, {FEATURE}},
    {"VTSetFeatureSize", WINDOW, feature, VT_FEATURE_FRAMES_QUEUED, {FEATURE}},
    {"VTSetFeatureNextFrame", WINDOW, feature, VT_FEATURE_NEXT_FRAME, {FEATURE}},
    {"VTSetFeatureReleased", WINDOW, feature, VT_FEATURE_FRAME_RELEASED, {FEATURE}},
    {"VTSetFeatureNotify", WINDOW, feature, VT_FEATURE_CLOSED, {FEATURE}},
    {"VTSetFeatureLoad", WINDOW, feature, VT_FEATURE_FILE_LOAD, {FEATURE}},
    {"VTSetFeatureSave", WINDOW, feature, VT_FEATURE_FILE_SAVE, {FEATURE}},
    {"VTIsFeatureSet", WINDOW, isFeatureSet, VT_FEATURE_SETUP, {POINTER, E(UNKNOWN_FEATURE), E(WINDOW_CLOSED)}},
    {"VTSendSignal", WINDOW, sendSignal, 0, {ANY_THREAD, E(UNKNOWN_SIGNAL), E(WINDOW_CLOSED)}},
};

static void driveOne(void)
{
    union Value untouched;
    void* handle = NULL;
    expected = VT_OK;
    for (int i = COUNT(now->faults) - 1; i >= 0; --i)
        expected = faultSet >> i & 1 ? now->faults[i] : expected;
    if (!chooseHandle(&handle))
        return;
    memset(&untouched, 0xa5, sizeof untouched);
    out = untouched;
    outSize = sizeof out;
    const int32_t code = now->call(handle);
    const bool isUntouched = memcmp(&out, &untouched, sizeof out) == 0;
    const size_t sizeGiven = has(VT_ERROR_BUFFER_TOO_SMALL) ? 15 : sizeof out;
    const bool isSizeKept = outSize == (code == VT_ERROR_BUFFER_TOO_SMALL ? 16 : sizeGiven);
    if (answers(expected, code) && (code == VT_OK || (isUntouched && isSizeKept)))
        return;
    printf("%s, variant %d, with", now->name, variant);
    for (int i = 0; i < COUNT(now->faults); ++i) {
        if (faultSet >> i & 1)
            printf(" %d", now->faults[i]);
    }
    printf(": answers %d instead of %d%s\n", code, expected, isUntouched && isSizeKept ? "" : ", and writes");
    CHECK(false);
}

static void drive(bool withFaults)
{
    for (now = calls; now < calls + COUNT(calls); ++now) {
        // What the moment alone decides.
        const unsigned always = (isWithoutApp ? bitOf(E(NO_APPLICATION)) : 0) |
                                (isElsewhere ? bitOf(E(WRONG_THREAD)) : 0) |
                                (isInLoop ? bitOf(E(APPLICATION_BUSY)) : 0);
        const unsigned never =
            ~always & (bitOf(E(NO_APPLICATION)) | bitOf(E(WRONG_THREAD)) | bitOf(E(APPLICATION_BUSY)));
        for (faultSet = always; faultSet < bitOf(VT_OK); ++faultSet) {
            if ((faultSet & never) || (faultSet & always) != always || (faultSet != 0) != withFaults)
                continue;
            for (variant = 0; variant < 5 + COUNT(ended); ++variant)
                driveOne();
        }
    }
}

static void* driveElsewhere(void* withFaults)
{
    isElsewhere = true;
    drive(withFaults != NULL);
    isElsewhere = false;
    return NULL;
}

static void driveInLoop(void)
{
    isInLoop = true;
    drive(true);
    isInLoop = false;
    leave();
}

void testFaultsWithoutApp(void)
{
    isWithoutApp = true;
    drive(true);
    onThread(driveElsewhere, &tag);
    isWithoutApp = false;
}

// Without effect: all that can be read stays as it is.
void testFaults(void)
{
    static unsigned char before[20000], after[20000];
    const size_t size = snapshot(before, sizeof before);
    drive(true);
    onThread(driveElsewhere, &tag);
    runLoop(driveInLoop);
    CHECK(snapshot(after, sizeof after) == size && memcmp(before, after, size) == 0);

    drive(false);
    onThread(driveElsewhere, NULL);
    runLoop(leave); // takes the exits that were asked for
}
