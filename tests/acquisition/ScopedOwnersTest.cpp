// SPDX-License-Identifier: MIT
// Tests the single owners of locks and of sources: who owns what, and that it is destroyed exactly once.
#include "support/FakeSources.h"

#include <Vistrel/ScopedAcquisitionInterface.h>

#include <QtTest/QtTest>

#include <utility>

using namespace Vistrel;

namespace {

class CountedLock : public AbstractLock
{
public:
    explicit CountedLock(int& destroyed) : m_destroyed(destroyed) {}
    ~CountedLock() override { ++m_destroyed; }

private:
    int& m_destroyed;
};

class CountedSource : public PushSource
{
public:
    explicit CountedSource(int& destroyed) : m_destroyed(destroyed) {}
    ~CountedSource() override { ++m_destroyed; }

private:
    int& m_destroyed;
};

template <typename Owner, typename Owned>
void ownsAndPassesOn()
{
    static_assert(!std::is_copy_constructible_v<Owner> && !std::is_copy_assignable_v<Owner>);
    static_assert(std::is_nothrow_move_constructible_v<Owner>);
    int first = 0;
    int second = 0;
    int third = 0;
    {
        Owner empty;
        QVERIFY(!empty && !bool(empty));
        QVERIFY(!Owner(nullptr));

        Owner owner(new Owned(first));
        QVERIFY(bool(owner) && !!owner);
        Owner moved(std::move(owner));
        QVERIFY(!owner && bool(moved));
        QCOMPARE(first, 0);

        Owner other(new Owned(second));
        moved.take(std::move(other));
        QVERIFY(!other && bool(moved));
        QCOMPARE(first, 1);
        QCOMPARE(second, 0);

        Owner& same = moved;
        moved.take(std::move(same));
        QVERIFY(bool(moved));
        QCOMPARE(second, 0);

        moved.reset(new Owned(third));
        QVERIFY(bool(moved));
        QCOMPARE(second, 1);
        QCOMPARE(third, 0);

        Owner emptied(new Owned(first));
        emptied.take(std::move(empty));
        QVERIFY(!emptied);
        QCOMPARE(first, 2);
        emptied.reset(nullptr);
    }
    QCOMPARE(first, 2);
    QCOMPARE(second, 1);
    QCOMPARE(third, 1);
}

} // namespace

class ScopedOwnersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void locks() { ownsAndPassesOn<ScopedLock, CountedLock>(); }
    void sources() { ownsAndPassesOn<ScopedAcquisitionInterface, CountedSource>(); }
    void locksAreAssigned();
    void sourcesAreReached();
};

void ScopedOwnersTest::locksAreAssigned()
{
    int first = 0;
    int second = 0;
    ScopedLock lock(new CountedLock(first));
    ScopedLock other(new CountedLock(second));
    QVERIFY(lock.good() && !lock.bad());
    lock = std::move(other);
    QVERIFY(lock.good() && other.bad() && !other.good());
    QCOMPARE(first, 1);
    ScopedLock& same = lock;
    lock = std::move(same);
    QVERIFY(lock.good());
    QCOMPARE(second, 0);
    lock = ScopedLock();
    QVERIFY(lock.bad());
    QCOMPARE(second, 1);
}

void ScopedOwnersTest::sourcesAreReached()
{
    int destroyed = 0;
    auto* const source = new CountedSource(destroyed);
    ScopedAcquisitionInterface owner(source);
    QCOMPARE(owner.get(), source);
    QCOMPARE(&*owner, source);
    source->setHasTrigger(true);
    QVERIFY(owner->hasTrigger());
    owner.reset(nullptr);
    QCOMPARE(destroyed, 1);
    QVERIFY(!owner.get());
}

QTEST_GUILESS_MAIN(ScopedOwnersTest)
#include "ScopedOwnersTest.moc"
