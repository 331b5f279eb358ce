// SPDX-License-Identifier: MIT
// Tests the pop-over panel and what opens in it: the zoom editor, the start-fixed editor and the overview of the image.
#include <Vistrel/MiniMap.h>
#include <Vistrel/PopoverWindow.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "window/StartFixedEditor.h"
#include "window/ZoomEditor.h"

#include <QtCore/QPointer>
#include <QtGui/QScreen>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QToolButton>

#include <functional>

using namespace Vistrel;

namespace {

// A window of an area of 300 x 200 pixels with an image, below a button of 30 x 20.
struct Shown
{
    Shown()
    {
        window->setGeometry(100, 100, 300, 220);
        button->setGeometry(40, 0, 30, 20);
        area->setGeometry(0, 20, 300, 200);
        area->setFocusPolicy(Qt::StrongFocus);
        area->setFocus();
        QImage image(600, 400, QImage::Format_RGB32);
        image.fill(Qt::blue);
        area->surface()->setPixmap(QPixmap::fromImage(image));
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }
    ~Shown() { delete window; }

    void open(QWidget* contents)
    {
        popover->setContents(contents);
        popover->popUp(button, area);
        QTRY_COMPARE(QApplication::activeWindow(), popover.data());
    }

    QPointer<QMainWindow> window = new QMainWindow;
    QPushButton* button = new QPushButton(window);
    QPointer<SurfaceScrollArea> area = new SurfaceScrollArea(window);
    QPointer<PopoverWindow> popover = new PopoverWindow(window);
};

QToolButton* buttonNamed(const QWidget& editor, const char* text)
{
    for (auto* const button : editor.findChildren<QToolButton*>()) {
        if (button->text() == QLatin1String(text))
            return button;
    }
    return nullptr;
}

using Act = std::function<void(Shown&)>;

} // namespace

Q_DECLARE_METATYPE(Act)

class EditorsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void popoverIsPlaced_data();
    void popoverIsPlaced();
    void popoverCloses_data();
    void popoverCloses();
    void keysTypedIntoAnEditorStayInIt();
    void zoomEditorAndAreaFollowEachOther();
    void startFixedKeepsItsCountInBounds();
    void mapShowsAndMovesTheView();
};

void EditorsTest::popoverIsPlaced_data()
{
    QTest::addColumn<QPoint>("window"); // from the screen's corner; below zero: from the opposite one
    QTest::addColumn<bool>("isAnchored");
    QTest::addColumn<bool>("hasFallback");
    QTest::addColumn<QPoint>("wanted"); // in the window; the panel is 100 x 50
    QTest::newRow("under the button") << QPoint(100, 100) << true << true << QPoint(40, 22);
    QTest::newRow("hidden button") << QPoint(100, 100) << false << true << QPoint(99, 22);
    QTest::newRow("nothing given") << QPoint(100, 100) << false << false << QPoint(99, 2);
    QTest::newRow("right edge") << QPoint(-80, 100) << true << true << QPoint(-20, 22);
    QTest::newRow("right edge, hidden button") << QPoint(-60, 100) << false << true << QPoint(99, 22);
    QTest::newRow("bottom edge") << QPoint(100, -30) << true << true << QPoint(40, -52);
}

void EditorsTest::popoverIsPlaced()
{
    QFETCH(QPoint, window);
    QFETCH(bool, isAnchored);
    QFETCH(bool, hasFallback);
    QFETCH(QPoint, wanted);
    Shown shown;
    const QRect screen = shown.window->screen()->availableGeometry();
    if (window.x() < 0)
        window.rx() += screen.width();
    if (window.y() < 0)
        window.ry() += screen.height();
    shown.window->setGeometry({screen.topLeft() + window, shown.window->size()});
    shown.button->setVisible(isAnchored);
    auto* const contents = new QWidget;
    contents->setFixedSize(86, 36);
    shown.popover->setContents(contents);
    shown.popover->popUp(isAnchored ? shown.button : nullptr, hasFallback ? shown.area.data() : nullptr);
    QVERIFY(shown.popover->isOpen());
    QCOMPARE(shown.popover->size(), QSize(100, 50));
    wanted += shown.window->geometry().topLeft();
    wanted.rx() = qMin(wanted.x(), screen.right() + 1 - 100);
    QCOMPARE(shown.popover->pos(), wanted);
}

