// SPDX-License-Identifier: MIT
// A moving test picture in any pixel format: a source that the display pulls frames from.
#pragma once

#include "RecentFrames.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QSize>

#include <chrono>
#include <memory>

class PatternSource : public Vistrel::AbstractAcquisitionInterface
{
public:
    PatternSource(Vistrel::Format format, const QSize& size, double fps);
    ~PatternSource() override;

    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }
    double frameRate() const override { return m_fps; }
    std::size_t framesDelivered() const override { return m_recent.delivered(); }

    /// Waits for the next frame while that takes no longer than a few milliseconds. Frames that nobody asked for in
    /// time are left out.
    bool getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock) override;
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage& image) override { return m_recent.lock(image); }

private:
    class Buffers;
    struct Buffer;

    void drawFrame(Buffer& buffer, qint64 number) const;

    const Vistrel::Format m_format;
    const QSize m_size;
    const double m_fps;
    struct Picture;
    std::unique_ptr<const Picture> m_picture;
    std::shared_ptr<Buffers> m_buffers;
    RecentFrames m_recent;
    const std::chrono::steady_clock::time_point m_start;
    qint64 m_lastNumber = -1; // of the frame delivered last; used by the fetching thread alone
};
