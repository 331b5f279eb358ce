// SPDX-License-Identifier: MIT
// Tests the panels that open under the tool bar: where they lie, what closes them, and the editors in them.
#include <Vistrel/MiniMap.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "window/OfferingCamera.h"

#include <QtGui/QScreen>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QSlider>
#include <QtWidgets/QToolButton>

#include <algorithm>
#include <functional>
#include <tuple>

namespace {

// A window with a large image in which the keyboard belongs to the view.
struct Shown : ShownWindow
{
    Shown()
    {
        push(Mono8, 2400, 1600);
        area->setFocus();
    }
    void open(const char* name) const
    {
        action(name)->trigger();
        QVERIFY(panel());
        QTRY_COMPARE(QApplication::activeWindow(), panel());
    }

    const QPointer<SurfaceScrollArea> area = window->surfaceScrollArea();
};

} // namespace

class EditorsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void panelIsPlaced();
    void panelCloses();
    void zoomEditorAndAreaFollowEachOther();
    void countIsAskedForWhileItIsOffered();
    void mapShowsAndMovesTheView();
};

void EditorsTest::panelIsPlaced()
{
    Shown shown;
    shown.offer(false, 0);
    shown.window->resize(400, 300);
    QTRY_COMPARE(shown.window->size(), QSize(400, 300));
    const QWidget* const button = shown.button("actionZoom_Editor");
    const QRect screen = shown.window->screen()->availableGeometry();
    const auto placesAt = [&](const QPoint& corner) {
        shown.window->move(corner);
        QCoreApplication::processEvents(); // the view may be taking the tool bar's place
        const QWidget* const reference = button->isVisible() ? button : shown.area->surface();
        shown.open("actionZoom_Editor");
        const QRect place = shown.panel()->geometry();
        shown.panel()->close();
        return std::pair(place, QRect(reference->mapToGlobal(QPoint(0, 0)), reference->size()));
    };
    auto [panel, around] = placesAt({100, 100});
    QCOMPARE(panel.topLeft(), around.bottomLeft() + QPoint(0, 3));
    std::tie(panel, around) = placesAt(screen.bottomRight() - QPoint(80, 60));
    QCOMPARE(panel.bottomRight(), QPoint(screen.right(), around.top() - 3));
    shown.window->findChild<QToolBar*>()->hide();
    std::tie(panel, around) = placesAt({100, 100});
    QCOMPARE(panel.topLeft(), QPoint(around.center().x() - panel.width() / 2, around.top() + 2));
}

void EditorsTest::panelCloses()
{
    const std::function<void(Shown&)> ends[] = {
        [](Shown& s) { QTest::mouseClick(s.button("actionZoom_Editor"), Qt::LeftButton); },
        [](Shown&) { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape); },
        [](Shown&) { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Equal, Qt::ControlModifier); },
        [](Shown& s) {
            QTest::mousePress(s.area->surface(), Qt::LeftButton);
            QCOMPARE(s.area->surface()->cursor().shape(), Qt::ClosedHandCursor); // it has got there
        },
        [](Shown& s) { s.window->activateWindow(); },
        [](Shown& s) { s.window->hide(); },
        [](Shown& s) { s.host.reset(); },
    };
    for (const auto& end : ends) {
        Shown shown;
        shown.area->doZoomTo800();
        shown.open("actionZoom_Editor");
        const QPointer<PopoverWindow> panel = shown.panel();
        QSignalSpy closed(panel, &PopoverWindow::closed);
        end(shown);
        QTRY_VERIFY(!panel || !panel->isOpen());
        QCOMPARE(closed.size(), 1);
        if (!shown.window)
            continue;
        QVERIFY(!shown.action("actionZoom_Editor")->isChecked());
        QTRY_VERIFY(!shown.window->isVisible() || QApplication::focusWidget() == shown.area);
    }
}

