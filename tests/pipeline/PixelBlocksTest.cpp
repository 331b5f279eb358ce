// SPDX-License-Identifier: MIT
// Tests that pixel memory is recycled when, and only when, nobody refers to it.
#include "pipeline/frames/PixelBlocks.h"

#include <QtTest/QtTest>

#include <thread>

using namespace Vistrel;

namespace {

constexpr std::size_t size = 192;

} // namespace

class PixelBlocksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void freedBlocksAreHandedOutAgain();
};

void PixelBlocksTest::freedBlocksAreHandedOutAgain()
{
    PixelBlocks blocks;
    PixelBlock block = blocks.take(size);
    const std::uint8_t* const address = block->data();
    QCOMPARE(reinterpret_cast<std::uintptr_t>(address) % 64, std::uintptr_t{0});
    QVERIFY(blocks.take(size)->data() != address);
    block.reset();
    block = blocks.take(size);
    QVERIFY(block->size() == size && block->data() == address);
    const PixelBlock other = blocks.take(size);
    QVERIFY(other->data() != address);
    block.reset();
    const PixelBlock larger = blocks.take(size + 1);
    QVERIFY(larger->size() == size + 1 && larger->data() != other->data());
    QCOMPARE(blocks.take(size)->size(), size);

    // What is referred to at a release is freed later. The system gives out such memory anew as zeros.
    constexpr std::size_t large = std::size_t{64} << 20;
    block = blocks.take(large);
    (*block)[large / 2] = 1;
    blocks.release();
    block.reset();
    QVERIFY((*blocks.take(large))[large / 2] != 1);

    block = blocks.take(3 * size);
    const std::uint8_t* const last = block->data();
    std::thread([block = std::move(block)]() mutable { block.reset(); }).join();
    QVERIFY(blocks.take(3 * size)->data() == last);
}

QTEST_MAIN(PixelBlocksTest)
#include "PixelBlocksTest.moc"
