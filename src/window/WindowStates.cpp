// SPDX-License-Identifier: MIT
// Keeps the main window's actions in step with what the source offers and with the state that it is in.
#include "window/WindowQt_p.h"

#include "pipeline/SurfaceStream_p.h"
#include "window/StartFixedEditor.h"

#include <Vistrel/SurfaceScrollArea.h>

#include <QtGui/QPainter>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QToolButton>

#include <cstddef>
#include <utility>
#include <vector>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

constexpr std::size_t longestText = 1 << 16; // bytes; what a source says of itself is not longer

// A hidden action says nothing, so its shortcut does nothing.
bool offer(QAction* action, bool isOffered)
{
    if (isOffered)
        action->blockSignals(false);
    action->setVisible(isOffered);
    action->blockSignals(!isOffered);
    return isOffered;
}

struct State
{
    const char* picture; // on the window's icon
    const char* words;
};

template <typename Asked>
State currentState(const Asked& window, bool hasImage)
{
    if (!window.ask("isSetup", &Source::isSetup))
        return {"Cleanup", QT_TR_NOOP("Not set up")};
    if (window.ask("isStopped", &Source::isStopped))
        return {hasImage ? "Stop" : "Setup", QT_TR_NOOP("Stopped")};
    if (window.ask("isPaused", &Source::isPaused))
        return {"Pause", QT_TR_NOOP("Paused")};
    if (window.ask("isRunningSingle", &Source::isRunningSingle))
        return {"PlayOne", QT_TR_NOOP("Running, one image")};
    if (window.ask("isRunningSingleReverse", &Source::isRunningSingleReverse))
        return {"PlayOneReverse", QT_TR_NOOP("Running backwards, one image")};
    if (window.ask("isRunningReverse", &Source::isRunningReverse))
        return {"PlayReverse", QT_TR_NOOP("Running backwards")};
    if (window.ask("isRunningFixed", &Source::isRunningFixed))
        return {"PlayFixed", QT_TR_NOOP("Running, counted")};
    if (window.ask("isRunning", &Source::isRunning))
        return {"Play", QT_TR_NOOP("Running")};
    return {"AmbiguousState", QT_TR_NOOP("Unknown state")};
}

QPixmap iconPicture(const QString& name, const QSize& size)
{
    return QIcon(QStringLiteral(":/Icons/%1.png").arg(name)).pixmap(size);
}

// The state's picture in a rounded frame over the lower right of the application's icon, a little over half of it.
QPixmap withBadge(const QPixmap& icon, const QString& state)
{
    QPixmap badged = icon;
    const int side = badged.width() * 9 / 16;
    const QRectF frame(badged.width() - side + 0.5, badged.height() - side + 0.5, side - 1, side - 1);
    const double inset = side / 8.0;
    QPainter painter(&badged);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setPen(QColor(0x60, 0x60, 0x60));
    painter.setBrush(QColor(0xF4, 0xF4, 0xF4));
    painter.drawRoundedRect(frame, side / 6.0, side / 6.0);
    const QRectF inner = frame.adjusted(inset, inset, -inset, -inset);
    const QPixmap picture = iconPicture(state, QSize(48, 48));
    painter.drawPixmap(inner, picture, QRectF(picture.rect()));
    return badged;
}

QIcon makeBadgedIcon(const QIcon& application, const QString& state)
{
    QList<QPixmap> pictures;
    for (const QSize& size : application.availableSizes())
        pictures.append(application.pixmap(size));
    if (pictures.isEmpty()) {
        for (const int side : {16, 24, 32, 48, 64, 128})
            pictures.append(QPixmap(QStringLiteral(":/Icons/VistrelIcon-%1.png").arg(side)));
    }
    QIcon icon;
    for (const QPixmap& picture : qAsConst(pictures))
        icon.addPixmap(withBadge(picture, state));
    return icon;
}

} // namespace

