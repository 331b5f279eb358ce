// SPDX-License-Identifier: MIT
// Tests the display window as its host and its user have it: place, states in words, palettes, view modes, closing.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "base/Log.h"
#include "window/OfferingCamera.h"

#include <QtGui/QScreen>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStatusBar>

#include <algorithm>

namespace {

// What is written into the empty view.
QString hint(const ShownWindow& shown)
{
    Surface* const surface = shown.window->surfaceScrollArea()->surface();
    const QImage view = surface->grab().toImage();
    const auto* const pixels = reinterpret_cast<const QRgb*>(view.constBits());
    const bool isWritten = std::count(pixels, pixels + view.sizeInBytes() / 4, 0xFFF0F0F0) > 0;
    return isWritten ? surface->accessibleDescription() : QString();
}

bool isState(const ShownWindow& shown, const char* state)
{
    const QList<QLabel*> labels = shown.window->findChildren<QLabel*>();
    return std::any_of(labels.begin(), labels.end(),
                       [=](const QLabel* one) { return one->isVisible() && one->text() == QLatin1String(state); });
}

} // namespace

class WindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beginsWithinItsScreen();
    void iconsFollowThePalette();
    void geometryComesBack();
    void stateIsToldInWords();
    void whyNoFrameIsShown();
    void sharedKeyPauses();
    void palettes();
    void mosaicFilters();
    void pixelValuesAreZoomedTo();
    void imageIsAloneInViewModes();
    void closeableIsObeyed();
};

void WindowTest::beginsWithinItsScreen()
{
    const Window host(nullptr);
    const QSize screen = host.qt_handle()->screen()->availableSize();
    QCOMPARE(host.qt_handle()->frameSize().boundedTo(screen * 8 / 9), host.qt_handle()->frameSize());
}

void WindowTest::iconsFollowThePalette()
{
    const ShownWindow shown;
    const auto icons = [&shown](const QColor& background) {
        shown.window->setPalette(QPalette(background));
        QVector<QImage> images;
        for (const char* const name : {"actionStart", "actionSetup_Cleanup", "actionZoom_Fit"})
            images.append(shown.action(name)->icon().pixmap(24).toImage());
        return images;
    };
    const QVector<QImage> light = icons(Qt::white);
    const QVector<QImage> dark = icons(Qt::black);
    for (int i = 0; i < light.size(); ++i)
        QVERIFY(!dark[i].isNull() && dark[i].size() == light[i].size() && dark[i] != light[i]);
    QCOMPARE(icons(Qt::white), light);
}

void WindowTest::geometryComesBack()
{
    const ShownWindow shown;
    shown.host->setFrameGeometry(30, 20, 450, 380);
    std::size_t size = 0;
    QVERIFY(shown.host->saveGeometry(nullptr, &size));
    QByteArray saved(int(size), '\0');
    QVERIFY(shown.host->saveGeometry(saved.data(), &size));
    saved.chop(1); // its end
    shown.host->setGeometry(40, 50, 500, 400);
    const auto with = [&saved](int number, quint32 value) { // in place of one of the text's numbers
        return saved.left(8 * number) + QByteArray::number(value, 16).rightJustified(8, '0') +
               saved.mid(8 * number + 8);
    };
    for (const QByteArray& text :
         {saved.left(saved.size() - 2), saved.left(9), saved + "zz", saved + "00", QByteArray("rubbish"),
          QByteArray(""), "00" + saved.mid(2), with(4, 50000) /* right edge of the frame */,
          with(9, 50000) /* bottom of the normal place */, with(4, 0x80000000)})
        QVERIFY2(!shown.host->restoreGeometry(text.constData()), text.constData());
    QVERIFY(!shown.host->restoreGeometry(nullptr));
    QCOMPARE(shown.window->geometry(), QRect(40, 50, 500, 400));
    QVERIFY(shown.host->restoreGeometry(saved.constData()));
    QCOMPARE(shown.window->frameGeometry(), QRect(30, 20, 450, 380));
}

void WindowTest::stateIsToldInWords()
{
    ShownWindow shown;
    shown.action("actionStart")->setShortcut({});
    const struct
    {
        bool isSetUp, isRunning;
        unsigned able;
        const char *state, *hint;
    } rows[] = {{false, false, anyCommand, "Not set up", "Set up: F5"},
                {true, false, bit("startSingle"), "Stopped", "Take one image: +"},
                {true, true, anyCommand, "Running", "Trigger: F10"}};
    for (const auto& row : rows) {
        shown.camera->setUp = row.isSetUp;
        shown.camera->running = row.isRunning;
        shown.camera->able = row.able;
        shown.camera->signalAcquisitionStateChange();
        QTRY_VERIFY2(isState(shown, row.state) && hint(shown) == QLatin1String(row.hint), row.state);
    }
    shown.push(Mono8);
    QTRY_VERIFY(hint(shown).isNull() && isState(shown, "Running"));
}

