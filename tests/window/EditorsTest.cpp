// SPDX-License-Identifier: MIT
// Tests the pop-over panel and what opens in it: the zoom editor, the start-fixed editor and the overview of the image.
#include <Vistrel/MiniMap.h>
#include <Vistrel/PopoverWindow.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "window/panels/StartFixedEditor.h"
#include "window/panels/ZoomEditor.h"

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

} // namespace

class EditorsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void popoverIsPlaced();
    void popoverCloses();
    void keysTypedIntoAnEditorStayInIt();
    void zoomEditorAndAreaFollowEachOther();
    void startFixedKeepsItsCountInBounds();
    void mapShowsAndMovesTheView();
};

void EditorsTest::popoverIsPlaced()
{
    const struct
    {
        QPoint window; // from the screen's corner; below zero: from the opposite one
        bool isAnchored;
        QPoint wanted; // in the window; the panel is 100 x 50
    } rows[] = {{{100, 100}, true, {40, 22}},
                {{100, 100}, false, {99, 22}}, // the button is hidden
                {{-80, 100}, true, {-20, 22}},
                {{100, -30}, true, {40, -52}}};
    for (const auto& row : rows) {
        Shown shown;
        const QRect screen = shown.window->screen()->availableGeometry();
        const QPoint corner(row.window.x() < 0 ? screen.width() : 0, row.window.y() < 0 ? screen.height() : 0);
        shown.window->setGeometry({screen.topLeft() + corner + row.window, shown.window->size()});
        shown.button->setVisible(row.isAnchored);
        auto* const contents = new QWidget;
        contents->setFixedSize(86, 36);
        shown.popover->setContents(contents);
        shown.popover->popUp(shown.button, shown.area);
        QCOMPARE(shown.popover->geometry(), QRect(shown.window->geometry().topLeft() + row.wanted, QSize(100, 50)));
    }
}

void EditorsTest::popoverCloses()
{
    const struct
    {
        std::function<void(Shown&)> act;
        bool isOpen; // afterwards
    } rows[] = {
        {[](Shown& s) { QTest::mouseClick(s.button, Qt::LeftButton); }, true},
        {[](Shown& s) { QTest::keyClick(s.popover, Qt::Key_Escape); }, false},
        {[](Shown& s) {
             s.area->surface()->setCursor(Qt::OpenHandCursor);
             QTest::mousePress(s.area->surface(), Qt::LeftButton);
             QCOMPARE(s.area->surface()->cursor().shape(), Qt::ClosedHandCursor); // it has got there
         },
         false},
        {[](Shown& s) { s.window->activateWindow(); }, false},
        {[](Shown& s) { s.window->hide(); }, false},
        {[](Shown& s) { delete s.window; }, false},
    };
    for (const auto& row : rows) {
        Shown shown;
        QSignalSpy closed(shown.popover, &PopoverWindow::closed);
        shown.open(new QSpinBox);
        row.act(shown);
        QTRY_COMPARE(shown.popover && shown.popover->isOpen(), row.isOpen);
        QCOMPARE(closed.size(), row.isOpen ? 0 : 1);
        if (shown.window && shown.window->isVisible() && !row.isOpen)
            QTRY_COMPARE(QApplication::focusWidget(), shown.area.data());
    }
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
    shown.open(new ZoomEditor(shown.area));
    shown.area->setZoomTo(1, {-1, -1});
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_PageUp);
    QTRY_VERIFY(shown.area->zoomScaling() > 1.1);
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
    buttonNamed(editor, "Fit")->click();
    QVERIFY(shown.area->zoomToFit() && fit->isChecked());

    shown.area->surface()->setPixmap(QPixmap());
    const double scaling = shown.area->zoomScaling();
    slider->setValue(slider->maximum());
    QVERIFY(slider->value() < slider->maximum());
    QCOMPARE(shown.area->zoomScaling(), scaling);
    delete shown.area;
    slider->setValue(slider->maximum());
    buttonNamed(editor, "800 %")->click();
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
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Enter, {}, QString(), true);
    QCoreApplication::sendEvent(box, &held);
    QCOMPARE(started, QList<QVariantList>{{640}});
    editor.setBounds(10, 100, 5);
    QCOMPARE(editor.count(), 100);
    editor.setBounds(1, 1000, 5);
    QCOMPARE(editor.count(), 640); // again
    editor.setBounds(50, -3, 0);
    QCOMPARE(editor.count(), 50);
    editor.setStartEnabled(false);
    QTest::keyClick(box, Qt::Key_Return);
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
    const auto centreAt = [&](const QPoint& position) {
        QTest::mouseClick(&map, Qt::LeftButton, {}, position);
        return shown.area->surface()->visibleImageRectF().center();
    };
    QCOMPARE(centreAt({60, 130}), QPointF(151.25, 301.25));
    const double top = shown.area->surface()->visibleImageRectF().top();
    QVERIFY(!isFrame(pixel(120, 11)) && isFrame(pixel(60, 10 + qRound(top * 0.4) + 1)));
    map.resize(280, 160); // from (20, 0) on
    QCOMPARE(centreAt({100, 100}), QPointF(201.25, 251.25));
    QTest::mousePress(&map, Qt::LeftButton, {}, {140, 80});
    QMouseEvent drag(QEvent::MouseMove, QPointF(-50, 400), Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(&map, &drag);
    QCOMPARE(shown.area->surface()->visibleImageRectF().bottomLeft(), QPointF(0, 400));
    QWheelEvent wheel({5, 5}, map.mapToGlobal({5, 5}), {}, {0, 120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&map, &wheel);
    QCOMPARE(shown.area->zoomScaling(), 2.25);

    // Another image is seen at once or soon, an area that goes is left alone.
    QPixmap red(60, 40);
    red.fill(Qt::red);
    shown.area->surface()->setPixmap(red.scaled(1200, 800));
    map.updateView();
    QTRY_COMPARE(pixel(230, 150), QColor(Qt::red));
    delete shown.area;
    QTest::mouseClick(&map, Qt::LeftButton);
    QApplication::sendEvent(&map, &wheel);
    QVERIFY(pixel(230, 150) != QColor(Qt::red));
}

QTEST_MAIN(EditorsTest)
#include "EditorsTest.moc"
