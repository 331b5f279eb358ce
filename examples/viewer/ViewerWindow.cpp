// SPDX-License-Identifier: MIT
// The viewer's window: a live image over a status line.
#include "ViewerWindow.h"

#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/AcquisitionSignalHandler.h>

#include <QtGui/QCloseEvent>
#include <QtGui/QScreen>
#include <QtWidgets/QAction>
#include <QtWidgets/QStatusBar>

#include <cstdio>
#include <ctime>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

constexpr int statusIntervalMs = 250;
constexpr int noFrameMs = 20000;

// What this process has used of its processors so far.
double processorSeconds()
{
#if defined(_WIN32)
    // The C library's own clock tells the time of day here.
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

} // namespace

ViewerWindow::ViewerWindow(Vistrel::AbstractAcquisitionInterface* source, const QString& title, const Options& options)
    : m_options(options),
      m_view(new ImageView(this)),
      m_stream(m_view, source),
      m_status(new QLabel(tr("Waiting for the first frame"), this)),
      m_pixel(new QLabel(this))
{
    setWindowTitle(tr("%1 - Vistrel Viewer").arg(title));
    setWindowIcon(QIcon(QStringLiteral(":/Icons/VistrelIcon.png")));
    setCentralWidget(m_view);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(m_status, 1);
    statusBar()->addPermanentWidget(m_pixel);
    statusBar()->setContentsMargins(6, 0, 6, 0);
    resize(QSize(1024, 800).boundedTo(screen()->availableSize() * 0.95));
    addKeys();
    m_stream.setBayerDemosaicEnabled(true);

    connect(&m_stream, &Vistrel::SurfaceStream::imageUpdated, this, &ViewerWindow::imageUpdated);
    connect(m_view, &ImageView::pointerMoved, this, &ViewerWindow::showPixel);
    // Sources announce from any thread; one that has failed already has announced it to nobody.
    connect(source->signalHandler(), &Vistrel::AcquisitionSignalHandler::acquisitionStateChanged, this,
            &ViewerWindow::checkSource, Qt::QueuedConnection);
    QTimer::singleShot(0, this, &ViewerWindow::checkSource);

    auto* const statusTimer = new QTimer(this);
    connect(statusTimer, &QTimer::timeout, this, &ViewerWindow::measureRate);
    statusTimer->start(statusIntervalMs);
    m_sinceRate.start();

    m_noFrame.setSingleShot(true);
    m_noFrame.setInterval(noFrameMs);
    connect(&m_noFrame, &QTimer::timeout, this, [this] { fail(tr("no frame for %1 s").arg(noFrameMs / 1000)); });
    if (m_options.frames > 0)
        m_noFrame.start();
}

void ViewerWindow::addKeys()
{
    const auto addKey = [this](const QList<QKeySequence>& keys, auto&& run) {
        auto* const action = new QAction(this);
        action->setShortcuts(keys);
        connect(action, &QAction::triggered, this, run);
        addAction(action);
    };
    addKey({Qt::Key_Escape, int(Qt::CTRL) | int(Qt::Key_Q)}, [this] { close(); });
    addKey({Qt::Key_F}, [this] { m_view->setScaleToFit(!m_view->scaleToFit()); });
    addKey({Qt::Key_C}, [this] { toggleCrosshair(); });
}

void ViewerWindow::imageUpdated()
{
    if (m_isClosed)
        return;
    if (m_processorTime < 0)
        m_processorTime = processorSeconds();
    showPixel();
    if (m_options.frames == 0)
        return;
    m_noFrame.start();
    if (m_stream.framesPublished() >= m_options.frames)
        close();
}

void ViewerWindow::checkSource()
{
    if (m_stream.acquisitionInterface()->isSetup())
        return;
    // The source has told why on the standard error stream.
    if (m_options.frames > 0)
        fail(tr("the source has ended before the last frame"));
    else
        m_status->setText(tr("The source has ended"));
}

void ViewerWindow::toggleCrosshair()
{
    const QPoint pixel = m_view->pixelUnderPointer();
    const bool isInside = QRect(QPoint(0, 0), m_stream.latestImageSize()).contains(pixel);
    m_view->setCrosshairVisible(!m_view->crosshairVisible() && isInside);
    if (m_view->crosshairVisible())
        m_view->setActivePixel(pixel);
}

// The status line -----------------------------------------------------------------------------------------------------

void ViewerWindow::measureRate()
{
    const quint64 published = m_stream.framesPublished();
    const auto milliseconds = double(qMax(m_sinceRate.restart(), qint64(1)));
    m_rate = double(published - std::exchange(m_publishedAtRate, published)) * 1000 / milliseconds;
    showStatus();
}

void ViewerWindow::showStatus()
{
    if (!m_stream.acquisitionInterface()->isSetup() || m_stream.framesPublished() == 0)
        return;
    m_status->setText(
        tr("%1     %2 %     %3 fps").arg(frameText()).arg(m_view->scaling() * 100, 0, 'f', 1).arg(m_rate, 0, 'f', 1));
}

QString ViewerWindow::frameText() const
{
    Vistrel::RawImage frame;
    if (!m_stream.latestImage(&frame, nullptr))
        return tr("no frame");
    return tr("%1 %2 x %3")
        .arg(QLatin1String(Vistrel::formatName(frame.format)))
        .arg(qulonglong(frame.width))
        .arg(qulonglong(frame.height));
}

void ViewerWindow::showPixel()
{
    const QPoint pixel = m_view->pixelUnderPointer();
    Vistrel::PixVal value;
    if (!m_view->imageSrcPixVal({pixel.x(), pixel.y()}, value)) {
        m_pixel->clear();
        return;
    }
    const QString place = tr("(%1, %2)").arg(pixel.x()).arg(pixel.y());
    m_pixel->setText(value.color ? tr("%1 R: %2 G: %3 B: %4").arg(place).arg(value.r).arg(value.g).arg(value.b)
                                 : tr("%1 %2").arg(place).arg(value.value));
}

// The end -------------------------------------------------------------------------------------------------------------

void ViewerWindow::fail(const QString& why)
{
    if (m_isClosed)
        return;
    std::fprintf(stderr, "viewer: %s\n", qPrintable(why));
    m_exitCode = 1;
    close();
}

void ViewerWindow::closeEvent(QCloseEvent* event)
{
    m_isClosed = true; // frames still come in until the event loop has ended
    showStatus();
    countFrames();
    if (!m_options.screenshot.isEmpty() && !grab().save(m_options.screenshot)) {
        std::fprintf(stderr, "viewer: cannot write %s\n", qPrintable(m_options.screenshot));
        m_exitCode = 1;
    }
    QMainWindow::closeEvent(event);
}

void ViewerWindow::countFrames()
{
    const quint64 converted = m_stream.framesConverted();
    const quint64 published = m_stream.framesPublished();
    // What came before the first frame, the start of the program, is left out.
    const double seconds = processorSeconds() - m_processorTime;
    const QString cost = published > 1 ? QString::number(seconds * 1000 / double(published - 1), 'f', 2) : tr("-");
    m_statistics =
        tr("%1: %2 frames delivered, %3 converted, %4 published, %5 replaced unseen; %6 ms processor time a frame")
            .arg(frameText())
            .arg(qulonglong(m_stream.acquisitionInterface()->framesDelivered()))
            .arg(converted)
            .arg(published)
            .arg(converted - published)
            .arg(cost);
}