void EditorsTest::popoverCloses_data()
{
    QTest::addColumn<Act>("act");
    QTest::addColumn<bool>("isOpen");
    QTest::newRow("Esc") << Act([](Shown& s) { QTest::keyClick(s.popover, Qt::Key_Escape); }) << false;
    QTest::newRow("press within") << Act([](Shown& s) { QTest::mouseClick(s.popover, Qt::LeftButton); }) << true;
    QTest::newRow("press on the button") << Act([](Shown& s) { QTest::mouseClick(s.button, Qt::LeftButton); }) << true;
    QTest::newRow("press outside") << Act([](Shown& s) {
        s.area->surface()->setCursor(Qt::OpenHandCursor);
        QTest::mousePress(s.area->surface(), Qt::LeftButton);
        QCOMPARE(s.area->surface()->cursor().shape(), Qt::ClosedHandCursor); // it has got there
    }) << false;
    QTest::newRow("window hidden") << Act([](Shown& s) { s.window->hide(); }) << false;
    QTest::newRow("window closed") << Act([](Shown& s) { s.window->close(); }) << false;
    QTest::newRow("window minimised") << Act([](Shown& s) { s.window->showMinimized(); }) << false;
    QTest::newRow("window made active") << Act([](Shown& s) { s.window->activateWindow(); }) << false;
    QTest::newRow("window deleted") << Act([](Shown& s) { delete s.window; }) << false;
}

void EditorsTest::popoverCloses()
{
    QFETCH(Act, act);
    QFETCH(bool, isOpen);
    Shown shown;
    QSignalSpy opened(shown.popover, &PopoverWindow::opened);
    QSignalSpy closed(shown.popover, &PopoverWindow::closed);
    shown.open(new QSpinBox);
    QCOMPARE(opened.size(), 1);
    act(shown);
    QTRY_COMPARE(shown.popover && shown.popover->isOpen(), isOpen);
    QCOMPARE(closed.size(), isOpen ? 0 : 1);
    if (shown.window && shown.window->isVisible() && !shown.window->isMinimized() && !isOpen)
        QTRY_COMPARE(QApplication::focusWidget(), shown.area.data());
}

void EditorsTest::keysTypedIntoAnEditorStayInIt()
{
    Shown shown;
    QAction plain;
    plain.setShortcut(Qt::Key_PageUp);
    QAction toggle;
    toggle.setShortcut(int(Qt::CTRL) | int(Qt::Key_E));
    shown.window->addActions({&plain, &toggle});
    QSignalSpy stolen(&plain, &QAction::triggered);
    connect(&toggle, &QAction::triggered, shown.popover, [&] { shown.popover->close(); });
    auto* const editor = new ZoomEditor(shown.area);
    shown.open(editor);
    QCOMPARE(QApplication::focusWidget(), editor->findChild<QDoubleSpinBox*>());
    shown.area->setZoomTo(1, {-1, -1});
    QTRY_COMPARE(editor->findChild<QDoubleSpinBox*>()->value(), 100.0);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_PageUp);
    QVERIFY(shown.area->zoomScaling() > 1.1);
    QCOMPARE(stolen.size(), 0);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_E, Qt::ControlModifier);
    QVERIFY(!shown.popover->isOpen());
    // The overview has no editor: the window's keys stay alive.
    shown.open(new MiniMap);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_PageUp);
    QCOMPARE(stolen.size(), 1);
}

