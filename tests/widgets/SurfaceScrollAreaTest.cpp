// SPDX-License-Identifier: MIT
// Tests moving and zooming the view, by events as the toolkit sends them, at any device pixel ratio.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QGesture>
#include <QtWidgets/QRubberBand>
#include <QtWidgets/QScrollBar>

#include <climits>
#include <cmath>
#include <functional>

using namespace Vistrel;

namespace {

struct ShownArea
{
    explicit ShownArea(const QSize& image = {600, 500})
    {
        area.resize(300, 200);
        host.show();
        surface->setPixmap(QPixmap(image));
        settle();
    }

    static void settle() { QCoreApplication::processEvents(); }

    QPointF imagePoint(const QPointF& position) const
    {
        return (surface->scaledOffset() + position) / surface->scaling();
    }
    QPointF centre() const { return imagePoint(QPointF(surface->width(), surface->height()) / 2); }

    // Rounds the position, as the toolkit does. Times are in ms.
    void wheel(const QPointF& position, const QPoint& turn, ulong time = 0)
    {
        const QPoint rounded = position.toPoint();
        QWheelEvent event(rounded, surface->mapToGlobal(rounded), {}, turn, Qt::NoButton, {}, Qt::NoScrollPhase, false);
        event.setTimestamp(time);
        event.ignore();
        QApplication::sendEvent(surface, &event);
        isConsumed = event.isAccepted();
    }

    // Rounds the position in the widget, as the toolkit does; that in the window is exact.
    void mouse(QEvent::Type type, const QPointF& position, Qt::MouseButtons buttons,
               Qt::MouseButton button = Qt::LeftButton)
    {
        QMouseEvent event(type, position.toPoint(), surface->mapTo(&host, QPoint(0, 0)) + position,
                          surface->mapToGlobal(QPoint(0, 0)) + position,
                          type == QEvent::MouseMove ? Qt::NoButton : button, buttons, Qt::NoModifier);
        QApplication::sendEvent(surface, &event);
    }

    QWidget host;
    SurfaceScrollArea area{&host};
    Surface* const surface = area.surface();
    bool isConsumed = false;
};

bool isNear(const QPointF& a, const QPointF& b)
{
    return (a - b).manhattanLength() < 1e-6;
}

} // namespace

class SurfaceScrollAreaTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wheelZoomsAStepANotch();
    void pinchZoomsSmoothly();
    void dragKeepsThePointUnderThePointer();
    void middleButtonDrawsARectangle();
    void backspaceGoesBackOverJumps();
    void resizesKeepTheCentre();
    void badNumbersMoveNothing();
    void activePixelIsUnderThePointer();
    void barsComeAndGo();
    void barsAndKeysMoveTheView();
};

void SurfaceScrollAreaTest::wheelZoomsAStepANotch()
{
    ShownArea shown({40000, 40000});
    const QPointF position(70.4, 30.6);
    shown.mouse(QEvent::MouseMove, position, Qt::NoButton);
    shown.area.setZoomTo(0, {-1, -1}); // the least zoom
    const QPointF point = shown.imagePoint(position);
    ulong time = 1000;
    const auto turn = [&](int turns, const QPoint& size) {
        const double before = shown.area.zoomScaling();
        for (int i = 0; i < turns; ++i)
            shown.wheel(position, size, time += 100);
        return qRound(std::log(shown.area.zoomScaling() / before) / std::log(1.125));
    };
    QCOMPARE(turn(1, {INT_MAX, 0}), 0);
    QVERIFY(!shown.isConsumed);
    QCOMPARE(turn(2, {0, INT_MAX}), 2);
    time += 200;
    QCOMPARE(turn(1, {7, 15}), 1); // alone
    QCOMPARE(turn(14, {7, 15}), 0);
    QVERIFY(shown.isConsumed);
    QCOMPARE(turn(1, {7, 15}), 1); // 240 in all
    QCOMPARE(turn(2, {7, -15}), -1);
    QVERIFY(isNear(shown.imagePoint(position), point));
}

