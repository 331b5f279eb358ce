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
    void pixelsOfTheView();
    void oneMapForAll();
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
        QCOMPARE(geometry.sampledRect().isEmpty(), image.isEmpty());
    };
    check({1000, 800}, {250.5, 99.25}, {250.5, 99.25});
    check({1000, 800}, {-5, 1e9}, {0, 1300});
    check({1000, 800}, {infinity, -infinity}, {1600, 0});
    check({1000, 800}, {notANumber, 20}, {0, 20});
    check({100, 800}, {10, 10}, {0, 10});  // smaller than the view along one axis
    check({}, {1e9, 1e300}, {1e9, 1e300}); // no image: no end
}

void SurfaceGeometryTest::pixelsOfTheView()
{
    const SurfaceGeometry scrolled = placed({100, 50}, {80, 60}, 4, {41, 19});
    QCOMPARE(scrolled.pixelAt({0, 0}), QPoint(10, 4));
    QCOMPARE(scrolled.pixelAt({2, 1}), QPoint(10, 5));
    QCOMPARE(scrolled.pixelAt({3, -1}), QPoint(-1, -1));
    QCOMPARE(scrolled.viewPoint({10, 5}), QPointF(-1, 1));
    QCOMPARE(scrolled.visibleImageRectF(), QRectF(10.25, 4.75, 20, 15));
    QCOMPARE(scrolled.visibleImageRect(), QRect(QPoint(10, 4), QPoint(31, 20)));
    QCOMPARE(placed({100, 50}, {400, 80}, 2, {9, 10}).visibleImageRectF(), QRectF(0, 5, 100, 40));
    QCOMPARE(scrolled.pixelsIn({0, 2, 4, 3}), QRect(QPoint(10, 5), QPoint(11, 5)));
    QCOMPARE(scrolled.pixelsIn({0, 0, 80, 60}), QRect(QPoint(10, 4), QPoint(30, 19)));
    QVERIFY(placed({5, 3}, {20, 20}, 2.5).pixelsIn({0, 0, 3, 20}).isEmpty());
}

// Each device pixel shows, and is read as, the pixel that contains its corner, and belongs to that pixel's cell alone.
void SurfaceGeometryTest::oneMapForAll()
{
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        for (double scaling = smallest; scaling < largest; scaling *= 1.37) {
            for (const double offset : {0.0, 7.3, 1e9}) {
                SurfaceGeometry geometry = placed({30001, 9700}, {641, 479}, scaling, {offset, offset / 3});
                for (const double corner : {0.0, 0.5, 17.25}) {
                    geometry.setGrid(ratio, {corner * ratio, 0});
                    const QRect all = geometry.sampledRect();
                    for (int x = all.left() - 3; x <= all.right() + 3; ++x) {
                        const int column = geometry.sampledColumn(x);
                        const QPointF first(geometry.viewPoint({column + 0.0, 0.0}).x() * ratio - 1e-6, 0);
                        QVERIFY(first.x() <= x && x < first.x() + scaling * ratio + 2e-6);
                        if (x >= 0 && x < 641 * ratio - 1)
                            QCOMPARE(all.contains(x, all.top()), column >= 0 && column < 30001);
                        const QRect cell = geometry.cellOf({column, 0});
                        QVERIFY(cell.left() <= x && x <= cell.right());
                        QCOMPARE(geometry.cellOf({column + 1, 0}).left(), cell.right() + 1);
                        const double position = (x + geometry.firstDevicePixel().x()) / ratio - corner;
                        if (position >= 0)
                            QCOMPARE(geometry.pixelAt({position, 0}).x(), column);
                    }
                }
            }
        }
    }
}

QTEST_GUILESS_MAIN(SurfaceGeometryTest)
#include "SurfaceGeometryTest.moc"
