// SPDX-License-Identifier: MIT
// Tests where an image lies in a view, without any window.
#include "widgets/SurfaceGeometry.h"

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
    void offsetIsClamped();
    void visiblePart();
    void pixelsOfTheView();
};

void SurfaceGeometryTest::levelsMakeOneGrid()
{
    QCOMPARE(SurfaceGeometry::levelOf(smallest), -40);
    for (const double scaling : {notANumber, -infinity, 0.0})
        QCOMPARE(SurfaceGeometry::enforceScalingRatio(scaling), smallest);
    QCOMPARE(SurfaceGeometry::enforceScalingRatio(infinity), largest);
    QCOMPARE(placed({}, {}, 1e9).scaling(), largest);
    for (const double part : {-0.499, 0.499})
        QCOMPARE(SurfaceGeometry::enforceScalingRatio(std::pow(1.125, 7 + part)), std::pow(1.125, 7));
}

void SurfaceGeometryTest::offsetIsClamped()
{
    const auto check = [](const QSize& image, const QPointF& wanted, const QPointF& expected) {
        SurfaceGeometry geometry = placed(image, {400, 300}, 2);
        QVERIFY(geometry.setOffset(wanted));
        QCOMPARE(geometry.storedOffset(), expected);
    };
    check({1000, 800}, {250.5, 99.25}, {250.5, 99.25});
    check({1000, 800}, {-5, 1e9}, {0, 1300});
    check({1000, 800}, {infinity, -infinity}, {1600, 0});
    check({1000, 800}, {notANumber, 20}, {0, 20});
    check({100, 800}, {10, 10}, {0, 10}); // smaller than the view along one axis
    check({}, {1e9, 2e9}, {1e9, 2e9});    // no image: no end
}

void SurfaceGeometryTest::visiblePart()
{
    const auto check = [](const QSize& view, double scaling, const QPointF& offset, const QRectF& scaled,
                          const QRectF& visible, const QPoint& firstPixel, const QPoint& lastPixel) {
        const SurfaceGeometry geometry = placed({100, 50}, view, scaling, offset);
        QCOMPARE(geometry.scaledRect(), scaled);
        QCOMPARE(geometry.visibleImageRectF(), visible);
        QCOMPARE(geometry.visibleImageRect(), QRect(firstPixel, lastPixel));
    };
    check({400, 300}, 2, {}, {100, 100, 200, 100}, {0, 0, 100, 50}, {0, 0}, {101, 51});
    check({80, 60}, 4, {41, 19}, {-41, -19, 400, 200}, {10.25, 4.75, 20, 15}, {10, 4}, {31, 20});
    check({80, 60}, 4, {999, 999}, {-320, -140, 400, 200}, {80, 35, 20, 15}, {80, 35}, {101, 51});

    QVERIFY(placed({}, {80, 60}, 4).visibleImageRectF().isEmpty());
    QVERIFY(placed({100, 50}, {0, 0}, 4).visibleImageRectF().isEmpty());
}

void SurfaceGeometryTest::pixelsOfTheView()
{
    const SurfaceGeometry scrolled = placed({100, 50}, {80, 60}, 4, {41, 19});
    QCOMPARE(scrolled.pixelAt({0, 0}), QPoint(10, 4));
    QCOMPARE(scrolled.pixelAt({2, 1}), QPoint(10, 5));
    QCOMPARE(scrolled.pixelAt({3, -1}), QPoint(-1, -1));
    QCOMPARE(scrolled.viewPoint({10, 5}), QPointF(-1, 1));
    QCOMPARE(scrolled.pixelsIn({0, 2, 4, 3}, {100, 50}), QRect(QPoint(10, 5), QPoint(11, 6)));
    QCOMPARE(scrolled.pixelsIn({0, 0, 80, 60}, {12, 50}), QRect(QPoint(10, 4), QPoint(11, 19)));
    QVERIFY(scrolled.pixelsIn({0, 0, 80, 60}, {10, 50}).isEmpty());
    QCOMPARE(scrolled.sampledRow(0), 4);
    QCOMPARE(placed({100, 50}, {80, 60}, 1, {10.75, 0}).sampledColumn(0), 11); // its centre, not its edge
    QCOMPARE(placed({100, 50}, {80, 60}, 1, {10.5, 0}).sampledColumn(0), 10);  // on a border: the former

    const SurfaceGeometry centred = placed({5, 3}, {20, 20}, 2.5);
    QCOMPARE(centred.pixelAt({3, 6}), QPoint(-1, -1));
    QCOMPARE(centred.sampledRect(), QRect(QPoint(4, 6), QPoint(15, 13)));
    QCOMPARE(centred.sampledColumn(15), 4);
}

QTEST_GUILESS_MAIN(SurfaceGeometryTest)
#include "SurfaceGeometryTest.moc"
