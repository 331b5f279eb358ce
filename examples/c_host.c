// SPDX-License-Identifier: MIT
// A complete host in C99: a camera with all commands and six buffers, pushed or pulled, and its own image files.
#define _POSIX_C_SOURCE 200809L // clock_gettime, nanosleep

#include <Vistrel/CInterface.h>

#include <inttypes.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#define COUNT(array) (sizeof(array) / sizeof((array)[0]))

enum { BUFFER_COUNT = 6 }; // five may be lent at once

static const struct
{
    const char* name;
    uint32_t number;
} formats[] = {{"mono8", VT_FORMAT_MONO8},
               {"mono12", VT_FORMAT_MONO12},
               {"mono16", VT_FORMAT_MONO16},
               {"rgb8", VT_FORMAT_RGB8},
               {"bayer12", VT_FORMAT_BAYER_RG + VT_FORMAT_MONO12}};

static const struct
{
    const char* name;
    const char* description;
    size_t width;
    size_t height;
} modes[] = {{"Preview", "640 x 480 pixels", 640, 480}, {"Full", "1280 x 960 pixels", 1280, 960}};

// From TRIGGERED on, frames are wanted; from SINGLE on, the camera runs.
typedef enum State { OFF, STOPPED, PAUSED, TRIGGERED, SINGLE, SINGLE_REVERSE, FIXED, REVERSE, ENDLESS } State;

typedef struct Status
{
    VTWindowHandle window;
    State state;
    size_t mode;
    size_t left;      // frames of a fixed or single run
    size_t runFrames; // so far
    double runStart;  // seconds
    int number;       // of the picture; it falls in reverse
    size_t delivered;
    size_t dropped; // exposures without a free buffer
    size_t queued;  // free buffers
    size_t asking;  // threads with a message box
    bool isEnding;
} Status;

typedef struct Camera
{
    bool isPushing;
    uint32_t format;
    VTRawImage picture;                            // from a file, shown instead of the camera's; null data: none
    uint8_t buffers[BUFFER_COUNT][1280 * 960 * 3]; // for the largest frame

    pthread_mutex_t mutex;  // guards all below; not held in calls to the library
    pthread_cond_t changed; // the status
    Status status;
    uint8_t* queue[BUFFER_COUNT]; // the free buffers
} Camera;

static double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

// Results -------------------------------------------------------------------------------------------------------------

static void fail(const char* reason)
{
    fprintf(stderr, "c_host: %s\n", reason);
    _Exit(EXIT_FAILURE); // without waiting for other threads
}

static void check(int32_t result)
{
    if (result != VT_OK)
        fail(VTResultText(result));
}

// For other threads. Returns false when the window is closed, before or during the call.
static bool isReached(int32_t result)
{
    if (result == VT_ERROR_WINDOW_CLOSED || result == VT_ERROR_WRONG_HANDLE || result == VT_ERROR_NO_APPLICATION ||
        result == VT_ERROR_NO_ANSWER)
        return false;
    check(result);
    return true;
}

// Commands: on the window's busy-work thread, may block ---------------------------------------------------------------

// The window asks for the new state after each command.
static bool change(Camera* camera, State state, size_t frames)
{
    pthread_mutex_lock(&camera->mutex);
    camera->status.state = state;
    camera->status.left = frames;
    camera->status.runFrames = 0;
    camera->status.runStart = now();
    pthread_cond_broadcast(&camera->changed);
    pthread_mutex_unlock(&camera->mutex);
    return true;
}

static bool setUpMode(const char* name, void* user)
{
    Camera* camera = user;
    pthread_mutex_lock(&camera->mutex);
    camera->status.mode = strcmp(name, modes[1].name) == 0;
    pthread_mutex_unlock(&camera->mutex);
    return change(camera, STOPPED, 0);
}

// clang-format off
static bool setUp(void* user) { return change(user, STOPPED, 0); }
static bool cleanUp(void* user) { return change(user, OFF, 0); }
static bool trigger(void* user) { return change(user, TRIGGERED, 0); }
static bool startSingleReverse(void* user) { return change(user, SINGLE_REVERSE, 1); }
static bool startReverse(void* user) { return change(user, REVERSE, 0); }
static bool start(void* user) { return change(user, ENDLESS, 0); }
static bool startFixed(size_t count, void* user) { return change(user, FIXED, count); }
static bool startSingle(void* user) { return change(user, SINGLE, 1); }
static bool pauseRun(void* user) { return change(user, PAUSED, 0); }
static bool stop(void* user) { return change(user, STOPPED, 0); }
// clang-format on

