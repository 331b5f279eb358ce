// SPDX-License-Identifier: MIT
// All properties and features of the C interface, by tables: what each takes and gives, and what it refuses.
#include "CallsTest.h"

#include <math.h>
#include <string.h>

// Properties ----------------------------------------------------------------------------------------------------------

enum Access { BOTH, READ, WRITE, NO_PROPERTY };

// By their numbers, which stay as they are.
static const struct
{
    int32_t first, last;
    enum Access access;
} properties[] = {{1200, 1200, BOTH}, {2000, 2004, BOTH}, {2100, 2100, BOTH}, {2200, 2200, BOTH}, {2201, 2201, WRITE},
                  {2202, 2211, BOTH}, {2220, 2229, BOTH}, {2300, 2303, BOTH}, {2400, 2404, BOTH}, {2405, 2405, READ},
                  {3000, 3002, BOTH}, {3003, 3003, READ}, {3200, 3215, READ}, {4200, 4202, BOTH}, {4300, 4301, BOTH}};

static enum Access accessOf(int32_t number)
{
    for (int i = 0; i < COUNT(properties); ++i) {
        if (number >= properties[i].first && number <= properties[i].last)
            return properties[i].access;
    }
    return NO_PROPERTY;
}

static VTHandle ownerOf(int32_t number)
{
    return number / 1000 == 1 ? (VTHandle)app : number / 1000 == 4 ? (VTHandle)action : window;
}

int32_t getAny(enum Type type, VTHandle handle, int32_t number, void* value, size_t* size)
{
    return type == INT32    ? VTGetPropInt32(handle, number, value)
           : type == DOUBLE ? VTGetPropDouble(handle, number, value)
           : type == BOOL   ? VTGetPropBool(handle, number, value)
           : type == CSTR   ? VTGetPropCStr(handle, number, value, size)
                            : VTGetPropData(handle, number, value, size);
}

static int32_t setAny(enum Type type, VTHandle handle, int32_t number)
{
    return type == INT32    ? VTSetPropInt32(handle, number, 1)
           : type == DOUBLE ? VTSetPropDouble(handle, number, 1)
           : type == BOOL   ? VTSetPropBool(handle, number, true)
           : type == CSTR   ? VTSetPropCStr(handle, number, "")
                            : VTSetPropData(handle, number, NULL, 0);
}

size_t snapshot(unsigned char* to, size_t capacity)
{
    size_t used = 0;
    for (int32_t number = 0; number < 5000; ++number) {
        union Value value = {{0}};
        size_t size = sizeof value;
        if (accessOf(number) > READ)
            continue;
        ANSWERS(VT_OK, getAny((enum Type)(number / 100 % 10), ownerOf(number), number, &value, &size));
        size = size < sizeof value ? size : sizeof value.number;
        CHECK(used + size <= capacity);
        memcpy(to + used, value.bytes, size);
        used += size;
    }
    for (int32_t number = 0; number < 1300 && used < capacity; ++number)
        VTIsFeatureSet(window, number, (bool*)&to[used++]);
    return used;
}

static void testOneProperty(int32_t number)
{
    union Value value;
    size_t size = sizeof value;
    const VTHandle handles[] = {app, window, action};
    const enum Type itsType = (enum Type)(number / 100 % 10);
    const enum Access access = accessOf(number);
    const VTHandle owner = ownerOf(number);
    for (int i = 0; i < COUNT(handles) && access != NO_PROPERTY; ++i) {
        if (handles[i] == owner)
            continue;
        ANSWERS(VT_ERROR_WRONG_HANDLE, getAny(itsType, handles[i], number, &value, &size));
        ANSWERS(VT_ERROR_WRONG_HANDLE, setAny(itsType, handles[i], number));
    }
    for (enum Type type = INT32; type <= DATA; ++type) {
        const int32_t refusal = access == NO_PROPERTY ? VT_ERROR_UNKNOWN_PROPERTY : VT_ERROR_PROPERTY_TYPE;
        if (access != NO_PROPERTY && type == itsType)
            continue;
        ANSWERS(refusal, getAny(type, owner, number, &value, &size));
        ANSWERS(refusal, setAny(type, owner, number));
    }
    if (access == NO_PROPERTY)
        return;
    ANSWERS(access == WRITE ? VT_ERROR_WRITE_ONLY : VT_OK, getAny(itsType, owner, number, &value, &size));
    if (access == READ)
        ANSWERS(VT_ERROR_READ_ONLY, setAny(itsType, owner, number));
    if (access == WRITE)
        ANSWERS(VT_OK, setAny(itsType, owner, number));
    if (access != BOTH || itsType != BOOL)
        return;
    bool first = false, now = false;
    ANSWERS(VT_OK, VTGetPropBool(owner, number, &first));
    for (int i = 0; i < 2; ++i) {
        const bool wanted = i == 0 ? !first : first;
        ANSWERS(VT_OK, VTSetPropBool(owner, number, wanted));
        ANSWERS(VT_OK, VTGetPropBool(owner, number, &now));
        CHECK(now == wanted);
    }
}

