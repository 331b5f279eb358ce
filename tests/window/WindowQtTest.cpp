// SPDX-License-Identifier: MIT
// Tests what the main window shows of its image and its source, and its view modes.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "window/OfferingCamera.h"

#include <QtWidgets/QDockWidget>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QStatusBar>

class WindowQtTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sharedKeyPauses();
    void stateIsToldInWords();
    void palettes();
    void imageIsAloneInViewModes();
    void closeableIsObeyed();
};

void WindowQtTest::sharedKeyPauses()
{
    ShownWindow shown(true, bit("start") | bit("pause"));
    QTest::keyClick(shown.window, Qt::Key_Space);
    QTRY_COMPARE(shown.log->seen(), QByteArray("pause"));
}

void WindowQtTest::stateIsToldInWords()
{
    ShownWindow shown;
    const auto tells = [&](const char* state, const char* hint) {
        QStringList texts;
        for (const QLabel* const label : shown.window->findChildren<QLabel*>()) {
            if (label->isVisible())
                texts += label->text();
        }
        Surface* const surface = shown.window->surfaceScrollArea()->surface();
        const QImage view = surface->grab().toImage();
        bool isWritten = false;
        for (int x = 0; x < view.width(); ++x)
            isWritten = isWritten || view.pixel(x, view.height() / 2) == 0xFFF0F0F0;
        return texts.contains(QLatin1String(state)) && isWritten == (*hint != 0) &&
               surface->accessibleDescription() == QLatin1String(hint);
    };
    const auto change = [&](bool isSetUp, bool isRunning) {
        shown.camera->setUp = isSetUp;
        shown.camera->running = isRunning;
        shown.camera->signalAcquisitionStateChange();
    };
    shown.action("actionStart")->setShortcut({});
    change(false, false);
    QTRY_VERIFY(tells("Not set up", "Set up: F5"));
    shown.camera->able = bit("startSingle");
    change(true, false);
    QTRY_VERIFY(tells("Stopped", "Take one image: +"));
    shown.camera->able = anyCommand;
    change(true, true);
    QTRY_VERIFY(tells("Running", "Trigger: F10"));
    shown.push(Mono8);
    QTRY_VERIFY(tells("Running", ""));
}

void WindowQtTest::palettes()
{
    ShownWindow shown;
    const auto* const menu = shown.window->findChild<QMenu*>(QStringLiteral("menuColor_Palette"));
    QVERIFY(!menu->isEnabled());
    shown.push(Mono8);
    QTRY_VERIFY(menu->isEnabled());
    const auto palette = [&] { return shown.window->surfaceStream()->colorPalette(); };
    shown.action("actionColor_Palette_Gray_Inverse")->trigger();
    QCOMPARE(palette()[10], 0xFFF5F5F5);
    QVERIFY(!shown.action("actionColor_Palette_Gray")->isChecked());
    shown.window->setColorTableRainbow();
    for (const auto& [name, bits] :
         {std::pair("rainbow_rPhaseSpinBox", 0xFF0000u), std::pair("rainbow_gPhaseSpinBox", 0xFF00u),
          std::pair("rainbow_bPhaseSpinBox", 0xFFu)}) {
        auto* const phase = shown.window->findChild<QDoubleSpinBox*>(QLatin1String(name));
        const QVector<unsigned int> before = palette();
        phase->setValue(phase->value() + 20);
        unsigned changed = 0;
        for (int i = 0; i < 256; ++i)
            changed |= before[i] ^ palette()[i];
        QVERIFY2(changed && !(changed & ~bits), name);
    }
    auto* const center = shown.window->findChild<QDoubleSpinBox*>(QStringLiteral("rainbow_centerSpinBox"));
    shown.window->setColorTableGray();
    QVERIFY(!center->isVisible());
    shown.window->setColorTableRainbow();
    center->setFocus();
    QTest::keyClick(center, Qt::Key_Plus); // for the box, which keeps what is typed in it
    QTest::keyClick(center, Qt::Key_Escape);
    QVERIFY(!center->hasFocus());
    QTest::keyClick(shown.window, Qt::Key_F10);
    QTRY_COMPARE(shown.log->seen(), QByteArray("trigger"));
    shown.push(RGB8);
    QTRY_VERIFY(!menu->isEnabled());
}

void WindowQtTest::imageIsAloneInViewModes()
{
    ShownWindow shown;
    shown.push(Mono8);
    const auto* const bar = shown.window->findChild<QToolBar*>();
    const Surface* const surface = shown.window->surfaceScrollArea()->surface();
    const QSize before = surface->size();
    QCursor::setPos(shown.window->geometry().center()); // away from the bars
    QTest::keyClick(shown.window, Qt::Key_F11, Qt::ControlModifier);
    QVERIFY(shown.window->exhibitView() && !bar->isVisible() && !shown.window->statusBar()->isVisible());
    QCOMPARE(surface->size(), shown.window->size());
    auto* const dock = shown.window->findChild<QDockWidget*>();
    shown.window->setColorTableRainbow(); // the dock waits
    QVERIFY(!dock->isVisible());
    // Keys live while the bars are hidden; the bars come over the image.
    QTest::keyClick(shown.window, Qt::Key_X);
    QVERIFY(shown.window->pixelCrosshairVisible());
    QMenu* const menu = shown.window->findChild<QMenu*>(QStringLiteral("menuImage"));
    Q_EMIT menu->aboutToShow();
    QVERIFY(bar->isVisible());
    QCOMPARE(surface->size(), shown.window->size());
    Q_EMIT menu->aboutToHide();
    QTRY_VERIFY(!bar->isVisible());
    QTest::keyClick(shown.window, Qt::Key_K, Qt::ControlModifier);
    QVERIFY(shown.window->statusBar()->isVisible() && !bar->isVisible());

    QTest::keyClick(shown.window, Qt::Key_F11);
    QTRY_VERIFY(shown.window->fullScreen() && shown.action("actionFull_Screen")->isChecked());
    QTest::keyClick(shown.window, Qt::Key_Escape);
    QTRY_VERIFY(!shown.window->fullScreen() && shown.window->exhibitView());
    QTest::keyClick(shown.window, Qt::Key_Escape);
    QVERIFY(!shown.window->exhibitView() && bar->isVisible() && dock->isVisible());
    dock->close(); // by the user, so it stays away
    shown.window->setExhibitView(true);
    shown.window->setExhibitView(false);
    QVERIFY(!dock->isVisible());
    QTRY_COMPARE(surface->size(), before);
}

void WindowQtTest::closeableIsObeyed()
{
    ShownWindow shown;
    shown.window->setCloseable(false);
    QVERIFY(shown.window->isVisible() && !(shown.window->windowFlags() & Qt::WindowCloseButtonHint));
    QCOMPARE(shown.window->size(), QSize(1200, 600));
    QVERIFY(!shown.window->close() && shown.window->isVisible());
    shown.window->setCloseable(true);
    QVERIFY(shown.window->isVisible() && QTest::qWaitForWindowActive(shown.window));
    QTest::keyClick(shown.window, Qt::Key_W, Qt::ControlModifier);
    QTRY_VERIFY(!shown.window);
    QTRY_COMPARE(shown.log->seen(), QByteArray("closed gone"));
}

QTEST_MAIN(WindowQtTest)
#include "WindowQtTest.moc"
