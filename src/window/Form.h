// SPDX-License-Identifier: MIT
// The widgets and actions of the main window.
#pragma once

#include "ui_WindowQt.h"

namespace Vistrel {

/// Makes them in `window`, which owns them.
struct Form : Ui::WindowQt
{
    explicit Form(QMainWindow* mainWindow) : window(mainWindow) { setupUi(mainWindow); }

    QMainWindow* const window;
};

} // namespace Vistrel