static void testInt32(void)
{
    static const struct
    {
        int32_t number, low, high, step;
    } rows[] = {
        {VT_WINDOW_COLOR_TABLE, VT_COLOR_TABLE_GRAY, VT_COLOR_TABLE_CONTOURS, 1},
        {VT_WINDOW_BAYER_FILTER_OVERRIDE, 0, VT_FORMAT_BAYER_BG, VT_FORMAT_BAYER_GB},
        {VT_WINDOW_SHOW_STATE, VT_SHOW_NORMAL, VT_SHOW_MAXIMIZED, 1},
        {VT_WINDOW_ACQUISITION_STATE, VT_ACQUISITION_UNCONFIGURED, VT_ACQUISITION_RUNNING, 1},
        {VT_SOURCE_START_FIXED_MIN, 1, INT32_MAX, INT32_MAX - 1},
        {VT_SOURCE_START_FIXED_MAX, 1, INT32_MAX, INT32_MAX - 1},
        {VT_SOURCE_START_FIXED_INC, 1, INT32_MAX, INT32_MAX - 1},
    };
    for (int i = 0; i < COUNT(rows); ++i) {
        const int32_t number = subject = rows[i].number;
        const int32_t bad[] = {INT32_MIN, rows[i].low - 1, rows[i].high < INT32_MAX ? rows[i].high + 1 : -1,
                               rows[i].step == VT_FORMAT_BAYER_GB ? 1 : -1};
        int32_t first = -5, value = -5;
        ANSWERS(VT_OK, VTGetPropInt32(window, number, &first));
        for (int64_t wanted = rows[i].low; wanted <= rows[i].high; wanted += rows[i].step) {
            ANSWERS(VT_OK, VTSetPropInt32(window, number, (int32_t)wanted));
            ANSWERS(VT_OK, VTGetPropInt32(window, number, &value));
            // Without commands there is no way to another state.
            CHECK(value == (number == VT_WINDOW_ACQUISITION_STATE ? first : wanted));
        }
        for (int j = 0; j < COUNT(bad); ++j)
            ANSWERS(VT_ERROR_OUT_OF_RANGE, VTSetPropInt32(window, number, bad[j]));
        ANSWERS(VT_OK, VTGetPropInt32(window, number, &first));
        CHECK(value == first);
    }
}

static void testZoom(void)
{
    double most = 1, value = 0;
    for (int i = 0; i < 40; ++i)
        most *= 1.125;
    const double good[] = {1 / most, most, 1};
    const double bad[] = {0.999 / most, 1.001 * most, 0, -1, NAN, INFINITY};
    subject = VT_WINDOW_ZOOM;
    for (int i = 0; i < COUNT(good); ++i) {
        ANSWERS(VT_OK, VTSetPropDouble(window, VT_WINDOW_ZOOM, good[i]));
        ANSWERS(VT_OK, VTGetPropDouble(window, VT_WINDOW_ZOOM, &value));
        CHECK(value > 0.999 * good[i] && value < 1.001 * good[i]);
    }
    for (int i = 0; i < COUNT(bad); ++i)
        ANSWERS(VT_ERROR_OUT_OF_RANGE, VTSetPropDouble(window, VT_WINDOW_ZOOM, bad[i]));
    ANSWERS(VT_OK, VTGetPropDouble(window, VT_WINDOW_ZOOM, &value));
    CHECK(value == 1);
}

