// SPDX-License-Identifier: MIT
// The library's window with the functions of the viewer's command line.
#include "ViewerWindow.h"

#include "Console.h"
#include "PlayedSource.h"

#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtGui/QCloseEvent>
#include <QtGui/QScreen>
#include <QtWidgets/QAction>
#include <QtWidgets/QStatusBar>

#include <ctime>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

constexpr int noFrameMs = 20000;
constexpr int receptionMs = 250;

// The processor time of this process so far.
double processorSeconds()
{
#if defined(_WIN32)
    // The C library's clock() gives the elapsed time here.
    FILETIME created, ended, kernel, user;
    if (!GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user))
        return 0;
    const auto seconds = [](const FILETIME& time) {
        return (time.dwHighDateTime * 4294967296.0 + time.dwLowDateTime) * 1e-7;
    };
    return seconds(kernel) + seconds(user);
#else
    return double(std::clock()) / CLOCKS_PER_SEC;
#endif
}

QString countsText(const ViewerSource::Received& counts)
{
    return ViewerWindow::tr("Received: %1   Lost: %2   No buffer: %3   Skipped: %4")
        .arg(counts.whole)
        .arg(counts.lost)
        .arg(counts.withoutBuffer)
        .arg(counts.skipped);
}

} // namespace

ViewerWindow::ViewerWindow(Vistrel::ScopedAcquisitionInterface&& source, const Options& options, Outcome* outcome)
    : WindowQt(std::move(source)),
      m_options(options),
      m_outcome(outcome),
      m_silence(new QLabel(surfaceScrollArea())),
      m_counts(new QLabel)
{
    resize(QSize(1024, 800).boundedTo(screen()->availableSize() * 0.95));
    auto* const quit = new QAction(this);
    quit->setShortcut(int(Qt::CTRL) | int(Qt::Key_Q));
    connect(quit, &QAction::triggered, this, &QWidget::close);
    addAction(quit);

    connect(surfaceStream(), &Vistrel::SurfaceStream::imageUpdated, this, &ViewerWindow::imageUpdated);
    // Sources announce on any thread. One that has failed before had no receiver for its announcement.
    connect(acquisitionInterface()->signalHandler(), SIGNAL(acquisitionStateChanged()), this, SLOT(checkSource()),
            Qt::QueuedConnection);
    QTimer::singleShot(0, this, &ViewerWindow::checkSource);

    m_silence->setStyleSheet(
        QStringLiteral("background: #b00020; color: white; font-weight: bold; padding: 6px 12px;"));
    m_silence->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_silence->hide();
    m_counts->setToolTip(tr("Frames received whole; lost on the way from the camera, in part or altogether; without a "
                            "buffer, for all were full; and of those received, skipped for a newer one"));
    m_counts->setMinimumWidth(1); // a narrow window cuts it
    connect(&m_receptionTimer, &QTimer::timeout, this, &ViewerWindow::showReception);
    if (this->source() && this->source()->received()) {
        statusBar()->addPermanentWidget(m_counts);
        m_receptionTimer.start(receptionMs);
        showReception();
    }

    m_noFrame.setSingleShot(true);
    m_noFrame.setInterval(noFrameMs);
    connect(&m_noFrame, &QTimer::timeout, this, [this] { fail(tr("no frame for %1 s").arg(noFrameMs / 1000)); });
    if (m_options.frames > 0)
        m_noFrame.start();
}

void ViewerWindow::imageUpdated()
{
    if (m_isClosed)
        return;
    if (m_processorTime < 0) {
        m_processorTime = processorSeconds();
        if (m_options.zoom > 0)
            surfaceScrollArea()->setZoomTo(m_options.zoom / 100, QPoint(-1, -1));
    }
    if (m_options.frames == 0)
        return;
    m_noFrame.start();
    if (surfaceStream()->framesPublished() >= m_options.frames)
        close();
}

void ViewerWindow::checkSource()
{
    if (!source() || !source()->hasFailed())
        return;
    // The source has reported the reason on the standard error stream.
    if (m_options.frames > 0)
        fail(tr("the source has ended before the last frame"));
    else
        statusBar()->showMessage(tr("The source has ended"));
}

const ViewerSource* ViewerWindow::source() const
{
    return dynamic_cast<const ViewerSource*>(acquisitionInterface());
}

void ViewerWindow::showReception()
{
    if (!source())
        return;
    m_counts->setText(countsText(*source()->received()));
    // The last picture stays and would look live.
    const double seconds = source()->secondsSilent();
    m_silence->setVisible(seconds >= 0);
    if (seconds < 0)
        return;
    const QString text = source()->isLost() ? tr("Camera lost, last frame %1 s ago") : tr("Last frame %1 s ago");
    m_silence->setText(text.arg(int(seconds)));
    m_silence->adjustSize();
    m_silence->move((surfaceScrollArea()->width() - m_silence->width()) / 2, m_silence->fontMetrics().height());
}

// The end -------------------------------------------------------------------------------------------------------------

void ViewerWindow::fail(const QString& why)
{
    if (m_isClosed)
        return;
    printError(why);
    m_outcome->exitCode = 1;
    close();
}

void ViewerWindow::closeEvent(QCloseEvent* event)
{
    // Frames are published until the window is destroyed.
    if (closeable() && !m_isClosed) {
        m_isClosed = true;
        m_outcome->statistics = statistics();
        if (!m_options.screenshot.isEmpty() && !grab().save(m_options.screenshot)) {
            printError(tr("cannot write %1").arg(m_options.screenshot));
            m_outcome->exitCode = 1;
        }
    }
    WindowQt::closeEvent(event);
}

QString ViewerWindow::statistics() const
{
    Vistrel::RawImage frame;
    const QString kind = surfaceStream()->latestImage(&frame, nullptr)
                             ? tr("%1 %2 x %3")
                                   .arg(QLatin1String(Vistrel::formatName(frame.format)))
                                   .arg(qulonglong(frame.width))
                                   .arg(qulonglong(frame.height))
                             : tr("no frame");
    const quint64 converted = surfaceStream()->framesConverted();
    const quint64 published = surfaceStream()->framesPublished();
    // Without the program's start, before the first frame.
    const double seconds = processorSeconds() - m_processorTime;
    const QString cost = published > 1 ? QString::number(seconds * 1000 / double(published - 1), 'f', 2) : tr("-");
    const QString shown =
        tr("%1: %2 frames delivered, %3 converted, %4 published, %5 replaced unseen; %6 ms processor time a frame")
            .arg(kind)
            .arg(qulonglong(acquisitionInterface()->framesDelivered()))
            .arg(converted)
            .arg(published)
            .arg(converted - published)
            .arg(cost);
    const auto received = source() ? source()->received() : std::nullopt;
    return received ? shown + QLatin1Char('\n') + countsText(*received) : shown;
}
