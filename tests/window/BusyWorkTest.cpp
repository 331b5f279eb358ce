// SPDX-License-Identifier: MIT
// Tests the queue of commands: their order, what is announced of them, and what is left when the queue goes first.
#include "window/BusyWork.h"

#include "support/FakeSources.h"

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <atomic>

using namespace Vistrel;

namespace {

QVector<int> resultsOf(const QSignalSpy& completed)
{
    QVector<int> results;
    for (const QVariantList& arguments : completed)
        results.append(int(arguments[0].value<BusyWorkResult>()));
    return results;
}

} // namespace

class BusyWorkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandsRunInOrderOneAtATime();
    void queueGoesBeforeItsCommand();
    void waitingCommandsAreDropped();
};

void BusyWorkTest::commandsRunInOrderOneAtATime()
{
    BusyWork work(nullptr);
    QSignalSpy completed(&work, &BusyWork::completed);
    Gate gate;
    std::atomic<int> running{0};
    std::vector<int> order; // of the worker's thread until all have been completed
    for (int i = 0; i < 3; ++i) {
        work.start("test", {}, [&, i] {
            const bool isAlone = ++running == 1;
            gate.pass();
            order.push_back(i);
            --running;
            return isAlone && i != 1;
        });
    }
    QVERIFY(work.isBusy());
    // A command that is asked for between the end of one and the next one's begin takes its turn.
    connect(&work, &BusyWork::completed, this, [&] {
        if (completed.size() == 1)
            work.start("test", {}, [&] { return order.push_back(3), true; });
    });
    gate.open();
    QTRY_COMPARE(completed.size(), 1);
    QTRY_COMPARE(gate.arrived(), 2);
    gate.open(2);
    QTRY_COMPARE(completed.size(), 4);
    QCOMPARE(order, (std::vector<int>{0, 1, 2, 3}));
    QCOMPARE(resultsOf(completed), (QVector<int>{0, 1, 0, 0}));
    QVERIFY(!work.isBusy());
}

void BusyWorkTest::queueGoesBeforeItsCommand()
{
    auto source = std::make_shared<int>(1);
    const std::weak_ptr<int> alive = source;
    auto gate = std::make_shared<Gate>();
    {
        BusyWork work(std::move(source));
        work.start("test", {}, [gate] { return gate->pass(), true; });
        work.start("test", {}, [gate] { return gate->pass(), true; });
        QTRY_COMPARE(gate->arrived(), 1);
    }
    QVERIFY(!alive.expired());
    gate->openForGood();
    QTRY_VERIFY(alive.expired());
    QCOMPARE(gate->arrived(), 1); // the second one never began
}

void BusyWorkTest::waitingCommandsAreDropped()
{
    BusyWork work(nullptr);
    QSignalSpy completed(&work, &BusyWork::completed);
    Gate gate;
    for (int i = 0; i < 3; ++i)
        work.start("test", {}, [&] { return gate.pass(), true; });
    work.abortWaiting();
    QCOMPARE(resultsOf(completed), (QVector<int>{2, 2}));
    QVERIFY(work.isBusy());
    gate.open(3);
    QTRY_COMPARE(completed.size(), 3);
    QCOMPARE(resultsOf(completed), (QVector<int>{2, 2, 0}));
    QCOMPARE(gate.arrived(), 1);
}

QTEST_GUILESS_MAIN(BusyWorkTest)
#include "BusyWorkTest.moc"