// By each capacity; nothing is written behind it.
static void testTextOut(int32_t number, const char* text)
{
    const VTHandle owner = ownerOf(number);
    const size_t whole = strlen(text) + 1;
    subject = number;
    ANSWERS(VT_OK, VTSetPropCStr(owner, number, text));
    for (size_t capacity = 0; capacity <= whole + 1; ++capacity) {
        char buffer[] = "################";
        size_t size = capacity;
        ANSWERS(VT_OK, VTGetPropCStr(owner, number, NULL, &size));
        CHECK(size == whole);
        size = capacity;
        ANSWERS(VT_OK, VTGetPropCStr(owner, number, buffer, &size));
        CHECK(size == whole);
        const size_t length = capacity == 0 ? 0 : capacity < whole ? capacity - 1 : whole - 1;
        CHECK(memcmp(buffer, text, length) == 0 && (capacity == 0 || buffer[length] == 0));
        CHECK(strspn(buffer + capacity, "#") == sizeof buffer - 1 - capacity);
    }
}

static void testTexts(void)
{
    char geometry[1000];
    testTextOut(VT_WINDOW_TITLE, "Words \xe9");
    testTextOut(VT_WINDOW_ABOUT_TITLE, "About \xe9");
    testTextOut(VT_WINDOW_ABOUT_TEXT, "By \xfc");
    testTextOut(VT_WINDOW_ABOUT_TITLE, ""); // leaves the other
    char about[10] = "";
    size_t size = sizeof about;
    ANSWERS(VT_OK, VTGetPropCStr(window, VT_WINDOW_ABOUT_TEXT, about, &size));
    CHECK(strcmp(about, "By \xfc") == 0);
    testTextOut(VT_ACTION_TEXT, "&Entry");
    testTextOut(VT_ACTION_TOOL_TIP, "Tip");
    subject = VT_WINDOW_GEOMETRY_TEXT;
    size = sizeof geometry;
    ANSWERS(VT_OK, VTGetPropCStr(window, VT_WINDOW_GEOMETRY_TEXT, geometry, &size));
    CHECK(size == strlen(geometry) + 1 && size > 1);
    ANSWERS(VT_OK, VTSetPropCStr(window, VT_WINDOW_GEOMETRY_TEXT, geometry));
    const char* const bad[] = {"", "zz", "00", geometry + 2};
    for (int i = 0; i < COUNT(bad); ++i)
        ANSWERS(VT_ERROR_PROPERTY_REFUSED, VTSetPropCStr(window, VT_WINDOW_GEOMETRY_TEXT, bad[i]));
}

// `good` comes back as it is, from any capacity that is enough.
static void testDataOut(int32_t number, const void* good, size_t itsSize)
{
    unsigned char buffer[64], untouched[64];
    subject = number;
    memset(untouched, 0x3c, sizeof untouched);
    if (number != VT_WINDOW_BITMAP)
        ANSWERS(VT_OK, VTSetPropData(window, number, good, itsSize));
    for (size_t capacity = 0; capacity <= itsSize + 1; ++capacity) {
        size_t size = capacity;
        ANSWERS(VT_OK, VTGetPropData(window, number, NULL, &size));
        CHECK(size == itsSize);
        size = capacity;
        memcpy(buffer, untouched, sizeof buffer);
        ANSWERS(capacity < itsSize ? VT_ERROR_BUFFER_TOO_SMALL : VT_OK, VTGetPropData(window, number, buffer, &size));
        const size_t written = capacity < itsSize ? 0 : itsSize;
        CHECK(size == itsSize && (number == VT_WINDOW_BITMAP || memcmp(buffer, good, written) == 0));
        CHECK(memcmp(buffer + written, untouched, sizeof buffer - written) == 0);
        const bool mayBeAbsent = capacity == 0 && number == VT_WINDOW_BITMAP_LOCK;
        if (capacity != itsSize && !mayBeAbsent && number != VT_WINDOW_BITMAP)
            ANSWERS(VT_ERROR_OUT_OF_RANGE, VTSetPropData(window, number, good, capacity));
    }
}