// State and statistics: on the user-interface thread, must not block --------------------------------------------------

static Status statusOf(Camera* camera)
{
    pthread_mutex_lock(&camera->mutex);
    const Status status = camera->status;
    pthread_mutex_unlock(&camera->mutex);
    return status;
}

// clang-format off
static bool isOff(void* user) { return statusOf(user).state == OFF; }
static bool isSetUp(void* user) { return statusOf(user).state != OFF; }
static bool isStopped(void* user) { return statusOf(user).state <= STOPPED; }
static bool isPaused(void* user) { return statusOf(user).state == PAUSED || statusOf(user).state == TRIGGERED; }
static bool isRunning(void* user) { return statusOf(user).state >= SINGLE; }
static bool isSingleReverse(void* user) { return statusOf(user).state == SINGLE_REVERSE; }
static bool isReverse(void* user) { return statusOf(user).state == REVERSE; }
static bool isFixed(void* user) { return statusOf(user).state == FIXED; }
static bool isSingle(void* user) { return statusOf(user).state == SINGLE; }
static bool canStart(void* user) { return isSetUp(user) && !isRunning(user); }
static bool canStop(void* user) { return !isStopped(user); }
static size_t framesQueued(void* user) { return statusOf(user).queued; }
static size_t framesDelivered(void* user) { return statusOf(user).delivered; }
static size_t framesDropped(void* user) { return statusOf(user).dropped; }
// clang-format on

static double frameRate(void* user)
{
    const Status status = statusOf(user);
    return status.state >= SINGLE && status.runFrames > 0 ? (double)status.runFrames / (now() - status.runStart) : 0;
}

static bool activeMode(char* buffer, size_t* size, void* user)
{
    const Status status = statusOf(user);
    *size = (size_t)snprintf(buffer, buffer ? *size : 0, "%s", modes[status.mode].name) + 1;
    return status.state != OFF;
}

// Frames --------------------------------------------------------------------------------------------------------------

// Red grows to the right and green downwards; blue, and grey without colours, move to the upper left.
static void draw(uint8_t* out, const VTRawImage* frame, int number)
{
    const uint32_t depth = frame->format & 0xFF;
    const bool isMosaic = frame->format != depth;
    const uint32_t redStep = 0xFFFF / (uint32_t)frame->width;
    const uint32_t greenStep = 0xFFFF / (uint32_t)frame->height;
    const uint32_t moved = (uint32_t)number * 4;
    for (uint32_t y = 0; y < frame->height; ++y) {
        for (uint32_t x = 0; x < frame->width; ++x) {
            const uint32_t colors[] = {x * redStep, y * greenStep, (x + y + moved) * greenStep & 0xFFFF};
            if (frame->format == VT_FORMAT_RGB8) { // blue first
                *out++ = (uint8_t)(colors[2] >> 8);
                *out++ = (uint8_t)(colors[1] >> 8);
                *out++ = (uint8_t)(colors[0] >> 8);
            } else { // the mosaic's rows are R G and G B
                const uint32_t level = colors[isMosaic ? x % 2 + y % 2 : 2] >> (16 - depth);
                *out++ = (uint8_t)level;
                if (depth > 8)
                    *out++ = (uint8_t)(level >> 8);
            }
        }
    }
}

// Makes the next frame, if one is wanted and a buffer is free. Pull: the window calls this on its stream thread. It may
// block.
static bool nextFrame(VTRawImage* frame, void* user)
{
    Camera* camera = user;
    Status* status = &camera->status;
    uint8_t* pixels = NULL;
    const struct timespec exposure = {0, 15000000};
    nanosleep(&exposure, NULL);

    pthread_mutex_lock(&camera->mutex);
    if (status->state >= TRIGGERED && status->queued == 0) {
        ++status->dropped;
    } else if (status->state >= TRIGGERED) {
        pixels = camera->queue[--status->queued];
        status->number += status->state == REVERSE || status->state == SINGLE_REVERSE ? -1 : 1;
        ++status->delivered;
        ++status->runFrames;
        if (status->state == TRIGGERED)
            status->state = PAUSED;
        else if (status->left > 0 && --status->left == 0)
            status->state = STOPPED;
    }
    const Status after = *status;
    pthread_mutex_unlock(&camera->mutex);
    if (!pixels)
        return false;
    if (after.state == STOPPED)
        isReached(VTSendSignal(after.window, VT_SIGNAL_ACQUISITION_STATE_CHANGED));
    *frame = (VTRawImage){pixels, modes[after.mode].width, modes[after.mode].height, camera->format, pixels};
    draw(pixels, frame, after.number);
    return true;
}

