// SPDX-License-Identifier: MIT
// Tests the way of frames from a source to the surface.
#include "base/Report.h"
#include "support/FakeSources.h"

#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QTimer>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <limits>
#include <random>
#include <set>
#include <thread>

using namespace Vistrel;

namespace {

std::atomic<int> reportedLines{0};

QVector<unsigned int> redPalette()
{
    QVector<unsigned int> palette(256);
    for (int i = 0; i < 256; ++i)
        palette[i] = 0xFF000000u | static_cast<unsigned int>(i) << 16;
    return palette;
}

struct Display
{
    explicit Display(AbstractAcquisitionInterface& source)
        : stream(&surface, &source), updated(&stream, SIGNAL(imageUpdated()))
    {
        surface.resize(64, 64);
        surface.show();
    }

    Surface surface;
    SurfaceStream stream;
    QSignalSpy updated;
};

} // namespace

class SurfaceStreamTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { reportedLines = 0; }
    void cleanup() { setReportSink(nullptr); }

    void pushedFrameIsShown();
    void sourceNotSetUpShowsNothing();
    void refreshRate();
    void badFrameKeepsThePicture_data();
    void badFrameKeepsThePicture();
    void nullFrameClears();
    void throwingSourceIsReported();
    void restlessSource();
    void blockedSourceStopsNothing();
    void streamEndsWhileItsSourceIsBlocked();
    void surfaceGoesFirst();
    void sourceOfUnreadableBuffers();
    void slotsMayCallBack();
    void paletteAppliesToThePictureInView();
    void mosaicSettings();
    void channelOrderNeedsALock();
    void picturesThatLeaveTheStreamStay();
    void memoryIsRecycled();
    void bitmapLock_data();
    void bitmapLock();
    void hostDrawsIntoTheBitmap();
};

void SurfaceStreamTest::pushedFrameIsShown()
{
    PushSource source;
    TestFrame frame(100, 50, Mono12);
    frame.raw.userData = &frame;
    frame.pixels[0] = 0x34;
    frame.pixels[1] = 0x02;
    source.setNextFrame(frame.raw); // announced by nothing: the stream asks by itself
    Display display(source);
    QTRY_COMPARE(display.surface.pixmap().size(), QSize(100, 50));
    QCOMPARE(display.updated.count(), 1);
    QCOMPARE(display.stream.framesConverted(), quint64{1});
    QCOMPARE(display.stream.framesPublished(), quint64{1});
    QCOMPARE(display.stream.latestImageSize(), QSize(100, 50));
    QCOMPARE(display.stream.latestImageFormat(), Mono12);
    QCOMPARE(display.stream.latestQImageFormat(), QImage::Format_Indexed8);
    QCOMPARE(int(display.stream.cloneLatestImage().constBits()[0]), 0x23);

    RawImage latest;
    ScopedLock lock;
    QVERIFY(display.stream.latestImage(&latest, &lock));
    QVERIFY(lock.good() && latest.data == frame.pixels.data() && latest.userData == &frame);
    QVERIFY(display.stream.latestImage(&latest, &lock)); // does not wait for the lock that it holds itself
    lock.reset(nullptr);
    QVERIFY(!display.stream.latestImage(nullptr, nullptr));
    source.setFramesLocked(false);
    QVERIFY(!display.stream.latestImage(&latest, &lock) && lock.bad());
    QVERIFY(display.stream.latestImage(&latest, nullptr));
    source.setFramesLocked(true);

    Surface::PixVal value;
    QVERIFY(display.surface.imageSrcPixVal({0, 0}, value));
    QVERIFY(value.mono && value.value == 0x234);
}

