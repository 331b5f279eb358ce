// SPDX-License-Identifier: MIT
// Tests the display window as hosts without the toolkit use it.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>
#include <Vistrel/Window.h>

#include "base/Report.h"
#include "support/FakeSources.h"

#include <QtGui/QScreen>
#include <QtTest/QtTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QDialog>
#include <QtWidgets/QLabel>

#include <algorithm>
#include <limits>
#include <mutex>

using namespace Vistrel;

namespace {

QStringList* reportedLines = nullptr;

using TextGetter = bool (Window::*)(char*, std::size_t*) const;

QByteArray textOf(const Window& window, TextGetter getter)
{
    std::size_t size = 0;
    if (!(window.*getter)(nullptr, &size))
        return QByteArray();
    QByteArray text(static_cast<int>(size), 'x');
    return (window.*getter)(text.data(), &size) ? QByteArray(text.constData()) : QByteArray();
}

const char* const redDot[] = {"2 2 1 1", ". c #ff0000", "..", ".."};

} // namespace

class WindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void geometryComesBack();
    void geometryThatCannotBeShownIsRefused();
    void geometryIsBoundedToTheScreens();
    void settingsReachTheWindow();
    void bayerFilterOverride();
    void applicationAbout();
    void closedWindowIsHarmless();
    void whyNoFrameIsShown_data();
    void whyNoFrameIsShown();
};

void WindowTest::geometryComesBack()
{
    Window window{ScopedAcquisitionInterface()};
    window.setGeometry(40, 50, 500, 400);
    window.show();
    int x = 0, y = 0, width = 0, height = 0;
    window.getGeometry(x, y, width, height);
    QCOMPARE(QRect(x, y, width, height), QRect(40, 50, 500, 400));
    window.setFrameGeometry(30, 20, 450, 380);
    window.getFrameGeometry(x, y, width, height);
    QCOMPARE(QRect(x, y, width, height), QRect(30, 20, 450, 380));

    const QByteArray saved = textOf(window, &Window::saveGeometry);
    window.setGeometry(100, 110, 480, 300);
    QVERIFY(window.restoreGeometry(saved.constData()));
    window.getFrameGeometry(x, y, width, height);
    QCOMPARE(QRect(x, y, width, height), QRect(30, 20, 450, 380));
}

void WindowTest::geometryThatCannotBeShownIsRefused()
{
    Window window{ScopedAcquisitionInterface()};
    window.setGeometry(40, 50, 500, 400);
    const QByteArray saved = textOf(window, &Window::saveGeometry);
    const auto with = [&saved](int number, quint32 value) { // in place of one of the text's numbers
        return saved.left(8 * number) + QByteArray::number(value, 16).rightJustified(8, '0') +
               saved.mid(8 * number + 8);
    };
    const QByteArray texts[] = {saved.left(saved.size() - 2),
                                saved.left(9),
                                saved + "zz",
                                saved + "00",
                                "rubbish",
                                "",
                                QByteArray("00") + saved.mid(2),
                                with(4, 50000) /* right edge of the frame */,
                                with(9, 50000) /* bottom of the normal place */,
                                with(4, 0x80000000)};
    QVERIFY(window.restoreGeometry(with(4, 700).constData()));
    window.setGeometry(40, 50, 500, 400);
    for (const QByteArray& text : texts)
        QVERIFY2(!window.restoreGeometry(text.constData()), text.constData());
    QVERIFY(!window.restoreGeometry(nullptr));
    QCOMPARE(window.qt_handle()->geometry(), QRect(40, 50, 500, 400));
}

void WindowTest::geometryIsBoundedToTheScreens()
{
    Window window{ScopedAcquisitionInterface()};
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    constexpr int least = std::numeric_limits<int>::min();
    constexpr int most = std::numeric_limits<int>::max();
    window.resize(1 << 30, most);
    QCOMPARE(window.qt_handle()->size(), QSize(32767, 32767));
    window.setGeometry(most, least, 600, 500);
    QCOMPARE(window.qt_handle()->geometry(), QRect(screen.right(), screen.top() - 499, 600, 500));
    window.setFrameGeometry(least, 30, 600, most);
    QCOMPARE(window.qt_handle()->frameGeometry(), QRect(screen.left() - 599, 30, 600, 32767));
    window.move(most, most);
    QCOMPARE(window.qt_handle()->frameGeometry().topLeft(), screen.bottomRight());
}

