// SPDX-License-Identifier: MIT
// The commands that the main window gives its source, and what is shown of them.
#include "window/WindowQt_p.h"

#include <Vistrel/SurfaceStream.h>

#include <QtWidgets/QAction>
#include <QtWidgets/QProgressBar>

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

constexpr int messageMs = 2000;

bool isTrue(const char* query, const Source& source, bool (Source::*question)() const)
{
    return hostCall(query, false, [&] { return (source.*question)(); });
}

} // namespace

void WindowQt::PrivateData::runCommand(const char* operation, BusyWork::Message message, BusyWork::Command command)
{
    if (!source || isClosed)
        return;
    try {
        busyWork.start(operation, std::move(message), std::move(command));
        stream->setSourceAskable(false);
    } catch (...) { // there may be no thread for it
        reportException(operation);
        cleanupBusyWork(BusyWorkResult::Failed);
    }
}

void WindowQt::PrivateData::showBusyWork(const QString& message)
{
    progress->setFixedWidth(3 * form.statusBar->height());
    progress->show();
    form.statusBar->showMessage(message);
    updateActionStates();
}

void WindowQt::PrivateData::cleanupBusyWork(BusyWorkResult result)
{
    if (result != BusyWorkResult::Succeeded)
        outcome = result;
    // Between two commands nothing changes in view.
    if (busyWork.isBusy())
        return;
    const QPointer<PrivateData> alive(this); // the slots of the stream may delete the window
    stream->setSourceAskable(!isClosed);
    if (!alive)
        return;
    if (hasNewFeatures)
        window->updateFeatureSet();
    else
        updateActionStates();
    updatePixelValue();
    progress->hide();
    form.statusBar->clearMessage();
    const BusyWorkResult worst = std::exchange(outcome, BusyWorkResult::Succeeded);
    if (worst == BusyWorkResult::Failed)
        form.statusBar->showMessage(tr("Operation failed!"), messageMs);
    else if (worst == BusyWorkResult::Aborted)
        form.statusBar->showMessage(tr("Operation aborted!"), messageMs);
}

void WindowQt::PrivateData::setupAsync()
{
    runCommand("setup", tr("Acquisition setup ongoing"), [s = source.get()] { return s->setup(); });
}

// The mode is the sender's. It is read here, for the menu may be made anew before the command's turn comes.
void WindowQt::PrivateData::setupModeAsync()
{
    const auto* const action = qobject_cast<QAction*>(sender());
    if (!action) {
        form.statusBar->showMessage(tr("Setup mode unidentified!"), messageMs);
        return;
    }
    const QByteArray bytes = action->data().toByteArray(); // as the source gave it
    const std::string name = (bytes.isNull() ? action->whatsThis().toLocal8Bit() : bytes).toStdString();
    runCommand("setupMode", tr("Acquisition setup (%1) ongoing").arg(action->whatsThis()),
               [s = source.get(), name] { return s->setupMode(name.c_str()); });
}

// A source without a set-up command is started as it is. What state it is in is found out when the command's turn
// comes.
void WindowQt::PrivateData::setupStartAsync()
{
    const bool needsSetup = source && source->hasSetup();
    runCommand("setup and start", tr("Acquisition setup and start ongoing"), [s = source.get(), needsSetup] {
        return isTrue("isRunning", *s, &Source::isRunning) || ((s->setup() || !needsSetup) && s->start());
    });
}

void WindowQt::PrivateData::triggerAsync()
{
    runCommand("trigger", tr("Acquisition trigger ongoing"), [s = source.get()] { return s->trigger(); });
}

void WindowQt::PrivateData::startSingleReverseAsync()
{
    runCommand("startSingleReverse", tr("Acquisition reverse start-single ongoing"),
               [s = source.get()] { return s->startSingleReverse(); });
}

void WindowQt::PrivateData::startReverseAsync()
{
    runCommand("startReverse", tr("Acquisition reverse start ongoing"),
               [s = source.get()] { return s->startReverse(); });
}

void WindowQt::PrivateData::startAsync()
{
    runCommand("start", tr("Acquisition start ongoing"), [s = source.get()] { return s->start(); });
}

void WindowQt::PrivateData::startFixedAsync(size_t count)
{
    runCommand("startFixed", tr("Acquisition start-fixed ongoing"),
               [s = source.get(), count] { return s->startFixed(count); });
}

void WindowQt::PrivateData::startSingleAsync()
{
    runCommand("startSingle", tr("Acquisition start-single ongoing"), [s = source.get()] { return s->startSingle(); });
}

void WindowQt::PrivateData::pauseAsync()
{
    runCommand("pause", tr("Acquisition pause ongoing"), [s = source.get()] { return s->pause(); });
}

void WindowQt::PrivateData::stopAsync()
{
    runCommand("stop", tr("Acquisition stop ongoing"), [s = source.get()] { return s->stop(); });
}

void WindowQt::PrivateData::cleanupAsync()
{
    runCommand("cleanup", tr("Acquisition cleanup ongoing"), [s = source.get()] { return s->cleanup(); });
}

void WindowQt::setRunning()
{
    m_data->setupStartAsync();
}

void WindowQt::setConfigured()
{
    const bool needsSetup = m_data->source && m_data->source->hasSetup();
    const auto isStopping = std::make_shared<std::atomic<bool>>(false);
    m_data->runCommand(
        "setup",
        [isStopping] {
            return *isStopping ? PrivateData::tr("Acquisition stop ongoing")
                               : PrivateData::tr("Acquisition setup ongoing");
        },
        [s = m_data->source.get(), needsSetup, isStopping] {
            *isStopping = isTrue("isRunning", *s, &Source::isRunning);
            return *isStopping ? hostCall("stop", false, [&] { return s->stop(); }) : s->setup() || !needsSetup;
        });
}

void WindowQt::setUnconfigured()
{
    m_data->runCommand("cleanup", PrivateData::tr("Acquisition cleanup ongoing"),
                       [s = m_data->source.get()] { return !isTrue("isSetup", *s, &Source::isSetup) || s->cleanup(); });
}

} // namespace Vistrel
