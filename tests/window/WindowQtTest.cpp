// SPDX-License-Identifier: MIT
// Tests the main window by keys, menus and closing: what it offers of a source, in which order its commands reach it,
// and that a source which blocks holds up nothing.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>
#include <Vistrel/WindowQt.h>

#include "support/FakeSources.h"
#include "window/StartFixedEditor.h"

#include <QtCore/QPointer>
#include <QtGui/QClipboard>
#include <QtTest/QTest>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QToolButton>

using namespace Vistrel;

namespace {

// What a source and its test share; the source may go first.
struct Events
{
    void add(const std::string& event)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        list += list.empty() ? event : " " + event;
    }
    std::string seen()
    {
        const std::lock_guard<std::mutex> guard(mutex);
        return list;
    }

    std::mutex mutex;
    std::string list;
    Gate gate; // that commands pass
};

// Offers everything, and tells what it is asked to do.
class Camera : public PushSource
{
public:
    explicit Camera(std::shared_ptr<Events> events) : m_events(std::move(events))
    {
        setHasSetup(true);
        setHasCleanup(true);
        setHasStart(true);
        setHasPause(true);
        setHasStop(true);
        setHasStartSingle(true);
        setHasTrigger(true);
        m_events->gate.openForGood();
    }
    ~Camera() override { m_events->add("gone"); }

    bool run(const char* command)
    {
        m_events->gate.pass();
        m_events->add(command);
        return success;
    }
    bool setup() override { return run("setup"); }
    bool cleanup() override { return run("cleanup"); }
    bool start() override { return run("start"); }
    bool pause() override { return run("pause"); }
    bool stop() override { return run("stop"); }
    bool startSingle() override { return run("single"); }
    bool trigger() override { return run("trigger"); }
    bool startFixed(size_t frames) override { return run(("fixed " + std::to_string(frames)).c_str()); }
    bool setupMode(const char* const name) override { return run(name); }
    void uxClosed() override { m_events->add("closed"); }

    bool canSetup() const override { return able && !setUp; }
    bool canCleanup() const override { return able && setUp; }
    bool canSetupMode() const override { return able; }
    bool canStart() const override { return able; }
    bool canPause() const override { return able && running; }
    bool canStop() const override { return able && running; }
    bool canStartSingle() const override { return able; }
    bool canTrigger() const override { return able; }
    bool canStartFixed() const override { return able; }
    bool isRunning() const override { return running; }
    bool activeSetupMode(char* const buffer, std::size_t* const size) const override
    {
        return setupModeName(1, buffer, size);
    }

    void announce()
    {
        signalFeatureSetChange();
        signalAcquisitionStateChange();
    }

    std::atomic<bool> able{true};
    std::atomic<bool> running{false};
    std::atomic<bool> success{true};

private:
    const std::shared_ptr<Events> m_events;
};

struct ShownWindow
{
    ShownWindow()
    {
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }
    ~ShownWindow() { delete window; }

    QAction* action(const char* name) const { return window->findChild<QAction*>(QLatin1String(name)); }
    QProgressBar* progress() const { return window->findChild<QProgressBar*>(); }
    std::string toolBar() const
    {
        std::string names;
        for (const QAction* const entry : window->findChild<QToolBar*>()->actions())
            names += entry->isSeparator() ? "| " : entry->objectName().mid(6).toStdString() + " ";
        return names;
    }

    std::shared_ptr<Events> events = std::make_shared<Events>();
    Camera* camera = new Camera(events);
    QPointer<WindowQt> window = new WindowQt(ScopedAcquisitionInterface(camera));
};

} // namespace

class WindowQtTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sharedKeyPauses();
    void toolBarFollowsWhatIsOffered();
    void slowCommandIsShownAndDisablesTheOthers();
    void stateIsToldInWords();
    void setupModes();
    void palettes();
    void imageIsAloneInViewModes();
    void imageIsToldOf();
    void fixedCountIsStarted();
    void closeableIsObeyed();
};