void WindowTest::settingsReachTheWindow()
{
    auto* const source = new PushSource;
    Window window{ScopedAcquisitionInterface(source)};
    QVERIFY(window.acquisitionInterface() == source && !window.fileInterface() && window.native_handle());
    using Setter = void (Window::*)(bool);
    using Getter = bool (Window::*)() const;
    const std::pair<Setter, Getter> switches[] = {
        {&Window::setCloseable, &Window::closeable},
        {&Window::setPreviewFrameRate, &Window::previewFrameRate},
        {&Window::setPreviewBuffersQueued, &Window::previewBuffersQueued},
        {&Window::setPreviewBuffersFilled, &Window::previewBuffersFilled},
        {&Window::setPreviewBuffersDropped, &Window::previewBuffersDropped},
        {&Window::setPreviewBuffersDelivered, &Window::previewBuffersDelivered},
        {&Window::setPreviewImageDimensions, &Window::previewImageDimensions},
        {&Window::setPreviewImageFormat, &Window::previewImageFormat},
        {&Window::setPreviewPixelValue, &Window::previewPixelValue},
        {&Window::setPreviewZoomLevel, &Window::previewZoomLevel},
        {&Window::setPreviewSetupMode, &Window::previewSetupMode},
        {&Window::setKeepImageInfoVisible, &Window::keepImageInfoVisible},
        {&Window::setBayerDemosaicEnabled, &Window::bayerDemosaicEnabled},
        {&Window::setRgbOrderReversed, &Window::rgbOrderReversed},
        {&Window::setPixelCrosshairVisible, &Window::pixelCrosshairVisible},
        {&Window::setRefreshEnabled, &Window::refreshEnabled},
        {&Window::setRefreshRateAuto, &Window::refreshRateAuto},
        {&Window::setZoomToFit, &Window::zoomToFit},
        {&Window::setExhibitView, &Window::isExhibitView},
        {&Window::setVisible, &Window::isVisible},
    };
    // Each alone: no setter may reach another one's switch.
    for (const auto& [set, get] : switches) {
        for (const bool wanted : {false, true}) {
            (window.*set)(wanted);
            QCOMPARE((window.*get)(), wanted);
        }
    }
    window.setExhibitView(false);
    window.setTitle("K\xFCn"); // Latin-1
    QVERIFY(textOf(window, &Window::title) == "K\xFCn" && window.qt_handle()->windowTitle().size() == 3);

    const TestFrame frame(900, 900, Mono8, 10);
    source->push(frame.raw);
    window.setZoomLevel(3); // before there is an image
    QTRY_VERIFY(!window.surfaceScrollArea()->surface()->pixmap().isNull());
    QCOMPARE(window.zoomLevel(), 3.0);
    window.resize(400, 300);
    window.setZoomLevel(2);
    QCOMPARE(window.zoomLevel(), 2.0);
    window.setImageOffset(120, 70);
    QVERIFY(window.imageOffsetX() == 120 && window.imageOffsetY() == 70);
}

void WindowTest::bayerFilterOverride()
{
    Window window{ScopedAcquisitionInterface()};
    const std::pair<int, const char*> filters[] = {{0x100, "actionBayerGB_Filter"},
                                                   {0x200, "actionBayerGR_Filter"},
                                                   {0x300, "actionBayerRG_Filter"},
                                                   {0x400, "actionBayerBG_Filter"},
                                                   {0, "actionBayer_Filter_Auto"}};
    for (const auto& [value, name] : filters) {
        window.setBayerFilterOverride(Format(value));
        QCOMPARE(int(window.bayerFilterOverride()), value);
        QVERIFY(window.qt_handle()->findChild<QAction*>(QLatin1String(name))->isChecked());
    }
    QStringList lines;
    reportedLines = &lines;
    setReportSink([](const std::string& line) { reportedLines->append(QString::fromStdString(line)); });
    window.setBayerFilterOverride(Format(0x500));
    setReportSink(nullptr);
    QCOMPARE(int(window.bayerFilterOverride()), 0);
    QCOMPARE(lines, QStringList(QStringLiteral(
                        "Vistrel::Window::setBayerFilterOverride: Unknown Bayer filter with index 1280.")));
}

