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
};

void ColorTablesTest::entries()
{
    // The last one but one is the first number of the generator's published sequence, 3499211612.
    const std::tuple<ColorTable, int, unsigned int> entries[] = {
        {ColorTable::Gray, 200, 0xFFC8C8C8},   {ColorTable::Gray2x, 127, 0xFFFEFEFE},
        {ColorTable::Gray2x, 128, 0xFFFFFFFF}, {ColorTable::GrayInverse, 1, 0xFFFEFEFE},
        {ColorTable::Sine, 64, 0xFFFEFEFE},    {ColorTable::Sine, 255, 0xFF838383},
        {ColorTable::Cosine, 127, 0xFF010101}, {ColorTable::Contours, 33, 0xFF210842},
        {ColorTable::Random, 0, 0xFFEEF65C},   {static_cast<ColorTable>(8), 0, 0},
    };
    for (const auto& [table, level, color] : entries)
        QCOMPARE(makeColorTable(table, {}, 5489).value(level), color);

    const auto rainbow = [](const RainbowParameters& parameters, int level) {
        return makeColorTable(ColorTable::Rainbow, parameters, 0)[level];
    };
    const double pi = 3.141592653589793;
    const RainbowParameters phases{4, 0, pi / 2, -pi / 2, 100.5, 100};
    QCOMPARE(rainbow(phases, 0), 0xFF64C800); // 100, 200.5 and below 0
    QCOMPARE(rainbow(phases, 1), 0xFFC86464);
    QCOMPARE(rainbow({256, 0, 0, 0, 0, 300}, 255), 0xFFFFFFFF);
    QCOMPARE(rainbow({0, 0, 0, 0, 100, 128}, 1), 0xFF000000); // no period
}

QTEST_APPLESS_MAIN(ColorTablesTest)
#include "ColorTablesTest.moc"