static void testData(void)
{
    static const int32_t place[] = {41, 52, 640, 480}, other[] = {44, 55, 700, 500}, origin[] = {0, 0};
    static const int32_t flat[][4] = {{1, 2, 0, 100}, {1, 2, 100, 0}, {1, 2, -1, -1}};
    static const uint32_t lock[] = {5, 3, VT_FORMAT_RGB8};
    static const uint32_t noLock[][3] = {{0, 3, VT_FORMAT_MONO8},
                                         {5, 0, VT_FORMAT_MONO8},
                                         {5, 3, VT_FORMAT_MONO16},
                                         {5, 3, 0},
                                         {UINT32_MAX, 3, VT_FORMAT_MONO8}};
    void* const none = NULL;
    VTRawImage bitmap = {NULL, 0, 0, 0, NULL};
    size_t size = sizeof bitmap;
    testDataOut(VT_WINDOW_FRAME_GEOMETRY, other, sizeof other);
    testDataOut(VT_WINDOW_GEOMETRY, place, sizeof place);
    for (int i = 0; i < COUNT(flat); ++i) {
        ANSWERS(VT_ERROR_OUT_OF_RANGE, VTSetPropData(window, VT_WINDOW_GEOMETRY, flat[i], sizeof flat[i]));
        ANSWERS(VT_ERROR_OUT_OF_RANGE, VTSetPropData(window, VT_WINDOW_FRAME_GEOMETRY, flat[i], sizeof flat[i]));
    }
    testDataOut(VT_WINDOW_IMAGE_OFFSET, origin, sizeof origin);
    testDataOut(VT_WINDOW_TRANSIENT_PARENT, &none, sizeof none);

    ANSWERS(VT_OK, VTGetPropData(window, VT_WINDOW_BITMAP, &bitmap, &size));
    CHECK(size == 0);
    testDataOut(VT_WINDOW_BITMAP_LOCK, lock, sizeof lock);
    for (int i = 0; i < COUNT(noLock); ++i)
        ANSWERS(VT_ERROR_OUT_OF_RANGE, VTSetPropData(window, VT_WINDOW_BITMAP_LOCK, noLock[i], sizeof noLock[i]));
    testDataOut(VT_WINDOW_BITMAP, &bitmap, sizeof bitmap);
    size = sizeof bitmap;
    ANSWERS(VT_OK, VTGetPropData(window, VT_WINDOW_BITMAP, &bitmap, &size));
    CHECK(bitmap.data && bitmap.width == 5 && bitmap.height == 3 && bitmap.format == VT_FORMAT_RGB8);
    // One that cannot be had leaves the one that there is.
    const uint32_t hugeLock[3] = {INT32_MAX, INT32_MAX, VT_FORMAT_RGBA8};
    VTRawImage before, after;
    size = sizeof before;
    ANSWERS(VT_OK, VTGetPropData(window, VT_WINDOW_BITMAP, &before, &size));
    ANSWERS(VT_ERROR_PROPERTY_REFUSED, VTSetPropData(window, VT_WINDOW_BITMAP_LOCK, hugeLock, sizeof hugeLock));
    ANSWERS(VT_OK, VTGetPropData(window, VT_WINDOW_BITMAP, &after, &size));
    CHECK(size == sizeof after && after.data == before.data);
    ANSWERS(VT_OK, VTSetPropData(window, VT_WINDOW_BITMAP_LOCK, NULL, 0));
    ANSWERS(VT_OK, VTGetPropData(window, VT_WINDOW_BITMAP_LOCK, NULL, &size));
    CHECK(size == 0);
}

void testProperties(void)
{
    ANSWERS(VT_OK, VTSetPropBool(action, VT_ACTION_CHECKABLE, true)); // which VT_ACTION_CHECKED asks for
    for (subject = 0; subject <= 5000; ++subject)
        testOneProperty(subject);
    testInt32();
    testZoom();
    testTexts();
    testData();
    ANSWERS(VT_OK, VTSetPropBool(window, VT_WINDOW_VISIBLE, false));
}

