// SPDX-License-Identifier: MIT
// Tests the source into which frames are pushed: which frame is delivered, and who waits for whom.
#include "support/FakeSources.h"

#include <QtTest/QtTest>

#include <thread>

using namespace Vistrel;

namespace {

/// A call on a thread of its own. Make it before the locks that it waits for: they go first, so that it ends.
class Caller
{
public:
    ~Caller() { join(); }

    void start(std::function<void()> call)
    {
        m_thread = std::thread([this, call = std::move(call)] {
            m_begun = true;
            call();
            m_returned = true;
        });
    }

    void join()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    /// Whether the call has begun, and has not returned although it was given every chance to.
    bool isBlocked() const
    {
        while (!m_begun)
            std::this_thread::yield();
        for (int i = 0; i < 2000 && !m_returned; ++i)
            std::this_thread::yield();
        return !m_returned;
    }

private:
    std::atomic<bool> m_begun{false};
    std::atomic<bool> m_returned{false};
    std::thread m_thread;
};

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
    void readyNextFrame() override
    {
        ++asked;
        if (asked <= last)
            setNextFrame(nullptr, std::size_t(asked), 1, Mono8, nullptr);
    }

    int asked = 0;
    int last = 2;
};

using HostCall = void (*)(PushSource&);

const struct
{
    const char* name;
    HostCall call;
} hostCalls[] = {
    {"framesLocked", [](PushSource& source) { source.framesLocked(); }},
    {"setFramesLocked(false)", [](PushSource& source) { source.setFramesLocked(false); }},
    {"setFramesLocked(true)", [](PushSource& source) { source.setFramesLocked(true); }},
};

} // namespace

Q_DECLARE_METATYPE(HostCall)

class ImperativeAcquisitionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void latestFrameWins();
    void withoutFramesLockedTheFrameIsDropped();
    void heldLockMakesTheHostWait_data() { addHostCalls(); }
    void heldLockMakesTheHostWait();
    void lockIsReleasedElsewhere();
    void lockOutlivesItsSource();
    void handOverLeavesNoWindow_data() { addHostCalls(); }
    void handOverLeavesNoWindow();
    void previousLockIsReleasedFirst();
    void framesArePushedJustInTime();

private:
    static void addHostCalls();
};

void ImperativeAcquisitionTest::addHostCalls()
{
    QTest::addColumn<HostCall>("call");
    for (const auto& row : hostCalls)
        QTest::newRow(row.name) << row.call;
}

// Which frame is delivered --------------------------------------------------------------------------------------------

void ImperativeAcquisitionTest::latestFrameWins()
{
    PushSource source;
    const unsigned char pixels[6] = {};
    int host = 0;
    source.setNextFrame(pixels, 6, 1, Mono8, nullptr);
    source.setNextFrame(pixels + 1, 2, 1, BayerRG12, &host);
    RawImage image;
    QVERIFY(source.getNextFrame(&image, nullptr));
    QCOMPARE(image.data, pixels + 1);
    QCOMPARE(image.width, std::size_t{2});
    QCOMPARE(image.height, std::size_t{1});
    QCOMPARE(image.format, BayerRG12);
    QCOMPARE(image.userData, static_cast<void*>(&host));
    QVERIFY(!source.getNextFrame(&image, nullptr));
    QCOMPARE(image.data, pixels + 1);
}

void ImperativeAcquisitionTest::withoutFramesLockedTheFrameIsDropped()
{
    PushSource source;
    source.setFramesLocked(false);
    source.setNextFrame({nullptr, 3, 2, Mono8, nullptr});
    RawImage image;
    ScopedLock lock;
    QVERIFY(!source.getNextFrame(&image, &lock));
    QVERIFY(lock.bad());
    QCOMPARE(image.width, std::size_t{0});
    QVERIFY(!source.getNextFrame(&image, nullptr));
    QVERIFY(!source.getFrameLock(image));
}