void WindowQtTest::sharedKeyPauses()
{
    ShownWindow shown;
    shown.camera->running = true; // and can start, too
    shown.camera->announce();
    QTRY_VERIFY(shown.action("actionStop")->isEnabled());
    QTest::keyClick(shown.window, Qt::Key_Space);
    QTRY_COMPARE(shown.events->seen(), std::string("pause"));
}

void WindowQtTest::toolBarFollowsWhatIsOffered()
{
    ShownWindow shown;
    const std::string picture = "Zoom_Editor Zoom_Fit Zoom_100 | Quick_View ";
    QCOMPARE(shown.toolBar(), "Setup_Cleanup | Start Start_Single Pause Stop | Trigger | " + picture);
    QVERIFY(!shown.action("actionNo_Controls_Available")->isVisible());
    QCOMPARE(shown.action("actionSetup_Cleanup")->toolTip(),
             QStringLiteral("Depress to Cleanup the acquisition interface, freeing its resources."));
    shown.camera->setUp = false;
    shown.camera->announce();
    QTRY_COMPARE(shown.action("actionSetup_Cleanup")->toolTip(),
                 QStringLiteral("Press to Setup the interface for acquisition."));
    QVERIFY(!shown.action("actionSetup_Cleanup")->isChecked());
    shown.action("actionSetup_Cleanup")->trigger();
    QTRY_COMPARE(shown.events->seen(), std::string("setup"));

    const WindowQt empty{ScopedAcquisitionInterface()};
    QCOMPARE(empty.findChild<QToolBar*>()->actions().size(), 5);
}

void WindowQtTest::slowCommandIsShownAndDisablesTheOthers()
{
    ShownWindow shown;
    shown.camera->success = false;
    shown.events->gate.close();
    QTest::keyClick(shown.window, Qt::Key_Space);
    QTRY_VERIFY(shown.progress()->isVisible());
    const auto* const bar = shown.window->statusBar();
    QCOMPARE(bar->currentMessage(), QStringLiteral("Acquisition start ongoing"));
    for (const char* const name : {"actionStart", "actionSetup_Cleanup", "actionCleanup", "actionTrigger"})
        QVERIFY2(!shown.action(name)->isEnabled(), name);
    QTest::keyClick(shown.window, Qt::Key_F10);
    shown.events->gate.openForGood();
    QTRY_VERIFY(shown.action("actionStart")->isEnabled());
    QVERIFY(!shown.progress()->isVisible());
    QCOMPARE(bar->currentMessage(), QStringLiteral("Operation failed!"));
    QCOMPARE(shown.events->seen(), std::string("start"));
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
        return texts.contains(QLatin1String(state)) && texts.contains(QLatin1String(hint)) == (*hint != 0);
    };
    shown.camera->setUp = false;
    shown.camera->announce();
    QTRY_VERIFY(tells("Not set up", "Set up: F5"));
    shown.action("actionSetup")->setShortcut({});
    shown.camera->announce();
    QTRY_VERIFY(tells("Not set up", "Set up"));
    shown.camera->setUp = true;
    shown.camera->announce();
    QTRY_VERIFY(tells("Stopped", "Start: Space"));
    shown.camera->running = true;
    shown.camera->announce();
    QTRY_VERIFY(tells("Running", "Trigger: F10"));
    const TestFrame frame(4, 3, Mono8, 10);
    shown.camera->push(frame.raw);
    QTRY_VERIFY(tells("Running", ""));
}

void WindowQtTest::setupModes()
{
    ShownWindow shown;
    shown.camera->setHasSetupMode(true);
    shown.camera->addSetupMode("Fast & dark", "Short exposure");
    shown.camera->addSetupMode("Slow");
    shown.camera->announce();
    const QMenu* const menu = shown.action("actionSetup_Mode")->menu();
    QTRY_COMPARE(menu->actions().size(), 2);
    QVERIFY(!menu->actions()[0]->isChecked() && !menu->actions()[0]->font().bold());
    QVERIFY(menu->actions()[1]->isChecked() && menu->actions()[1]->font().bold());
    QCOMPARE(menu->actions()[0]->toolTip(), QStringLiteral("Short exposure"));
    shown.events->gate.close();
    menu->actions()[0]->trigger();
    shown.window->updateFeatureSet(); // the entry is gone before its command runs
    QTRY_COMPARE(shown.window->statusBar()->currentMessage(),
                 QStringLiteral("Acquisition setup (Fast & dark) ongoing"));
    shown.events->gate.openForGood();
    QTRY_COMPARE(shown.events->seen(), std::string("Fast & dark"));
}

