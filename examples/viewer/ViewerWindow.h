// SPDX-License-Identifier: MIT
// The viewer's window: a live image over a status line.
#pragma once

#include "ImageView.h"
#include "Options.h"

#include <Vistrel/SurfaceStream.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMainWindow>

/// Shows a source, which must outlive the window, and carries out `--frames` and `--screenshot`.
class ViewerWindow : public QMainWindow
{
    Q_OBJECT

public:
    ViewerWindow(Vistrel::AbstractAcquisitionInterface* source, const QString& title, const Options& options);

    /// 0, or 1 when the window was closed by a failure.
    int exitCode() const { return m_exitCode; }
    /// One line on what had become of the frames when the window closed.
    QString statistics() const { return m_statistics; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void addKeys();
    void imageUpdated();
    void checkSource();
    void toggleCrosshair();
    void measureRate();
    void showStatus();
    void showPixel();
    void countFrames();
    void fail(const QString& why);
    QString frameText() const;

    const Options m_options;
    ImageView* const m_view;
    Vistrel::SurfaceStream m_stream; // gone before the view, which the window deletes with its other widgets
    QLabel* const m_status;
    QLabel* const m_pixel;
    QTimer m_noFrame; // runs only with `--frames`, which promises an end
    QElapsedTimer m_sinceRate;
    quint64 m_publishedAtRate = 0;
    double m_rate = 0;           // published frames a second, at the last measurement
    double m_processorTime = -1; // seconds of this process at the first frame; below 0 before it
    QString m_statistics;
    bool m_isClosed = false;
    int m_exitCode = 0;
};
