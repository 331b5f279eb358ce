// SPDX-License-Identifier: MIT
// Tests the hand-shake between the stream's worker and those who ask it.
#include "pipeline/stream/StreamWorker.h"
#include "pipeline/frames/ColorPalette.h"
#include "pipeline/frames/MosaicFilter.h"
#include "pipeline/pixels/ColorTables.h"
#include "support/FakeSources.h"

#include <QtTest/QTest>

#include <future>
#include <thread>

using namespace Vistrel;

namespace {

/// A worker that stands in its first fetch. Every fetch waits at the gate.
struct GatedWorker
{
    GatedWorker()
    {
        worker.start();
        worker.request();
        while (gate.arrived() == 0)
            std::this_thread::yield();
    }
    ~GatedWorker() { gate.openForGood(); }

    const TestFrame frame{4, 4, Mono8};
    Gate gate;
    PullSource source{[this](RawImage* image, ScopedLock*) {
        gate.pass();
        *image = frame.raw;
        return true;
    }};
    std::atomic<int> announced{0};
    StreamWorker worker{&source, [this] { ++announced; }};
};

/// Keeps the pool busy, so that a worker stands in the middle of its conversion.
class BusyPool
{
public:
    BusyPool()
    {
        while (m_gate.arrived() == 0)
            std::this_thread::yield();
    }
    ~BusyPool()
    {
        m_gate.openForGood();
        m_occupant.join();
    }

private:
    Gate m_gate;
    std::thread m_occupant{[this] { CopyPool::shared()->run([this](std::size_t, std::size_t) { m_gate.pass(); }); }};
};

} // namespace

class StreamWorkerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsDuringAFetchAreServedByOneMore();
    void clearDropsFramesUntilTheyAreAccepted();
    void changeDuringAConversionIsLeftToItsEnd();
    void frameWithoutALockIsConvertedAgainBetweenFetches();
    void stopDropsTheFrameBeingFetched();
};

void StreamWorkerTest::requestsDuringAFetchAreServedByOneMore()
{
    GatedWorker one;
    one.worker.request();
    one.worker.request();
    one.gate.open();
    QTRY_COMPARE(one.gate.arrived(), 2);
    auto waiting = std::async(std::launch::async, [&] {
        one.worker.requestAndWait();
        return one.worker.pictures().framesConverted();
    });
    one.gate.open(); // the fetch that was under way is not the one asked for
    QTRY_COMPARE(one.gate.arrived(), 3);
    QVERIFY(waiting.wait_for(std::chrono::seconds(0)) == std::future_status::timeout);
    one.gate.openForGood();
    QCOMPARE(waiting.get(), std::uint64_t{3});
    QCOMPARE(one.gate.arrived(), 3);
}

void StreamWorkerTest::clearDropsFramesUntilTheyAreAccepted()
{
    GatedWorker one;
    one.worker.pictures().clear();
    one.gate.open();
    one.worker.requestAndWait(); // asks the source for nothing
    QCOMPARE(one.gate.arrived(), 1);
    QVERIFY(!one.worker.pictures().front());
    one.worker.pictures().acceptFrames();
    one.worker.request();
    QTRY_COMPARE(one.gate.arrived(), 2);
    one.worker.pictures().clear();
    one.worker.pictures().acceptFrames();
    one.gate.open(); // which has waited for its first frame since
    QTRY_VERIFY(one.worker.pictures().front());
}

void StreamWorkerTest::changeDuringAConversionIsLeftToItsEnd()
{
    using Renewal = StreamWorker::Renewal;
    const TestFrame small(64, 64, BayerRG8, 9);
    const TestFrame large(2048, 2048, BayerRG8, 9); // for which the pool is needed
    PushSource source;
    StreamWorker worker(&source, [] {});
    worker.start();
    QVector<unsigned int> palette = grayRamp();
    const auto dragPalette = [&] {
        palette[9] += 0x10000;
        return worker.setStage(std::make_shared<const ColorPalette>(palette));
    };
    std::unique_ptr<BusyPool> pool;
    const auto beginConversion = [&] {
        source.setNextFrame(small.raw);
        worker.requestAndWait();
        pool = std::make_unique<BusyPool>();
        source.setNextFrame(large.raw);
        worker.request();
        QTRY_COMPARE(dragPalette(), Renewal::None);
    };

    beginConversion();
    worker.pictures().clear();
    worker.pictures().acceptFrames();
    pool.reset();
    worker.requestAndWait();
    QVERIFY(!worker.pictures().front()); // it was fetched before

    beginConversion();
    const int locks = source.frameLocks;
    QCOMPARE(worker.setStage(std::make_shared<const MosaicFilter>(true)), Renewal::None);
    QCOMPARE(worker.renewIfOwed(), Renewal::None);
    pool.reset();
    QTRY_COMPARE(worker.pictures().front()->image.width(), 2048);
    QCOMPARE(worker.pictures().front()->rendered.pixel(0, 0), palette[9]); // chosen before it was applied
    QCOMPARE(worker.pictures().front()->image.format(), QImage::Format_Indexed8);
    QCOMPARE(worker.renewIfOwed(), Renewal::Converted);
    QCOMPARE(worker.pictures().front()->image.format(), QImage::Format_RGBX8888);
    QCOMPARE(worker.renewIfOwed(), Renewal::None);
    QCOMPARE(source.frameLocks.load(), locks + 1); // for the one change
}

// Without a lock, a frame can be read until the next one is asked for.
void StreamWorkerTest::frameWithoutALockIsConvertedAgainBetweenFetches()
{
    ProtectedPixels pixels(64 * 64);
    Gate gate;
    PullSource source([&, isLent = false](RawImage* image, ScopedLock*) mutable {
        if (isLent)
            pixels.release();
        gate.pass();
        isLent = !isLent;
        if (isLent)
            pixels.acquire();
        *image = {pixels.data(), 64, 64, BayerRG8, nullptr};
        return isLent;
    });
    pixels.release();
    StreamWorker worker(&source, [] {});
    worker.start();
    gate.open();
    worker.requestAndWait();
    const auto demosaic = [&](bool isOn) { return worker.setStage(std::make_shared<const MosaicFilter>(isOn)); };
    QCOMPARE(demosaic(true), StreamWorker::Renewal::Converted);
    worker.request();
    QTRY_COMPARE(gate.arrived(), 2);
    QCOMPARE(demosaic(false), StreamWorker::Renewal::None);
    gate.openForGood();
    QTRY_COMPARE(source.fetches.load(), 2);
    worker.stop();
    QCOMPARE(demosaic(false), StreamWorker::Renewal::None); // nor when it was asked in vain
}

void StreamWorkerTest::stopDropsTheFrameBeingFetched()
{
    GatedWorker one;
    std::thread stopping([&] { one.worker.stop(); });
    std::thread waiting([&] { one.worker.requestAndWait(); }); // does not wait for ever
    waiting.join();
    one.gate.openForGood();
    stopping.join();
    QVERIFY(!one.worker.pictures().front());
    QCOMPARE(one.announced.load(), 0);
}

QTEST_GUILESS_MAIN(StreamWorkerTest) // there may be no screens any more when a frame comes
#include "StreamWorkerTest.moc"
