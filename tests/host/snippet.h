// SPDX-License-Identifier: MIT
// What the guide's fragments take for granted: they are compiled after this, each as the body of a function.
#pragma once

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
