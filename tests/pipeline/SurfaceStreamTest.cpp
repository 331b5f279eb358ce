// SPDX-License-Identifier: MIT
// Tests the way of frames from a source to the surface.
#include "base/Log.h"
#include "support/FakeSources.h"

#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QScopeGuard>
#include <QtCore/QTimer>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <limits>
#include <set>
#include <thread>

using namespace Vistrel;

namespace {

QVector<unsigned int> redPalette()
{
    QVector<unsigned int> palette(256);
    for (int i = 0; i < 256; ++i)
        palette[i] = 0xFF000000u | static_cast<unsigned int>(i) << 16;
    return palette;
}

// Bright in the first channel alone: blue, in the RGB order.
TestFrame blueFrame()
{
    TestFrame frame(4, 4, RGB8);
    for (std::size_t i = 0; i < frame.pixels.size(); i += 3)
        frame.pixels[i] = 200;
    return frame;
}

template <class Source>
struct Display
{
    template <class... Arguments>
    explicit Display(Arguments&&... arguments) : source(std::forward<Arguments>(arguments)...)
    {
        surface.resize(64, 64);
        surface.show();
    }

    QColor shown(int x = 2, int y = 2) const { return surface.pixmap().toImage().pixelColor(x, y); }
    bool reads(int x, int y) { return surface.imageSrcPixVal({x, y}, value); }

    Source source;
    Surface surface;
    SurfaceStream stream{&surface, &source};
    Surface::PixVal value; // read last
};

struct PushDisplay : Display<PushSource>
{
    void show(const RawImage& frame)
    {
        const quint64 before = stream.framesPublished();
        source.push(frame);
        QTRY_COMPARE(stream.framesPublished(), before + 1);
    }

    /// Pushes a frame and waits until it has been taken and dealt with.
    void refuse(const RawImage& frame)
    {
        const quint64 before = stream.framesConverted();
        const int locks = source.frameLocks;
        source.push(frame);
        QTRY_COMPARE(source.frameLocks.load(), locks + 1);
        source.setFramesLocked(true); // waits for the lock's release
        QCOMPARE(stream.framesConverted(), before);
    }
};

} // namespace

class SurfaceStreamTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pushedFrameIsShown();
    void sourceNotSetUpShowsNothing();
    void refreshRate();
    void badFrameKeepsThePicture();
    void throwingSourceIsReported();
    void blockedSourceStopsNothing();
    void announcementsWithoutPause();
    void surfaceAndStreamEndInAnyOrder();
    void sourceOfUnreadableBuffers();
    void slotsMayCallBack();
    void paletteAppliesToThePictureInView();
    void mosaicAndChannelOrder();
    void picturesThatLeaveTheStreamStay();
    void bitmapLock();
    void hostDrawsIntoTheBitmap();
};

void SurfaceStreamTest::pushedFrameIsShown()
{
    PushDisplay display;
    SurfaceStream& stream = display.stream;
    TestFrame frame(100, 50, Mono12);
    frame.raw.userData = &frame;
    frame.pixels[0] = 0x34;
    frame.pixels[1] = 0x02;
    display.source.setNextFrame(frame.raw); // announced by nothing: the stream asks by itself
    QVERIFY(stream.refusal().isEmpty());    // nobody has asked yet whether the source is set up
    std::vector<QSize> told;
    connect(&stream, &SurfaceStream::imageUpdated, this, [&] { told.push_back(display.surface.pixmap().size()); });
    QTRY_COMPARE(display.surface.pixmap().size(), QSize(100, 50));
    QCOMPARE(told, std::vector<QSize>{QSize(100, 50)});
    QCOMPARE(stream.framesPublished(), quint64{1});
    QCOMPARE(int(stream.cloneLatestImage().constBits()[0]), 0x23);
    QVERIFY(display.reads(0, 0) && display.value.mono && display.value.value == 0x234);

    RawImage latest;
    ScopedLock lock;
    QVERIFY(stream.latestImage(&latest, &lock));
    QVERIFY(lock.good() && latest.data == frame.pixels.data() && latest.userData == &frame);
    QVERIFY(stream.latestImage(&latest, &lock)); // does not wait for the lock that it holds itself
    lock.reset(nullptr);
    display.source.setFramesLocked(false);
    QVERIFY(!stream.latestImage(&latest, &lock) && lock.bad());
    QVERIFY(stream.latestImage(&latest, nullptr));
}

