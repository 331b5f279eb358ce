// SPDX-License-Identifier: MIT
// Tests where an image lies in a view, without any window.
#include "widgets/SurfaceGeometry.h"

#include "widgets/PixelOverlay.h"

#include <QtTest/QTest>

#include <cmath>
#include <limits>

using namespace Vistrel;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double largest = 111.19900414606003;
constexpr double smallest = 0.008992886291378102;

SurfaceGeometry placed(const QSize& image, const QSize& view, double scaling = 1, const QPointF& offset = {})
{
    SurfaceGeometry geometry;
    geometry.setImageSize(image);
    geometry.setViewSize(view);
    geometry.setScaling(scaling);
    geometry.setOffset(offset);
    return geometry;
}

} // namespace

class SurfaceGeometryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void levelsMakeOneGrid();
    void scalingKeepsTheTopLeftPoint_data();
    void scalingKeepsTheTopLeftPoint();
    void fitting_data();
    void fitting();
    void offsetIsClamped_data();
    void offsetIsClamped();
    void visiblePart_data();
    void visiblePart();
};

void SurfaceGeometryTest::levelsMakeOneGrid()
{
    for (int k = -40; k <= 40; ++k) {
        const double level = SurfaceGeometry::enforceScalingRatio(std::pow(1.125, k));
        QVERIFY2(std::abs(level / std::pow(1.125, k) - 1) < 1e-14, QByteArray::number(k));
        for (const double part : {-0.499, -0.25, 0.25, 0.499}) {
            const double near = SurfaceGeometry::enforceScalingRatio(std::pow(1.125, k + part));
            QVERIFY2(near == level, QByteArray::number(k + part));
        }
    }
}

void SurfaceGeometryTest::scalingKeepsTheTopLeftPoint_data()
{
    QTest::addColumn<QPointF>("offset");
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<QPointF>("expected");
    QTest::newRow("in") << QPointF(300, 200) << 2.0 << 3.0 << QPointF(450, 300);
    QTest::newRow("out") << QPointF(300, 200) << 2.0 << 1.0 << QPointF(150, 100);
    QTest::newRow("out at the end") << QPointF(1600, 1300) << 2.0 << 1.0 << QPointF(600, 500);
    QTest::newRow("out until it is smaller than the view") << QPointF(1600, 1300) << 2.0 << 0.25 << QPointF(0, 0);
    QTest::newRow("out until one side is") << QPointF(1600, 1300) << 2.0 << 0.375 << QPointF(0, 0);
    QTest::newRow("the same") << QPointF(300, 200) << 2.0 << 2.0 << QPointF(300, 200);
    QTest::newRow("above the limit") << QPointF(300, 200) << 2.0 << 1e9 << QPointF(150, 100) * largest;
}

void SurfaceGeometryTest::scalingKeepsTheTopLeftPoint()
{
    QFETCH(QPointF, offset);
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(QPointF, expected);
    SurfaceGeometry geometry = placed({1000, 800}, {400, 300}, from, offset);
    QCOMPARE(geometry.setScaling(to), expected != offset);
    QCOMPARE(geometry.storedOffset(), expected);
}

void SurfaceGeometryTest::fitting_data()
{
    QTest::addColumn<QSize>("image");
    QTest::addColumn<QSize>("view");
    QTest::addColumn<double>("scaling");
    QTest::addColumn<QPointF>("offset");
    constexpr int most = std::numeric_limits<int>::max();
    QTest::newRow("small: never enlarged") << QSize(100, 50) << QSize(400, 400) << 1.0 << QPointF(-150, -175);
    QTest::newRow("same size") << QSize(400, 400) << QSize(400, 400) << 1.0 << QPointF(0, 0);
    QTest::newRow("wide") << QSize(800, 400) << QSize(400, 400) << 0.5 << QPointF(0, -100);
    QTest::newRow("tall") << QSize(400, 1600) << QSize(400, 400) << 0.25 << QPointF(-150, 0);
    QTest::newRow("not on a level") << QSize(401, 10) << QSize(400, 400) << 400 / 401.0
                                    << QPointF(0, -195.0124688279302);
    QTest::newRow("below the limit") << QSize(1000000, 1) << QSize(400, 400) << smallest
                                     << QPointF(0, -199.99550355685432);
    QTest::newRow("largest") << QSize(most, most) << QSize(400, 400) << smallest << QPointF(0, 0);
    QTest::newRow("no width") << QSize(800, 400) << QSize(0, 400) << 1.0 << QPointF(0, 0);
    QTest::newRow("no view") << QSize(800, 400) << QSize(-1, -1) << 1.0 << QPointF(0, 0);
}

