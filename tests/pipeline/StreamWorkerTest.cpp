// SPDX-License-Identifier: MIT
// Tests the hand-shake between the stream's worker and those who ask it.
#include "pipeline/StreamWorker.h"
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
    void settingsChangedDuringAConversionHold();
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
void StreamWorkerTest::settingsChangedDuringAConversionHold()
{
    TestFrame frame(1024, 1024, RGB8); // so large that the pool is needed
    for (std::size_t i = 0; i < frame.pixels.size(); i += 3)
        frame.pixels[i] = 200; // blue, in the RGB order
    for (int round = 0; round < 20; ++round) {
        Gate fetched;
        PullSource source([&](RawImage* image, ScopedLock*) {
            *image = frame.raw;
            fetched.pass();
            return true;
        });
        StreamWorker worker(&source, [] {});
        worker.start();
        Gate busy;
        std::thread occupant([&] { CopyPool::shared()->run([&](std::size_t, std::size_t) { busy.pass(); }); });
        QTRY_VERIFY(busy.arrived() > 0);
        worker.request();
        fetched.open();
        QTRY_COMPARE(fetched.arrived(), 1);
        worker.changeSettings([](ConversionSettings& settings) { settings.rgbOrderReversed = true; });
        busy.openForGood();
        occupant.join();
        QTRY_VERIFY(worker.front());
        QCOMPARE(worker.front()->image.pixelColor(3, 3), QColor(200, 0, 0));
        QCOMPARE(worker.front()->effective.format, BGR8);
    }
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
