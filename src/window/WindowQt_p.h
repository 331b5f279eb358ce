// SPDX-License-Identifier: MIT
// The main window's parts: source, stream, image area, and the controllers that drive them.
#pragma once

#include "base/PacedCall.h"
#include "window/Form.h"
#include "window/controllers/AboutBoxes.h"
#include "window/controllers/Analysis.h"
#include "window/controllers/Commands.h"
#include "window/controllers/Features.h"
#include "window/controllers/Information.h"
#include "window/controllers/Palettes.h"
#include "window/controllers/Saving.h"
#include "window/controllers/States.h"
#include "window/controllers/UserActions.h"
#include "window/controllers/ViewModes.h"

#include <Vistrel/SurfaceStream.h>
#include <Vistrel/WindowQt.h>

#include <memory>

namespace Vistrel {

class WindowQt::PrivateData : public QObject
{
    Q_OBJECT

public:
    PrivateData(WindowQt* owner, ScopedAcquisitionInterface&& acquisitionInterface,
                ScopedFileInterface&& fileInterface);

    void connectActions();
    void connectParts();
    void endWork();

    WindowQt* const window;
    Form form;
    // Not null; it may hold no source. Shared with the threads that call the source.
    const std::shared_ptr<AbstractAcquisitionInterface> source;
    const std::shared_ptr<AbstractFileInterface> files; // or null
    SurfaceStream stream;
    Commands commands;
    ViewModes viewModes;
    Analysis analysis;
    Palettes palettes;
    Information information;
    Saving saving;
    UserActions userActions;
    Features features;
    States states;
    AboutBoxes aboutBoxes;
    PacedCall featuresAnnounced{[this] { window->updateFeatureSet(); }};
    PacedCall stateAnnounced{[this] { window->updateAcquisitionState(); }};

public Q_SLOTS:
    void updateAtRest();
    void showSurfaceContextMenu(const QPoint& position);
};

} // namespace Vistrel