void WindowTest::whyNoFrameIsShown()
{
    static std::atomic<const char*> why{""};
    static std::atomic<int> reported;
    setReportSink([](const std::string& line) { reported += line.find(why) != std::string::npos; });
    const struct
    {
        bool isLocked, isSetUp;
        RawImage frame;
        const char* why;
    } rows[] = {{false, true, {nullptr, 4, 3, Mono8, nullptr}, "setFramesLocked(true)"},
                {true, false, {nullptr, 4, 3, Mono8, nullptr}, "isSetup() is false"},
                {true, true, {nullptr, 4, 3, Format(0x77), nullptr}, "unknown format 0x77"},
                {true, true, {nullptr, 0, 3, Mono8, nullptr}, "0 x 3 pixels"}};
    for (const auto& row : rows) {
        ShownWindow shown(false);
        shown.camera->setFramesLocked(row.isLocked);
        shown.camera->setSetup(row.isSetUp);
        QTRY_VERIFY(row.isSetUp || isState(shown, "Not set up"));
        reported = 0;
        why = row.why;
        const TestFrame pixels(4, 3, Mono8);
        RawImage frame = row.frame;
        frame.data = pixels.raw.data;
        shown.camera->push(frame);
        QTRY_VERIFY2(hint(shown).contains(QLatin1String(row.why)), row.why);
        shown.camera->push(frame);
        QTRY_VERIFY2(!row.isSetUp || hint(shown).contains(QLatin1String("(2 times)")), row.why);
        shown.camera->clearNextFrame();
        shown.camera->setSetup(true);
        QTRY_VERIFY(row.isSetUp || !hint(shown).contains(QLatin1String(row.why)));
        QCOMPARE(reported.load(), 1);
    }
    setReportSink(nullptr);
}

void WindowTest::sharedKeyPauses()
{
    const ShownWindow shown(true, bit("start") | bit("pause"));
    QTest::keyClick(shown.window, Qt::Key_Space);
    QTRY_COMPARE(shown.log->seen(), QByteArray("pause"));
}

void WindowTest::palettes()
{
    ShownWindow shown;
    const auto* const menu = shown.window->findChild<QMenu*>(QStringLiteral("menuColor_Palette"));
    shown.push(Mono8);
    QTRY_VERIFY(menu->isEnabled());
    const auto palette = [&] { return shown.window->surfaceStream()->colorPalette(); };
    shown.action("actionColor_Palette_Gray_Inverse")->trigger();
    QCOMPARE(palette()[10], 0xFFF5F5F5);
    QVERIFY(!shown.action("actionColor_Palette_Gray")->isChecked());
    shown.window->setColorTableRainbow();
    const auto box = [&](const char* name) { return shown.window->findChild<QDoubleSpinBox*>(QLatin1String(name)); };
    for (const auto& [name, bits] :
         {std::pair("rainbow_rPhaseSpinBox", 0xFF0000u), std::pair("rainbow_gPhaseSpinBox", 0xFF00u),
          std::pair("rainbow_bPhaseSpinBox", 0xFFu)}) {
        const QVector<unsigned int> before = palette();
        box(name)->setValue(box(name)->value() + 20);
        unsigned changed = 0;
        for (int i = 0; i < 256; ++i)
            changed |= before[i] ^ palette()[i];
        QVERIFY2(changed && !(changed & ~bits), name);
    }
    QDoubleSpinBox* const center = box("rainbow_centerSpinBox");
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

void WindowTest::mosaicFilters()
{
    const ShownWindow shown;
    int value = 0x100;
    for (const char* const name :
         {"actionBayerGB_Filter", "actionBayerGR_Filter", "actionBayerRG_Filter", "actionBayerBG_Filter"}) {
        shown.action(name)->trigger();
        QCOMPARE(int(shown.host->bayerFilterOverride()), value);
        shown.host->setBayerFilterOverride(Format(0x100));
        QCOMPARE(shown.action(name)->isChecked(), value == 0x100);
        value += 0x100;
    }
}

void WindowTest::pixelValuesAreZoomedTo()
{
    ShownWindow shown;
    shown.push(Mono16, 400, 300);
    const QAction* const zoom = shown.action("actionZoom_Pixel_Values");
    QTRY_VERIFY(zoom->isEnabled());
    Surface& surface = *shown.window->surfaceScrollArea()->surface();
    const auto with = [&](PixelValues values) { return surface.setPixelValues(values), surface.grab().toImage(); };
    shown.host->setAnalyzeMenuVisible(false); // its keys work on
    for (int i = 2; i >= 0; --i) {
        shown.window->findChild<QMenu*>(QStringLiteral("menuPixel_Values"))->actions()[i]->trigger();
        QVERIFY(int(shown.host->pixelValues()) == i && zoom->isEnabled() == (i > 0));
        QTest::keyClick(shown.window, Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(with(PixelValues(i)) == with(PixelValues::Off), i == 0);
        shown.host->setZoomLevel(surface.scaling() - 1 / surface.devicePixelRatioF()); // a device pixel less
        QCOMPARE(with(PixelValues(i)), with(PixelValues::Off));
    }
}

void WindowTest::imageIsAloneInViewModes()
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

void WindowTest::closeableIsObeyed()
{
    const ShownWindow shown;
    shown.window->setCloseable(false);
    QVERIFY(shown.window->isVisible() && !(shown.window->windowFlags() & Qt::WindowCloseButtonHint));
    QCOMPARE(shown.window->size(), QSize(1200, 600));
    QVERIFY(!shown.window->close() && shown.window->isVisible());
    shown.window->setCloseable(true);
    QVERIFY(shown.window->isVisible() && QTest::qWaitForWindowActive(shown.window));
    QTest::keyClick(shown.window, Qt::Key_W, Qt::ControlModifier);
    QTRY_VERIFY(!shown.window);
    QTRY_COMPARE(shown.log->seen(), QByteArray("closed gone"));
    QVERIFY(!shown.host->good());
#if defined(NDEBUG)
    std::size_t size = 3;
    QVERIFY(!shown.host->qt_handle() && !shown.host->native_handle() && !shown.host->surfaceStream());
    QVERIFY(shown.host->width() == 0 && shown.host->zoomLevel() == 0 && !shown.host->title(nullptr, &size));
    shown.host->setRunning();
    QVERIFY(!shown.host->addToolBarAction(nullptr, "no"));
#endif
}

QTEST_MAIN(WindowTest)
#include "WindowTest.moc"