// Called once for every lent frame, on any thread.
static void release(const VTRawImage* frame, void* user)
{
    Camera* camera = user;
    pthread_mutex_lock(&camera->mutex);
    camera->queue[camera->status.queued++] = frame->userData;
    pthread_mutex_unlock(&camera->mutex);
}

// Push: the host calls it, on its own thread.
static void* pushFrames(void* user)
{
    Camera* camera = user;
    VTRawImage frame;
    for (;;) {
        pthread_mutex_lock(&camera->mutex);
        while (!camera->status.isEnding && camera->status.state < TRIGGERED)
            pthread_cond_wait(&camera->changed, &camera->mutex);
        pthread_mutex_unlock(&camera->mutex);
        if (statusOf(camera).isEnding)
            return NULL;
        if (nextFrame(&frame, camera) && !isReached(VTWindowSetNextFrame(statusOf(camera).window, &frame)))
            release(&frame, camera); // it was not lent
    }
}

// Files: a line such as "FRAME 12 1280 960", with the format's number, followed by the pixels -------------------------

static size_t sizeOf(const VTRawImage* image)
{
    const uint32_t bits = image->format & 0xFF; // of a pixel
    return image->width * image->height * (bits > 32 ? 6 : (bits + 7) / 8);
}

static bool save(const VTRawImage* image, const char* fileName, void* user)
{
    (void)user;
    FILE* file = fopen(fileName, "wb");
    if (!file)
        return false;
    fprintf(file, "FRAME %" PRIu32 " %zu %zu\n", image->format, image->width, image->height);
    const bool isWritten = fwrite(image->data, 1, sizeOf(image), file) == sizeOf(image) && !ferror(file);
    return fclose(file) == 0 && isWritten;
}

static bool load(const char* fileName, VTRawImage* image)
{
    const size_t longestSide = 32768;
    uint8_t* pixels = NULL;
    FILE* file = fopen(fileName, "rb");
    if (file && fscanf(file, "FRAME %" SCNu32 " %zu %zu", &image->format, &image->width, &image->height) == 3 &&
        fgetc(file) == '\n' && image->width <= longestSide && image->height <= longestSide)
        pixels = malloc(sizeOf(image));
    image->data = pixels;
    const bool isRead = pixels && fread(pixels, 1, sizeOf(image), file) == sizeOf(image);
    if (file)
        fclose(file);
    return isRead;
}

// Actions -------------------------------------------------------------------------------------------------------------

static void showCrosshair(VTActionHandle action, bool checked, void* user)
{
    (void)action;
    check(VTSetPropBool(statusOf(user).window, VT_WINDOW_PIXEL_CROSSHAIR_VISIBLE, checked));
}

// On a separate thread, so that the window continues while it shows the message box.
static void* askForReset(void* user)
{
    Camera* camera = user;
    uint32_t pressed = VT_BUTTON_NO;
    const VTWindowHandle window = statusOf(camera).window;
    const bool isAnswered =
        isReached(VTMessageBoxDialogShow(window, VT_MESSAGE_QUESTION, "Reset", "Count the frames from zero again?",
                                         VT_BUTTON_YES + VT_BUTTON_NO, VT_BUTTON_NO, &pressed));
    pthread_mutex_lock(&camera->mutex);
    if (isAnswered && pressed == VT_BUTTON_YES)
        camera->status.delivered = camera->status.dropped = 0;
    --camera->status.asking;
    pthread_cond_broadcast(&camera->changed);
    pthread_mutex_unlock(&camera->mutex);
    return NULL;
}

static void reset(VTActionHandle action, bool checked, void* user)
{
    (void)action;
    (void)checked;
    Camera* camera = user;
    pthread_t asker;
    pthread_mutex_lock(&camera->mutex);
    ++camera->status.asking;
    pthread_mutex_unlock(&camera->mutex);
    if (pthread_create(&asker, NULL, askForReset, camera) != 0)
        fail("no thread");
    pthread_detach(asker);
}

static void openWindow(Camera* camera, const char* place);