QByteArray WindowQt::PrivateData::askText(const char* query,
                                          const std::function<bool(char* buffer, std::size_t* size)>& question) const
{
    return hostCall(query, QByteArray(), [&] {
        std::size_t size = 0;
        if (!question(nullptr, &size) || size == 0 || size > longestText)
            return QByteArray();
        QByteArray text(static_cast<int>(size), '\0');
        // It may have changed meanwhile: what was cut is cut.
        if (!question(text.data(), &size))
            return QByteArray();
        return QByteArray(text.constData());
    });
}

// What is offered -----------------------------------------------------------------------------------------------------

void WindowQt::updateFeatureSet()
{
    PrivateData& d = *m_data;
    Ui::WindowQt& form = d.form;
    const Source* const source = d.source.get();
    const auto has = [source](bool (Source::*feature)() const) { return source && (source->*feature)(); };
    const bool hasSetupMode = has(&Source::hasSetupMode);
    const bool hasSetupOrCleanup = has(&Source::hasSetup) || has(&Source::hasCleanup);
    QToolBar* const bar = form.acquisitionToolBar;

    struct Mode
    {
        QByteArray name;
        QByteArray description;
    };
    std::vector<Mode> modes;
    for (std::size_t i = 0; hasSetupMode && i < source->setupModeCount(); ++i) {
        const QByteArray name = d.askText(
            "setupModeName", [&](char* text, std::size_t* size) { return source->setupModeName(i, text, size); });
        if (!name.isNull())
            modes.push_back({name, d.askText("setupModeDescription", [&](char* text, std::size_t* size) {
                                 return source->setupModeDescription(i, text, size);
                             })});
    }

    for (QAction* const entry : bar->actions()) {
        if (entry->isSeparator())
            delete entry; // the bar's own, which clearing leaves to it
    }
    bar->clear();
    offer(form.actionSetup, has(&Source::hasSetup));
    offer(form.actionCleanup, has(&Source::hasCleanup));
    offer(form.actionSetup_Cleanup, hasSetupOrCleanup);
    if (hasSetupOrCleanup) {
        bar->addAction(form.actionSetup_Cleanup);
        bar->addSeparator();
    }

    d.setupModes->clear();
    d.setupModes->setEnabled(hasSetupMode);
    offer(form.actionSetup_Mode, hasSetupMode);
    if (auto* const button = qobject_cast<QToolButton*>(bar->widgetForAction(form.actionSetup_Cleanup))) {
        button->setMenu(hasSetupMode ? d.setupModes : nullptr);
        button->setPopupMode(hasSetupMode ? QToolButton::MenuButtonPopup : QToolButton::DelayedPopup);
    }
    for (const Mode& mode : modes) {
        const QString name = QString::fromLocal8Bit(mode.name);
        QString text = name;
        QAction* const action = d.setupModes->addAction(text.replace(QLatin1Char('&'), QLatin1String("&&")));
        action->setCheckable(true);
        action->setWhatsThis(name);
        action->setData(mode.name);
        action->setToolTip(QString::fromLocal8Bit(mode.description));
        connect(action, SIGNAL(triggered()), m_data, SLOT(setupModeAsync()));
    }

    const std::pair<QAction*, bool> playback[] = {
        {form.actionStart_Single_Reverse, has(&Source::hasStartSingleReverse)},
        {form.actionStart_Reverse, has(&Source::hasStartReverse)},
        {form.actionStart, has(&Source::hasStart)},
        {form.actionStart_Fixed, has(&Source::hasStartFixed)},
        {form.actionStart_Single, has(&Source::hasStartSingle)},
        {form.actionPause, has(&Source::hasPause)},
        {form.actionStop, has(&Source::hasStop)},
    };
    bool hasPlayback = false;
    for (const auto& [action, isOffered] : playback) {
        if (offer(action, isOffered))
            bar->addAction(action);
        hasPlayback = hasPlayback || isOffered;
    }
    if (hasPlayback)
        bar->addSeparator();
    form.actionNo_Controls_Available->setVisible(!hasPlayback);
    if (offer(form.actionTrigger, has(&Source::hasTrigger))) {
        bar->addAction(form.actionTrigger);
        bar->addSeparator();
    }
    bar->addActions({form.actionZoom_Editor, form.actionZoom_Fit, form.actionZoom_100});
    bar->addSeparator();
    bar->addAction(form.actionQuick_View);
    if (!d.userToolBarActions.isEmpty())
        bar->addSeparator();
    bar->addActions(d.userToolBarActions);

    offer(form.actionFrame_Rate, has(&Source::hasFrameRate));
    offer(form.actionBuffers_Queued, has(&Source::hasFramesQueued));
    offer(form.actionBuffers_Filled, has(&Source::hasFramesFilled));
    offer(form.actionBuffers_Dropped, has(&Source::hasFramesDropped));
    offer(form.actionBuffers_Delivered, has(&Source::hasFramesDelivered));
    offer(form.actionActive_Setup_Mode, hasSetupMode);
    if (source)
        d.startFixedEditor->setBounds(source->startFixedMin(), source->startFixedMax(), source->startFixedInc());
    d.updateInfoSwitches();
    d.updateImageStats();
    d.updateActionStates();
}

