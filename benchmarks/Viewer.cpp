// SPDX-License-Identifier: MIT
// A window on a stream of pushed frames that notes when each was painted.
#include "Viewer.h"

#include <QtCore/QCoreApplication>

namespace Bench {

PushSource::PushSource()
{
    setFramesLocked(true);
}

void PushSource::push(const Vistrel::RawImage& frame)
{
    setNextFrame(frame);
    signalGetFrameNow();
}

void PushSource::runFreely(Frames* frames)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_freeRunning = frames;
    }
    signalGetFrameNow();
}

bool PushSource::block()
{
    const auto isBlocked = [this] {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_blocked;
    };
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_blocking = true;
    }
    signalGetFrameNow();
    const auto start = Clock::now();
    while (!isBlocked() && millisecondsSince(start) < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return isBlocked();
}

void PushSource::release()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_freeRunning = nullptr;
    m_blocking = false;
    m_changed.notify_all();
}

void PushSource::readyNextFrame()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_freeRunning)
        push(m_freeRunning->next());
    if (m_blocking) {
        m_blocked = true;
        m_changed.wait(lock, [this] { return !m_blocking; });
        m_blocked = false;
    }
}

Viewer::Viewer()
{
    resize(1280, 960);
    setAutoFillBackground(true);
    setAttribute(Qt::WA_OpaquePaintEvent); // as in the window's scroll area
    stream.emplace(this, &source);
    show();
    m_next.setSingleShot(true);
    m_next.setTimerType(Qt::PreciseTimer);
    m_next.callOnTimeout(this, &Viewer::pushNext);
    m_watchdog.setInterval(10000);
    m_watchdog.callOnTimeout(&m_loop, [this] { m_loop.exit(1); });
}

Viewer::~Viewer()
{
    source.release();
    stream.reset();
    clearImageSrc();
}

Viewer::Run Viewer::showFrames(Frames& frames, std::size_t count, int pause)
{
    m_frames = &frames;
    m_left = count;
    m_pause = pause;
    m_run = Run();
    for (auto* samples : {&m_run.beginnings, &m_run.latencies, &m_run.paintings}) {
        samples->resize(count); // touches the memory, so that the run does not
        samples->clear();
    }
    const long faults = pageFaults();
    const std::size_t allocations = largeAllocations();
    const double cpu = processCpuMilliseconds();
    const auto start = Clock::now();
    m_watchdog.start();
    m_next.start(0);
    m_run.good = m_loop.exec() == 0;
    m_watchdog.stop();
    m_run.milliseconds = millisecondsSince(start);
    m_run.cpuMilliseconds = processCpuMilliseconds() - cpu;
    m_run.largeAllocations = largeAllocations() - allocations;
    m_run.pageFaults = pageFaults() - faults;
    m_frames = nullptr;
    m_underWay = false;
    return std::move(m_run);
}

void Viewer::pushNext()
{
    --m_left;
    m_underWay = true;
    m_published = stream->framesPublished();
    m_pushed = Clock::now();
    source.push(m_frames->next());
}

void Viewer::paintEvent(QPaintEvent* event)
{
    const auto start = Clock::now();
    Surface::paintEvent(event);
    // The window is painted for other reasons too.
    if (!m_underWay || stream->framesPublished() == m_published)
        return;
    m_run.beginnings.push_back(Milliseconds(start - m_pushed).count());
    m_run.latencies.push_back(millisecondsSince(m_pushed));
    m_run.paintings.push_back(millisecondsSince(start));
    m_underWay = false;
    m_watchdog.start();
    if (m_left == 0)
        m_loop.quit();
    else if (m_pause > 0)
        m_next.start(m_pause);
    else
        pushNext();
}

} // namespace Bench
