// SPDX-License-Identifier: MIT
// Tests the display window as hosts without the toolkit use it.
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>
#include <Vistrel/Window.h>

#include "base/Log.h"
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

std::mutex reportedMutex;
QString reported;

void keep(const std::string& line)
{
    const std::lock_guard<std::mutex> guard(reportedMutex);
    reported += QString::fromStdString(line);
}

} // namespace

class WindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { setReportSink(keep); }
    void geometryComesBack();
    void geometryIsBoundedToTheScreens();
    void viewIsPlaced();
    void bayerFilterOverride();
    void applicationAbout();
    void closedWindowIsHarmless();
    void whyNoFrameIsShown();
};

void WindowTest::geometryComesBack()
{
    Window window{ScopedAcquisitionInterface()};
    window.show();
    window.setFrameGeometry(30, 20, 450, 380);
    std::size_t size = 0;
    QVERIFY(window.saveGeometry(nullptr, &size));
    QByteArray saved(int(size), '\0');
    QVERIFY(window.saveGeometry(saved.data(), &size));
    saved.chop(1); // its end
    window.setGeometry(40, 50, 500, 400);
    const auto with = [&saved](int number, quint32 value) { // in place of one of the text's numbers
        return saved.left(8 * number) + QByteArray::number(value, 16).rightJustified(8, '0') +
               saved.mid(8 * number + 8);
    };
    for (const QByteArray& text :
         {saved.left(saved.size() - 2), saved.left(9), saved + "zz", saved + "00", QByteArray("rubbish"),
          QByteArray(""), "00" + saved.mid(2), with(4, 50000) /* right edge of the frame */,
          with(9, 50000) /* bottom of the normal place */, with(4, 0x80000000)})
        QVERIFY2(!window.restoreGeometry(text.constData()), text.constData());
    QVERIFY(!window.restoreGeometry(nullptr));
    QCOMPARE(window.qt_handle()->geometry(), QRect(40, 50, 500, 400));
    QVERIFY(window.restoreGeometry(saved.constData()));
    int x = 0, y = 0, width = 0, height = 0;
    window.getFrameGeometry(x, y, width, height);
    QCOMPARE(QRect(x, y, width, height), QRect(30, 20, 450, 380));
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

void WindowTest::viewIsPlaced()
{
    auto* const source = new PushSource;
    Window window{ScopedAcquisitionInterface(source)};
    const TestFrame frame(900, 900, Mono8, 10);
    source->push(frame.raw);
    window.setZoomLevel(3); // before there is an image
    QTRY_VERIFY(!window.surfaceScrollArea()->surface()->pixmap().isNull());
    QCOMPARE(window.zoomLevel(), 3.0);
    window.resize(400, 300);
    window.setImageOffset(120, 70);
    QVERIFY(window.imageOffsetX() == 120 && window.imageOffsetY() == 70);
}

void WindowTest::bayerFilterOverride()
{
    Window window{ScopedAcquisitionInterface()};
    int value = 0x100;
    for (const char* const name :
         {"actionBayerGB_Filter", "actionBayerGR_Filter", "actionBayerRG_Filter", "actionBayerBG_Filter"}) {
        window.setBayerFilterOverride(Format(value));
        QCOMPARE(int(window.bayerFilterOverride()), value);
        QVERIFY2(window.qt_handle()->findChild<QAction*>(QLatin1String(name))->isChecked(), name);
        value += 0x100;
    }
    window.setBayerFilterOverride(Format(value));
    QCOMPARE(int(window.bayerFilterOverride()), 0x400); // refused
}

void WindowTest::applicationAbout()
{
    Window window{ScopedAcquisitionInterface()};
    window.show();
    auto* const action = window.qt_handle()->findChild<QAction*>(QStringLiteral("actionAbout_Application"));
    QVERIFY(!action->isVisible());
    window.setApplicationAbout("Mill <3>", "Version 2");
    QString shown;
    QTimer::singleShot(0, this, [&] {
        for (const QLabel* const label : QApplication::activeModalWidget()->findChildren<QLabel*>())
            shown += label->text();
        QApplication::activeModalWidget()->close();
    });
    action->trigger();
    QVERIFY2(shown.contains(QLatin1String("Mill &lt;3&gt;")), qPrintable(shown));
    window.setApplicationAbout(nullptr, nullptr);
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

void WindowTest::whyNoFrameIsShown()
{
    const struct
    {
        bool isLocked;
        bool isSetUp;
        unsigned format;
        std::size_t width;
        const char* why;
    } rows[] = {{false, true, Mono8, 4, "setFramesLocked(true)"},
                {true, false, Mono8, 4, "isSetup() is false"},
                {true, true, 0x77, 4, "unknown format 0x77"},
                {true, true, Mono8, 0, "0 x 3 pixels"}};
    for (const auto& row : rows) {
        auto* const source = new PushSource;
        source->setFramesLocked(row.isLocked);
        source->setUp = row.isSetUp;
        Window window{ScopedAcquisitionInterface(source)};
        window.show();
        const TestFrame frame(4, 3, Mono8);
        const QString why = QString::fromLatin1(row.why);
        const auto isShown = [&](const QString& text) {
            const QString hint = window.surfaceStream()->surface()->accessibleDescription();
            return hint.contains(why) && hint.contains(text);
        };
        const auto push = [&] { source->push({frame.pixels.data(), row.width, 3, Format(row.format), nullptr}); };
        push();
        QTRY_VERIFY(isShown({}));
        push();
        QTRY_VERIFY(!row.isSetUp || isShown(QStringLiteral("(2 times)")));
        source->clearNextFrame();
        source->setSetup(true);
        QTRY_VERIFY(row.isSetUp || !isShown({}));
        const std::lock_guard<std::mutex> guard(reportedMutex);
        QCOMPARE(reported.count(why), 1);
    }
}

QTEST_MAIN(WindowTest)
#include "WindowTest.moc"
