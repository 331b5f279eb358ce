// SPDX-License-Identifier: MIT
// Tests the palettes at the levels where a formula would slip.
#include "pipeline/pixels/ColorTables.h"

#include <QtTest/QTest>

using namespace Vistrel;

Q_DECLARE_METATYPE(Vistrel::ColorTable)

class ColorTablesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entries_data();
    void entries();
    void rainbow();
    void random();
};

void ColorTablesTest::entries_data()
{
    QTest::addColumn<ColorTable>("table");
    QTest::addColumn<int>("level");
    QTest::addColumn<unsigned int>("color");
    QTest::newRow("gray") << ColorTable::Gray << 200 << 0xFFC8C8C8;
    QTest::newRow("twice, last slope") << ColorTable::Gray2x << 127 << 0xFFFEFEFE;
    QTest::newRow("twice, full") << ColorTable::Gray2x << 128 << 0xFFFFFFFF;
    QTest::newRow("inverse") << ColorTable::GrayInverse << 1 << 0xFFFEFEFE;
    QTest::newRow("sine, start") << ColorTable::Sine << 0 << 0xFF808080;
    QTest::newRow("sine, top") << ColorTable::Sine << 64 << 0xFFFEFEFE;
    QTest::newRow("sine, next period") << ColorTable::Sine << 255 << 0xFF838383;
    QTest::newRow("cosine, start") << ColorTable::Cosine << 0 << 0xFFFFFFFF;
    QTest::newRow("cosine, bottom") << ColorTable::Cosine << 127 << 0xFF010101;
    QTest::newRow("contours") << ColorTable::Contours << 33 << 0xFF210842;
    QTest::newRow("contours, last") << ColorTable::Contours << 255 << 0xFFFFF8FE;
}

void ColorTablesTest::entries()
{
    QFETCH(ColorTable, table);
    QFETCH(int, level);
    QFETCH(unsigned int, color);
    const QVector<unsigned int> made = makeColorTable(table, {}, 0);
    QCOMPARE(made.size(), 256);
    QCOMPARE(made[level], color);
}

void ColorTablesTest::rainbow()
{
    const auto table = [](const RainbowParameters& parameters) {
        return makeColorTable(ColorTable::Rainbow, parameters, 0);
    };
    QCOMPARE(table({256, 0, 0, 0, 0, 300}), QVector<unsigned int>(256, 0xFFFFFFFF));
    QCOMPARE(table({256, 0, 0, 0, 0, -5}), QVector<unsigned int>(256, 0xFF000000));
    QCOMPARE(table({0, 0, 0, 0, 100, 128})[1], 0xFF000000); // no period
    const double pi = 3.141592653589793;
    const QVector<unsigned int> phases = table({4, 0, pi / 2, -pi / 2, 100.5, 100});
    QCOMPARE(phases[0], 0xFF64C800); // 100, 200.5 and below 0
    QCOMPARE(phases[1] & 0xFFFF0000, 0xFFC80000);
}

void ColorTablesTest::random()
{
    const auto table = [](std::uint32_t seed) { return makeColorTable(ColorTable::Random, {}, seed); };
    // The generator's published sequence: 3499211612, 581869302, 3890346734.
    QCOMPARE(table(5489).constFirst(), 0xFFEEF65C);
    QCOMPARE(table(7), table(7));
    QVERIFY(table(7) != table(8));
    QVERIFY(makeColorTable(static_cast<ColorTable>(8), {}, 0).isEmpty());
}

QTEST_APPLESS_MAIN(ColorTablesTest)
#include "ColorTablesTest.moc"
