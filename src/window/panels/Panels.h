// SPDX-License-Identifier: MIT
// The panels of the main window, each of which registers itself.
#pragma once

#include "window/Form.h"

namespace Vistrel {

class AbstractAcquisitionInterface;
class Commands;
class Features;
class Palettes;
class SurfaceStream;
class ViewModes;

/// What a panel may use. All of it outlives the slots of the panel.
struct PanelContext
{
    const Form& form;
    SurfaceStream* stream;
    AbstractAcquisitionInterface* source; // or null
    Commands* commands;
    Features* features;
    Palettes* palettes;
    ViewModes* viewModes;
};

/// Makes a panel for each window. A constant with static storage in the source file of the panel.
class PanelRegistration
{
public:
    using Factory = QWidget* (*)(const PanelContext& context);

    /// The action opens what `make` returns as a pop-over under its tool button, and is checked while that is open. A
    /// panel whose `make` returns null opens by itself.
    PanelRegistration(QAction* Ui_WindowQt::*action, Factory make) noexcept;
    PanelRegistration(const PanelRegistration&) = delete;
    PanelRegistration& operator=(const PanelRegistration&) = delete;

    QAction* Ui_WindowQt::*const action;
    const Factory make;
    const PanelRegistration* const next;
};

/// Makes every registered panel, as the window's children.
void makePanels(const PanelContext& context);

} // namespace Vistrel