void SurfaceStreamTest::sourceNotSetUpShowsNothing()
{
    PushSource source;
    source.setUp = false;
    TestFrame frame(8, 8, Mono8);
    Display display(source);
    QTRY_COMPARE(display.updated.count(), 1);
    QVERIFY(!display.stream.refreshEnabled());
    source.setSetup(true);
    QTRY_VERIFY(display.stream.refreshEnabled());
    source.push(frame.raw);
    QTRY_VERIFY(!display.surface.pixmap().isNull());
    source.setSetup(false);
    QTRY_VERIFY(display.surface.pixmap().isNull());
    QVERIFY(!display.stream.refreshEnabled());
    Surface::PixVal value;
    QVERIFY(!display.surface.imageSrcPixVal({0, 0}, value));
    QVERIFY(display.stream.cloneLatestImage().isNull());
    QCOMPARE(display.stream.latestQImageFormat(), QImage::Format_Invalid);
}

void SurfaceStreamTest::refreshRate()
{
    PushSource source;
    Display display(source);
    QVERIFY(display.stream.refreshRateAuto());
    display.stream.setRefreshRate(60);
    QCOMPARE(display.stream.refreshRate(), 62);
    QVERIFY(!display.stream.refreshRateAuto());
    display.stream.setRefreshRateAuto(true);
    display.stream.setRefreshRate(0);
    QVERIFY(!display.stream.refreshRateAuto());
    QVERIFY(display.stream.refreshRate() > 0);
    display.stream.setRefreshRate(std::numeric_limits<int>::max());
    QCOMPARE(display.stream.refreshRate(), 1000);
    display.stream.setRefreshRate(-5);
    QCOMPARE(display.stream.refreshRate(), 1000);
    display.stream.setRefreshRateAuto(true);
    display.stream.setRefreshRateAuto(true);
    Q_EMIT QGuiApplication::primaryScreen()->refreshRateChanged(25);
    QCOMPARE(display.stream.refreshRate(), 25);
    display.stream.setRefreshRateAuto(false);
    Q_EMIT QGuiApplication::primaryScreen()->refreshRateChanged(50);
    QCOMPARE(display.stream.refreshRate(), 25);
}

void SurfaceStreamTest::badFrameKeepsThePicture_data()
{
    QTest::addColumn<quint64>("width");
    QTest::addColumn<quint64>("height");
    QTest::addColumn<unsigned>("format");
    constexpr quint64 huge = std::numeric_limits<quint64>::max();
    QTest::newRow("no width") << quint64{0} << quint64{4} << unsigned(Mono8);
    QTest::newRow("no height") << quint64{4} << quint64{0} << unsigned(Mono8);
    QTest::newRow("product overflows") << huge / 2 << quint64{4} << unsigned(Mono16);
    QTest::newRow("wraps to a small size") << (huge / 4 + 2) << quint64{4} << unsigned(Mono8);
    QTest::newRow("past the toolkit's sizes") << (quint64{1} << 31) << quint64{1} << unsigned(Mono8);
    QTest::newRow("row past the toolkit's sizes") << (quint64{1} << 30) << quint64{1} << unsigned(RGB16);
    QTest::newRow("depth") << quint64{4} << quint64{4} << 9u;
    QTest::newRow("no depth") << quint64{4} << quint64{4} << 0u;
    QTest::newRow("mosaic too narrow") << quint64{3} << quint64{100} << unsigned(BayerRG8);
    QTest::newRow("no such pattern") << quint64{8} << quint64{8} << 0x508u;
}

void SurfaceStreamTest::badFrameKeepsThePicture()
{
    QFETCH(quint64, width);
    QFETCH(quint64, height);
    QFETCH(unsigned, format);
    PushSource source;
    Display display(source);
    display.stream.setBayerDemosaicEnabled(true);
    TestFrame good(10, 10, Mono8, 77);
    source.push(good.raw);
    QTRY_COMPARE(display.stream.framesPublished(), quint64{1});
    const int locks = source.frameLocks;
    source.push({good.pixels.data(), width, height, Format(format), nullptr});
    QTRY_COMPARE(source.frameLocks.load(), locks + 1); // taken
    RawImage latest;
    ScopedLock lock = source.getFrameLock(latest); // and let go
    QCOMPARE(display.stream.framesConverted(), quint64{1});
    QVERIFY(display.stream.latestImage(&latest, nullptr));
    QCOMPARE(latest.width, std::size_t{10});
    QCOMPARE(int(display.stream.cloneLatestImage().constBits()[0]), 77);
    QCOMPARE(display.surface.pixmap().size(), QSize(10, 10));
}