void EditorsTest::zoomEditorAndAreaFollowEachOther()
{
    Shown shown;
    const double fitted = shown.area->zoomScaling();
    shown.open("actionZoom_Editor");
    PopoverWindow* const panel = shown.panel();
    auto* const percent = panel->findChild<QDoubleSpinBox*>();
    auto* const slider = panel->findChild<QSlider*>();
    const auto button = [panel](const char* text) {
        const auto all = panel->findChildren<QToolButton*>();
        return *std::find_if(all.begin(), all.end(), [=](auto* one) { return one->text() == QLatin1String(text); });
    };
    QVERIFY(button("Fit")->isChecked());
    QCOMPARE(percent->value(), qRound(1000 * fitted) / 10.0);
    QTest::keyClicks(percent, QStringLiteral("13"));
    QCOMPARE(shown.area->zoomScaling(), fitted); // not a digit at a time
    const int level = slider->value();
    shown.window->resize(1200, 400); // fitted anew meanwhile
    QTRY_VERIFY(slider->value() < level);
    QTest::keyClicks(percent, QStringLiteral("3.3"));
    QTest::keyClick(percent, Qt::Key_Return);
    QCOMPARE(shown.area->zoomScaling(), 1.333);
    QVERIFY(!button("Fit")->isChecked());
    QTest::keyClick(percent, Qt::Key_PageUp);
    QTRY_VERIFY(shown.area->zoomScaling() > 1.34);

    QSignalSpy changes(shown.area->surface(), SIGNAL(scalingChanged(bool, double)));
    button("800 %")->click();
    slider->setValue(slider->value() + 1);
    shown.area->setZoomTo(2.34567, {-1, -1});
    QTRY_COMPARE(percent->value(), 234.6);
    QCOMPARE(changes.size(), 3); // what is shown is rounded, and is not sent back
    QCOMPARE(shown.area->zoomScaling(), 2.34567);
    button("Fit")->click();
    QVERIFY(shown.area->zoomToFit() && button("Fit")->isChecked());
    shown.area->surface()->setPixmap(QPixmap());
    slider->setValue(slider->maximum());
    QVERIFY(slider->value() < slider->maximum());

    // Keys typed into an editor stay in it. The overview has none: the window's keys stay alive.
    QCOMPARE(shown.log->seen(), QByteArray());
    panel->close();
    shown.open("actionQuick_View");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Period);
    QTRY_COMPARE(shown.log->seen(), QByteArray("stop"));
}

void EditorsTest::countIsAskedForWhileItIsOffered()
{
    Shown shown;
    const auto countIn = [&](int least, int most) {
        shown.camera->setStartFixedMin(least);
        shown.camera->setStartFixedMax(most);
        shown.offer(true, bit("startFixed"));
        return shown.panel()->findChild<QSpinBox*>()->value();
    };
    shown.open("actionStart_Fixed");
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("640")); // in place of what is there
    QCOMPARE(countIn(10, 100), 100);
    QCOMPARE(countIn(1, 1000), 640); // again
    QCOMPARE(countIn(50, -3), 50);
    QCOMPARE(countIn(1, 1000), 640);
    auto* const box = QApplication::focusWidget();
    QTest::keyClick(box, Qt::Key_Enter);
    QVERIFY(!shown.panel());
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Enter, {}, QString(), true);
    QCoreApplication::sendEvent(box, &held);
    QTRY_COMPARE(shown.log->seen(), QByteArray("startFixed(640)"));
    shown.offer(true, 0);
    shown.open("actionStart_Fixed");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    shown.offer(false, 0);
    QTRY_VERIFY(!shown.panel());
    QVERIFY(!shown.action("actionStart_Fixed")->isChecked());
    QCOMPARE(shown.log->seen(), QByteArray("startFixed(640)"));
}

void EditorsTest::mapShowsAndMovesTheView()
{
    Shown shown;
    MiniMap map;
    map.setScrollArea(shown.area);
    map.resize(240, 180); // the picture: 240 x 160 from (0, 10) on
    map.show();
    QVERIFY(QTest::qWaitForWindowExposed(&map));
    const auto pixel = [&map](int x, int y) { return map.grab().toImage().pixelColor(x, y); };
    const auto isFrame = [](const QColor& color) { return color.red() > 150 && color.blue() < 100; };
    QCOMPARE(pixel(120, 90).red(), pixel(120, 90).blue());
    QVERIFY(isFrame(pixel(120, 11))); // the whole is seen

    shown.area->setZoomTo(2, {-1, -1});
    QCoreApplication::processEvents();
    const auto centreAt = [&](const QPoint& position) {
        QTest::mouseClick(&map, Qt::LeftButton, {}, position);
        return shown.area->surface()->visibleImageRectF().center();
    };
    QCOMPARE(centreAt({60, 130}), QPointF(605, 1205));
    const double top = shown.area->surface()->visibleImageRectF().top();
    QVERIFY(!isFrame(pixel(120, 11)) && isFrame(pixel(60, 10 + qRound(top * 0.1) + 1)));
    map.resize(280, 160); // from (20, 0) on
    QCOMPARE(centreAt({100, 100}), QPointF(805, 1005));
    QTest::mousePress(&map, Qt::LeftButton, {}, {140, 80});
    QMouseEvent drag(QEvent::MouseMove, QPointF(-50, 400), Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(&map, &drag);
    QCOMPARE(shown.area->surface()->visibleImageRectF().bottomLeft(), QPointF(0, 1600));
    QWheelEvent wheel({5, 5}, map.mapToGlobal({5, 5}), {}, {0, 120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&map, &wheel);
    QCOMPARE(shown.area->zoomScaling(), 2.25);

    QPixmap red(1200, 800); // another image is seen soon
    red.fill(Qt::red);
    shown.area->surface()->setPixmap(red);
    QTRY_COMPARE(pixel(230, 150), QColor(Qt::red));
    shown.host.reset();
    QTest::mouseClick(&map, Qt::LeftButton);
    QApplication::sendEvent(&map, &wheel);
    QVERIFY(pixel(230, 150) != QColor(Qt::red));
}

QTEST_MAIN(EditorsTest)
#include "EditorsTest.moc"