void EditorsTest::zoomEditorAndAreaFollowEachOther()
{
    Shown shown;
    ZoomEditor editor(shown.area);
    auto* const percent = editor.findChild<QDoubleSpinBox*>();
    auto* const slider = editor.findChild<QSlider*>();
    const auto* const fit = buttonNamed(editor, "Fit");
    QVERIFY(fit->isChecked());
    QCOMPARE(percent->value(), 50.0); // fitted
    editor.show();
    QVERIFY(QTest::qWaitForWindowActive(&editor));
    percent->setFocus();
    percent->selectAll();

    QTest::keyClicks(percent, QStringLiteral("13"));
    QCOMPARE(shown.area->zoomScaling(), 0.5); // not a digit at a time
    shown.area->resize(300, 150);             // fitted anew meanwhile
    QTRY_VERIFY(shown.area->zoomScaling() < 0.4);
    QTRY_VERIFY(slider->value() < -7);
    QTest::keyClicks(percent, QStringLiteral("3.3"));
    QTest::keyClick(percent, Qt::Key_Return);
    QCOMPARE(shown.area->zoomScaling(), 1.333);
    QVERIFY(!fit->isChecked());

    QSignalSpy changes(shown.area->surface(), SIGNAL(scalingChanged(bool, double)));
    buttonNamed(editor, "800 %")->click();
    slider->setValue(slider->value() + 1);
    shown.area->setZoomTo(2.34567, {-1, -1});
    QTRY_COMPARE(percent->value(), 234.6);
    QCOMPARE(changes.size(), 3); // what is shown is rounded, and is not sent back
    QCOMPARE(shown.area->zoomScaling(), 2.34567);
    QCOMPARE(slider->value(), 7);
    buttonNamed(editor, "Fit")->click();
    QVERIFY(shown.area->zoomToFit() && fit->isChecked());
    buttonNamed(editor, "Fit")->click();
    QVERIFY(!shown.area->zoomToFit() && !fit->isChecked());

    shown.area->surface()->setPixmap(QPixmap());
    const double scaling = shown.area->zoomScaling();
    slider->setValue(slider->maximum());
    QVERIFY(slider->value() < slider->maximum());
    QCOMPARE(shown.area->zoomScaling(), scaling);
    delete shown.area;
    slider->setValue(slider->maximum());
    buttonNamed(editor, "Fit")->click();
    QVERIFY(!fit->isChecked());
}

void EditorsTest::startFixedKeepsItsCountInBounds()
{
    StartFixedEditor editor;
    auto* const box = editor.findChild<QSpinBox*>();
    QSignalSpy started(&editor, &StartFixedEditor::started);
    editor.show();
    QVERIFY(QTest::qWaitForWindowActive(&editor));
    editor.setFocus();
    QTest::keyClicks(box, QStringLiteral("640")); // in place of what is there
    QTest::keyClick(box, Qt::Key_Enter);
    QCOMPARE(started.takeFirst(), QVariantList{640});
    editor.setBounds(10, 100, 5);
    QCOMPARE(editor.count(), 100);
    editor.setBounds(1, 1000, 5);
    QCOMPARE(editor.count(), 640); // again
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(editor.count(), 635);
    editor.setBounds(50, -3, 0);
    QCOMPARE(editor.count(), 50);
    QCOMPARE(box->singleStep(), 1);
    editor.setBounds(-8, -3, -1);
    QCOMPARE(editor.count(), 0);
    editor.setStartEnabled(false);
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(started.size(), 0);
    editor.setStartEnabled(true);
    editor.findChild<QPushButton*>()->click();
    QCOMPARE(started.size(), 1);
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
    QCOMPARE(pixel(120, 90), QColor(Qt::blue));
    QVERIFY(isFrame(pixel(120, 11))); // the whole is seen

    shown.area->setZoomTo(2, {-1, -1});
    QCoreApplication::processEvents();
    QTest::mouseClick(&map, Qt::LeftButton, {}, {60, 130}); // image point 151, 301
    QRectF seen = shown.area->surface()->visibleImageRectF();
    QVERIFY((seen.center() - QPointF(151.25, 301.25)).manhattanLength() < 0.01);
    QVERIFY(!isFrame(pixel(120, 11)));
    QVERIFY(isFrame(pixel(60, 10 + qRound(seen.top() * 0.4) + 1)));
    QTest::mousePress(&map, Qt::LeftButton, {}, {120, 90});
    QMouseEvent drag(QEvent::MouseMove, QPointF(-50, 400), Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(&map, &drag);
    seen = shown.area->surface()->visibleImageRectF();
    QCOMPARE(seen.bottomLeft(), QPointF(0, 400));

    QWheelEvent wheel({5, 5}, map.mapToGlobal({5, 5}), {}, {0, 120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&map, &wheel);
    QCOMPARE(shown.area->zoomScaling(), 2.25);
    const QPointF centre = shown.area->surface()->visibleImageRectF().center();
    QVERIFY((centre - seen.center()).manhattanLength() < 1);

    // Another image is seen at once or soon, an area that goes is left alone.
    QPixmap red(60, 40);
    red.fill(Qt::red);
    shown.area->surface()->setPixmap(red.scaled(1200, 800));
    map.updateView();
    QTRY_COMPARE(pixel(230, 160), QColor(Qt::red));
    delete shown.area;
    QTest::mouseClick(&map, Qt::LeftButton);
    QApplication::sendEvent(&map, &wheel);
    QVERIFY(pixel(230, 160) != QColor(Qt::red));
}

QTEST_MAIN(EditorsTest)
#include "EditorsTest.moc"
