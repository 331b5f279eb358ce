// SPDX-License-Identifier: MIT
// Tests the palettes at the levels where a formula would slip.
#include "pipeline/pixels/ColorTables.h"

#include <QtTest/QTest>

#include <tuple>

using namespace Vistrel;

class ColorTablesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entries();
    void random();
};

void ColorTablesTest::entries()
{
    const double pi = 3.141592653589793;
    const RainbowParameters phases{4, 0, pi / 2, -pi / 2, 100.5, 100}; // 100, 200.5 and below 0 at level 0
    const std::tuple<ColorTable, int, unsigned int, RainbowParameters> entries[] = {
        {ColorTable::Gray, 200, 0xFFC8C8C8, {}},
        {ColorTable::Gray2x, 127, 0xFFFEFEFE, {}},
        {ColorTable::Gray2x, 128, 0xFFFFFFFF, {}},
        {ColorTable::GrayInverse, 1, 0xFFFEFEFE, {}},
        {ColorTable::Sine, 64, 0xFFFEFEFE, {}},
        {ColorTable::Sine, 255, 0xFF838383, {}},
        {ColorTable::Cosine, 127, 0xFF010101, {}},
        {ColorTable::Contours, 33, 0xFF210842, {}},
        {ColorTable::Rainbow, 0, 0xFF64C800, phases},
        {ColorTable::Rainbow, 1, 0xFFC86464, phases},
        {ColorTable::Rainbow, 255, 0xFFFFFFFF, {256, 0, 0, 0, 0, 300}},
        {ColorTable::Rainbow, 1, 0xFF000000, {0, 0, 0, 0, 100, 128}}};
    for (const auto& [table, level, color, rainbow] : entries)
        QCOMPARE(makeColorTable(table, rainbow, 0).value(level), color);
}

void ColorTablesTest::random()
{
    const auto table = [](std::uint32_t seed) { return makeColorTable(ColorTable::Random, {}, seed); };
    // The generator's published sequence: 3499211612, 581869302, 3890346734.
    QCOMPARE(table(5489).constFirst(), 0xFFEEF65C);
    QCOMPARE(table(7), table(7));
    QVERIFY(makeColorTable(static_cast<ColorTable>(8), {}, 0).isEmpty());
}

QTEST_APPLESS_MAIN(ColorTablesTest)
#include "ColorTablesTest.moc"