void SurfaceStreamTest::nullFrameClears()
{
    PushSource source;
    Display display(source);
    TestFrame frame(10, 10, RGB8);
    source.push(frame.raw);
    QTRY_VERIFY(!display.surface.pixmap().isNull());
    source.push({nullptr, 10, 10, RGB8, nullptr});
    QTRY_VERIFY(display.surface.pixmap().isNull());
    QCOMPARE(display.stream.latestImageSize(), QSize(0, 0));
    RawImage latest;
    QVERIFY(!display.stream.latestImage(&latest, nullptr));
    source.push(frame.raw);
    QTRY_VERIFY(!display.surface.pixmap().isNull());
}

void SurfaceStreamTest::throwingSourceIsReported()
{
    setReportSink([](const std::string& line) { reportedLines += line.find("getNextFrame") != std::string::npos; });
    TestFrame frame(6, 6, Mono8);
    PullSource source([&, calls = 0](RawImage* image, ScopedLock*) mutable {
        *image = frame.raw;
        if (++calls > 1)
            throw 5;
        return true;
    });
    Display display(source);
    QTRY_VERIFY(reportedLines > 1);
    QCOMPARE(display.surface.pixmap().size(), QSize(6, 6));
    QCOMPARE(display.stream.framesConverted(), quint64{1});
}

// Another size and format with every frame, most of them fit to be shown and some not.
void SurfaceStreamTest::restlessSource()
{
    std::mt19937 random(7);
    constexpr unsigned formats[] = {Mono8, Mono10p, Mono12, BayerBG16, RGB8, BGR10p32, RGBa8, RGB16, 9, 0x800A, 64};
    std::vector<std::uint8_t> pixels(64 * 64 * 6, 99);
    PullSource source([&](RawImage* image, ScopedLock*) {
        *image = {pixels.data(), random() % 65, random() % 65, Format(formats[random() % std::size(formats)]), nullptr};
        return true;
    });
    Display display(source);
    display.stream.setBayerDemosaicEnabled(true);
    display.stream.setColorPalette(redPalette());
    display.surface.setScaling(3);
    display.stream.setRefreshRate(1000);
    QTRY_VERIFY(display.stream.framesPublished() > 100);
}

void SurfaceStreamTest::blockedSourceStopsNothing()
{
    Gate gate;
    PullSource source([&](RawImage*, ScopedLock*) {
        gate.pass();
        return false;
    });
    Display display(source);
    QTRY_COMPARE(gate.arrived(), 1);
    QSignalSpy ticks(display.stream.findChild<QTimer*>(), &QTimer::timeout);
    QTRY_VERIFY(ticks.count() > 5);
    display.stream.setColorPalette(redPalette());
    display.stream.setBayerDemosaicEnabled(true);
    display.stream.setRgbOrderReversed(true);
    QCOMPARE(gate.arrived(), 1);
    gate.openForGood();
}

void SurfaceStreamTest::streamEndsWhileItsSourceIsBlocked()
{
    Gate gate;
    TestFrame frame(4, 4, Mono8);
    PullSource source([&](RawImage* image, ScopedLock*) {
        gate.pass();
        *image = frame.raw;
        return true;
    });
    auto display = std::make_unique<Display>(source);
    QTRY_COMPARE(gate.arrived(), 1);
    std::thread release([&] { gate.openForGood(); });
    display.reset();
    release.join();
}

void SurfaceStreamTest::surfaceGoesFirst()
{
    PushSource source;
    auto surface = std::make_unique<Surface>();
    SurfaceStream stream(surface.get(), &source);
    TestFrame frame(4, 4, Mono8);
    source.push(frame.raw);
    QTRY_COMPARE(stream.framesPublished(), quint64{1});
    surface.reset();
    source.push(frame.raw);
    QTRY_COMPARE(stream.framesPublished(), quint64{2});
    QVERIFY(!stream.surface());
    SurfaceStream idle(nullptr, nullptr);
    QVERIFY(!idle.refreshEnabled());
}