void SurfaceStreamTest::sourceNotSetUpShowsNothing()
{
    PushDisplay display;
    display.source.setUp = false;
    const TestFrame frame(8, 8, Mono8);
    QSignalSpy updated(&display.stream, SIGNAL(imageUpdated()));
    QTRY_COMPARE(updated.count(), 1);
    QVERIFY(!display.stream.refreshEnabled());
    display.source.push(frame.raw);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall); // looked at, and not fetched yet
    display.source.setSetup(true);
    QTRY_VERIFY(display.stream.refreshEnabled());
    QTRY_VERIFY(!display.surface.pixmap().isNull());
    display.source.setSetup(false);
    QTRY_VERIFY(display.surface.pixmap().isNull());
    QVERIFY(!display.stream.refreshEnabled() && !display.reads(0, 0));
    QVERIFY(display.stream.cloneLatestImage().isNull());

    for (const bool isSetup : {true, false, true}) { // so soon that it is looked at later
        display.source.setSetup(isSetup);
        QTRY_COMPARE(display.stream.refreshEnabled(), isSetup);
    }
    // A frame that is announced before the clean-up has been looked at is shown after the next set-up.
    display.stream.setRefreshEnabled(false);
    updated.clear();
    display.source.setSetup(false);
    display.source.push(frame.raw);
    QTRY_VERIFY(updated.count() > 0);
    display.source.setSetup(true);
    QTRY_VERIFY(!display.surface.pixmap().isNull());
}

void SurfaceStreamTest::refreshRate()
{
    PushDisplay display;
    SurfaceStream& stream = display.stream;
    stream.setRefreshRate(60);
    QCOMPARE(stream.refreshRate(), 62); // whole milliseconds
    stream.setRefreshRate(std::numeric_limits<int>::max());
    QCOMPARE(stream.refreshRate(), 1000);
    stream.setRefreshRateAuto(true);
    Q_EMIT QGuiApplication::primaryScreen()->refreshRateChanged(25);
    QCOMPARE(stream.refreshRate(), 25);
    stream.setRefreshRate(0);
    Q_EMIT QGuiApplication::primaryScreen()->refreshRateChanged(50);
    QCOMPARE(stream.refreshRate(), 25);

    // A source at rest is asked less often.
    const TestFrame frame(4, 4, Mono8);
    const auto* const timer = stream.findChild<QTimer*>();
    stream.setRefreshRate(50);
    QTRY_COMPARE(timer->interval(), 100);
    display.source.push(frame.raw);
    QTRY_COMPARE(timer->interval(), 20);
    QTRY_COMPARE(timer->interval(), 100);
    stream.updateAcquisitionState();
    QCOMPARE(timer->interval(), 20);
    stream.setRefreshRate(5);
    QCOMPARE(timer->interval(), 200);
}

void SurfaceStreamTest::badFrameKeepsThePicture()
{
    const TestFrame good(10, 10, Mono8, 77);
    PushDisplay display;
    display.stream.setBayerDemosaicEnabled(true);
    display.show(good.raw);
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    display.refuse({good.pixels.data(), most / 4 + 2, 4, Mono8, nullptr});
    display.refuse({good.pixels.data(), 3, 100, BayerRG8, nullptr});
    QCOMPARE(display.stream.latestImageSize(), QSize(10, 10));
    QCOMPARE(int(display.stream.cloneLatestImage().constBits()[0]), 77);
    QCOMPARE(display.surface.pixmap().size(), QSize(10, 10));
    display.show({nullptr, 10, 10, RGB8, nullptr}); // which is not a bad one: it clears
    QVERIFY(display.surface.pixmap().isNull());
    QCOMPARE(display.stream.latestImageSize(), QSize(0, 0));
    RawImage latest;
    QVERIFY(!display.stream.latestImage(&latest, nullptr));
    display.show(good.raw);
    QVERIFY(!display.surface.pixmap().isNull());
}

