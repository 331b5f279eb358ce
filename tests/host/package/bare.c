// SPDX-License-Identifier: MIT
// A host in C without a C library, for a compiler that has none here: hears back of the frame that it pushed.
#include <Vistrel/CInterface.h>

__declspec(dllimport) void __stdcall ExitProcess(unsigned int code);

static VTAppHandle app;

static void comesBack(const VTRawImage* frame, void* user)
{
    if (frame->userData == user)
        VTAppExit(app, 0);
}

void start(void)
{
    static const char* const arguments[] = {"bare", "-platform", "offscreen"};
    static const uint8_t pixel = 80;
    int exitCode = 1;
    VTWindowHandle window;
    const VTRawImage frame = {
        .data = &pixel, .width = 1, .height = 1, .format = VT_FORMAT_MONO8, .userData = &exitCode};
    if (VTAppCreate(3, arguments, &app) == VT_OK && VTWindowCreate(app, &window, &exitCode) == VT_OK &&
        VTSetFeatureReleased(window, VT_FEATURE_FRAME_RELEASED, comesBack) == VT_OK &&
        VTWindowSetNextFrame(window, &frame) == VT_OK && VTWindowSetNextFrame(window, 0) == VT_OK &&
        VTAppExec(app, &exitCode) == VT_OK && VTAppDestroy(app) == VT_OK)
        ExitProcess((unsigned int)exitCode);
    ExitProcess(2);
}