void SurfaceStreamTest::sourceOfUnreadableBuffers()
{
    ProtectedSource source(20, 20, Mono8);
    ProtectedSource mosaic(20, 20, BayerGR12);
    ProtectedSource color(20, 20, BGR12);
    for (AbstractAcquisitionInterface* const each :
         {static_cast<AbstractAcquisitionInterface*>(&source), static_cast<AbstractAcquisitionInterface*>(&mosaic),
          static_cast<AbstractAcquisitionInterface*>(&color)}) {
        Display display(*each);
        display.surface.resize(400, 400);
        QTRY_VERIFY(display.stream.framesPublished() > 0);
        display.stream.setBayerDemosaicEnabled(true);
        display.stream.setBayerDemosaicFilter(BayerBG);
        display.stream.setBayerDemosaicFilter(Format(0));
        display.stream.setBayerDemosaicEnabled(false);
        display.stream.setRgbOrderReversed(true);
        display.stream.setColorPalette(redPalette());
        display.surface.setScaling(Surface::scalingMax());
        Surface::PixVal value;
        QVERIFY(display.surface.imageSrcPixVal({3, 3}, value));
        QVERIFY(!display.surface.grab().isNull()); // the values are written into the cells
        QVERIFY(!display.stream.cloneLatestImageForRender().isNull());
        QVERIFY(display.stream.setBitmapLocked(20, 20, RGBa8));
        display.stream.setRgbOrderReversed(false);
        display.stream.unlockBitmap();
    }
}

// Connected directly, every slot runs in the middle of what announces it.
void SurfaceStreamTest::slotsMayCallBack()
{
    PushSource source;
    Display display(source);
    int depth = 0;
    int calls = 0;
    const auto callBack = [&] {
        if (++depth == 1) {
            ++calls;
            Surface::PixVal value;
            display.surface.imageSrcPixVal({1, 1}, value);
            display.surface.setScaling(display.surface.scaling() * 2);
            display.surface.setScaledOffset(QPointF(3, 3));
            display.surface.setPixmap(display.stream.peekPixmap());
            display.stream.setColorPalette(calls % 2 == 0 ? redPalette() : QVector<unsigned int>());
            display.stream.setBayerDemosaicEnabled(calls % 2 == 0);
            display.stream.setRgbOrderReversed(calls % 2 == 0);
            display.stream.cloneLatestImage();
            if (display.stream.bitmapLocked())
                display.stream.unlockBitmap();
            display.surface.setScaleToFit(true);
        }
        --depth;
    };
    connect(&display.surface, &Surface::pixelRangeChanged, this, callBack, Qt::DirectConnection);
    connect(&display.surface, &Surface::pixelOffsetChanged, this, callBack, Qt::DirectConnection);
    connect(&display.surface, &Surface::scalingChanged, this, callBack, Qt::DirectConnection);
    connect(&display.stream, &SurfaceStream::imageUpdated, this, callBack, Qt::DirectConnection);
    connect(&display.stream, &SurfaceStream::bitmapLockChanged, this, callBack, Qt::DirectConnection);
    connect(source.signalHandler(), SIGNAL(getFrameNow()), &display.stream, SIGNAL(imageUpdated()),
            Qt::DirectConnection);
    std::vector<std::unique_ptr<TestFrame>> frames; // kept as long as they may be read
    for (std::size_t i = 1; i < 10; ++i) {
        frames.push_back(std::make_unique<TestFrame>(20 * i, 100, i % 2 == 0 ? BayerGB8 : RGB8));
        const quint64 before = display.stream.framesPublished();
        source.push(frames.back()->raw);
        QTRY_VERIFY(display.stream.framesPublished() > before);
        display.stream.setBitmapLocked(10, 10, Mono8);
        display.stream.unlockBitmap();
    }
    QVERIFY(calls > 10);
}