void WindowTest::applicationAbout()
{
    Window window{ScopedAcquisitionInterface()};
    window.show();
    auto* const action = window.qt_handle()->findChild<QAction*>(QStringLiteral("actionAbout_Application"));
    QCOMPARE(textOf(window, &Window::applicationAboutTitle), QByteArray(""));
    QVERIFY(!action->isVisible());
    window.setApplicationAbout("Mill <3>", "Version 2", redDot, nullptr, redDot);
    QVERIFY(action->isVisible());
    QCOMPARE(textOf(window, &Window::applicationAboutTitle), QByteArray("Mill <3>"));
    QCOMPARE(textOf(window, &Window::applicationAboutDescription), QByteArray("Version 2"));
    QString shown;
    QTimer::singleShot(0, this, [&] {
        QWidget* const dialog = QApplication::activeModalWidget();
        for (const QLabel* const label : dialog->findChildren<QLabel*>())
            shown += label->text();
        dialog->close();
    });
    action->trigger();
    QVERIFY2(shown.contains(QLatin1String("Mill &lt;3&gt;")), qPrintable(shown));
    window.setApplicationAbout(nullptr, nullptr, nullptr, nullptr, nullptr);
    QVERIFY(!action->isVisible());
}

void WindowTest::closedWindowIsHarmless()
{
    Window window{ScopedAcquisitionInterface(new PushSource)};
    window.show();
    window.qt_handle()->close();
    QTRY_VERIFY(!window.good());
#if defined(NDEBUG)
    std::size_t size = 3;
    QVERIFY(!window.qt_handle() && !window.native_handle() && !window.surfaceStream() && !window.isVisible());
    QVERIFY(window.width() == 0 && window.zoomLevel() == 0 && !window.title(nullptr, &size));
    window.setRunning();
    window.setApplicationAbout("a", "b");
    QVERIFY(!window.addToolBarAction(ScopedActionInterface(), "no"));
#endif
}

void WindowTest::whyNoFrameIsShown_data()
{
    QTest::addColumn<bool>("isLocked");
    QTest::addColumn<bool>("isSetUp");
    QTest::addColumn<quint32>("format");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("why");
    QTest::newRow("not locked") << false << true << quint32(Mono8) << 4 << QStringLiteral("setFramesLocked(true)");
    QTest::newRow("not set up") << true << false << quint32(Mono8) << 4 << QStringLiteral("isSetup() is false");
    QTest::newRow("format") << true << true << 0x77u << 4 << QStringLiteral("unknown format 0x77");
    QTest::newRow("size") << true << true << quint32(Mono8) << 0 << QStringLiteral("0 x 3 pixels");
}

void WindowTest::whyNoFrameIsShown()
{
    QFETCH(bool, isLocked);
    QFETCH(bool, isSetUp);
    QFETCH(quint32, format);
    QFETCH(int, width);
    QFETCH(QString, why);
    static std::mutex mutex;
    static QString told;
    told.clear();
    setReportSink([](const std::string& line) {
        const std::lock_guard<std::mutex> guard(mutex);
        told += QString::fromStdString(line);
    });
    const auto reset = qScopeGuard([] { setReportSink(nullptr); });
    auto* const source = new PushSource;
    source->setFramesLocked(isLocked);
    source->setUp = isSetUp;
    Window window{ScopedAcquisitionInterface(source)};
    window.show();
    const TestFrame frame(4, 3, Mono8);
    const auto isShown = [&](const QString& text) {
        const QList<QLabel*> labels = window.qt_handle()->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
            return label->isVisible() && label->text().contains(why) && label->text().contains(text);
        });
    };
    const auto push = [&] { source->push({frame.pixels.data(), std::size_t(width), 3, Format(format), nullptr}); };
    push();
    QTRY_VERIFY(isShown({}));
    push();
    QTRY_VERIFY(!isSetUp || isShown(QStringLiteral("(2 times)")));
    const std::lock_guard<std::mutex> guard(mutex);
    QCOMPARE(told.count(why), 1);
}

QTEST_MAIN(WindowTest)
#include "WindowTest.moc"
