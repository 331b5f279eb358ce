// SPDX-License-Identifier: MIT
// The commands that the main window gives its source, and what the status bar says of them.
#include "window/controllers/Commands.h"

#include "base/HostCall.h"
#include "window/Form.h"
#include "window/SourceAnswers.h"

#include <Vistrel/SurfaceStream.h>

#include <QtCore/QPointer>
#include <QtWidgets/QProgressBar>

#include <atomic>
#include <string>
#include <utility>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

constexpr int messageMs = 2000;

} // namespace

Commands::Commands(const Form& form, SurfaceStream* stream, const std::shared_ptr<Source>& source)
    : m_statusBar(form.statusBar),
      m_stream(stream),
      m_source(source),
      m_progress(new QProgressBar(form.statusBar)),
      m_busyWork(source)
{
    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);
    m_progress->setAccessibleName(tr("Command under Way"));
    m_progress->hide();
    m_statusBar->addPermanentWidget(m_progress);
    connect(&m_busyWork, SIGNAL(delayed(QString)), this, SLOT(showBusyWork(QString)));
    connect(&m_busyWork, SIGNAL(busyWorkComplete(Vistrel::BusyWorkResult)), this,
            SLOT(cleanupBusyWork(Vistrel::BusyWorkResult)));
    for (const CommandRow& row : commandRows()) {
        if (row.slot)
            connect(form.*row.action, SIGNAL(triggered()), this, row.slot);
    }
}

bool Commands::isShown() const
{
    return !m_progress->isHidden();
}

void Commands::end()
{
    m_hasEnded = true;
    m_busyWork.abortWaiting();
}

// One after the other -------------------------------------------------------------------------------------------------

void Commands::run(const char* operation, BusyWork::Message message, BusyWork::Command command)
{
    if (!m_source || m_hasEnded)
        return;
    try {
        m_busyWork.start(operation, std::move(message), std::move(command));
        m_stream->setSourceAskable(false);
    } catch (...) { // the thread could not be started
        reportException(operation);
        cleanupBusyWork(BusyWorkResult::Failed);
    }
}

void Commands::run(const char* operation, const QString& message, BusyWork::Command command)
{
    run(operation, BusyWork::Message([message] { return message; }), std::move(command));
}

void Commands::run(const char* operation, const QString& message, bool (Source::*command)())
{
    run(operation, message, BusyWork::Command([s = m_source.get(), command] { return (s->*command)(); }));
}

void Commands::showBusyWork(const QString& message)
{
    m_progress->setFixedWidth(3 * m_statusBar->height());
    m_progress->show();
    m_statusBar->showMessage(message);
    Q_EMIT shown();
}

void Commands::cleanupBusyWork(BusyWorkResult result)
{
    if (result != BusyWorkResult::Succeeded)
        m_outcome = result;
    // Between two commands the view does not change.
    if (isBusy())
        return;
    const QPointer<Commands> alive(this); // the slots of the stream may delete the window
    m_stream->setSourceAskable(!m_hasEnded);
    if (!alive)
        return;
    Q_EMIT rested();
    m_progress->hide();
    m_statusBar->clearMessage();
    const BusyWorkResult worst = std::exchange(m_outcome, BusyWorkResult::Succeeded);
    if (worst == BusyWorkResult::Failed)
        m_statusBar->showMessage(tr("Operation failed!"), messageMs);
    else if (worst == BusyWorkResult::Aborted)
        m_statusBar->showMessage(tr("Operation aborted!"), messageMs);
}

// The commands --------------------------------------------------------------------------------------------------------

// The mode is read here because the menu may be rebuilt before the command runs.
void Commands::setupModeAsync()
{
    const auto* const action = qobject_cast<QAction*>(sender());
    if (!action) {
        m_statusBar->showMessage(tr("Setup mode unidentified!"), messageMs);
        return;
    }
    const QByteArray bytes = action->data().toByteArray(); // the source's own bytes
    const std::string name = (bytes.isNull() ? action->whatsThis().toLocal8Bit() : bytes).toStdString();
    run("setupMode", tr("Acquisition setup (%1) ongoing").arg(action->whatsThis()),
        [s = m_source.get(), name] { return s->setupMode(name.c_str()); });
}

void Commands::startFixedAsync(std::size_t count)
{
    run("startFixed", tr("Acquisition start-fixed ongoing"),
        [s = m_source.get(), count] { return s->startFixed(count); });
}

// A source without a set-up command is only started. Its state is read when the command runs.
void Commands::setupStartAsync()
{
    const bool needsSetup = m_source && m_source->hasSetup();
    run("setup and start", tr("Acquisition setup and start ongoing"), [s = m_source.get(), needsSetup] {
        return askSource(s, {"isRunning", &Source::isRunning}) || ((s->setup() || !needsSetup) && s->start());
    });
}

void Commands::setConfigured()
{
    const bool needsSetup = m_source && m_source->hasSetup();
    const auto isStopping = std::make_shared<std::atomic<bool>>(false);
    run("setup", BusyWork::Message([isStopping] {
            return *isStopping ? tr("Acquisition stop ongoing") : tr("Acquisition setup ongoing");
        }),
        [s = m_source.get(), needsSetup, isStopping] {
            *isStopping = askSource(s, {"isRunning", &Source::isRunning});
            return *isStopping ? hostCall("stop", false, [&] { return s->stop(); }) : s->setup() || !needsSetup;
        });
}

void Commands::setUnconfigured()
{
    run("cleanup", tr("Acquisition cleanup ongoing"), [s = m_source.get()] {
        return !askSource(s, {"isSetup", &Source::isSetup}) || s->cleanup();
    });
}

} // namespace Vistrel