void SurfaceScrollAreaTest::pinchZoomsSmoothly()
{
    ShownArea shown;
    shown.area.setZoomTo(2, {-1, -1});
    const QPointF origin = shown.surface->mapToGlobal(QPoint(0, 0));
    const QPointF to(81.5, 60);
    const QPointF point = shown.imagePoint({80, 60});
    shown.mouse(QEvent::MouseButtonPress, {50, 50}, Qt::LeftButton);
    QPinchGesture gesture;
    gesture.setScaleFactor(1.001);
    gesture.setLastCenterPoint(origin + QPointF(80, 60));
    gesture.setCenterPoint(origin + to);
    gesture.setChangeFlags(QPinchGesture::ScaleFactorChanged | QPinchGesture::CenterPointChanged);
    QGestureEvent pinch({&gesture});
    QApplication::sendEvent(shown.surface, &pinch);
    QMouseEvent finger(QEvent::MouseMove, {90, 90}, {90, 90}, origin + QPointF(90, 90), Qt::NoButton, Qt::LeftButton,
                       {}, Qt::MouseEventSynthesizedByQt);
    QApplication::sendEvent(shown.surface, &finger);
    QVERIFY(qFuzzyCompare(shown.area.zoomScaling(), 2.002) && isNear(shown.imagePoint(to), point));
    for (const double value : {0.5, -1.0, qInf(), qQNaN()}) {
        QNativeGestureEvent touchpad(Qt::ZoomNativeGesture, nullptr, {}, {}, origin + to, value, 0, 0);
        QApplication::sendEvent(shown.surface, &touchpad);
        QVERIFY(qFuzzyCompare(shown.area.zoomScaling(), 3.003) && isNear(shown.imagePoint(to), point));
    }
}

void SurfaceScrollAreaTest::dragKeepsThePointUnderThePointer()
{
    ShownArea shown;
    shown.area.setZoomTo(1, {-1, -1});
    shown.area.setImageOffset({100.3, 120.6});
    shown.settle();
    QPointF at(50.4, 50.2);
    QPointF point = shown.imagePoint(at);
    const auto holds = [&](const QPointF& position, Qt::MouseButtons buttons = Qt::LeftButton) {
        shown.mouse(QEvent::MouseMove, at = position, buttons);
        return isNear(shown.imagePoint(at), point);
    };
    shown.mouse(QEvent::MouseButtonPress, at, Qt::LeftButton);
    QCOMPARE(shown.surface->cursor().shape(), Qt::ClosedHandCursor);
    QVERIFY(!holds({49, 49})); // less than 3 pixels
    QVERIFY(holds({48, 49}) && holds({90.6, 20.8}));
    const std::function<void()> disturbances[] = {
        [&] {
            shown.wheel(at, {0, 120});
        },
        [&] { shown.area.stepRight(); }, [&] { shown.area.resize(290, 230); },
        [&] {
            shown.mouse(QEvent::MouseButtonPress, at, Qt::LeftButton | Qt::RightButton, Qt::RightButton);
            shown.mouse(QEvent::MouseMove, at += QPointF(30, 20), Qt::LeftButton | Qt::RightButton);
            shown.mouse(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::RightButton);
        }};
    for (const auto& disturb : disturbances) {
        disturb();
        shown.settle();
        point = shown.imagePoint(at);
        QVERIFY(holds(at + QPointF(1, 5)));
    }
    QVERIFY(!holds({4000, 4000})); // past the border
    QVERIFY(holds({60, 70}));
    shown.mouse(QEvent::MouseButtonRelease, at, Qt::NoButton);
    QVERIFY(shown.surface->cursor().shape() == Qt::OpenHandCursor && !holds({10, 10}, Qt::NoButton));
}

void SurfaceScrollAreaTest::middleButtonDrawsARectangle()
{
    ShownArea shown;
    const double fitted = shown.area.zoomScaling();
    const auto* const band = shown.surface->findChild<QRubberBand*>();
    const auto draw = [&](const QPointF& to, const std::function<void()>& meanwhile) {
        shown.mouse(QEvent::MouseButtonPress, {130.5, 90}, Qt::MiddleButton, Qt::MiddleButton);
        shown.mouse(QEvent::MouseMove, to, Qt::MiddleButton);
        meanwhile();
        shown.mouse(QEvent::MouseButtonRelease, to, Qt::NoButton, Qt::MiddleButton);
        QVERIFY(!band->isVisible());
    };
    draw({131.5, 91}, [] {});
    draw({49.5, 60}, [&] { QTest::keyClick(&shown.host, Qt::Key_Escape); });
    draw({49.5, 60}, [&] {
        shown.mouse(QEvent::MouseButtonPress, {49.5, 60}, Qt::MiddleButton | Qt::RightButton, Qt::RightButton);
    });
    draw({49.5, 60}, [&] {
        shown.surface->setPixmap(QPixmap());
        shown.surface->setPixmap(QPixmap(600, 500));
    });
    QCOMPARE(shown.area.zoomScaling(), fitted);
    const QPointF point = shown.imagePoint({90, 75});
    draw({49.5, 60}, [&] { QCOMPARE(band->geometry(), QRect(49, 60, 82, 30)); });
    QCOMPARE(shown.area.zoomScaling(), fitted * shown.surface->width() / 81);
    QVERIFY(isNear(shown.centre(), point));
}

