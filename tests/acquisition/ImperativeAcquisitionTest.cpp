// SPDX-License-Identifier: MIT
// Tests the source into which frames are pushed: which frame is delivered, and who waits for whom.
#include "support/FakeSources.h"

#include <QtTest/QtTest>

#include <future>
#include <thread>

using namespace Vistrel;

namespace {

/// Pauses between taking a frame and locking it.
class PausingSource : public PushSource
{
public:
    ScopedLock getFrameLock(const RawImage& frame) override
    {
        beforeLock.pass();
        return PushSource::getFrameLock(frame);
    }

    Gate beforeLock;
};

/// Pushes a numbered frame whenever one is about to be taken.
class JustInTimeSource : public PushSource
{
public:
    void readyNextFrame() override { setNextFrame(nullptr, ++asked, 1, Mono8, nullptr); }

    std::size_t asked = 0;
};

} // namespace

class ImperativeAcquisitionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void latestFrameWins();
    void framesArePushedJustInTime();
    void hostWaitsFromHandOverToRelease();
    void lockIsReleasedElsewhere();
};

void ImperativeAcquisitionTest::latestFrameWins()
{
    PushSource source;
    const unsigned char pixels[6] = {};
    int host = 0;
    source.setNextFrame(pixels, 6, 1, Mono8, nullptr);
    source.setNextFrame(pixels + 1, 2, 1, BayerRG12, &host);
    RawImage image;
    QVERIFY(source.getNextFrame(&image, nullptr));
    QVERIFY(image.data == pixels + 1 && image.userData == &host);
    QVERIFY(image.width == 2 && image.height == 1 && image.format == BayerRG12);
    QVERIFY(!source.getNextFrame(&image, nullptr) && image.data == pixels + 1);

    source.setFramesLocked(false); // and the frame is dropped
    source.setNextFrame(pixels, 3, 2, Mono8, nullptr);
    ScopedLock lock;
    QVERIFY(!source.getNextFrame(&image, &lock) && lock.bad() && image.width == 2);
    QVERIFY(!source.getNextFrame(&image, nullptr) && !source.getFrameLock(image));
}

void ImperativeAcquisitionTest::framesArePushedJustInTime()
{
    JustInTimeSource source;
    ScopedLock lock; // held when the next one is asked for
    for (std::size_t i = 1; i <= 3; ++i) {
        RawImage image;
        QVERIFY(source.getNextFrame(&image, &lock) && lock.good());
        QCOMPARE(image.width, i);
    }
}

void ImperativeAcquisitionTest::hostWaitsFromHandOverToRelease()
{
    void (*const hostCalls[])(PushSource&) = {
        [](PushSource& source) { source.framesLocked(); },
        [](PushSource& source) { source.setFramesLocked(false); },
        [](PushSource& source) { source.setFramesLocked(true); },
    };
    for (const auto call : hostCalls) {
        PausingSource source;
        std::atomic<int> stage{0};
        std::atomic<bool> released{false};
        // They go in such an order, lock first, that all threads end, also when a check fails.
        std::future<bool> host;
        std::future<ScopedLock> display;
        const auto opened = qScopeGuard([&] { source.beforeLock.openForGood(); });
        ScopedLock lock;
        const auto isBlocked = [&] {
            while (stage < 1)
                std::this_thread::yield();
            for (int i = 0; i < 2000 && stage < 2; ++i)
                std::this_thread::yield();
            return stage < 2;
        };

        source.setNextFrame({nullptr, 3, 2, Mono8, nullptr});
        display = std::async(std::launch::async, [&] {
            RawImage image;
            ScopedLock taken;
            source.getNextFrame(&image, &taken);
            return taken;
        });
        QTRY_COMPARE(source.beforeLock.arrived(), 1);
        host = std::async(std::launch::async, [&] {
            stage = 1;
            call(source);
            stage = 2;
            return released.load();
        });
        QVERIFY(isBlocked());
        source.beforeLock.open();
        lock = display.get();
        QVERIFY(lock.good() && isBlocked());
        // Pushing never waits.
        source.setNextFrame({nullptr, 4, 2, Mono8, nullptr});
        source.clearNextFrame();
        released = true;
        lock.reset(nullptr);
        QVERIFY(host.get());
    }
}

// On another thread, after its source, or by taking another one.
void ImperativeAcquisitionTest::lockIsReleasedElsewhere()
{
    auto source = std::make_unique<PushSource>();
    ScopedLock lock = source->getFrameLock({});
    std::thread([&] { lock.reset(nullptr); }).join();
    QVERIFY(source->framesLocked());
    lock = source->getFrameLock({});
    QVERIFY(lock.good());
    source.reset();
    std::thread([&] { lock.reset(nullptr); }).join();

    struct OtherLock : AbstractLock
    {
    };
    PushSource other;
    lock = other.getFrameLock({});
    lock.reset(new OtherLock);
    QVERIFY(other.framesLocked());
}

QTEST_GUILESS_MAIN(ImperativeAcquisitionTest)
#include "ImperativeAcquisitionTest.moc"