void WindowQt::updateAcquisitionState()
{
    m_data->updateActionStates();
}

// What can be done now ------------------------------------------------------------------------------------------------

void WindowQt::PrivateData::updateActionStates()
{
    const bool isIdle = !busyWork.isBusy() && !isClosed;
    const auto can = [&](const char* query, bool (Source::*question)() const) {
        return isIdle && ask(query, question);
    };

    const DisplayFramePtr front = stream->m_data->worker->front();
    const bool hasImage = front && front->delivered.data;
    const bool hasPalette =
        hasImage && isMonochrome(front->effective.format) && (front->effective.format & formatPatternMask) == 0;

    const bool canSetup = can("canSetup", &Source::canSetup);
    const bool canCleanup = can("canCleanup", &Source::canCleanup);
    form.actionSetup->setEnabled(canSetup);
    form.actionCleanup->setEnabled(canCleanup);
    form.actionSetup_Cleanup->setEnabled(canSetup || canCleanup);
    showSetupToggle(canSetup, canCleanup);

    const bool canSetupMode = can("canSetupMode", &Source::canSetupMode);
    const QByteArray activeMode =
        setupModes->isEmpty() ? QByteArray() : askText("activeSetupMode", [this](char* text, std::size_t* length) {
            return source->activeSetupMode(text, length);
        });
    infoBar->setSetupMode(QString::fromLocal8Bit(activeMode));
    for (QAction* const mode : setupModes->actions()) {
        const bool isActive = !activeMode.isNull() && mode->data().toByteArray() == activeMode;
        mode->setEnabled(canSetupMode);
        mode->setChecked(isActive);
        QFont font = mode->font();
        if (font.bold() != isActive) {
            font.setBold(isActive);
            mode->setFont(font);
        }
    }

    const bool canStart = can("canStart", &Source::canStart);
    const bool canPause = can("canPause", &Source::canPause);
    form.actionTrigger->setEnabled(can("canTrigger", &Source::canTrigger));
    form.actionStart_Single_Reverse->setEnabled(can("canStartSingleReverse", &Source::canStartSingleReverse));
    form.actionStart_Reverse->setEnabled(can("canStartReverse", &Source::canStartReverse));
    form.actionStart->setEnabled(canStart);
    form.actionStart_Fixed->setEnabled(can("canStartFixed", &Source::canStartFixed));
    startFixedEditor->setStartEnabled(form.actionStart_Fixed->isEnabled());
    form.actionStart_Single->setEnabled(can("canStartSingle", &Source::canStartSingle));
    form.actionPause->setEnabled(canPause);
    form.actionStop->setEnabled(can("canStop", &Source::canStop));
    // The two share a key; when both can be done it pauses.
    const QKeySequence key = form.actionPause->shortcut();
    const QKeySequence startKey = canStart && canPause && form.actionPause->isVisible() ? QKeySequence() : key;
    if (form.actionStart->shortcut() != startKey)
        form.actionStart->setShortcut(startKey);
    showHint(hasImage);

    form.actionSave_Image->setEnabled(hasImage);
    form.actionCopy_Image->setEnabled(hasImage);
    form.actionCopy_Image_Stats->setEnabled(hasImage);
    form.menuColor_Palette->setEnabled(hasPalette);
    paletteButton->setEnabled(hasPalette);
    form.rainbowRulesContentsWidget->setEnabled(hasPalette);
    form.actionQuick_View->setEnabled(hasImage);

    const State state = currentState(*this, hasImage);
    showBadge(QLatin1String(state.picture));
    stateLabel->setText(source ? tr(state.words) : QString());
}