void SurfaceScrollAreaTest::backspaceGoesBackOverJumps()
{
    ShownArea shown;
    QVERIFY(QTest::qWaitForWindowActive(&shown.host));
    const QPointF point = shown.imagePoint({120, 90});
    shown.area.setZoomToFit(true); // no change
    QVERIFY(!shown.area.canGoBack());
    QTest::mouseDClick(shown.surface, Qt::LeftButton, {}, {120, 90});
    shown.settle(); // the bars come, and leave it there
    QVERIFY(isNear(shown.imagePoint({120, 90}), point) && shown.area.hBarScrollable());
    shown.area.setImageOffset({33.25, 44.5});
    const QPointF first = shown.centre();
    shown.wheel({10, 10}, {0, 120});
    shown.wheel({10, 10}, {0, 120});
    shown.area.doZoomTo800();
    const QPointF second = shown.centre();
    QTest::mouseDClick(shown.surface, Qt::LeftButton, {}, {120, 90});
    QVERIFY(shown.area.zoomToFit());
    const auto goesBackTo = [&](double scaling) {
        QTest::keyClick(&shown.host, Qt::Key_Backspace);
        return qFuzzyCompare(shown.area.zoomScaling(), scaling) && !shown.area.zoomToFit();
    };
    QVERIFY(goesBackTo(8) && isNear(shown.centre(), second));
    QVERIFY(goesBackTo(1.125 * 1.125) && goesBackTo(1) && isNear(shown.centre(), first) && shown.area.canGoBack());
    QVERIFY(!goesBackTo(1) && !shown.area.canGoBack() && shown.area.zoomToFit());
}

void SurfaceScrollAreaTest::resizesKeepTheCentre()
{
    ShownArea shown({1600, 500});
    shown.area.setZoomTo(1, {-1, -1});
    shown.area.setImageOffset({850.25, 180.5});
    shown.settle();
    const QPointF point = shown.centre();
    const QPointF offset = shown.surface->scaledOffset();
    // Past the image's end, larger than the image, no room at all, and back; then another image.
    for (const QSize& size : {QSize(590, 210), QSize(1700, 600), QSize(0, 0), QSize(301, 201)}) {
        shown.area.resize(size);
        for (int i = 0; i < 4; ++i)
            shown.settle();
    }
    shown.surface->setPixmap(QPixmap(310, 400));
    shown.surface->setPixmap(QPixmap(1600, 500));
    QVERIFY(isNear(shown.centre(), point));
    QCOMPARE(shown.surface->scaledOffset(), offset - QPointF(0.5, 0.5));
    // A bar at the other side comes and goes.
    for (int i = 0; i < 20; ++i)
        shown.area.setZoomTo(i % 2 ? 1 : 0.35, {-1, -1});
    QVERIFY(std::abs(shown.centre().x() - point.x()) < 1e-6);
}

void SurfaceScrollAreaTest::badNumbersMoveNothing()
{
    ShownArea shown;
    shown.surface->setScaling(qQNaN());
    shown.area.setZoomTo(qQNaN(), {5, 5});
    QVERIFY(shown.area.zoomToFit());
    shown.area.setZoomTo(2, {INT_MIN, INT_MAX});
    shown.area.setImageOffset({qQNaN(), qInf()});
    ShownArea empty({0, 0});
    empty.area.setImageOffset({qInf(), qInf()});
    empty.area.grab();
    QVERIFY(isNear(shown.centre(), {300, 500 - shown.surface->height() / 4.0}));

    // A zoom in a slot takes the place of that under way. A slot may delete the area.
    auto* const area = new SurfaceScrollArea;
    area->surface()->setPixmap(QPixmap(900, 900));
    QPointF inner;
    connect(area->surface(), &Surface::scalingChanged, [&](bool, double scaling) {
        if (scaling == 5)
            return delete area;
        area->setZoomTo(30, {-1, -1});
        inner = area->surface()->scaledOffset();
    });
    area->setZoomTo(2, {0, 0});
    QVERIFY(area->zoomScaling() == 30 && area->surface()->scaledOffset() == inner);
    area->setZoomTo(5, {0, 0});
}