void SurfaceStreamTest::throwingSourceIsReported()
{
    static std::atomic<int> reportedLines{0};
    setReportSink([](const std::string& line) { reportedLines += line.find("getNextFrame") != std::string::npos; });
    const auto reset = qScopeGuard([] { setReportSink(nullptr); });
    const TestFrame frame(6, 6, Mono8);
    Display<PullSource> display([&, calls = 0](RawImage* image, ScopedLock*) mutable {
        *image = frame.raw;
        if (++calls > 1)
            throw 5;
        return true;
    });
    QTRY_VERIFY(reportedLines > 1);
    QCOMPARE(display.surface.pixmap().size(), QSize(6, 6));
    QCOMPARE(display.stream.framesConverted(), quint64{1});
}

void SurfaceStreamTest::blockedSourceStopsNothing()
{
    Gate gate;
    const TestFrame frame(4, 4, Mono8);
    auto display = std::make_unique<Display<PullSource>>([&](RawImage* image, ScopedLock*) {
        gate.pass();
        *image = frame.raw;
        return true;
    });
    QTRY_COMPARE(gate.arrived(), 1);
    QSignalSpy ticks(display->stream.findChild<QTimer*>(), &QTimer::timeout);
    QTRY_VERIFY(ticks.count() > 5);
    display->stream.setColorPalette(redPalette());
    display->stream.setBayerDemosaicEnabled(true);
    display->stream.setRgbOrderReversed(true);
    QCOMPARE(gate.arrived(), 1);
    std::thread release([&] { gate.openForGood(); });
    display.reset();
    release.join();
}

void SurfaceStreamTest::announcementsWithoutPause()
{
    const TestFrame frame(4, 4, Mono8);
    const TestFrame last(5, 5, Mono8);
    PushSource source;
    Surface surface;
    auto stream = std::make_unique<SurfaceStream>(&surface, &source);
    QSignalSpy updated(stream.get(), SIGNAL(imageUpdated()));
    for (int i = 0; i < 1000; ++i)
        source.push(frame.raw);
    source.push(last.raw);
    QTRY_COMPARE(surface.pixmap().size(), QSize(5, 5));
    QVERIFY(updated.count() < 10);

    std::atomic<bool> isOver{false};
    std::thread flood([&] {
        while (!isOver) {
            source.push(frame.raw);
            source.setSetup(true);
        }
    });
    updated.clear();
    QSignalSpy ticks(stream->findChild<QTimer*>(), &QTimer::timeout);
    QTRY_VERIFY(ticks.count() > 5 && updated.count() > 5); // the loop turns
    stream.reset();                                        // in the middle of it
    isOver = true;
    flood.join();
}

void SurfaceStreamTest::surfaceAndStreamEndInAnyOrder()
{
    const TestFrame frame(4, 4, Mono8);
    PushSource source;
    Surface lasting;
    {
        auto surface = std::make_unique<Surface>();
        SurfaceStream stream(surface.get(), &source);
        SurfaceStream other(&lasting, nullptr);
        QVERIFY(!other.refreshEnabled());
        lasting.setImageSrc(&source, frame.raw);
        for (const quint64 count : {1u, 2u}) {
            source.push(frame.raw);
            QTRY_COMPARE(stream.framesPublished(), count);
            surface.reset();
        }
    }
    Surface::PixVal value;
    QVERIFY(!lasting.imageSrcPixVal({0, 0}, value)); // the source may be gone too
}

