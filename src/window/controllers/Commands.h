// SPDX-License-Identifier: MIT
// The commands that the main window gives its source, and what is shown of them.
#pragma once

#include "window/BusyWork.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QObject>

#include <cstddef>
#include <memory>

class QProgressBar;
class QStatusBar;

namespace Vistrel {

class SurfaceStream;

/// Runs commands one after the other beside the user interface. The status bar tells of one that takes longer than the
/// grace, and of one that has failed or was aborted. Without a source nothing is run.
class Commands : public QObject
{
    Q_OBJECT

public:
    /// The source may be null. The bar and the stream outlive this object.
    Commands(QStatusBar* statusBar, SurfaceStream* stream, const std::shared_ptr<AbstractAcquisitionInterface>& source);

    /// Whether the source may be asked on this thread: not while a command is under way or waits, for it may hold up
    /// whoever asks until it is over.
    bool isAskable() const { return !isBusy() && !m_hasEnded; }
    bool isBusy() const { return m_busyWork.isBusy(); }
    bool isShown() const; ///< whether a command is under way that the status bar tells of
    bool hasEnded() const { return m_hasEnded; }

    /// Aborts the commands that wait, and runs none from now on.
    void end();

    void setRunning();
    void setConfigured();
    void setUnconfigured();

public Q_SLOTS:
    void setup() { run("setup", tr("Acquisition setup ongoing"), &Source::setup); }
    void setupMode(); ///< of the action that is the signal's sender
    void cleanup() { run("cleanup", tr("Acquisition cleanup ongoing"), &Source::cleanup); }
    void trigger() { run("trigger", tr("Acquisition trigger ongoing"), &Source::trigger); }
    void startSingleReverse()
    {
        run("startSingleReverse", tr("Acquisition reverse start-single ongoing"), &Source::startSingleReverse);
    }
    void startReverse() { run("startReverse", tr("Acquisition reverse start ongoing"), &Source::startReverse); }
    void start() { run("start", tr("Acquisition start ongoing"), &Source::start); }
    void startFixed(std::size_t count);
    void startSingle() { run("startSingle", tr("Acquisition start-single ongoing"), &Source::startSingle); }
    void pause() { run("pause", tr("Acquisition pause ongoing"), &Source::pause); }
    void stop() { run("stop", tr("Acquisition stop ongoing"), &Source::stop); }
    void cleanupBusyWork(Vistrel::BusyWorkResult result); ///< for the result of each command

Q_SIGNALS:
    void shown(); ///< a command has taken longer than the grace
    void completed(Vistrel::BusyWorkResult result);
    void rested(); ///< the last command is over, and the source can be asked again

private Q_SLOTS:
    void showBusyWork(const QString& message);

private:
    using Source = AbstractAcquisitionInterface;

    void run(const char* operation, BusyWork::Message message, BusyWork::Command command);
    void run(const char* operation, const QString& message, BusyWork::Command command);
    void run(const char* operation, const QString& message, bool (Source::*command)());

    QStatusBar* const m_statusBar;
    SurfaceStream* const m_stream;
    const std::shared_ptr<Source> m_source;
    QProgressBar* const m_progress;
    BusyWork m_busyWork;
    BusyWorkResult m_outcome = BusyWorkResult::Succeeded; // since the last rest: what failed last
    bool m_hasEnded = false;
};

} // namespace Vistrel
