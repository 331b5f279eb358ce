// SPDX-License-Identifier: MIT
// Tests zooming about a point, dragging, and scroll bars that follow the view, by real events.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>

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

    // Scaled pixels from the image's corner, exact.
    QPointF imagePoint(const QPointF& position) const
    {
        return (surface->scaledOffset() + position) / surface->scaling();
    }

    void wheel(const QPoint& position, const QPoint& turn)
    {
        QWheelEvent event(position, surface->mapToGlobal(position), {}, turn, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        event.ignore();
        QApplication::sendEvent(surface, &event);
        isConsumed = event.isAccepted();
    }

    void mouse(QEvent::Type type, const QPoint& position, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, position, surface->mapToGlobal(position),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, Qt::NoModifier);
        QApplication::sendEvent(surface, &event);
    }

    QWidget host;
    SurfaceScrollArea area{&host};
    Surface* const surface = area.surface();
    bool isConsumed = false;
};

bool isNear(const QPointF& a, const QPointF& b)
{
    return (a - b).manhattanLength() < 0.01;
}

} // namespace

class SurfaceScrollAreaTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wheelZoomsAStepAnEvent();
    void doubleClickShowsTheWholeOrItsPixels();
    void dragBeginsAtThreePixels();
    void activePixelIsUnderThePointer();
    void barsComeAndGo();
    void barsAndKeysMoveTheView();
};

void SurfaceScrollAreaTest::wheelZoomsAStepAnEvent()
{
    ShownArea shown;
    shown.area.setZoomTo(1, {-1, -1});
    const QPoint position(70, 30);
    const QPointF point = shown.imagePoint(position);
    shown.wheel(position, {0, 360});
    QCOMPARE(shown.area.zoomScaling(), 1.125);
    QVERIFY(shown.isConsumed && isNear(shown.imagePoint(position), point));
    shown.wheel(position, {0, -15});
    QCOMPARE(shown.area.zoomScaling(), 1.0);
    QVERIFY(shown.isConsumed);
    shown.wheel(position, {120, 0});
    QCOMPARE(shown.area.zoomScaling(), 1.0);
    QVERIFY(!shown.isConsumed);
    shown.area.setImageOffset({100, 120});
    const QPointF centre = shown.surface->visibleImageRectF().center();
    for (const QPoint& outside : {QPoint(-1, -1), QPoint(301, 10)}) {
        shown.area.setZoomTo(shown.area.zoomScaling() * 2, outside);
        QVERIFY(isNear(shown.surface->visibleImageRectF().center(), centre));
    }

    ShownArea empty{QSize()};
    empty.wheel(position, {0, 120});
    QVERIFY(empty.area.zoomToFit());
}

void SurfaceScrollAreaTest::doubleClickShowsTheWholeOrItsPixels()
{
    ShownArea shown;
    const QPoint position(120, 90);
    const QPointF point = shown.imagePoint(position);
    QTest::mouseDClick(shown.surface, Qt::LeftButton, {}, position);
    QCOMPARE(shown.area.zoomScaling(), 1.0);
    for (int i = 0; i < 3; ++i) {
        QVERIFY2(isNear(shown.imagePoint(position), point), QByteArray::number(i));
        shown.settle(); // the bars come, and leave it there
    }
    QVERIFY(!shown.area.zoomToFit() && shown.area.hBarScrollable() && shown.area.vBarScrollable());
    QTest::mouseDClick(shown.surface, Qt::RightButton, {}, position);
    QVERIFY(!shown.area.zoomToFit());
    QTest::mouseDClick(shown.surface, Qt::LeftButton, {}, position);
    QVERIFY(shown.area.zoomToFit());
}

void SurfaceScrollAreaTest::dragBeginsAtThreePixels()
{
    ShownArea shown;
    shown.area.setZoomTo(1, {-1, -1});
    shown.settle();
    shown.area.setImageOffset({100, 120});
    QCOMPARE(shown.surface->cursor().shape(), Qt::OpenHandCursor);
    shown.mouse(QEvent::MouseButtonPress, {50, 50}, Qt::LeftButton);
    QCOMPARE(shown.surface->cursor().shape(), Qt::ClosedHandCursor);
    shown.mouse(QEvent::MouseMove, {49, 49}, Qt::LeftButton);
    QCOMPARE(shown.surface->scaledOffset(), QPointF(100, 120));
    shown.mouse(QEvent::MouseMove, {48, 49}, Qt::LeftButton);
    QCOMPARE(shown.surface->scaledOffset(), QPointF(102, 121));
    shown.settle();
    shown.mouse(QEvent::MouseMove, {90, 20}, Qt::LeftButton);
    QCOMPARE(shown.surface->scaledOffset(), QPointF(60, 150));
    shown.mouse(QEvent::MouseMove, {2000, 2000}, Qt::LeftButton);
    QCOMPARE(shown.surface->scaledOffset(), QPointF(0, 0));
    shown.mouse(QEvent::MouseButtonRelease, {2000, 2000}, Qt::NoButton);
    QCOMPARE(shown.surface->cursor().shape(), Qt::OpenHandCursor);
    shown.mouse(QEvent::MouseMove, {10, 10}, Qt::NoButton);
    QCOMPARE(shown.surface->scaledOffset(), QPointF(0, 0));
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