void SurfaceStreamTest::sourceOfUnreadableBuffers()
{
    for (const Format format : {Mono8, BayerGR12, BGR12}) {
        Display<ProtectedSource> display(20u, 20u, format);
        display.surface.resize(400, 400);
        QTRY_VERIFY(display.stream.framesPublished() > 0);
        display.stream.setBayerDemosaicEnabled(true);
        display.stream.setBayerDemosaicFilter(BayerBG);
        display.stream.setBayerDemosaicFilter(Format(0));
        display.stream.setBayerDemosaicEnabled(false);
        display.stream.setRgbOrderReversed(true);
        display.stream.setColorPalette(redPalette());
        display.surface.setScaling(Surface::scalingMax());
        QVERIFY(display.reads(3, 3));
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
    const TestFrame frames[] = {{40, 100, BayerGB8}, {60, 100, RGB8}};
    PushDisplay display;
    SurfaceStream& stream = display.stream;
    Surface& surface = display.surface;
    int depth = 0;
    int calls = 0;
    const auto callBack = [&] {
        if (++depth == 1) {
            const bool isEven = ++calls % 2 == 0;
            display.reads(1, 1);
            surface.setScaling(surface.scaling() * 2);
            surface.setScaledOffset(QPointF(3, 3));
            surface.setPixmap(stream.peekPixmap());
            stream.setColorPalette(isEven ? redPalette() : QVector<unsigned int>());
            stream.setBayerDemosaicEnabled(isEven);
            stream.setRgbOrderReversed(isEven);
            stream.cloneLatestImage();
            stream.unlockBitmap();
            surface.setScaleToFit(true);
        }
        --depth;
    };
    connect(&surface, &Surface::pixelRangeChanged, this, callBack);
    connect(&surface, &Surface::pixelOffsetChanged, this, callBack);
    connect(&surface, &Surface::scalingChanged, this, callBack);
    connect(&stream, &SurfaceStream::imageUpdated, this, callBack);
    connect(&stream, &SurfaceStream::bitmapLockChanged, this, callBack);
    connect(display.source.signalHandler(), SIGNAL(getFrameNow()), &stream, SIGNAL(imageUpdated()),
            Qt::DirectConnection);
    for (int i = 0; i < 10; ++i) {
        display.show(frames[i % 2].raw);
        stream.setBitmapLocked(10, 10, Mono8);
        stream.unlockBitmap();
    }
    QVERIFY(calls > 10);
}

void SurfaceStreamTest::paletteAppliesToThePictureInView()
{
    PushDisplay display;
    SurfaceStream& stream = display.stream;
    const TestFrame frame(8, 8, Mono8, 100);
    display.show(frame.raw);
    QCOMPARE(display.shown(), QColor(100, 100, 100));
    stream.setColorPalette(redPalette());
    QCOMPARE(display.shown(), QColor(100, 0, 0));
    QCOMPARE(stream.cloneLatestImageForRender().pixelColor(4, 4), QColor(100, 0, 0));
    QCOMPARE(int(stream.cloneLatestImage().constBits()[0]), 100);
    stream.setColorPalette(redPalette().mid(1)); // 255 entries
    QCOMPARE(display.shown(), QColor(100, 100, 100));
    QCOMPARE(stream.cloneLatestImageForRender().pixelColor(4, 4), QColor(100, 100, 100));

    // A frame that is converted but not shown yet comes with its own pixel values.
    const TestFrame larger(16, 16, Mono8, 90);
    stream.setRefreshEnabled(false);
    display.source.push(larger.raw);
    for (const int locks = display.source.frameLocks; display.source.frameLocks == locks;)
        QCoreApplication::processEvents();
    while (stream.framesConverted() < 2)
        std::this_thread::yield();
    stream.setColorPalette(redPalette());
    QCOMPARE(display.surface.pixmap().size(), QSize(16, 16));
    QVERIFY(display.reads(15, 15));
}

void SurfaceStreamTest::mosaicAndChannelOrder()
{
    PushDisplay display;
    SurfaceStream& stream = display.stream;
    TestFrame frame(8, 8, BayerRG8);
    for (std::size_t i = 0; i < 64; ++i)
        frame.pixels[i] = (i / 8) % 2 == 0 && i % 2 == 0 ? 200 : 0; // red sites alone
    display.show(frame.raw);
    QCOMPARE(stream.latestImageFormat(), Mono8);
    stream.setBayerDemosaicEnabled(true);
    QCOMPARE(stream.latestImageFormat(), BayerRG8);
    QCOMPARE(display.shown(4, 4), QColor(200, 0, 0));
    QVERIFY(display.reads(4, 4) && display.value.color && display.value.r == 200 && display.value.b == 0);
    stream.setBayerDemosaicFilter(BayerBG);
    QCOMPARE(display.shown(4, 4), QColor(0, 0, 200));
    QCOMPARE(stream.framesConverted(), quint64{1});
    display.source.setFramesLocked(false);
    stream.setBayerDemosaicFilter(BayerGB);
    QCOMPARE(display.shown(4, 4), QColor(0, 0, 200)); // the pixels may be gone
    display.source.setFramesLocked(true);

    const TestFrame gray(8, 8, Mono8);
    stream.setBayerDemosaicFilter(Format(0));
    display.show(gray.raw);
    const int locks = display.source.frameLocks;
    stream.setBayerDemosaicEnabled(false);
    stream.setBayerDemosaicEnabled(true);
    QCOMPARE(display.source.frameLocks.load(), locks); // nothing to convert again
    stream.setBayerDemosaicFilter(BayerBG);
    QCOMPARE(stream.latestImageFormat(), BayerBG8);

    const TestFrame color = blueFrame();
    display.show(color.raw);
    QCOMPARE(stream.latestImageFormat(), RGB8); // an override makes no mosaic of colour
    QCOMPARE(display.shown(), QColor(0, 0, 200));
    stream.setRgbOrderReversed(true);
    QCOMPARE(display.shown(), QColor(200, 0, 0));
    QCOMPARE(stream.cloneLatestImageForRender().pixelColor(1, 1), QColor(200, 0, 0));
    QVERIFY(display.reads(1, 1) && display.value.r == 200 && display.value.b == 0);
    display.source.setFramesLocked(false);
    stream.setRgbOrderReversed(false);
    QCOMPARE(display.shown(), QColor(200, 0, 0)); // the next frame shows it
}

void SurfaceStreamTest::picturesThatLeaveTheStreamStay()
{
    const TestFrame first(32, 32, Mono8, 50);
    const TestFrame later(32, 32, Mono8, 204);
    auto display = std::make_unique<PushDisplay>();
    display->show(first.raw);
    const QPixmap kept = display->stream.peekPixmap();
    QPixmap painted = display->stream.peekPixmap();
    QPainter(&painted).fillRect(painted.rect(), Qt::white);
    QImage written = display->stream.cloneLatestImage();
    written.bits()[0] = 1;
    QCOMPARE(int(display->stream.cloneLatestImage().constBits()[0]), 50);
    QCOMPARE(display->shown(0, 0), QColor(50, 50, 50));

    display->stream.setColorPalette(redPalette());
    std::set<const uchar*> memory;
    for (int i = 0; i < 30; ++i) {
        display->show(later.raw);
        memory.insert(display->stream.peekPixmap().toImage().constBits());
    }
    QVERIFY(memory.size() <= 3); // shown, shown before, being written
    QCOMPARE(display->shown(), QColor(204, 0, 0));
    display.reset();
    QCOMPARE(kept.toImage().pixelColor(9, 9), QColor(50, 50, 50));
}

void SurfaceStreamTest::bitmapLock()
{
    const TestFrame frame(12, 10, BayerRG12, 0x33);
    const TestFrame otherKind(12, 10, RGB8, 0x44);
    const TestFrame wider(13, 10, BayerRG12, 0x44);
    const TestFrame higher(12, 11, BayerRG12, 0x44);
    PushDisplay display;
    SurfaceStream& stream = display.stream;
    stream.setBayerDemosaicEnabled(true); // to no effect on a locked bitmap
    QSignalSpy changed(&stream, &SurfaceStream::bitmapLockChanged);
    RawImage bitmap;
    QVERIFY(!stream.setBitmapLocked(12, 10, Mono16) && !stream.setBitmapLocked(12, 10, BGR8) && changed.isEmpty());
    QVERIFY(!stream.setBitmapLocked(0, 10, Mono8) && !changed.takeFirst().at(0).toBool());
    QVERIFY(!stream.bitmapLocked() && !stream.getBitmap(&bitmap));

    QVERIFY(stream.setBitmapLocked(12, 10, Mono8) && changed.takeFirst().at(0).toBool());
    QVERIFY(stream.bitmapLocked() && stream.getBitmap(&bitmap));
    QVERIFY(std::all_of(bitmap.data, bitmap.data + 120, [](std::uint8_t byte) { return byte == 0; }));

    display.show(frame.raw);
    QCOMPARE(display.shown(), QColor(0x33, 0x33, 0x33));
    QCOMPARE(display.surface.pixmap().size(), QSize(12, 10));
    for (const RawImage& refused : {otherKind.raw, wider.raw, higher.raw})
        display.refuse(refused);
    QCOMPARE(int(bitmap.data[0]), 0x33);
    stream.unlockBitmap();
    QVERIFY(!changed.takeFirst().at(0).toBool());
    display.show(wider.raw);
    QCOMPARE(display.surface.pixmap().size(), QSize(13, 10));

    // Over a demosaiced frame, it gives its own values.
    QVERIFY(stream.setBitmapLocked(8, 8, Mono8) && stream.getBitmap(&bitmap));
    const_cast<std::uint8_t*>(bitmap.data)[9] = 77;
    stream.updateAcquisitionState();
    QVERIFY(display.reads(1, 1) && display.value.mono && display.value.value == 77);
}

void SurfaceStreamTest::hostDrawsIntoTheBitmap()
{
    PushDisplay display;
    SurfaceStream& stream = display.stream;
    RawImage bitmap;
    QVERIFY(stream.setBitmapLocked(4, 4, RGB8) && stream.getBitmap(&bitmap));
    const auto draw = [&](std::uint8_t value, int bytes) {
        std::fill_n(const_cast<std::uint8_t*>(bitmap.data), bytes, value);
    };
    const TestFrame blue = blueFrame();
    std::copy(blue.pixels.begin(), blue.pixels.end(), const_cast<std::uint8_t*>(bitmap.data));
    display.show(bitmap);
    const QImage shown = display.surface.pixmap().toImage();
    QCOMPARE(shown.pixelColor(2, 2), QColor(0, 0, 200));
    QCOMPARE(stream.cloneLatestImageForRender().pixelColor(2, 2), QColor(0, 0, 200));
    draw(1, 3);
    QCOMPARE(shown.pixelColor(0, 0), QColor(0, 0, 200)); // the picture is a copy: drawing on does not tear it

    display.refuse({bitmap.data, 5, 4, RGB8, nullptr});
    display.refuse({bitmap.data, 4, 5, RGB8, nullptr});
    display.refuse({bitmap.data, 4, 4, RGB16, nullptr});
    bitmap.format = BGR8;
    display.show(bitmap);
    QCOMPARE(display.shown(), QColor(200, 0, 0));

    // What is in view can be read, and converted again, whatever is locked meanwhile.
    const auto redShown = [&] {
        stream.updateAcquisitionState();
        return display.reads(2, 2) ? display.value.r : 0;
    };
    QVERIFY(stream.setBitmapLocked(4, 4, RGBa8));
    QCOMPARE(redShown(), 200u);
    RawImage taken;
    ScopedLock lock;
    QVERIFY(stream.latestImage(&taken, &lock));
    stream.unlockBitmap();
    lock.reset(nullptr);
    QCOMPARE(redShown(), 200u);
    QVERIFY(stream.setBitmapLocked(4, 4, RGBa8) && stream.getBitmap(&bitmap));
    const QImage clone = stream.cloneLatestImageForRender();
    draw(70, 64);
    display.source.setNextFrame(bitmap);
    for (int i = 0; i < 5; ++i) // before the frame is taken
        QVERIFY(stream.setBitmapLocked(4, 4, RGBa8));
    QTRY_COMPARE(display.shown(), QColor(70, 70, 70));
    QCOMPARE(clone.pixelColor(0, 0), QColor(0, 0, 0));
    QVERIFY(stream.getBitmap(&bitmap));
    display.show(bitmap);
    QCOMPARE(qAlpha(stream.cloneLatestImage().pixel(0, 0)), 255);
    draw(50, 64);
    stream.unlockBitmap();
    stream.setRgbOrderReversed(true);
    QCOMPARE(display.shown(), QColor(50, 50, 50));
    QVERIFY(stream.latestImage(&taken, &lock));
    display.source.setUp = false;
    stream.updateAcquisitionState();
    QVERIFY(display.surface.pixmap().isNull());
    QVERIFY(taken.data && *taken.data == 50); // as long as the lock is held
}

QTEST_MAIN(SurfaceStreamTest)
#include "SurfaceStreamTest.moc"