void ImperativeAcquisitionTest::framesArePushedJustInTime()
{
    JustInTimeSource source;
    RawImage image;
    ScopedLock lock;
    QVERIFY(source.getNextFrame(&image, nullptr));
    QCOMPARE(image.width, std::size_t{1});
    QVERIFY(source.getNextFrame(&image, &lock));
    QCOMPARE(image.width, std::size_t{2});
    QVERIFY(!source.getNextFrame(&image, nullptr));
    QCOMPARE(source.asked, 3);
}

// Who waits for whom --------------------------------------------------------------------------------------------------

void ImperativeAcquisitionTest::heldLockMakesTheHostWait()
{
    QFETCH(HostCall, call);
    PushSource source;
    std::atomic<bool> released{false};
    bool waited = false;
    Caller host;
    ScopedLock lock;
    source.setNextFrame({nullptr, 3, 2, Mono8, nullptr});
    RawImage image;
    QVERIFY(source.getNextFrame(&image, &lock));
    QVERIFY(lock.good());

    host.start([&] {
        call(source);
        waited = released;
    });
    QVERIFY(host.isBlocked());
    // Pushing never waits.
    source.setNextFrame({nullptr, 4, 2, Mono8, nullptr});
    source.clearNextFrame();
    released = true;
    lock.reset(nullptr);
    host.join();
    QVERIFY(waited);
}

void ImperativeAcquisitionTest::lockIsReleasedElsewhere()
{
    PushSource source;
    ScopedLock lock = source.getFrameLock(RawImage{});
    std::thread([moved = std::move(lock)]() mutable { moved.reset(nullptr); }).join();
    QVERIFY(lock.bad());
    QVERIFY(source.framesLocked());
}

void ImperativeAcquisitionTest::lockOutlivesItsSource()
{
    auto source = std::make_unique<PushSource>();
    source->setNextFrame({nullptr, 3, 2, Mono8, nullptr});
    RawImage image;
    ScopedLock lock;
    QVERIFY(source->getNextFrame(&image, &lock));
    source.reset();
    QVERIFY(lock.good());
    std::thread([&] { lock.reset(nullptr); }).join();
    QVERIFY(lock.bad());
}

void ImperativeAcquisitionTest::handOverLeavesNoWindow()
{
    QFETCH(HostCall, call);
    PausingSource source;
    std::atomic<bool> released{false};
    bool waited = false;
    bool delivered = false;
    ScopedLock lock;
    Caller display;
    Caller host;
    struct Opener // before the threads are joined, also when a check below fails
    {
        ~Opener()
        {
            source.beforeLock.openForGood();
            display.join();
            lock.reset(nullptr);
        }
        PausingSource& source;
        Caller& display;
        ScopedLock& lock;
    } opener{source, display, lock};

    source.setNextFrame({nullptr, 3, 2, Mono8, nullptr});
    display.start([&] {
        RawImage image;
        delivered = source.getNextFrame(&image, &lock);
    });
    QTRY_COMPARE(source.beforeLock.arrived(), 1);
    host.start([&] {
        call(source);
        waited = released;
    });
    QVERIFY(host.isBlocked());
    source.beforeLock.open();
    display.join();
    QVERIFY(delivered && lock.good());
    QVERIFY(host.isBlocked());
    released = true;
    lock.reset(nullptr);
    host.join();
    QVERIFY(waited);
}

void ImperativeAcquisitionTest::previousLockIsReleasedFirst()
{
    PushSource source;
    ScopedLock lock;
    for (std::size_t width = 1; width <= 3; ++width) {
        source.setNextFrame({nullptr, width, 2, Mono8, nullptr});
        RawImage image;
        QVERIFY(source.getNextFrame(&image, &lock));
        QCOMPARE(image.width, width);
        QVERIFY(lock.good());
    }
    Caller host;
    host.start([&] { source.framesLocked(); });
    QVERIFY(host.isBlocked());
    lock.reset(nullptr);
}

QTEST_GUILESS_MAIN(ImperativeAcquisitionTest)
#include "ImperativeAcquisitionTest.moc"