// Replaces this window by a new one; the camera keeps running.
static void reopen(VTActionHandle action, bool checked, void* user)
{
    (void)action;
    (void)checked;
    const VTWindowHandle window = statusOf(user).window;
    size_t size = 0;
    check(VTGetPropCStr(window, VT_WINDOW_GEOMETRY_TEXT, NULL, &size));
    char* place = malloc(size);
    if (!place)
        fail("no memory");
    check(VTGetPropCStr(window, VT_WINDOW_GEOMETRY_TEXT, place, &size));
    openWindow(user, place);
    check(VTWindowDestroy(window));
    free(place);
}

// The window ----------------------------------------------------------------------------------------------------------

static void connectCamera(VTWindowHandle window, bool isPushing)
{
    typedef struct Row
    {
        int32_t feature;
        bool (*function)(void* user);
    } Row;
    static const Row commands[] = {{VT_FEATURE_SETUP, setUp},
                                   {VT_FEATURE_CLEANUP, cleanUp},
                                   {VT_FEATURE_TRIGGER, trigger},
                                   {VT_FEATURE_START_SINGLE_REVERSE, startSingleReverse},
                                   {VT_FEATURE_START_REVERSE, startReverse},
                                   {VT_FEATURE_START, start},
                                   {VT_FEATURE_START_SINGLE, startSingle},
                                   {VT_FEATURE_PAUSE, pauseRun},
                                   {VT_FEATURE_STOP, stop}};
    static const Row queries[] = {{VT_FEATURE_CAN_SETUP, isOff},
                                  {VT_FEATURE_CAN_CLEANUP, isSetUp},
                                  {VT_FEATURE_CAN_TRIGGER, isPaused},
                                  {VT_FEATURE_CAN_START_SINGLE_REVERSE, canStart},
                                  {VT_FEATURE_CAN_START_REVERSE, canStart},
                                  {VT_FEATURE_CAN_START, canStart},
                                  {VT_FEATURE_CAN_START_FIXED, canStart},
                                  {VT_FEATURE_CAN_START_SINGLE, canStart},
                                  {VT_FEATURE_CAN_PAUSE, isRunning},
                                  {VT_FEATURE_CAN_STOP, canStop},
                                  {VT_FEATURE_IS_SETUP, isSetUp},
                                  {VT_FEATURE_IS_RUNNING_SINGLE_REVERSE, isSingleReverse},
                                  {VT_FEATURE_IS_RUNNING_REVERSE, isReverse},
                                  {VT_FEATURE_IS_RUNNING, isRunning},
                                  {VT_FEATURE_IS_RUNNING_FIXED, isFixed},
                                  {VT_FEATURE_IS_RUNNING_SINGLE, isSingle},
                                  {VT_FEATURE_IS_PAUSED, isPaused},
                                  {VT_FEATURE_IS_STOPPED, isStopped}};
    static const int32_t shown[] = {VT_WINDOW_PREVIEW_FRAME_RATE, VT_WINDOW_PREVIEW_BUFFERS_QUEUED,
                                    VT_WINDOW_PREVIEW_BUFFERS_DELIVERED, VT_WINDOW_PREVIEW_BUFFERS_DROPPED,
                                    VT_WINDOW_PREVIEW_SETUP_MODE};

    for (size_t i = 0; i < COUNT(commands); ++i)
        check(VTSetFeatureCommand(window, commands[i].feature, commands[i].function));
    for (size_t i = 0; i < COUNT(queries); ++i)
        check(VTSetFeatureQuery(window, queries[i].feature, queries[i].function));
    check(VTSetFeatureCount(window, VT_FEATURE_START_FIXED, startFixed));
    check(VTSetPropInt32(window, VT_SOURCE_START_FIXED_MAX, 1000));
    check(VTSetFeatureName(window, VT_FEATURE_SETUP_MODE, setUpMode));
    check(VTSetFeatureText(window, VT_FEATURE_ACTIVE_SETUP_MODE, activeMode));
    for (size_t i = 0; i < COUNT(modes); ++i)
        check(VTWindowAddSetupMode(window, modes[i].name, modes[i].description));
    check(VTSetFeatureDouble(window, VT_FEATURE_FRAME_RATE, frameRate));
    check(VTSetFeatureSize(window, VT_FEATURE_FRAMES_QUEUED, framesQueued));
    check(VTSetFeatureSize(window, VT_FEATURE_FRAMES_DELIVERED, framesDelivered));
    check(VTSetFeatureSize(window, VT_FEATURE_FRAMES_DROPPED, framesDropped));
    for (size_t i = 0; i < COUNT(shown); ++i)
        check(VTSetPropBool(window, shown[i], true));
    check(VTSetFeatureReleased(window, VT_FEATURE_FRAME_RELEASED, release));
    if (!isPushing)
        check(VTSetFeatureNextFrame(window, VT_FEATURE_NEXT_FRAME, nextFrame));
}