// Features ------------------------------------------------------------------------------------------------------------

// A callback, which says that it has nothing, and the function that registers it.
#define SIGNATURE(Name, Result, arguments, nothing)                                                                    \
    static Result on##Name arguments                                                                                   \
    {                                                                                                                  \
        CHECK(user == &tag);                                                                                           \
        nothing;                                                                                                       \
    }                                                                                                                  \
    static int32_t set##Name(VTWindowHandle of, int32_t feature, bool on)                                              \
    {                                                                                                                  \
        return VTSetFeature##Name(of, feature, on ? on##Name : NULL);                                                  \
    }
SIGNATURE(Command, bool, (void* user), return false)
SIGNATURE(Count, bool, (size_t count, void* user), return count == 0)
SIGNATURE(Name, bool, (const char* name, void* user), return !name)
SIGNATURE(Query, bool, (void* user), return false)
SIGNATURE(Text, bool, (char* buffer, size_t* size, void* user), return buffer && !size)
SIGNATURE(Double, double, (void* user), return 0)
SIGNATURE(Size, size_t, (void* user), return 0)
SIGNATURE(NextFrame, bool, (VTRawImage * frame, void* user), return !frame)
SIGNATURE(Released, void, (const VTRawImage* frame, void* user), CHECK(frame))
SIGNATURE(Notify, void, (void* user), return )
SIGNATURE(Load, bool, (const char* name, VTRawImage* frame, void* user), return !name && frame)
SIGNATURE(Save, bool, (const VTRawImage* frame, const char* name, void* user), return !name && frame)

int32_t setFeature(int signature, VTWindowHandle of, int32_t feature, bool on)
{
    static int32_t (*const all[])(VTWindowHandle, int32_t, bool) = {setCommand,  setCount,  setName, setQuery,
                                                                    setText,     setDouble, setSize, setNextFrame,
                                                                    setReleased, setNotify, setLoad, setSave};
    return all[signature - 1](of, feature, on);
}

static bool isFeature(int32_t number)
{
    static const int32_t ranges[][2] = {{100, 108},   {200, 200},   {300, 300},  {400, 410}, {420, 427},
                                        {500, 500},   {600, 600},   {700, 703},  {800, 800}, {900, 900},
                                        {1000, 1001}, {1100, 1100}, {1200, 1200}};
    for (int i = 0; i < COUNT(ranges); ++i) {
        if (number >= ranges[i][0] && number <= ranges[i][1])
            return true;
    }
    return false;
}

// The feature that each VT_SOURCE_HAS_* tells of.
static const int32_t told[] = {100, 300, 101, 102, 103, 104, 105, 200, 106, 107, 108, 600, 700, 701, 702, 703};

static void seesFeature(int32_t number, bool isThere)
{
    bool isSet = !isThere;
    ANSWERS(VT_OK, VTIsFeatureSet(window, number, &isSet));
    CHECK(isSet == isThere);
    for (int i = 0; i < COUNT(told); ++i) {
        ANSWERS(VT_OK, VTGetPropBool(window, VT_SOURCE_HAS_SETUP + i, &isSet));
        CHECK(isSet == (isThere && told[i] == number));
    }
}

void testFeatures(void)
{
    for (int32_t number = -1; number <= 1300; ++number) {
        subject = number;
        for (int signature = 1; signature <= 12; ++signature) {
            const bool isRight = signature == number / 100;
            bool isSet = false;
            if (!isFeature(number)) {
                ANSWERS(VT_ERROR_UNKNOWN_FEATURE, setFeature(signature, window, number, true));
                ANSWERS(VT_ERROR_UNKNOWN_FEATURE, VTIsFeatureSet(window, number, &isSet));
                continue;
            }
            ANSWERS(isRight ? VT_OK : VT_ERROR_FEATURE_SIGNATURE, setFeature(signature, window, number, true));
            seesFeature(number, isRight);
            ANSWERS(isRight ? VT_OK : VT_ERROR_FEATURE_SIGNATURE, setFeature(signature, window, number, false));
            seesFeature(number, false);
        }
    }
}
