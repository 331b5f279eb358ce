// SPDX-License-Identifier: MIT
// The commands that the main window gives its source, and what the status bar says of them.
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
struct Form;

/// Runs commands one after the other beside the user interface. The status bar shows a command that takes longer than
/// the grace, and reports one that failed or was aborted. Without a source nothing is run.
class Commands : public QObject
{
    Q_OBJECT

public:
    /// The source may be null. The form and the stream outlive this object.
    Commands(const Form& form, SurfaceStream* stream, const std::shared_ptr<AbstractAcquisitionInterface>& source);

    /// Whether the source may be asked on this thread. While a command is under way or waits, the source may block
    /// whoever asks until the command is over.
    bool isAskable() const { return !isBusy() && !m_hasEnded; }
    bool isBusy() const { return m_busyWork.isBusy(); }
    bool isShown() const; ///< whether the status bar shows a command that is under way
    bool hasEnded() const { return m_hasEnded; }

    /// Aborts the commands that wait, and runs none from now on.
    void end();

    void setConfigured();
    void setUnconfigured();

public Q_SLOTS:
    void setupAsync() { run("setup", tr("Acquisition setup ongoing"), &Source::setup); }
    void setupModeAsync(); ///< of the action that sent the signal
    void setupStartAsync();
    void cleanupAsync() { run("cleanup", tr("Acquisition cleanup ongoing"), &Source::cleanup); }
    void triggerAsync() { run("trigger", tr("Acquisition trigger ongoing"), &Source::trigger); }
    void startSingleReverseAsync()
    {
        run("startSingleReverse", tr("Acquisition reverse start-single ongoing"), &Source::startSingleReverse);
    }
    void startReverseAsync() { run("startReverse", tr("Acquisition reverse start ongoing"), &Source::startReverse); }
    void startAsync() { run("start", tr("Acquisition start ongoing"), &Source::start); }
    void startFixedAsync(std::size_t count);
    void startSingleAsync() { run("startSingle", tr("Acquisition start-single ongoing"), &Source::startSingle); }
    void pauseAsync() { run("pause", tr("Acquisition pause ongoing"), &Source::pause); }
    void stopAsync() { run("stop", tr("Acquisition stop ongoing"), &Source::stop); }
    void cleanupBusyWork(Vistrel::BusyWorkResult result);

Q_SIGNALS:
    void shown();  ///< a command has taken longer than the grace
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
    BusyWorkResult m_outcome = BusyWorkResult::Succeeded; // the last failure since the last rest
    bool m_hasEnded = false;
};

} // namespace Vistrel
