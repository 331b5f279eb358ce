// SPDX-License-Identifier: MIT
// The main window's parts: source, stream, image area, and the controllers that drive them.
#pragma once

#include "base/PacedCall.h"
#include "ui_WindowQt.h"
#include "window/controllers/AboutBoxes.h"
#include "window/controllers/Commands.h"
#include "window/controllers/Features.h"
#include "window/controllers/Information.h"
#include "window/controllers/Palettes.h"
#include "window/controllers/Saving.h"
#include "window/controllers/States.h"
#include "window/controllers/UserActions.h"
#include "window/controllers/ViewModes.h"

#include <Vistrel/SurfaceScrollArea.h>
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
    ~PrivateData() override;

    SurfaceScrollArea* layOut();
    void connectActions();
    void connectParts();
    void endWork();

    WindowQt* const window;
    Ui::WindowQt form;
    // Not null; it may hold no source. Shared with the threads on which the source is called.
    const std::shared_ptr<AbstractAcquisitionInterface> source;
    const std::shared_ptr<AbstractFileInterface> files; // or null
    SurfaceScrollArea* const scrollArea;
    SurfaceStream stream;
    Commands commands;
    ViewModes viewModes;
    Palettes palettes;
    Information information;
    Saving saving;
    UserActions userActions;
    Features features;
    States states;
    AboutBoxes aboutBoxes;
    PacedCall featuresAnnounced{[this] { window->updateFeatureSet(); }};
    PacedCall stateAnnounced{[this] { window->updateAcquisitionState(); }};

Q_SIGNALS:
    void busyWorkComplete(Vistrel::BusyWorkResult result);

public Q_SLOTS:
    void updateActionStates() { states.update(); }
    void updateZoomStates();
    void updateImageStats() { information.updateStatistics(); }
    void updateBitmapLockedStates(bool bitmapLocked) { palettes.setBitmapLocked(bitmapLocked); }
    void updateAtRest();
    void showSurfaceContextMenu(const QPoint& position);
    void cleanupBusyWork(Vistrel::BusyWorkResult result) { commands.cleanupBusyWork(result); }

    void setupAsync() { commands.setup(); }
    void setupStartAsync() { commands.setRunning(); }
    void triggerAsync() { commands.trigger(); }
    void startSingleReverseAsync() { commands.startSingleReverse(); }
    void startReverseAsync() { commands.startReverse(); }
    void startAsync() { commands.start(); }
    void startFixedAsync(size_t count) { commands.startFixed(count); }
    void startSingleAsync() { commands.startSingle(); }
    void pauseAsync() { commands.pause(); }
    void stopAsync() { commands.stop(); }
    void cleanupAsync() { commands.cleanup(); }
};

} // namespace Vistrel