void WindowQt::PrivateData::showSetupToggle(bool canSetup, bool canCleanup)
{
    QAction* const toggle = form.actionSetup_Cleanup;
    if (!canSetup && !canCleanup)
        return;
    const QAction* const other = canCleanup ? form.actionCleanup : form.actionSetup;
    toggle->setChecked(canCleanup); // a click has turned it already
    const QString toolTip = (canCleanup ? tr("Depress to %1") : tr("Press to %1")).arg(other->toolTip());
    if (toggle->toolTip() == toolTip)
        return;
    toggle->setIcon(QIcon(canCleanup ? QStringLiteral(":/Icons/Setup.png") : QStringLiteral(":/Icons/Cleanup.png")));
    toggle->setText(other->text());
    toggle->setIconText(other->iconText());
    toggle->setToolTip(toolTip);
    disconnect(toggle, SIGNAL(triggered()), this, nullptr);
    connect(toggle, SIGNAL(triggered()), this, canCleanup ? SLOT(cleanupAsync()) : SLOT(setupAsync()));
}

// What an empty view says of what to do next.
void WindowQt::PrivateData::showHint(bool hasImage)
{
    const std::pair<const QAction*, QString> steps[] = {
        {form.actionSetup, tr("Set up: %1")},
        {form.actionStart, tr("Start: %1")},
        {form.actionStart_Single, tr("Take one image: %1")},
        {form.actionTrigger, tr("Trigger: %1")},
    };
    QString hint = tr("No image");
    const bool isRunning = ask("isRunning", &Source::isRunning);
    if (isRunning)
        hint = tr("Waiting for the first image");
    for (const auto& [action, text] : steps) {
        if (action->isVisible() && action->isEnabled() && (!isRunning || action == form.actionTrigger)) {
            hint = text.arg(action->shortcut().toString(QKeySequence::NativeText));
            break;
        }
    }
    hintLabel->setText(hint);
    hintLabel->setVisible(!hasImage);
}

void WindowQt::PrivateData::showBadge(const QString& state)
{
    const QIcon application = QApplication::windowIcon();
    const QString key = state + QString::number(application.cacheKey());
    if (badge == key)
        return;
    badge = key;
    QIcon& icon = badgedIcons[key];
    if (icon.isNull())
        icon = makeBadgedIcon(application, state);
    window->setWindowIcon(icon);
}

void WindowQt::PrivateData::updateZoomStates()
{
    form.actionZoom_Fit->setChecked(scrollArea->zoomToFit());
    infoBar->setZoom(scrollArea->zoomScaling());
}

void WindowQt::PrivateData::updateBitmapLockedStates(bool bitmapLocked)
{
    // What is locked shows what the host draws: the frame's own pixels are not to be interpreted.
    form.menuBayer_Filter->setEnabled(!bitmapLocked);
    form.actionDecode_Bayer_Images->setEnabled(!bitmapLocked);
}

} // namespace Vistrel
