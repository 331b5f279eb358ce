// SPDX-License-Identifier: MIT
// A host in C: pushes one frame and succeeds when it is released. It needs no C library.
#include <Vistrel/CInterface.h>

static VTAppHandle app;

static void comesBack(const VTRawImage* frame, void* user)
{
    if (frame->userData == user)
        VTAppExit(app, 0);
}

int main(int argc, char** argv)
{
    static const uint8_t pixels[12] = {0, 20, 40, 60, 80, 100, 120, 140, 160, 180, 200, 220};
    int mark = 0;
    int exitCode = 1;
    const VTRawImage frame = {pixels, 4, 3, VT_FORMAT_MONO8, &mark};
    VTWindowHandle window;
    if (VTAppCreate(argc, (const char* const*)argv, &app) == VT_OK && VTWindowCreate(app, &window, &mark) == VT_OK &&
        VTSetFeatureReleased(window, VT_FEATURE_FRAME_RELEASED, comesBack) == VT_OK &&
        VTWindowSetNextFrame(window, &frame) == VT_OK && VTWindowSetNextFrame(window, 0) == VT_OK && // takes it back
        VTAppExec(app, &exitCode) == VT_OK && VTAppDestroy(app) == VT_OK)
        return exitCode;
    return 2;
}

#if defined(_MSC_VER) // built without that compiler's libraries
__declspec(dllimport) void __stdcall ExitProcess(unsigned int code);

void start(void)
{
    char* arguments[] = {"plain", 0};
    ExitProcess((unsigned int)main(1, arguments));
}
#endif