void SurfaceStreamTest::paletteAppliesToThePictureInView()
{
    PushSource source;
    Display display(source);
    TestFrame frame(8, 8, Mono8, 100);
    source.push(frame.raw);
    QTRY_VERIFY(!display.surface.pixmap().isNull());
    const auto shown = [&] { return display.surface.pixmap().toImage().pixelColor(4, 4); };
    QCOMPARE(shown(), QColor(100, 100, 100));
    display.stream.setColorPalette(redPalette());
    QCOMPARE(shown(), QColor(100, 0, 0));
    QCOMPARE(display.stream.cloneLatestImageForRender().pixelColor(4, 4), QColor(100, 0, 0));
    QCOMPARE(int(display.stream.cloneLatestImage().constBits()[0]), 100);
    display.stream.setColorPalette(redPalette().mid(1)); // 255 entries
    QCOMPARE(shown(), QColor(100, 100, 100));

    // A frame that is converted but not shown yet comes with its own pixel values.
    TestFrame larger(16, 16, Mono8, 90);
    display.stream.setRefreshEnabled(false);
    source.push(larger.raw);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    while (display.stream.framesConverted() < 2)
        std::this_thread::yield();
    display.stream.setColorPalette(redPalette());
    QCOMPARE(display.surface.pixmap().size(), QSize(16, 16));
    Surface::PixVal value;
    QVERIFY(display.surface.imageSrcPixVal({15, 15}, value));
}

void SurfaceStreamTest::mosaicSettings()
{
    PushSource source;
    Display display(source);
    TestFrame frame(8, 8, BayerRG8);
    for (std::size_t i = 0; i < 64; ++i)
        frame.pixels[i] = (i / 8) % 2 == 0 && i % 2 == 0 ? 200 : 0; // red sites alone
    source.push(frame.raw);
    QTRY_VERIFY(!display.surface.pixmap().isNull());
    QCOMPARE(display.stream.latestImageFormat(), Mono8);
    const quint64 converted = display.stream.framesConverted();
    display.stream.setBayerDemosaicEnabled(true);
    QCOMPARE(display.stream.latestImageFormat(), BayerRG8);
    QCOMPARE(display.surface.pixmap().toImage().pixelColor(4, 4), QColor(200, 0, 0));
    Surface::PixVal value;
    QVERIFY(display.surface.imageSrcPixVal({4, 4}, value));
    QVERIFY(value.color && value.r == 200 && value.b == 0);
    display.stream.setBayerDemosaicFilter(BayerBG);
    QCOMPARE(display.stream.bayerDemosaicFilter(), BayerBG);
    QCOMPARE(display.surface.pixmap().toImage().pixelColor(4, 4), QColor(0, 0, 200));
    QCOMPARE(display.stream.framesConverted(), converted);

    TestFrame gray(8, 8, Mono8);
    display.stream.setBayerDemosaicFilter(Format(0));
    source.push(gray.raw);
    QTRY_COMPARE(display.stream.latestImageFormat(), Mono8);
    const int locks = source.frameLocks;
    display.stream.setBayerDemosaicEnabled(false);
    display.stream.setBayerDemosaicEnabled(true);
    QCOMPARE(source.frameLocks.load(), locks); // nothing to convert again
    display.stream.setBayerDemosaicFilter(BayerBG);
    QCOMPARE(display.stream.latestImageFormat(), BayerBG8);
    TestFrame color(8, 8, RGB8);
    source.push(color.raw);
    QTRY_COMPARE(display.stream.latestImageFormat(), RGB8); // an override makes no mosaic of colour
}

void SurfaceStreamTest::channelOrderNeedsALock()
{
    TestFrame frame(4, 4, RGB8);
    for (std::size_t i = 0; i < frame.pixels.size(); i += 3)
        frame.pixels[i] = 200;
    PushSource locking;
    Display display(locking);
    locking.push(frame.raw);
    QTRY_VERIFY(!display.surface.pixmap().isNull());
    QCOMPARE(display.surface.pixmap().toImage().pixelColor(1, 1), QColor(0, 0, 200));
    display.stream.setRgbOrderReversed(true);
    QCOMPARE(display.surface.pixmap().toImage().pixelColor(1, 1), QColor(200, 0, 0));
    QCOMPARE(display.stream.cloneLatestImageForRender().pixelColor(1, 1), QColor(200, 0, 0));
    Surface::PixVal value;
    QVERIFY(display.surface.imageSrcPixVal({1, 1}, value));
    QVERIFY(value.r == 200 && value.b == 0);
    locking.setFramesLocked(false);
    display.stream.setRgbOrderReversed(false);
    QCOMPARE(display.surface.pixmap().toImage().pixelColor(1, 1), QColor(200, 0, 0)); // the next frame shows it
}

