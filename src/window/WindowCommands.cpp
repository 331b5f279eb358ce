// SPDX-License-Identifier: MIT
// The commands that the main window gives its source, and what is shown of them.
#include "window/WindowQt_p.h"

#include "pipeline/SurfaceStream_p.h"

#include <QtWidgets/QAction>
#include <QtWidgets/QProgressBar>

#include <string>

namespace Vistrel {

namespace {

constexpr int messageMs = 2000;

} // namespace

void WindowQt::PrivateData::runCommand(const char* operation, const QString& message, BusyWork::Command command)
{
    if (!source || isClosed)
        return;
    try {
        busyWork.start(operation, message, std::move(command));
    } catch (...) { // there may be no thread for it
        reportException(operation);
        cleanupBusyWork(BusyWorkResult::Failed);
    }
}

void WindowQt::PrivateData::showBusyWork(const QString& message)
{
    updateActionStates();
    progress->setFixedWidth(3 * form.statusBar->height());
    progress->show();
    form.statusBar->showMessage(message);
}

void WindowQt::PrivateData::cleanupBusyWork(BusyWorkResult result)
{
    stream->m_data->expectFrame();
    updateActionStates();
    progress->hide();
    form.statusBar->clearMessage();
    if (result == BusyWorkResult::Failed)
        form.statusBar->showMessage(tr("Operation failed!"), messageMs);
    else if (result == BusyWorkResult::Aborted)
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
    runCommand("setupMode", tr("Acquisition setup (%1) ongoing").arg(action->text()),
               [s = source.get(), name] { return s->setupMode(name.c_str()); });
}

void WindowQt::PrivateData::setupStartAsync()
{
    runCommand("setup and start", tr("Acquisition setup and start ongoing"),
               [s = source.get()] { return s->setup() && s->start(); });
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
    if (!m_data->ask("isRunning", &AbstractAcquisitionInterface::isRunning))
        m_data->setupStartAsync();
}

void WindowQt::setConfigured()
{
    if (m_data->ask("isRunning", &AbstractAcquisitionInterface::isRunning))
        m_data->stopAsync();
    else
        m_data->setupAsync();
}

void WindowQt::setUnconfigured()
{
    if (m_data->ask("isSetup", &AbstractAcquisitionInterface::isSetup))
        m_data->cleanupAsync();
}

} // namespace Vistrel
