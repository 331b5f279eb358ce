// SPDX-License-Identifier: MIT
// Sources of frames that tests control.
#pragma once

#include <Vistrel/ImperativeAcquisitionInterface.h>

#include "support/Pages.h"

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// Lets a fixed number of passes through; the others wait.
class Gate
{
public:
    void open(int passes = 1)
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_passes += passes;
        m_changed.notify_all();
    }

    void openForGood() { open(1 << 20); }

    void close()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_passes = 0;
    }

    void pass()
    {
        std::unique_lock<std::mutex> guard(m_mutex);
        ++m_arrived;
        m_changed.wait(guard, [this] { return m_passes > 0; });
        --m_passes;
    }

    int arrived() const
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_arrived;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_passes = 0;
    int m_arrived = 0;
};

/// A push source whose state the test sets.
class PushSource : public Vistrel::ImperativeAcquisitionInterface
{
public:
    PushSource() { setFramesLocked(true); }

    bool isSetup() const override { return setUp; }
    bool isRunning() const override { return setUp; }

    void push(const Vistrel::RawImage& frame)
    {
        setNextFrame(frame);
        signalGetFrameNow();
    }

    void setSetup(bool enabled)
    {
        setUp = enabled;
        signalAcquisitionStateChange();
    }

    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage& frame) override
    {
        ++frameLocks;
        return ImperativeAcquisitionInterface::getFrameLock(frame);
    }

    std::atomic<bool> setUp{true};
    std::atomic<int> frameLocks{0};
};

/// A pull source that is a function.
class PullSource : public Vistrel::AbstractAcquisitionInterface
{
public:
    using NextFrame = std::function<bool(Vistrel::RawImage*, Vistrel::ScopedLock*)>;

    explicit PullSource(NextFrame nextFrame) : m_nextFrame(std::move(nextFrame)) {}

    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }
    bool getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock) override
    {
        ++fetches;
        return m_nextFrame(image, lock);
    }
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage&) override { return {}; }

    std::atomic<int> fetches{0};

private:
    NextFrame m_nextFrame;
};

/// Pixels that can be touched only while a lock of theirs is held.
class ProtectedPixels
{
public:
    explicit ProtectedPixels(std::size_t size) : m_pages(size) {}

    std::uint8_t* data() const { return m_pages.data(); }

    void acquire()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_holders++ == 0)
            m_pages.setAccessible(0, m_pages.size(), true);
    }
    void release()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (--m_holders == 0)
            m_pages.setAccessible(0, m_pages.size(), false);
    }

private:
    std::mutex m_mutex;
    int m_holders = 1; // at first, the one that fills them
    Pages m_pages;
};

class PixelsLock : public Vistrel::AbstractLock
{
public:
    explicit PixelsLock(ProtectedPixels& pixels) : m_pixels(pixels) { m_pixels.acquire(); }
    ~PixelsLock() override { m_pixels.release(); }

private:
    ProtectedPixels& m_pixels;
};

/// A pull source of one frame whose pixels can be read only under its lock.
class ProtectedSource : public PullSource
{
public:
    ProtectedSource(std::size_t width, std::size_t height, Vistrel::Format format)
        : PullSource([this](Vistrel::RawImage* image, Vistrel::ScopedLock* lock) {
              *image = m_frame;
              lock->reset(new PixelsLock(*m_pixels));
              return true;
          }),
          m_pixels(std::make_unique<ProtectedPixels>(width * height * Vistrel::bytesPerPixel(format)))
    {
        m_frame = {m_pixels->data(), width, height, format, nullptr};
        for (std::size_t i = 0; i < width * height * Vistrel::bytesPerPixel(format); ++i)
            m_pixels->data()[i] = static_cast<std::uint8_t>(i * 7);
        m_pixels->release();
    }

    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage&) override { return {new PixelsLock(*m_pixels)}; }

private:
    std::unique_ptr<ProtectedPixels> m_pixels;
    Vistrel::RawImage m_frame;
};

/// A frame that owns its pixels, filled with one byte.
struct TestFrame
{
    TestFrame(std::size_t width, std::size_t height, Vistrel::Format format, std::uint8_t fill = 0)
        : pixels(width * height * Vistrel::bytesPerPixel(format), fill),
          raw{pixels.data(), width, height, format, nullptr}
    {
    }

    std::vector<std::uint8_t> pixels;
    Vistrel::RawImage raw;
};
