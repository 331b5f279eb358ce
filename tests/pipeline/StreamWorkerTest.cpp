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

class StreamWorkerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsDuringAFetchAreServedByOneMore();
    void waitingRequestSeesAFetchThatBeganAfterIt();
    void clearDropsFramesUntilTheyAreAccepted();
    void changeDuringAConversionIsLeftToItsEnd();
    void frameWithoutALockIsConvertedAgainBetweenFetches();
    void stopDropsTheFrameBeingFetched();
    void leavingDoesNotWait();
};

void StreamWorkerTest::requestsDuringAFetchAreServedByOneMore()
{
    Gate gate;
    PullSource source([&](RawImage*, ScopedLock*) {
        gate.pass();
        return false;
    });
    StreamWorker worker(&source, [] {});
    worker.start();
    worker.request();
    QTRY_COMPARE(gate.arrived(), 1);
    for (int i = 0; i < 5; ++i)
        worker.request();
    gate.open();
    QTRY_COMPARE(gate.arrived(), 2);
    gate.openForGood();
    worker.requestAndWait();
    QCOMPARE(source.fetches.load(), 3);
}

void StreamWorkerTest::waitingRequestSeesAFetchThatBeganAfterIt()
{
    Gate gate;
    TestFrame frame(4, 4, Mono8);
    PullSource source([&](RawImage* image, ScopedLock*) {
        gate.pass();
        *image = frame.raw;
        return true;
    });
    StreamWorker worker(&source, [] {});
    worker.start();
    worker.request();
    QTRY_COMPARE(gate.arrived(), 1);
    auto waiting = std::async(std::launch::async, [&] {
        worker.requestAndWait();
        return worker.framesConverted();
    });
    gate.open(); // the fetch that was under way is not the one asked for
    QTRY_COMPARE(gate.arrived(), 2);
    QVERIFY(waiting.wait_for(std::chrono::seconds(0)) == std::future_status::timeout);
    gate.open();
    QCOMPARE(waiting.get(), std::uint64_t{2});
}

void StreamWorkerTest::clearDropsFramesUntilTheyAreAccepted()
{
    Gate gate;
    TestFrame frame(4, 4, Mono8);
    PullSource source([&](RawImage* image, ScopedLock*) {
        gate.pass();
        *image = frame.raw;
        return true;
    });
    StreamWorker worker(&source, [] {});
    worker.start();
    worker.request();
    QTRY_COMPARE(gate.arrived(), 1);
    worker.clear();
    gate.open();
    worker.requestAndWait(); // asks the source for nothing
    QCOMPARE(gate.arrived(), 1);
    QVERIFY(!worker.front());
    worker.acceptFrames();
    worker.request();
    QTRY_COMPARE(gate.arrived(), 2);
    worker.clear();
    worker.acceptFrames();
    gate.open(); // which has waited for its first frame since
    QTRY_VERIFY(worker.front());
}

// The pool is kept busy, so that the worker stands in the middle of its conversion while the settings change.
void StreamWorkerTest::changeDuringAConversionIsLeftToItsEnd()
{
    const TestFrame small(64, 64, BayerRG8, 9);
    const TestFrame large(2048, 2048, BayerRG8, 9); // for which the pool is needed
    PushSource source;
    StreamWorker worker(&source, [] {});
    worker.start();
    source.setNextFrame(small.raw);
    worker.requestAndWait();
    Gate busy;
    std::thread occupant([&] { CopyPool::shared()->run([&](std::size_t, std::size_t) { busy.pass(); }); });
    QTRY_VERIFY(busy.arrived() > 0);
    source.setNextFrame(large.raw);
    worker.request();
    QVector<unsigned int> palette = grayRamp();
    const auto dragPalette = [&] {
        palette[9] += 0x10000;
        return worker.setStage(std::make_shared<const ColorPalette>(palette));
    };
    const auto demosaic = [&](bool isOn) { return worker.setStage(std::make_shared<const MosaicFilter>(isOn)); };
    QTRY_COMPARE(dragPalette(), StreamWorker::Renewal::None);
    QCOMPARE(demosaic(true), StreamWorker::Renewal::None);
    QCOMPARE(worker.renewIfOwed(), StreamWorker::Renewal::None);
    busy.openForGood();
    occupant.join();
    QTRY_COMPARE(worker.framesConverted(), std::uint64_t{2});
    QCOMPARE(worker.front()->rendered.pixel(0, 0), palette[9]); // chosen before it was applied
    QCOMPARE(worker.front()->image.format(), QImage::Format_Indexed8);
    QCOMPARE(worker.renewIfOwed(), StreamWorker::Renewal::Converted);
    QCOMPARE(worker.front()->image.format(), QImage::Format_RGBX8888);
    QCOMPARE(worker.renewIfOwed(), StreamWorker::Renewal::None);
    const int locks = source.frameLocks; // for two frames and one change
    QCOMPARE(locks, 3);

    demosaic(false);
    source.setNextFrame(small.raw);
    worker.requestAndWait();
    Gate again;
    occupant = std::thread([&] { CopyPool::shared()->run([&](std::size_t, std::size_t) { again.pass(); }); });
    QTRY_VERIFY(again.arrived() > 0);
    source.setNextFrame(large.raw);
    worker.request();
    QTRY_COMPARE(dragPalette(), StreamWorker::Renewal::None);
    worker.clear();
    worker.acceptFrames();
    again.openForGood();
    occupant.join();
    worker.requestAndWait();
    QVERIFY(!worker.front()); // it was fetched before
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
    Gate gate;
    TestFrame frame(4, 4, Mono8);
    PullSource source([&](RawImage* image, ScopedLock*) {
        gate.pass();
        *image = frame.raw;
        return true;
    });
    StreamWorker worker(&source, [] { qFatal("a stopped stream has nothing to announce"); });
    worker.start();
    worker.request();
    QTRY_COMPARE(gate.arrived(), 1);
    std::thread stopping([&] { worker.stop(); });
    std::thread waiting([&] { worker.requestAndWait(); }); // does not wait for ever
    waiting.join();
    gate.openForGood();
    stopping.join();
    QVERIFY(!worker.front());
}

void StreamWorkerTest::leavingDoesNotWait()
{
    for (const bool isFetching : {true, false}) {
        const auto gate = std::make_shared<Gate>();
        auto blocked = std::make_shared<PullSource>([gate](RawImage*, ScopedLock*) { return gate->pass(), true; });
        const std::weak_ptr<PullSource> alive = blocked;
        auto announced = std::make_shared<std::atomic<int>>(0);
        auto worker = std::make_shared<StreamWorker>(blocked.get(), [announced] { ++*announced; });
        worker->start();
        if (isFetching)
            worker->request();
        QTRY_COMPARE(gate->arrived(), isFetching ? 1 : 0);
        const std::weak_ptr<StreamWorker> workerAlive = worker;
        StreamWorker::leave(std::move(worker), std::move(blocked));
        QCOMPARE(alive.expired(), !isFetching);
        if (isFetching)
            gate->openForGood();
        QTRY_VERIFY(alive.expired() && workerAlive.expired());
        QCOMPARE(announced->load(), 0);
    }
}

QTEST_GUILESS_MAIN(StreamWorkerTest) // there may be no screens any more when a frame comes
#include "StreamWorkerTest.moc"
