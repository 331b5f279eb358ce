// SPDX-License-Identifier: MIT
// A host in C: pushes one frame and ends well when it has come back.
#include <Vistrel/CInterface.h>

#include <stdio.h>
#include <stdlib.h>

static VTAppHandle app;

static void check(int32_t result)
{
    if (result == VT_OK)
        return;
    printf("%s\n", VTResultText(result));
    exit(1);
}

static void comesBack(const VTRawImage* frame, void* user)
{
    if (frame->userData == user)
        check(VTAppExit(app, 0));
}

int main(int argc, char** argv)
{
    static const uint8_t pixels[12] = {0, 20, 40, 60, 80, 100, 120, 140, 160, 180, 200, 220};
    int mark = 0;
    int exitCode = 1;
    const VTRawImage frame = {pixels, 4, 3, VT_FORMAT_MONO8, &mark};
    VTWindowHandle window;
    check(VTAppCreate(argc, (const char* const*)argv, &app));
    check(VTWindowCreate(app, &window, &mark));
    check(VTSetFeatureReleased(window, VT_FEATURE_FRAME_RELEASED, comesBack));
    check(VTWindowSetNextFrame(window, &frame));
    check(VTWindowSetNextFrame(window, NULL)); // takes it back
    check(VTAppExec(app, &exitCode));
    check(VTAppDestroy(app));
    return exitCode;
}
