// SPDX-License-Identifier: MIT
// The library's window with the functions of the viewer's command line.
#pragma once

#include "Options.h"

#include <Vistrel/WindowQt.h>

#include <QtCore/QTimer>
#include <QtWidgets/QLabel>

/// The result of a closed window.
struct Outcome
{
    int exitCode = 0;   // 1 when the window was closed by a failure
    QString statistics; // one line on the frames
};

class ViewerSource;

/// Shows a source, and implements `--frames` and `--screenshot`. Deletes itself when it is closed.
class ViewerWindow : public Vistrel::WindowQt
{
    Q_OBJECT

public:
    /// `outcome` must outlive the window.
    ViewerWindow(Vistrel::ScopedAcquisitionInterface&& source, const Options& options, Outcome* outcome);

protected:
    void closeEvent(QCloseEvent* event) override;

private Q_SLOTS:
    void imageUpdated();
    void checkSource();
    void showReception();

private:
    const ViewerSource* source() const;
    void fail(const QString& why);
    QString statistics() const;

    const Options m_options;
    Outcome* const m_outcome;
    QTimer m_noFrame;            // runs only with `--frames`, which must end
    QTimer m_receptionTimer;     // runs for a source that receives its frames, as do the two below
    QLabel* const m_silence;     // over the picture while no frames come
    QLabel* const m_counts;      // in the status bar
    double m_processorTime = -1; // seconds of this process at the first frame; below 0 before it
    bool m_isClosed = false;
};
