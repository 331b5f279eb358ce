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
    void scalingKeepsTheTopLeftPoint();
    void fitting();
    void offsetIsClamped();
    void visiblePart();
};

void SurfaceGeometryTest::levelsMakeOneGrid()
{
    for (const double scaling : {notANumber, -infinity, 0.0})
        QCOMPARE(SurfaceGeometry::enforceScalingRatio(scaling), smallest);
    QCOMPARE(SurfaceGeometry::enforceScalingRatio(infinity), largest);
    for (int k = -40; k <= 40; ++k) {
        const double level = SurfaceGeometry::enforceScalingRatio(std::pow(1.125, k));
        QVERIFY2(std::abs(level / std::pow(1.125, k) - 1) < 1e-14, QByteArray::number(k));
        for (const double part : {-0.499, 0.499}) {
            const double near = SurfaceGeometry::enforceScalingRatio(std::pow(1.125, k + part));
            QVERIFY2(near == level, QByteArray::number(k + part));
        }
    }
}

void SurfaceGeometryTest::scalingKeepsTheTopLeftPoint()
{
    const auto check = [](const QPointF& offset, double scaling, const QPointF& expected) {
        SurfaceGeometry geometry = placed({1000, 800}, {400, 300}, 2, offset);
        QVERIFY(geometry.setScaling(scaling));
        QCOMPARE(geometry.storedOffset(), expected);
    };
    check({300, 200}, 3, {450, 300});
    check({1600, 1300}, 1, {600, 500});
    check({1600, 1300}, 0.375, {0, 0}); // one side gets smaller than the view
    check({300, 200}, 1e9, QPointF(150, 100) * largest);
}

void SurfaceGeometryTest::fitting()
{
    const auto check = [](const QSize& image, const QSize& view, double scaling, const QPointF& offset) {
        SurfaceGeometry geometry;
        geometry.setImageSize(image);
        geometry.setViewSize(view);
        QVERIFY(!geometry.fit());
        QCOMPARE(geometry.scaling(), scaling);
        QCOMPARE(geometry.scaledOffset(), offset);
    };
    constexpr int most = std::numeric_limits<int>::max();
    check({100, 50}, {400, 400}, 1, {-150, -175});
    check({800, 400}, {400, 400}, 0.5, {0, -100});
    check({400, 1600}, {400, 400}, 0.25, {-150, 0});
    check({401, 10}, {400, 400}, 400 / 401.0, {0, -195.0124688279302});
    check({1000000, 1}, {400, 400}, smallest, {0, -199.99550355685432});
    check({most, most}, {400, 400}, smallest, {0, 0});
    check({800, 400}, {0, 400}, 1, {0, 0});

    SurfaceGeometry scrolled = placed({800, 400}, {400, 300}, 3, {1e9, 1e9});
    QVERIFY(!scrolled.fit()); // it is off
    QCOMPARE(scrolled.scaling(), 3.0);
    scrolled.setScaleToFit(true);
    QVERIFY(scrolled.fit());
    QCOMPARE(scrolled.scaling(), 0.5);
    QCOMPARE(scrolled.storedOffset(), QPointF(0, 0));
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
    check({80, 400}, 4, {40, 20}, {-40, 100, 400, 200}, {10, 0, 20, 50}, {10, 0}, {31, 51});
    check({2, 2}, 64, {64, 64}, {-64, -64, 6400, 3200}, {1, 1, 0.03125, 0.03125}, {1, 1}, {2, 2});

    QCOMPARE(placed({}, {80, 60}, 4).scaledSize(), QSizeF(0, 0));
    QVERIFY(placed({}, {80, 60}, 4).visibleImageRectF().isEmpty());
    QVERIFY(placed({100, 50}, {0, 0}, 4).visibleImageRectF().isEmpty());
}

QTEST_GUILESS_MAIN(SurfaceGeometryTest)
#include "SurfaceGeometryTest.moc"
