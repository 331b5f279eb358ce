// SPDX-License-Identifier: MIT
// The main window and a bare surface, on a camera with the commands and statistics that the window shows.
#include "Shown.h"

#include <Vistrel/SurfaceScrollArea.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtCore/QVariant>

#include <thread>

namespace Bench {

namespace {
constexpr int patienceMs = 10000;
constexpr int settlingMs = 50;
} // namespace

Camera::Camera()
{
    setHasStart(true);
    setHasStop(true);
    setHasSetupMode(true);
    setHasFrameRate(true);
    setHasFramesQueued(true);
    setHasFramesFilled(true);
    setHasFramesDropped(true);
    setHasFramesDelivered(true);
    addSetupMode("Continuous");
}

bool Camera::start()
{
    entered = Clock::now();
    std::this_thread::sleep_for(startTakes);
    m_isRunning = true;
    returned = Clock::now();
    return true;
}

bool Camera::stop()
{
    m_isRunning = false;
    return true;
}

bool Camera::activeSetupMode(char* const buffer, std::size_t* const size) const
{
    return setupModeName(0, buffer, size);
}

bool waitUntil(const std::function<bool()>& isMet)
{
    for (const auto start = Clock::now(); !isMet() && millisecondsSince(start) < patienceMs;)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return isMet();
}

void settle()
{
    QEventLoop loop;
    QTimer::singleShot(settlingMs, &loop, &QEventLoop::quit);
    loop.exec();
}

void Shown::watch()
{
    settle();
    surface->installEventFilter(this);
}

bool Shown::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::Paint) {
        ++paintings;
        if (m_painted)
            m_painted();
    }
    return false;
}

double Shown::showFrames(Frames& frames, int count, int interval)
{
    QEventLoop loop;
    QTimer ticks;
    QTimer watchdog;
    int left = count;
    bool isUnderWay = false;
    quint64 published = 0;
    ticks.setTimerType(Qt::PreciseTimer);
    ticks.callOnTimeout(&loop, [&] {
        if (isUnderWay)
            return;
        isUnderWay = true;
        --left;
        published = stream->framesPublished();
        source->push(frames.next());
    });
    m_painted = [&] {
        // The surface is painted for other reasons too.
        if (!isUnderWay || stream->framesPublished() == published)
            return;
        isUnderWay = false;
        if (left == 0)
            loop.quit();
    };
    watchdog.callOnTimeout(&loop, [&] { loop.exit(1); });
    const double cpu = processCpuMilliseconds();
    watchdog.start(patienceMs + 2 * count * interval);
    ticks.start(interval);
    const bool isGood = loop.exec() == 0;
    m_painted = nullptr;
    return isGood ? (processCpuMilliseconds() - cpu) / count : -1;
}

ShownWindow::ShownWindow(const QSize& size)
{
    source = new Camera;
    window = std::make_unique<Vistrel::WindowQt>(Vistrel::ScopedAcquisitionInterface(source));
    surface = window->surfaceScrollArea()->surface();
    stream = window->surfaceStream();
    for (const char* const item :
         {"previewSetupMode", "previewFrameRate", "previewBuffersQueued", "previewBuffersFilled",
          "previewBuffersDropped", "previewBuffersDelivered", "previewImageDimensions", "previewImageFormat",
          "previewZoomLevel", "previewPixelValue"})
        window->setProperty(item, true);
    window->resize(size);
    window->show();
    watch();
}

ShownWindow::~ShownWindow()
{
    window.reset();
    QCoreApplication::processEvents(); // deletes the source
}

ShownSurface::ShownSurface(const QSize& size)
{
    source = &m_source;
    surface = &m_surface;
    stream = &m_stream;
    m_surface.resize(size);
    m_surface.show();
    watch();
}

} // namespace Bench
