// SPDX-License-Identifier: MIT
// The panels of the main window, each of which registers itself.
#pragma once

#include "ui_WindowQt.h"

namespace Vistrel {

class AbstractAcquisitionInterface;
class Commands;
class Features;
class Palettes;
class SurfaceScrollArea;
class SurfaceStream;
class ViewModes;

/// What a panel may use. All outlives the panel's slots.
struct PanelContext
{
    QMainWindow* window;
    const Ui::WindowQt& form;
    SurfaceScrollArea* scrollArea;
    SurfaceStream* stream;
    AbstractAcquisitionInterface* source; // or null
    Commands* commands;
    Features* features;
    Palettes* palettes;
    ViewModes* viewModes;
};

/// Has a panel made for each window. To be a constant with static storage in the panel's source file.
class PanelRegistration
{
public:
    using Factory = QWidget* (*)(const PanelContext& context);

    /// The action opens what `make` returns as a pop-over under its tool button, and is checked while that is open. A
    /// panel that returns null opens by itself.
    PanelRegistration(QAction* Ui::WindowQt::*action, Factory make) noexcept;
    PanelRegistration(const PanelRegistration&) = delete;
    PanelRegistration& operator=(const PanelRegistration&) = delete;

    QAction* Ui::WindowQt::*const action;
    const Factory make;
    const PanelRegistration* const next;
};

/// Makes every registered panel, as the window's children.
void makePanels(const PanelContext& context);

} // namespace Vistrel
