// SPDX-License-Identifier: MIT
// Keeps the main window's actions in step with what the source offers and with the state that it is in.
#include "window/WindowQt_p.h"

#include "window/HostText.h"
#include "window/StartFixedEditor.h"

#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtGui/QPainter>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QToolButton>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <utility>
#include <vector>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

// A hidden action says nothing, so its shortcut does nothing.
bool offer(QAction* action, bool isOffered)
{
    if (isOffered)
        action->blockSignals(false);
    action->setVisible(isOffered);
    action->blockSignals(!isOffered);
    return isOffered;
}

QPixmap iconPicture(const QString& name, const QSize& size)
{
    return QIcon(QStringLiteral(":/Icons/%1.png").arg(name)).pixmap(size);
}

// The state's picture in a rounded frame over the lower right of the application's icon, a little over half of it.
QPixmap withBadge(const QPixmap& icon, const QString& state)
{
    QPixmap badged = icon;
    badged.setDevicePixelRatio(1); // all below is in its own pixels
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

// What is offered -----------------------------------------------------------------------------------------------------

void WindowQt::updateFeatureSet()
{
    PrivateData& d = *m_data;
    d.hasNewFeatures = !d.commands.isAskable();
    if (d.hasNewFeatures)
        return;
    Ui::WindowQt& form = d.form;
    const Source* const source = d.source.get();
    const auto has = [source](bool (Source::*feature)() const) { return source && (source->*feature)(); };
    const bool hasSetupMode = has(&Source::hasSetupMode);
    offer(form.actionSetup, has(&Source::hasSetup));
    offer(form.actionCleanup, has(&Source::hasCleanup));
    offer(form.actionSetup_Cleanup, has(&Source::hasSetup) || has(&Source::hasCleanup));
    offer(form.actionSetup_Mode, hasSetupMode);
    d.showSetupModes();

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
    for (const auto& [action, isOffered] : playback)
        hasPlayback = offer(action, isOffered) || hasPlayback;
    form.actionNo_Controls_Available->setVisible(!hasPlayback);
    offer(form.actionTrigger, has(&Source::hasTrigger));
    d.layOutToolBar();

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

// Made anew only when it is not what it should be: its buttons would flicker, and drop a press that is under way.
void WindowQt::PrivateData::layOutToolBar()
{
    QToolBar* const bar = form.acquisitionToolBar;
    QList<QAction*> wanted; // null for a separator of the bar's own
    const auto addGroup = [&wanted](std::initializer_list<QAction*> group) {
        const int before = wanted.size();
        std::copy_if(group.begin(), group.end(), std::back_inserter(wanted),
                     [](const QAction* action) { return action->isVisible(); });
        if (wanted.size() > before)
            wanted.append(nullptr);
    };
    addGroup({form.actionSetup_Cleanup});
    addGroup({form.actionStart_Single_Reverse, form.actionStart_Reverse, form.actionStart, form.actionStart_Fixed,
              form.actionStart_Single, form.actionPause, form.actionStop});
    addGroup({form.actionTrigger});
    wanted.append({form.actionZoom_Editor, form.actionZoom_Fit, form.actionZoom_100, nullptr, form.actionQuick_View});
    if (!userToolBarActions.isEmpty())
        wanted.append(nullptr);
    wanted.append(userToolBarActions);

    QList<QAction*> present;
    for (QAction* const entry : bar->actions())
        present.append(entry->isSeparator() && entry->parent() == bar ? nullptr : entry);
    if (present != wanted) {
        for (QAction* const entry : bar->actions()) {
            if (entry->isSeparator() && entry->parent() == bar)
                delete entry; // clearing would leave it to the bar
        }
        bar->clear();
        for (QAction* const entry : qAsConst(wanted))
            entry ? bar->addAction(entry) : static_cast<void>(bar->addSeparator());
    }
    if (auto* const button = qobject_cast<QToolButton*>(bar->widgetForAction(form.actionSetup_Cleanup))) {
        const bool hasModes = form.actionSetup_Mode->isVisible();
        button->setMenu(hasModes ? setupModes : nullptr);
        button->setPopupMode(hasModes ? QToolButton::MenuButtonPopup : QToolButton::DelayedPopup);
    }
}

// Entries that stay the same stay: the menu may be open.
void WindowQt::PrivateData::showSetupModes()
{
    const bool hasSetupMode = source && source->hasSetupMode();
    setupModes->setEnabled(hasSetupMode);
    std::vector<std::pair<QByteArray, QByteArray>> modes; // name and description
    for (std::size_t i = 0; hasSetupMode && i < source->setupModeCount(); ++i) {
        const QByteArray name = hostText(
            "setupModeName", [&](char* text, std::size_t* size) { return source->setupModeName(i, text, size); });
        if (!name.isNull())
            modes.emplace_back(name, hostText("setupModeDescription", [&](char* text, std::size_t* size) {
                                   return source->setupModeDescription(i, text, size);
                               }));
    }
    const QList<QAction*> entries = setupModes->actions();
    if (std::equal(modes.begin(), modes.end(), entries.begin(), entries.end(), [](const auto& mode, QAction* entry) {
            return mode.first == entry->data().toByteArray() && QString::fromLocal8Bit(mode.second) == entry->toolTip();
        }))
        return;
    setupModes->clear();
    for (const auto& [bytes, description] : modes) {
        const QString name = QString::fromLocal8Bit(bytes);
        QString text = name;
        QAction* const action = setupModes->addAction(text.replace(QLatin1Char('&'), QLatin1String("&&")));
        action->setCheckable(true);
        action->setWhatsThis(name);
        action->setData(bytes);
        action->setToolTip(QString::fromLocal8Bit(description));
        connect(action, SIGNAL(triggered()), &commands, SLOT(setupMode()));
    }
}

void WindowQt::PrivateData::updateAtRest()
{
    if (hasNewFeatures)
        window->updateFeatureSet();
    else
        updateActionStates();
    updatePixelValue();
}

void WindowQt::updateAcquisitionState()
{
    m_data->updateActionStates();
}

// What can be done now ------------------------------------------------------------------------------------------------

SourceAnswers WindowQt::PrivateData::askSource() const
{
    SourceAnswers answers;
    answers.canSetup = ask("canSetup", &Source::canSetup);
    answers.canSetupMode = ask("canSetupMode", &Source::canSetupMode);
    answers.canCleanup = ask("canCleanup", &Source::canCleanup);
    answers.canTrigger = ask("canTrigger", &Source::canTrigger);
    answers.canStartSingleReverse = ask("canStartSingleReverse", &Source::canStartSingleReverse);
    answers.canStartReverse = ask("canStartReverse", &Source::canStartReverse);
    answers.canStart = ask("canStart", &Source::canStart);
    answers.canStartFixed = ask("canStartFixed", &Source::canStartFixed);
    answers.canStartSingle = ask("canStartSingle", &Source::canStartSingle);
    answers.canPause = ask("canPause", &Source::canPause);
    answers.canStop = ask("canStop", &Source::canStop);
    answers.isRunning = ask("isRunning", &Source::isRunning);
    if (!setupModes->isEmpty())
        answers.activeMode = hostText("activeSetupMode", [this](char* text, std::size_t* length) {
            return source->activeSetupMode(text, length);
        });

    const auto is = [&](const char* query, bool (Source::*question)() const, const char* picture, const char* words) {
        if (!ask(query, question))
            return false;
        answers.statePicture = QLatin1String(picture);
        answers.stateWords = words;
        return true;
    };
    answers.statePicture = QStringLiteral("Cleanup");
    answers.stateWords = QT_TR_NOOP("Not set up");
    answers.isSetUp = ask("isSetup", &Source::isSetup);
    if (!answers.isSetUp)
        return answers;
    answers.statePicture = QStringLiteral("AmbiguousState");
    answers.stateWords = QT_TR_NOOP("Unknown state");
    static_cast<void>(
        is("isStopped", &Source::isStopped, "Stop", QT_TR_NOOP("Stopped")) ||
        is("isPaused", &Source::isPaused, "Pause", QT_TR_NOOP("Paused")) ||
        is("isRunningSingle", &Source::isRunningSingle, "PlayOne", QT_TR_NOOP("Running, one image")) ||
        is("isRunningSingleReverse", &Source::isRunningSingleReverse, "PlayOneReverse",
           QT_TR_NOOP("Running backwards, one image")) ||
        is("isRunningReverse", &Source::isRunningReverse, "PlayReverse", QT_TR_NOOP("Running backwards")) ||
        is("isRunningFixed", &Source::isRunningFixed, "PlayFixed", QT_TR_NOOP("Running, counted")) ||
        is("isRunning", &Source::isRunning, "Play", QT_TR_NOOP("Running")));
    return answers;
}

void WindowQt::PrivateData::updateActionStates()
{
    const Format format = stream.latestImageFormat();
    const bool hasImage = format != 0;
    const bool hasPalette = isMonochrome(format) && (format & formatPatternMask) == 0;
    form.actionSave_Image->setEnabled(hasImage && !saving.isWriting());
    form.actionCopy_Image->setEnabled(hasImage);
    form.actionCopy_Image_Stats->setEnabled(hasImage);
    form.actionCopy_Pixel_Value->setEnabled(hasImage);
    form.menuColor_Palette->setEnabled(hasPalette);
    paletteButton->setEnabled(hasPalette);
    form.rainbowRulesContentsWidget->setEnabled(hasPalette);
    form.actionQuick_View->setEnabled(hasImage);
    hintLabel->setVisible(!hasImage);

    if (commands.isAskable())
        known = askSource();
    // A command that returns within its grace changes nothing in view.
    if (commands.isAskable() || commands.hasEnded() || commands.isShown())
        showCommands();
    showBadge(known.statePicture == QLatin1String("Stop") && !hasImage ? QStringLiteral("Setup") : known.statePicture);
    stateLabel->setText(source ? tr(known.stateWords) : QString());
}

void WindowQt::PrivateData::showCommands()
{
    const bool isIdle = commands.isAskable();
    form.actionSetup->setEnabled(isIdle && known.canSetup);
    form.actionCleanup->setEnabled(isIdle && known.canCleanup);
    form.actionSetup_Cleanup->setEnabled(isIdle && (known.canSetup || known.canCleanup));
    if (isIdle)
        showSetupToggle(known.canSetup, known.canCleanup);

    infoBar->setSetupMode(QString::fromLocal8Bit(known.activeMode));
    for (QAction* const mode : setupModes->actions()) {
        const bool isActive = !known.activeMode.isNull() && mode->data().toByteArray() == known.activeMode;
        mode->setEnabled(isIdle && known.canSetupMode);
        mode->setChecked(isActive);
        QFont font = mode->font();
        if (font.bold() != isActive) {
            font.setBold(isActive);
            mode->setFont(font);
        }
    }

    form.actionTrigger->setEnabled(isIdle && known.canTrigger);
    form.actionStart_Single_Reverse->setEnabled(isIdle && known.canStartSingleReverse);
    form.actionStart_Reverse->setEnabled(isIdle && known.canStartReverse);
    form.actionStart->setEnabled(isIdle && known.canStart);
    form.actionStart_Fixed->setEnabled(isIdle && known.canStartFixed);
    startFixedEditor->setStartEnabled(form.actionStart_Fixed->isEnabled());
    form.actionStart_Single->setEnabled(isIdle && known.canStartSingle);
    form.actionPause->setEnabled(isIdle && known.canPause);
    form.actionStop->setEnabled(isIdle && known.canStop);
    // The two share a key; when both can be done it pauses.
    const QKeySequence key = form.actionPause->shortcut();
    const bool isPauseFirst =
        form.actionStart->isEnabled() && form.actionPause->isEnabled() && form.actionPause->isVisible();
    const QKeySequence startKey = isPauseFirst ? QKeySequence() : key;
    if (form.actionStart->shortcut() != startKey)
        form.actionStart->setShortcut(startKey);
    if (isIdle)
        showHint();
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

void WindowQt::PrivateData::updateHint()
{
    if (hintLabel->isHidden() || !commands.isAskable())
        return;
    showHint();
}

// What an empty view says: what to do next, or why frames are not shown.
void WindowQt::PrivateData::showHint()
{
    const std::pair<const QAction*, QString> steps[] = {
        {form.actionSetup, tr("Set up")},
        {form.actionStart, tr("Start")},
        {form.actionStart_Single, tr("Take one image")},
        {form.actionTrigger, tr("Trigger")},
    };
    QString hint = stream.refusal();
    const bool isRefused = !hint.isEmpty();
    if (!isRefused)
        hint = known.isRunning ? tr("Waiting for the first image") : tr("No image");
    for (const auto& [action, text] : steps) {
        if (isRefused && known.isSetUp)
            break;
        if (action->isVisible() && action->isEnabled() && (!known.isRunning || action == form.actionTrigger)) {
            const QString key = action->shortcut().toString(QKeySequence::NativeText);
            hint = key.isEmpty() ? text : tr("%1: %2").arg(text, key);
            break;
        }
    }
    hintLabel->setText(hint);
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
