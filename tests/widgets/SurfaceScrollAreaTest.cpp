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
#include <memory>

using namespace Vistrel;

namespace {

struct ShownArea
{
    explicit ShownArea(const QSize& image = {600, 500})
    {
        area.resize(300, 200);
        host.show();
        if (!image.isEmpty())
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
    QCOMPARE(turn(1, {0, INT_MAX}), 1);
    QCOMPARE(turn(1, {INT_MAX, 0}), 0);
    QVERIFY(!shown.isConsumed);
    time += 200;
    QCOMPARE(turn(1, {7, 15}), 1); // alone
    QCOMPARE(turn(14, {7, 15}), 0);
    QVERIFY(shown.isConsumed);
    QCOMPARE(turn(1, {7, 15}), 1); // 240 in all
    QCOMPARE(turn(1, {7, -15}), -1);
    QCOMPARE(turn(2, {7, 15}), 1);
    QCOMPARE(turn(2, {0, INT_MIN}), -2);
    QVERIFY(isNear(shown.imagePoint(position), point));
}

void SurfaceScrollAreaTest::pinchZoomsSmoothly()
{
    ShownArea shown;
    shown.area.setZoomTo(2, {-1, -1});
    shown.mouse(QEvent::MouseButtonPress, {50, 50}, Qt::LeftButton);
    const QPointF origin = shown.surface->mapToGlobal(QPoint(0, 0));
    const QPointF point = shown.imagePoint({80, 60});
    QPinchGesture gesture;
    gesture.setScaleFactor(1.001);
    gesture.setLastCenterPoint(origin + QPointF(80, 60));
    gesture.setCenterPoint(origin + QPointF(81.5, 60));
    gesture.setChangeFlags(QPinchGesture::ScaleFactorChanged | QPinchGesture::CenterPointChanged);
    QGestureEvent pinch({&gesture});
    QApplication::sendEvent(shown.surface, &pinch);
    QMouseEvent finger(QEvent::MouseMove, QPointF(90, 90), {90, 90}, origin + QPointF(90, 90), Qt::NoButton,
                       Qt::LeftButton, {}, Qt::MouseEventSynthesizedByQt);
    QApplication::sendEvent(shown.surface, &finger);
    QCOMPARE(shown.area.zoomScaling(), 2.002);
    QVERIFY(isNear(shown.imagePoint({81.5, 60}), point));
    for (const double value : {0.5, -1.0, qInf(), qQNaN()}) {
        QNativeGestureEvent touchpad(Qt::ZoomNativeGesture, nullptr, {}, {}, origin + QPointF(81.5, 60), value, 0, 0);
        QApplication::sendEvent(shown.surface, &touchpad);
        QCOMPARE(shown.area.zoomScaling(), 3.003);
        QVERIFY(isNear(shown.imagePoint({81.5, 60}), point));
    }
}

void SurfaceScrollAreaTest::dragKeepsThePointUnderThePointer()
{
    ShownArea shown;
    shown.area.setZoomTo(1, {-1, -1});
    shown.settle();
    shown.area.setImageOffset({100.3, 120.6});
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
    shown.wheel(at, {0, 120});
    QVERIFY(holds(at + QPointF(3, 2)));
    const std::function<void()> disturbances[] = {
        [&] { shown.area.stepRight(); },
        [&] {
            shown.area.setZoomTo(1.7, {-1, -1});
        },
        [&] { shown.area.resize(290, 230); },
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
    QCOMPARE(shown.surface->cursor().shape(), Qt::OpenHandCursor);
    QVERIFY(!holds({10, 10}, Qt::NoButton));
}

void SurfaceScrollAreaTest::middleButtonDrawsARectangle()
{
    ShownArea shown;
    shown.area.setZoomTo(1, {-1, -1});
    const auto* const band = shown.surface->findChild<QRubberBand*>();
    const auto draw = [&](const QPointF& to, const std::function<void()>& meanwhile) {
        shown.mouse(QEvent::MouseButtonPress, {100.5, 90}, Qt::MiddleButton, Qt::MiddleButton);
        shown.mouse(QEvent::MouseMove, to, Qt::MiddleButton);
        meanwhile();
        shown.mouse(QEvent::MouseButtonRelease, to, Qt::NoButton, Qt::MiddleButton);
        QVERIFY(!band->isVisible());
        shown.settle();
    };
    draw({101.5, 91}, [] {});
    draw({19.5, 60}, [&] { QTest::keyClick(&shown.host, Qt::Key_Escape); });
    draw({19.5, 60}, [&] {
        shown.mouse(QEvent::MouseButtonPress, {19.5, 60}, Qt::MiddleButton | Qt::RightButton, Qt::RightButton);
    });
    draw({19.5, 60}, [&] {
        shown.surface->setPixmap(QPixmap());
        shown.surface->setPixmap(QPixmap(600, 500));
    });
    QCOMPARE(shown.area.zoomScaling(), 1.0);
    const QPointF point = shown.imagePoint({60, 75});
    draw({19.5, 60}, [&] { QCOMPARE(band->geometry(), QRect(19, 60, 82, 30)); });
    QCOMPARE(shown.area.zoomScaling(), shown.surface->width() / 81.0);
    QVERIFY(isNear(shown.centre(), point));
}

void SurfaceScrollAreaTest::backspaceGoesBackOverJumps()
{
    ShownArea shown;
    QVERIFY(QTest::qWaitForWindowActive(&shown.host));
    const QPointF whole = shown.imagePoint({120, 90});
    QTest::mouseDClick(shown.surface, Qt::LeftButton, {}, {120, 90});
    shown.settle(); // the bars come, and leave it there
    QVERIFY(isNear(shown.imagePoint({120, 90}), whole) && shown.area.hBarScrollable());
    shown.area.setImageOffset({33.25, 44.5});
    const QPointF first = shown.centre();
    shown.wheel({10, 10}, {0, 120});
    shown.wheel({10, 10}, {0, 120});
    shown.area.doZoomTo800();
    shown.area.doZoomTo800(); // no change
    const QPointF second = shown.centre();
    QTest::mouseDClick(shown.surface, Qt::LeftButton, {}, {120, 90});
    QVERIFY(shown.area.zoomToFit());
    shown.area.resize(310, 190);
    shown.settle();
    const auto goesBackTo = [&](double scaling, const QPointF& centre) {
        QTest::keyClick(&shown.host, Qt::Key_Backspace);
        return qFuzzyCompare(shown.area.zoomScaling(), scaling) && (centre.isNull() || isNear(shown.centre(), centre));
    };
    QVERIFY(goesBackTo(8, second) && !shown.area.zoomToFit() && goesBackTo(1.125 * 1.125, {}));
    QVERIFY(goesBackTo(1, first) && shown.area.canGoBack());
    QTest::keyClick(&shown.host, Qt::Key_Backspace);
    QVERIFY(shown.area.zoomToFit() && !shown.area.canGoBack());
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
    for (int i = 0; i < 20; ++i) {
        shown.area.setZoomTo(i % 2 ? 1 : 0.35, {-1, -1});
        shown.settle();
    }
    QVERIFY(std::abs(shown.centre().x() - point.x()) < 1e-6);
}

void SurfaceScrollAreaTest::badNumbersMoveNothing()
{
    ShownArea shown;
    shown.surface->setScaling(qQNaN());
    shown.area.setZoomTo(qQNaN(), {5, 5});
    QVERIFY(shown.area.zoomToFit());
    shown.area.setZoomTo(2, {INT_MIN, INT_MAX});
    shown.area.setImageOffset({qQNaN(), 130});
    QVERIFY(shown.surface->scaledOffset().x() > 0 && shown.surface->scaledOffset().y() == 130);
    shown.area.setImageOffset({qInf(), -qInf()});
    QCOMPARE(shown.surface->scaledOffset(), QPointF(1200 - shown.surface->width(), 0));

    // A zoom in a slot takes the place of that under way. A slot may delete the area.
    auto* const area = new SurfaceScrollArea;
    area->surface()->setPixmap(QPixmap(900, 900));
    QPointF inner;
    const auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = connect(area->surface(), &Surface::scalingChanged, [&] {
        disconnect(*connection);
        area->setZoomTo(3, {-1, -1});
        inner = area->surface()->scaledOffset();
    });
    area->setZoomTo(2, {0, 0});
    QVERIFY(area->zoomScaling() == 3 && area->surface()->scaledOffset() == inner);
    connect(area->surface(), &Surface::scalingChanged, [=] { delete area; });
    area->setZoomTo(5, {0, 0});
}

void SurfaceScrollAreaTest::activePixelIsUnderThePointer()
{
    ShownArea shown({30, 20}); // smaller than the view, so in its middle
    shown.area.setZoomTo(4, {-1, -1});
    shown.settle();
    const QPointF corner = shown.surface->scaledRect().topLeft();
    const QPoint position = (corner + QPointF(4 * 7 + 3, 4 * 2)).toPoint();
    shown.mouse(QEvent::MouseMove, position, Qt::NoButton);
    QCOMPARE(shown.surface->activePixel(), QPoint(7, 2));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(shown.surface, &leave);
    QCOMPARE(shown.surface->activePixel(), QPoint(-1, -1));

    // The image moves under a pointer that rests.
    QTest::mouseMove(shown.surface, position);
    QTRY_VERIFY(shown.surface->underMouse() && shown.surface->activePixel() == QPoint(7, 2));
    shown.area.doZoomTo800();
    shown.settle();
    const QPointF point = QPointF(position - shown.surface->scaledRect().topLeft()) / 8;
    QCOMPARE(shown.surface->activePixel(), QPoint(int(point.x()), int(point.y())));
    QVERIFY(shown.surface->activePixel() != QPoint(7, 2));
}

void SurfaceScrollAreaTest::barsComeAndGo()
{
    ShownArea shown({600, 100});
    QSignalSpy changed(&shown.area, &SurfaceScrollArea::scrollabilityChanged);
    QVERIFY(!shown.area.horizontalScrollBar()->isVisible() && shown.surface->size() == shown.area.size());
    shown.area.setZoomTo(1, {-1, -1});
    shown.settle();
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.constFirst(), (QVariantList{true, false}));
    const QScrollBar* const bar = shown.area.horizontalScrollBar();
    QVERIFY(bar->isVisible() && !shown.area.verticalScrollBar()->isVisible());
    QCOMPARE(shown.surface->size(), QSize(300, 200 - bar->height()));
    QCOMPARE(bar->width(), 300);
    QCOMPARE(bar->maximum(), 300);
    QCOMPARE(bar->pageStep(), 300);
    // Narrower than the view: the bar goes, once, and the surface takes its place.
    shown.area.doZoomTo25();
    for (int i = 0; i < 5; ++i)
        shown.settle();
    QCOMPARE(changed.size(), 2);
    QVERIFY(!bar->isVisible() && shown.surface->size() == shown.area.size());
    shown.area.doZoomTo800();
    QVERIFY(bar->isVisible() && shown.area.vBarScrollable());
    // As large as the area without bars: neither is there only because of the other.
    shown.surface->setPixmap(QPixmap(300, 200));
    shown.area.doZoomTo100();
    shown.settle();
    QVERIFY(!bar->isVisible() && !shown.area.vBarScrollable());
}

void SurfaceScrollAreaTest::barsAndKeysMoveTheView()
{
    ShownArea shown;
    shown.area.setZoomTo(2.5, {-1, -1});
    shown.settle();
    shown.area.setImageOffset({100.75, 120.25});
    shown.settle();
    QCOMPARE(shown.area.imageOffset(), QPoint(100, 120));
    QCOMPARE(shown.surface->scaledOffset(), QPointF(100.75, 120.25)); // not told back by the bars
    QVERIFY(QTest::qWaitForWindowActive(&shown.host));
    const int width = shown.surface->width();
    QTest::keyClick(&shown.area, Qt::Key_Right);
    QTest::keyClick(&shown.area, Qt::Key_Up);
    QCOMPARE(shown.surface->scaledOffset(), QPointF(102, 118)); // an image pixel, in whole screen pixels
    QTest::keyClick(&shown.area, Qt::Key_Right, Qt::ControlModifier);
    QCOMPARE(shown.surface->scaledOffset().x(), 102.0 + width);
    QTest::keyClick(&shown.area, Qt::Key_Left, Qt::ControlModifier);
    QTest::keyClick(&shown.area, Qt::Key_Left);
    QTest::keyClick(&shown.area, Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(shown.surface->scaledOffset(), QPointF(100, 118 + shown.surface->height()));
}

QTEST_MAIN(SurfaceScrollAreaTest)
#include "SurfaceScrollAreaTest.moc"