void SurfaceScrollAreaTest::activePixelIsUnderThePointer()
{
    ShownArea shown({30, 20}); // smaller than the view, so in its middle
    shown.area.setZoomTo(4, {-1, -1});
    const QPointF corner = shown.surface->scaledRect().topLeft();
    const QPoint position = (corner + QPointF(4 * 7 + 3, 4 * 2)).toPoint();
    shown.mouse(QEvent::MouseMove, position, Qt::NoButton);
    QCOMPARE(shown.surface->activePixel(), QPoint(7, 2));
    // The image moves under a pointer that rests.
    QTest::mouseMove(shown.surface, position);
    QTRY_VERIFY(shown.surface->underMouse() && shown.surface->activePixel() == QPoint(7, 2));
    shown.area.doZoomTo800();
    const QPoint pixel = shown.surface->activePixel();
    QVERIFY(pixel != QPoint(7, 2) && QRectF(pixel, QSizeF(1, 1)).contains(shown.imagePoint(position)));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(shown.surface, &leave);
    QCOMPARE(shown.surface->activePixel(), QPoint(-1, -1));
}

void SurfaceScrollAreaTest::barsComeAndGo()
{
    ShownArea shown({600, 100});
    QSignalSpy changed(&shown.area, &SurfaceScrollArea::scrollabilityChanged);
    shown.area.setZoomTo(1, {-1, -1});
    shown.settle();
    const QScrollBar* const bar = shown.area.horizontalScrollBar();
    QVERIFY(bar->isVisible() && !shown.area.verticalScrollBar()->isVisible());
    QVERIFY(bar->width() == 300 && bar->maximum() == 300 && shown.surface->height() == 200 - bar->height());
    // Narrower than the view: the bar goes, once, and the surface takes its place.
    shown.area.doZoomTo25();
    for (int i = 0; i < 5; ++i)
        shown.settle();
    QCOMPARE(QList<QVariantList>(changed), (QList<QVariantList>{{true, false}, {false, false}}));
    QVERIFY(!bar->isVisible() && shown.surface->size() == shown.area.size());
    // As large as the area without bars: neither is there only because of the other.
    shown.area.doZoomTo800();
    shown.surface->setPixmap(QPixmap(300, 200));
    shown.area.doZoomTo100();
    QVERIFY(!bar->isVisible() && !shown.area.vBarScrollable());
}

void SurfaceScrollAreaTest::barsAndKeysMoveTheView()
{
    ShownArea shown;
    shown.area.setZoomTo(2.5, {-1, -1});
    shown.area.setImageOffset({100.75, 120.25});
    shown.settle();
    QCOMPARE(shown.area.imageOffset(), QPoint(100, 120));
    QCOMPARE(shown.surface->scaledOffset(), QPointF(100.75, 120.25)); // not told back by the bars
    QVERIFY(QTest::qWaitForWindowActive(&shown.host));
    QTest::keyClick(&shown.area, Qt::Key_Right);
    QTest::keyClick(&shown.area, Qt::Key_Up);
    QCOMPARE(shown.surface->scaledOffset(), QPointF(102, 118)); // an image pixel, in whole screen pixels
    QTest::keyClick(&shown.area, Qt::Key_Right, Qt::ControlModifier);
    QCOMPARE(shown.surface->scaledOffset().x(), 102.0 + shown.surface->width());
    QTest::keyClick(&shown.area, Qt::Key_Left, Qt::ControlModifier);
    QTest::keyClick(&shown.area, Qt::Key_Left);
    QTest::keyClick(&shown.area, Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(shown.surface->scaledOffset(), QPointF(100, 118 + shown.surface->height()));
}

QTEST_MAIN(SurfaceScrollAreaTest)
#include "SurfaceScrollAreaTest.moc"
