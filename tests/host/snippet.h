// SPDX-License-Identifier: MIT
// What the guides' fragments take for granted: they are compiled after this, each as the body of SNIPPET.
#pragma once

#ifdef __cplusplus

#include <Vistrel/Action.h>
#include <Vistrel/Application.h>
#include <Vistrel/ImperativeAcquisitionInterface.h>
#include <Vistrel/MessageBoxDialog.h>
#include <Vistrel/PngFileInterface.h>
#include <Vistrel/Window.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class Camera : public Vistrel::ImperativeAcquisitionInterface
{
public:
    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }
};

void snippet(Vistrel::Window& window);
#define SNIPPET void snippet([[maybe_unused]] Vistrel::Window& window)

#else

#include <Vistrel/CInterface.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

void snippet(VTWindowHandle window);
#define SNIPPET void snippet(VTWindowHandle window)

#endif
