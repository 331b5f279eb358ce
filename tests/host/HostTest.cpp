// SPDX-License-Identifier: MIT
// Tests what crosses the border of the shared library: exceptions and run-time types.
#include <Vistrel/Application.h>
#include <Vistrel/ImperativeAcquisitionInterface.h>

#include <QtTest/QtTest>

#include <stdexcept>
#include <string>

using namespace Vistrel;

class HostTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exceptionsAreCaughtByTheirType();
    void typesAreCheckedAtRunTime();
};

// The test program's own toolkit object is the reason.
void HostTest::exceptionsAreCaughtByTheirType()
{
    const char* const argv[] = {"host", nullptr};
    QVERIFY_EXCEPTION_THROWN(Application(1, argv), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(Application(2, argv), std::invalid_argument);
    QVERIFY(!Application::global());
}

void HostTest::typesAreCheckedAtRunTime()
{
    class Source : public ImperativeAcquisitionInterface
    {
        bool isSetup() const override { return true; }
        bool isRunning() const override { return true; }
    } source;
    BaseClass* const base = &source;
    QCOMPARE(dynamic_cast<AbstractAcquisitionInterface*>(base), &source);
    QCOMPARE(dynamic_cast<ImperativeAcquisitionInterface*>(base), &source);
    QVERIFY(!dynamic_cast<Application*>(base));

    // A lock that the library made, held by what the host made.
    source.setFramesLocked(true);
    ScopedLock lock = source.getFrameLock(RawImage{});
    QVERIFY(lock.good());
    ScopedLock moved;
    moved = std::move(lock);
    QVERIFY(lock.bad() && moved.good());
    moved.reset(nullptr);
    QVERIFY(source.framesLocked());
}

QTEST_GUILESS_MAIN(HostTest)
#include "HostTest.moc"