void SurfaceStreamTest::picturesThatLeaveTheStreamStay()
{
    PushSource source;
    auto display = std::make_unique<Display>(source);
    TestFrame first(32, 32, Mono8, 50);
    source.push(first.raw);
    QTRY_VERIFY(!display->surface.pixmap().isNull());
    const QPixmap kept = display->stream.peekPixmap();
    QPixmap painted = display->stream.peekPixmap();
    {
        QPainter painter(&painted);
        painter.fillRect(painted.rect(), Qt::white);
    }
    QImage written = display->stream.cloneLatestImage();
    written.bits()[0] = 1;
    QCOMPARE(int(display->stream.cloneLatestImage().constBits()[0]), 50);
    QCOMPARE(display->surface.pixmap().toImage().pixelColor(0, 0), QColor(50, 50, 50));

    std::vector<std::unique_ptr<TestFrame>> frames;
    for (std::uint8_t i = 0; i < 5; ++i) {
        frames.push_back(std::make_unique<TestFrame>(32, 32, Mono8, std::uint8_t(200 + i)));
        source.push(frames.back()->raw);
        QTRY_COMPARE(display->stream.framesPublished(), quint64{2} + i);
    }
    QCOMPARE(display->surface.pixmap().toImage().pixelColor(9, 9), QColor(204, 204, 204));
    display.reset();
    QCOMPARE(kept.toImage().pixelColor(9, 9), QColor(50, 50, 50));
}

void SurfaceStreamTest::memoryIsRecycled()
{
    PushSource source;
    Display display(source);
    display.stream.setColorPalette(redPalette());
    TestFrame frame(640, 480, Mono10);
    std::set<const uchar*> shown;
    for (quint64 i = 1; i <= 60; ++i) {
        source.push(frame.raw);
        QTRY_COMPARE(display.stream.framesPublished(), i);
        shown.insert(display.stream.peekPixmap().toImage().constBits());
    }
    QVERIFY(shown.size() <= 3); // shown, shown before, being written
}

void SurfaceStreamTest::bitmapLock_data()
{
    QTest::addColumn<unsigned>("format");
    QTest::addColumn<unsigned>("fitting");
    QTest::addColumn<unsigned>("unfitting");
    QTest::newRow("mono") << unsigned(Mono8) << unsigned(Mono12) << unsigned(RGB8);
    QTest::newRow("three bytes") << unsigned(RGB8) << unsigned(BGR8) << unsigned(Mono8);
    QTest::newRow("four bytes") << unsigned(RGBa8) << unsigned(RGB16) << unsigned(Mono16);
}