void SurfaceGeometryTest::fitting()
{
    QFETCH(QSize, image);
    QFETCH(QSize, view);
    QFETCH(double, scaling);
    SurfaceGeometry geometry;
    geometry.setImageSize(image);
    geometry.setViewSize(view);
    QVERIFY(!geometry.fit());
    QCOMPARE(geometry.scaling(), scaling);
    QTEST(geometry.scaledOffset(), "offset");

    SurfaceGeometry scrolled = placed(image, view, 3, {1e9, 1e9});
    const SurfaceGeometry before = scrolled;
    QVERIFY(!scrolled.fit()); // it is off
    QCOMPARE(scrolled.scaling(), before.scaling());
    QCOMPARE(scrolled.storedOffset(), before.storedOffset());
    scrolled.setScaleToFit(true);
    scrolled.fit();
    QCOMPARE(scrolled.scaling(), scaling);
    QVERIFY(scrolled.storedOffset().x() <= std::max(0.0, image.width() * scaling - view.width()));
    QVERIFY(scrolled.storedOffset().y() <= std::max(0.0, image.height() * scaling - view.height()));
}

void SurfaceGeometryTest::offsetIsClamped_data()
{
    QTest::addColumn<QSize>("image");
    QTest::addColumn<QPointF>("wanted");
    QTest::addColumn<QPointF>("expected");
    const QSize none;
    const QSize large(1000, 800);
    QTest::newRow("within") << large << QPointF(250.5, 99.25) << QPointF(250.5, 99.25);
    QTest::newRow("outside") << large << QPointF(-5, 1e9) << QPointF(0, 1300);
    QTest::newRow("other side") << large << QPointF(1e9, -1e9) << QPointF(1600, 0);
    QTest::newRow("infinite") << large << QPointF(infinity, -infinity) << QPointF(1600, 0);
    QTest::newRow("not a number") << large << QPointF(notANumber, 20) << QPointF(0, 20);
    QTest::newRow("smaller image") << QSize(200, 150) << QPointF(10, 10) << QPointF(0, 0);
    QTest::newRow("one axis smaller") << QSize(100, 800) << QPointF(10, 10) << QPointF(0, 10);
    QTest::newRow("no image: no end") << none << QPointF(-5, 1e9) << QPointF(0, 1e9);
}

void SurfaceGeometryTest::offsetIsClamped()
{
    QFETCH(QSize, image);
    QFETCH(QPointF, wanted);
    QFETCH(QPointF, expected);
    SurfaceGeometry geometry = placed(image, {400, 300}, 2);
    QCOMPARE(geometry.setOffset(wanted), !expected.isNull());
    QCOMPARE(geometry.storedOffset(), expected);
}

void SurfaceGeometryTest::visiblePart_data()
{
    QTest::addColumn<QSize>("view");
    QTest::addColumn<double>("scaling");
    QTest::addColumn<QPointF>("offset");
    QTest::addColumn<QRectF>("scaled");
    QTest::addColumn<QRectF>("visible");
    QTest::addColumn<QRect>("pixels");
    const auto row = [](const char* name, const QSize& view, double scaling, const QPointF& offset,
                        const QRectF& scaled, const QRectF& visible, const QPoint& first, const QPoint& last) {
        QTest::newRow(name) << view << scaling << offset << scaled << visible << QRect(first, last);
    };
    // The image has 100 x 50 pixels.
    row("centred", {400, 300}, 2, {}, {100, 100, 200, 100}, {0, 0, 100, 50}, {0, 0}, {101, 51});
    row("fills the view", {200, 100}, 2, {}, {0, 0, 200, 100}, {0, 0, 100, 50}, {0, 0}, {101, 51});
    row("scrolled", {80, 60}, 4, {40, 20}, {-40, -20, 400, 200}, {10, 5, 20, 15}, {10, 5}, {31, 21});
    row("scrolled by parts", {80, 60}, 4, {41, 19}, {-41, -19, 400, 200}, {10.25, 4.75, 20, 15}, {10, 4}, {31, 20});
    row("at the end", {80, 60}, 4, {999, 999}, {-320, -140, 400, 200}, {80, 35, 20, 15}, {80, 35}, {101, 51});
    row("centred along one axis", {80, 400}, 4, {40, 20}, {-40, 100, 400, 200}, {10, 0, 20, 50}, {10, 0}, {31, 51});
    row("a pixel larger than the view", {2, 2}, 64, {64, 64}, {-64, -64, 6400, 3200}, {1, 1, 0.03125, 0.03125}, {1, 1},
        {2, 2});
}

void SurfaceGeometryTest::visiblePart()
{
    QFETCH(QSize, view);
    QFETCH(double, scaling);
    QFETCH(QPointF, offset);
    const SurfaceGeometry geometry = placed({100, 50}, view, scaling, offset);
    QTEST(geometry.scaledRect(), "scaled");
    QCOMPARE(geometry.scaledSize(), geometry.scaledRect().size());
    QCOMPARE(geometry.scaledOffset(), -geometry.scaledRect().topLeft());
    QTEST(geometry.visibleImageRectF(), "visible");
    QTEST(geometry.visibleImageRect(), "pixels");

    QVERIFY(placed({}, view, scaling, offset).visibleImageRectF().isEmpty());
    QVERIFY(placed({100, 50}, {0, 0}, scaling, offset).visibleImageRectF().isEmpty());
}

QTEST_GUILESS_MAIN(SurfaceGeometryTest)
#include "SurfaceGeometryTest.moc"