static void openWindow(Camera* camera, const char* place)
{
    VTAppHandle app;
    VTWindowHandle window;
    VTActionHandle action;
    check(VTAppGetGlobal(&app));
    check(VTWindowCreate(app, &window, camera));
    check(VTWindowAddFileFormat(window, "frame", NULL, "Camera Frame"));
    check(VTSetFeatureSave(window, VT_FEATURE_FILE_SAVE, save));
    check(VTWindowAddAction(window, VT_PLACE_MENU, "&Camera", "Reopen &Window", reopen, NULL, camera, &action));
    check(VTWindowAddAction(window, VT_PLACE_INFORMATION, NULL, "Crosshair", showCrosshair, NULL, camera, &action));
    check(VTSetPropBool(action, VT_ACTION_CHECKABLE, true));
    if (camera->picture.data) {
        check(VTSetPropCStr(window, VT_WINDOW_TITLE, "C host: a frame from a file"));
        check(VTWindowSetNextFrame(window, &camera->picture));
    } else {
        check(VTSetPropCStr(window, VT_WINDOW_TITLE,
                            camera->isPushing ? "C host: pushed frames" : "C host: pulled frames"));
        check(VTWindowAddAction(window, VT_PLACE_TOOL_BAR, NULL, "Reset...", reset, NULL, camera, &action));
        check(VTSetPropCStr(action, VT_ACTION_TOOL_TIP, "Counts the frames from zero again"));
        connectCamera(window, camera->isPushing);
    }
    const int32_t rectangle[] = {80, 60, 1100, 760};
    check(place ? VTSetPropCStr(window, VT_WINDOW_GEOMETRY_TEXT, place)
                : VTSetPropData(window, VT_WINDOW_GEOMETRY, rectangle, sizeof rectangle));
    check(VTSetPropBool(window, VT_WINDOW_VISIBLE, true));

    // From now on frames are pushed to this window, and can be released.
    pthread_mutex_lock(&camera->mutex);
    camera->status.window = window;
    pthread_mutex_unlock(&camera->mutex);
}

int main(int argc, char** argv)
{
    static Camera camera = {.mutex = PTHREAD_MUTEX_INITIALIZER, .changed = PTHREAD_COND_INITIALIZER};
    const char* source = argc > 1 ? argv[1] : "";
    const char* formatName = argc > 2 ? argv[2] : "rgb8";
    for (size_t i = 0; i < COUNT(formats); ++i)
        camera.format += strcmp(formats[i].name, formatName) == 0 ? formats[i].number : 0;
    camera.isPushing = strcmp(source, "push") == 0;
    const bool isLive = camera.isPushing || strcmp(source, "pull") == 0;
    if (isLive ? camera.format == 0 : !load(source, &camera.picture)) {
        fprintf(stderr, "usage: c_host push|pull [mono8|mono12|mono16|rgb8|bayer12]\n"
                        "       c_host FILE.frame\n");
        return 2;
    }
    for (size_t i = 0; i < BUFFER_COUNT; ++i)
        camera.queue[camera.status.queued++] = camera.buffers[i];

    VTAppHandle app;
    pthread_t pusher;
    int exitCode = 0;
    check(VTAppCreate(argc, (const char* const*)argv, &app));
    openWindow(&camera, NULL);
    if (camera.isPushing && pthread_create(&pusher, NULL, pushFrames, &camera) != 0)
        fail("no thread");
    if (isLive)
        check(VTSetPropInt32(statusOf(&camera).window, VT_WINDOW_ACQUISITION_STATE, VT_ACQUISITION_RUNNING));
    check(VTAppExec(app, &exitCode));

    pthread_mutex_lock(&camera.mutex);
    camera.status.isEnding = true;
    pthread_cond_broadcast(&camera.changed);
    pthread_mutex_unlock(&camera.mutex);
    if (camera.isPushing)
        pthread_join(pusher, NULL);
    check(VTAppDestroy(app)); // releases the last frames, and ends message boxes without an answer
    pthread_mutex_lock(&camera.mutex);
    while (camera.status.asking > 0)
        pthread_cond_wait(&camera.changed, &camera.mutex);
    pthread_mutex_unlock(&camera.mutex);
    free((void*)camera.picture.data);
    return exitCode;
}
