// SPDX-License-Identifier: MIT
// Tests that pixel memory is recycled when, and only when, nobody refers to it.
#include "pipeline/frames/PixelBlocks.h"

#include <QtTest/QtTest>

#include <algorithm>
#include <atomic>
#include <thread>

using namespace Vistrel;

namespace {

constexpr int width = 8;
constexpr int height = 6;
constexpr std::size_t size = 4 * width * height;

PixelBlock take(PixelBlocks& blocks, std::uint8_t value)
{
    PixelBlock block = blocks.take(size);
    std::fill(block->begin(), block->end(), value);
    return block;
}

bool isFilled(const PixelBlock& block, std::uint8_t value)
{
    return std::all_of(block->begin(), block->end(), [value](std::uint8_t byte) { return byte == value; });
}

QImage imageOf(const PixelBlock& block)
{
    return imageOver(block, QSize(width, height), QImage::Format_RGB32);
}

} // namespace

class PixelBlocksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void freedBlocksAreHandedOutAgain();
    void threadsNeverShareABlock();
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
}

void PixelBlocksTest::threadsNeverShareABlock()
{
    PixelBlocks blocks;
    std::atomic<bool> disturbed{false};
    const auto hammer = [&](std::uint8_t tag) {
        std::vector<QImage> shown(3);
        for (std::size_t round = 0; round < 2000; ++round) {
            QImage& slot = shown[round % shown.size()];
            if (!slot.isNull() && slot.constBits()[round % size] != tag)
                disturbed = true;
            const PixelBlock block = take(blocks, tag);
            if (round % 5 != 0)
                slot = imageOf(block);
            blocks.take(2 * size)->front() = tag; // in between, on the list
            if (!isFilled(block, tag))
                disturbed = true;
        }
    };
    std::thread first(hammer, std::uint8_t{1});
    std::thread second(hammer, std::uint8_t{2});
    first.join();
    second.join();
    QVERIFY(!disturbed);

    PixelBlock block = blocks.take(3 * size);
    const std::uint8_t* const address = block->data();
    std::thread([last = std::move(block)]() mutable { last.reset(); }).join();
    QVERIFY(blocks.take(3 * size)->data() == address);
}

QTEST_MAIN(PixelBlocksTest)
#include "PixelBlocksTest.moc"