void WindowQtTest::palettes()
{
    ShownWindow shown;
    QVERIFY(!shown.action("actionColor_Palette_Gray")->menu());
    const auto* const menu = shown.window->findChild<QMenu*>(QStringLiteral("menuColor_Palette"));
    QVERIFY(!menu->isEnabled());
    const TestFrame frame(4, 3, Mono8, 10);
    shown.camera->push(frame.raw);
    QTRY_VERIFY(menu->isEnabled());
    shown.action("actionColor_Palette_Gray_Inverse")->trigger();
    QCOMPARE(shown.window->colorTable(), ColorTable::GrayInverse);
    QCOMPARE(shown.window->surfaceStream()->colorPalette()[10], 0xFFF5F5F5);
    QVERIFY(!shown.action("actionColor_Palette_Gray")->isChecked());
    shown.window->setColorTableRainbow();
    auto* const center = shown.window->findChild<QDoubleSpinBox*>(QStringLiteral("rainbow_centerSpinBox"));
    const auto ramp = [&] { return shown.action("actionColor_Palette_Rainbow")->icon().pixmap(16).toImage(); };
    QVERIFY(center->isVisible());
    const QVector<unsigned int> before = shown.window->surfaceStream()->colorPalette();
    center->setValue(200);
    QVERIFY(shown.window->surfaceStream()->colorPalette() != before);
    const QImage ofRainbow = ramp();
    shown.window->setColorTableGray();
    center->setValue(180);
    QVERIFY(ramp() != ofRainbow);
    center->setValue(200);
    QCOMPARE(ramp(), ofRainbow);
    QVERIFY(shown.window->colorTable() == ColorTable::Gray && !center->isVisible());
    shown.window->setColorTableRainbow();
    center->setFocus();
    QTest::keyClick(center, Qt::Key_Up); // for the box, which keeps what is typed in it
    QTest::keyClick(center, Qt::Key_Plus);
    QCOMPARE(center->value(), 201.0);
    QTest::keyClick(center, Qt::Key_Escape);
    QVERIFY(!center->hasFocus());
    QTest::keyClick(shown.window, Qt::Key_F10);
    QTRY_COMPARE(shown.events->seen(), std::string("trigger"));
    const TestFrame color(4, 3, RGB8, 10);
    shown.camera->push(color.raw);
    QTRY_VERIFY(!menu->isEnabled());
}

void WindowQtTest::imageIsAloneInViewModes()
{
    ShownWindow shown;
    const TestFrame frame(4, 3, Mono8, 10);
    shown.camera->push(frame.raw);
    QTRY_VERIFY(shown.action("actionSave_Image")->isEnabled());
    const auto* const bar = shown.window->findChild<QToolBar*>();
    const Surface* const surface = shown.window->surfaceScrollArea()->surface();
    const QSize before = surface->size();
    QCursor::setPos(shown.window->geometry().center()); // away from the bars
    QTest::keyClick(shown.window, Qt::Key_F11, Qt::ControlModifier);
    QVERIFY(shown.window->exhibitView());
    QVERIFY(!bar->isVisible());
    QVERIFY(!shown.window->statusBar()->isVisible());
    QCOMPARE(surface->size(), shown.window->size());
    auto* const dock = shown.window->findChild<QDockWidget*>();
    shown.window->setColorTableRainbow(); // the dock waits
    QVERIFY(!dock->isVisible() && surface->size() == shown.window->size());
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
    QVERIFY(!shown.window->exhibitView() && bar->isVisible() && shown.window->menuBar()->isVisible());
    QVERIFY(dock->isVisible());
    dock->close(); // by the user, so it stays away
    shown.window->setExhibitView(true);
    shown.window->setExhibitView(false);
    QVERIFY(!dock->isVisible());
    QTRY_COMPARE(surface->size(), before);
}

