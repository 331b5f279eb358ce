// SPDX-License-Identifier: MIT
// State of the main window, for its source files: layout, what the source offers, commands, palettes.
#pragma once

#include <Vistrel/WindowQt.h>

#include "base/PacedCall.h"
#include "base/Report.h"
#include "ui_WindowQt.h"
#include "window/InfoBar.h"
#include "window/controllers/Commands.h"
#include "window/controllers/Saving.h"

#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QHash>
#include <QtCore/QPointer>
#include <QtGui/QIcon>
#include <QtWidgets/QDialog>

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>

class QLabel;
class QToolButton;

namespace Vistrel {

class AboutDialog;
class KVQtLgplDialog;
class MiniMap;
class PopoverWindow;
class StartFixedEditor;
class ZoomEditor;

/// What a source answered when it was asked last.
struct SourceAnswers
{
    bool canSetup = false;
    bool canSetupMode = false;
    bool canCleanup = false;
    bool canTrigger = false;
    bool canStartSingleReverse = false;
    bool canStartReverse = false;
    bool canStart = false;
    bool canStartFixed = false;
    bool canStartSingle = false;
    bool canPause = false;
    bool canStop = false;
    bool isSetUp = false;
    bool isRunning = false;
    QByteArray activeMode;       // null when none is active
    QString statePicture;        // on the window's icon
    const char* stateWords = ""; // to be translated
};

class WindowQt::PrivateData : public QObject
{
    Q_OBJECT

public:
    PrivateData(WindowQt* owner, ScopedAcquisitionInterface&& acquisitionInterface,
                ScopedFileInterface&& fileInterface);
    ~PrivateData() override;

    /// Asks the source; false without one, and when the query throws.
    bool ask(const char* query, bool (AbstractAcquisitionInterface::*question)() const) const
    {
        return source && hostCall(query, false, [&] { return (source.get()->*question)(); });
    }
    void nameForAssistance();
    void connectActions();
    void connectMenu(const QMenu* menu);
    SurfaceScrollArea* layOut();
    void endWork();
    SourceAnswers askSource() const;
    void layOutToolBar();
    void showSetupModes();
    void showCommands();
    void showSetupToggle(bool canSetup, bool canCleanup);
    void showBadge(const QString& state);
    void showHint();
    QAction* infoSwitch(InfoItem item) const;
    QMenu* makeInfoMenu();
    void setPreview(InfoItem item, bool enabled);
    PopoverWindow* makePopover(QWidget* contents, QAction* action);
    void makeEditors();
    void toggle(PopoverWindow* popover, QAction* action);
    void applyViewMode();
    void setBarsVisible(bool visible);
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showRainbowDock();
    bool filterDock(QEvent& event);
    QVector<unsigned int> colorsOf(ColorTable table) const;
    QAction* paletteAction(ColorTable table) const;
    void chooseColorTable(ColorTable table);
    void showColors();
    void showRamp(ColorTable table);
    void showRamps();
    void setBayerFilter(Format filter, QAction* action);

    WindowQt* const window;
    Ui::WindowQt form;
    // Not null; it may hold no source. Shared with the threads on which the source is called.
    const std::shared_ptr<AbstractAcquisitionInterface> source;
    const std::shared_ptr<AbstractFileInterface> files; // or null
    SurfaceScrollArea* const scrollArea;
    SurfaceStream stream;
    Commands commands;
    Saving saving;
    PacedCall featuresAnnounced{[this] { window->updateFeatureSet(); }};
    PacedCall stateAnnounced{[this] { window->updateAcquisitionState(); }};
    SourceAnswers known;
    bool hasNewFeatures = false; // announced while the source must not be asked

    QMenu* setupModes = nullptr;
    QToolButton* paletteButton = nullptr;
    QLabel* stateLabel = nullptr; // what state the source is in
    QLabel* hintLabel = nullptr;  // over a view without an image
    InfoBar* infoBar = nullptr;
    PopoverWindow* zoomPopover = nullptr;
    PopoverWindow* startFixedPopover = nullptr;
    PopoverWindow* quickViewPopover = nullptr;
    ZoomEditor* zoomEditor = nullptr;
    StartFixedEditor* startFixedEditor = nullptr;
    MiniMap* miniMap = nullptr;
    QTimer statisticsTimer;
    QTimer pixelTimer; // after the events that move the pointer

    ColorTable colorTable = ColorTable::Gray;
    bool isExhibited = false;
    bool isImageAlone = false; // full screen or exhibited
    bool isRainbowDockWanted = false;
    QAction* leaveAction = nullptr;
    QTimer barsTimer; // of bars that come over the image
    QString badge;    // which of the icons below is the window's
    QHash<QString, QIcon> badgedIcons;

    QList<QAction*> userToolBarActions;
    QPointer<QDialog> applicationAbout;
    AboutDialog* aboutVistrel = nullptr; // made when it is first asked for, as the next
    KVQtLgplDialog* licensing = nullptr;

Q_SIGNALS:
    void busyWorkComplete(Vistrel::BusyWorkResult result);

public Q_SLOTS:
    void updateActionStates();
    void updateZoomStates();
    void updateBitmapLockedStates(bool bitmapLocked);
    void zoomEditorOpen();
    void startFixedSelect();
    void startFixedAccepted(int count);
    void quickViewPopoverOpen();
    void updateRainbow();
    void updateInfoSwitches();
    void updateImageStats();
    void updateImageInfo();
    void updateHint();
    void updatePixelValue();
    void showInfoSwitches();
    void showInfoSwitchesAt(const QPoint& position);
    void showSurfaceContextMenu(const QPoint& position);
    void showWindowBars();
    void hideWindowBars();
    void leaveViewMode();
    void userMenuActionDestroyed();
    void userToolBarActionDestroyed();
    void showApplicationAbout();
    void showAboutVistrel();
    void showAboutQt();
    void showLicensing();
    void updateAtRest();
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