void SurfaceStreamTest::bitmapLock()
{
    QFETCH(unsigned, format);
    QFETCH(unsigned, fitting);
    QFETCH(unsigned, unfitting);
    PushSource source;
    Display display(source);
    QSignalSpy changed(&display.stream, &SurfaceStream::bitmapLockChanged);
    RawImage bitmap;
    QVERIFY(!display.stream.getBitmap(&bitmap));
    QVERIFY(!display.stream.setBitmapLocked(12, 10, Mono16));
    QVERIFY(!display.stream.setBitmapLocked(12, 10, BGR8));
    QCOMPARE(changed.count(), 0);
    QVERIFY(!display.stream.setBitmapLocked(0, 10, Format(format)));
    QCOMPARE(changed.takeFirst().at(0).toBool(), false);

    QVERIFY(display.stream.setBitmapLocked(12, 10, Format(format)));
    QCOMPARE(changed.takeFirst().at(0).toBool(), true);
    QVERIFY(display.stream.bitmapLocked() && display.stream.getBitmap(&bitmap));
    QCOMPARE(unsigned(bitmap.format), format);
    const std::size_t bytes = 12 * 10 * bytesPerPixel(bitmap.format);
    QVERIFY(std::all_of(bitmap.data, bitmap.data + bytes, [](std::uint8_t byte) { return byte == 0; }));

    TestFrame frame(12, 10, Format(fitting), 0x33);
    source.push(frame.raw);
    QTRY_VERIFY(!display.surface.pixmap().isNull());
    QVERIFY(display.surface.pixmap().toImage().pixelColor(5, 5) == QColor(0x33, 0x33, 0x33));
    QCOMPARE(int(bitmap.data[0]), 0x33);

    TestFrame otherKind(12, 10, Format(unfitting), 0x44);
    TestFrame otherSize(13, 10, Format(fitting), 0x44);
    for (const RawImage& refused : {otherKind.raw, otherSize.raw}) {
        const int locks = source.frameLocks;
        source.push(refused);
        QTRY_COMPARE(source.frameLocks.load(), locks + 1);
        source.setFramesLocked(true); // waits for the conversion
        RawImage same;
        QVERIFY(display.stream.getBitmap(&same) && same.data == bitmap.data);
        QCOMPARE(int(bitmap.data[0]), 0x33);
    }
    display.stream.unlockBitmap();
    QCOMPARE(changed.takeFirst().at(0).toBool(), false);
    QVERIFY(!display.stream.getBitmap(&bitmap));
    source.push(otherSize.raw);
    QTRY_COMPARE(display.surface.pixmap().size(), QSize(13, 10));
}

void SurfaceStreamTest::hostDrawsIntoTheBitmap()
{
    PushSource source;
    Display display(source);
    QVERIFY(display.stream.setBitmapLocked(4, 4, RGB8));
    RawImage bitmap;
    QVERIFY(display.stream.getBitmap(&bitmap));
    auto* const pixels = const_cast<std::uint8_t*>(bitmap.data);
    for (std::size_t i = 0; i < 48; i += 3)
        pixels[i] = 150; // blue, in the RGB order
    source.push(bitmap);
    QTRY_COMPARE(display.surface.pixmap().size(), QSize(4, 4));
    const QImage shown = display.surface.pixmap().toImage();
    QCOMPARE(shown.pixelColor(2, 2), QColor(0, 0, 150));
    QCOMPARE(display.stream.cloneLatestImageForRender().pixelColor(2, 2), QColor(0, 0, 150));
    pixels[0] = 1;
    QCOMPARE(shown.pixelColor(0, 0), QColor(0, 0, 150)); // the picture is a copy: drawing on does not tear it

    for (RawImage wrong : {RawImage{bitmap.data, 5, 4, RGB8, nullptr}, RawImage{bitmap.data, 4, 4, RGB16, nullptr}}) {
        const int locks = source.frameLocks;
        source.push(wrong);
        QTRY_COMPARE(source.frameLocks.load(), locks + 1);
        source.setFramesLocked(true);
        QCOMPARE(display.stream.framesConverted(), quint64{1});
    }
    bitmap.format = BGR8;
    source.push(bitmap);
    QTRY_COMPARE(display.surface.pixmap().toImage().pixelColor(2, 2), QColor(150, 0, 0));

    // What the surface reads pixel values from stays until something else is shown.
    QVERIFY(display.stream.setBitmapLocked(4, 4, RGBa8));
    Surface::PixVal value;
    QVERIFY(display.surface.imageSrcPixVal({2, 2}, value));
    QCOMPARE(value.r, 150u);
    QVERIFY(display.stream.getBitmap(&bitmap));
    source.push(bitmap);
    QTRY_COMPARE(display.stream.latestImageFormat(), RGBa8);
    QCOMPARE(qAlpha(display.stream.cloneLatestImage().pixel(0, 0)), 255);
}

QTEST_MAIN(SurfaceStreamTest)
#include "SurfaceStreamTest.moc"