void WindowQtTest::imageIsToldOf()
{
    ShownWindow shown;
    QVERIFY(!shown.action("actionCopy_Pixel_Value")->isEnabled());
    shown.camera->setHasFramesDelivered(true);
    shown.camera->announce();
    const TestFrame frame(4, 3, Mono12, 10);
    shown.camera->push(frame.raw);
    QTRY_VERIFY(shown.action("actionCopy_Image_Stats")->isEnabled());
    QTRY_VERIFY(shown.action("actionBuffers_Delivered")->isVisible());
    Surface* const surface = shown.window->surfaceScrollArea()->surface();
    const auto pointAtLastPixel = [surface] {
        QTest::mouseMove(surface, (surface->scaledRect().topLeft() + QPointF(3.25, 2.25)).toPoint());
        return surface->activePixel() == QPoint(3, 2);
    };
    QTRY_VERIFY(pointAtLastPixel()); // the bars may still be taking their places
    QTest::keyClick(shown.window, Qt::Key_P, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("(3, 2) 2570"));
    QTest::keyClick(shown.window, Qt::Key_I, Qt::ControlModifier);
    const QString report = QGuiApplication::clipboard()->text();
    for (const char* const line : {"Frames Delivered: 0\n", "Dimensions: 4 x 3 x 12 bit\n", "Image Format: Mono12\n",
                                   "Zoom Level: 100.0 %\n", "Pixel Value: (3, 2) 2570\n"})
        QVERIFY2(report.contains(QLatin1String(line)), qPrintable(report));
    QVERIFY(!report.contains(QLatin1String("Frame Rate")));

    QVERIFY(shown.window->previewZoomLevel() && !shown.window->previewImageFormat());
    shown.window->setPreviewImageFormat(true);
    QVERIFY(shown.action("actionImage_Format")->isChecked());
}

void WindowQtTest::fixedCountIsStarted()
{
    ShownWindow shown;
    shown.camera->setHasStartFixed(true);
    shown.camera->setStartFixedMin(3);
    shown.camera->announce();
    QTRY_VERIFY(shown.action("actionStart_Fixed")->isVisible());
    QTest::keyClick(shown.window, Qt::Key_Asterisk);
    auto* const editor = shown.window->findChild<StartFixedEditor*>();
    QTRY_VERIFY(editor->isVisible() && shown.action("actionStart_Fixed")->isChecked());
    auto* const count = editor->findChild<QSpinBox*>();
    QTest::keyClicks(count, QStringLiteral("12"));
    QTest::keyClick(count, Qt::Key_Return);
    QTRY_COMPARE(shown.events->seen(), std::string("fixed 12"));
    QVERIFY(!editor->isVisible() && !shown.action("actionStart_Fixed")->isChecked());
    QTest::keyClick(shown.window, Qt::Key_Asterisk);
    QTRY_VERIFY(editor->isVisible());
    shown.camera->setHasStartFixed(false);
    shown.camera->announce();
    QTRY_VERIFY(!editor->isVisible());
}

void WindowQtTest::closeableIsObeyed()
{
    ShownWindow shown;
    shown.window->setGeometry(50, 60, 500, 400);
    shown.window->setCloseable(false);
    QVERIFY(shown.window->isVisible() && !(shown.window->windowFlags() & Qt::WindowCloseButtonHint));
    QCOMPARE(shown.window->size(), QSize(500, 400));
    QVERIFY(!shown.window->close() && shown.window->isVisible());
    shown.window->setCloseable(true);
    QVERIFY(shown.window->isVisible() && QTest::qWaitForWindowActive(shown.window));
    QTest::keyClick(shown.window, Qt::Key_W, Qt::ControlModifier);
    QTRY_VERIFY(!shown.window);
    QTRY_COMPARE(shown.events->seen(), std::string("closed gone"));
}

QTEST_MAIN(WindowQtTest)
#include "WindowQtTest.moc"
