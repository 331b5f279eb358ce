// SPDX-License-Identifier: MIT
// Tests that jobs run on every participant, one run at a time, and that exceptions come through.
#include "pipeline/frames/CopyPool.h"

#include <QtTest/QtTest>

#include <atomic>
#include <stdexcept>
#include <thread>

using namespace Vistrel;

class CopyPoolTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsDoNotOverlap();
    void exceptionsReachTheCaller();
};

void CopyPoolTest::runsDoNotOverlap()
{
    constexpr std::size_t participants = 3;
    CopyPool pool(participants);
    std::atomic<int> inside[3] = {};
    std::atomic<bool> overlapped{false};
    const auto call = [&](std::size_t caller) {
        for (int run = 0; run < 200; ++run) {
            std::atomic<std::size_t> arrived{0};
            pool.run([&](std::size_t, std::size_t) {
                ++inside[caller];
                ++arrived;
                while (arrived < participants) // all meet inside: another run would have every occasion to begin
                    std::this_thread::yield();
                if (inside[(caller + 1) % 3] != 0 || inside[(caller + 2) % 3] != 0)
                    overlapped = true;
                --inside[caller];
            });
        }
    };
    std::thread first(call, 1);
    std::thread second(call, 2);
    call(0);
    first.join();
    second.join();
    QVERIFY(!overlapped);
}

// Of the calling thread, of a worker, of everybody.
void CopyPoolTest::exceptionsReachTheCaller()
{
    constexpr int participants = 3;
    CopyPool pool(participants);
    for (const int thrower : {0, 2, -1}) {
        std::atomic<int> begun{0};
        std::atomic<int> returned{0};
        QVERIFY_EXCEPTION_THROWN(pool.run([&](std::size_t participant, std::size_t) {
            ++begun;
            while (begun < participants)
                std::this_thread::yield();
            if (thrower < 0 || participant == static_cast<std::size_t>(thrower))
                throw std::runtime_error("no rows today");
            ++returned;
        }),
                                 std::runtime_error);
        QCOMPARE(returned.load(), thrower < 0 ? 0 : participants - 1);
        std::atomic<int> calls{0};
        pool.run([&](std::size_t, std::size_t) { ++calls; });
        QCOMPARE(calls.load(), participants);
    }
}

QTEST_GUILESS_MAIN(CopyPoolTest)
#include "CopyPoolTest.moc"
