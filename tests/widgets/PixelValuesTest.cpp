// SPDX-License-Identifier: MIT
// Tests where a surface reads pixel values.
#include "AskingSource.h"
#include "ShownSurface.h"

#include "base/Report.h"

#include <thread>

using namespace Vistrel;

using Operation = std::function<void(Surface&)>;
Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(PixVal)

namespace {

std::atomic<int> reportedLines{0};

PixVal gray(std::uint32_t value)
{
    PixVal result;
    result.mono = true;
    result.value = value;
    return result;
}

PixVal color(std::uint32_t r, std::uint32_t g, std::uint32_t b)
{
    PixVal result;
    result.color = true;
    result.r = r;
    result.g = g;
    result.b = b;
    return result;
}

bool equal(const PixVal& a, const PixVal& b)
{
    return a.mono == b.mono && a.value == b.value && a.color == b.color && a.r == b.r && a.g == b.g && a.b == b.b;
}

} // namespace

class PixelValuesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { setReportSink(nullptr); }

    void pixelValues_data();
    void pixelValues();
    void waitingForALockHoldsUpNobody();
};

void PixelValuesTest::init()
{
    reportedLines = 0;
    setReportSink([](const std::string&) { ++reportedLines; });
}

void PixelValuesTest::pixelValues_data()
{
    QTest::addColumn<Operation>("feed");
    QTest::addColumn<QPoint>("position");
    QTest::addColumn<PixVal>("expected"); // of no kind when there is none
    QTest::addColumn<int>("reports");
    const auto row = [](const char* name, const Operation& feed, const QPoint& position, const PixVal& expected,
                        int reports = 0) { QTest::newRow(name) << feed << position << expected << reports; };

    QImage colors(5, 4, QImage::Format_RGB32);
    colors.fill(0xFF102030);
    colors.setPixel(4, 3, 0xFFFA6432);
    QImage indexed(5, 4, QImage::Format_Indexed8);
    indexed.setColorTable({0xFF000000, 0xFF204060});
    indexed.fill(1);
    const Operation image = [=](Surface& s) { s.setImageSrc(colors); };
    row("none", [](Surface&) {}, {0, 0}, {});
    row("image", image, {0, 0}, color(0x10, 0x20, 0x30));
    row("image, last pixel", image, {4, 3}, color(0xFA, 0x64, 0x32));
    row(
        "indexed image", [=](Surface& s) { s.setImageSrc(indexed); }, {0, 0}, color(0x20, 0x40, 0x60));
    row("right of an image", image, {5, 0}, {});
    row("below an image", image, {0, 4}, {});
    row("left of an image", image, {-1, 0}, {});
    row("null image", [](Surface& s) { s.setImageSrc(QImage()); }, {0, 0}, {});
    row("cleared", [=](Surface& s) { s.setImageSrc(colors), s.clearImageSrc(); }, {0, 0}, {});

    // Byte i holds 7 i.
    const auto locked = [](Format format) {
        return [source = std::make_shared<ProtectedSource>(6, 4, format)](Surface& s) {
            RawImage raw;
            ScopedLock lock;
            source->getNextFrame(&raw, &lock);
            s.setImageSrc(source.get(), raw);
        };
    };
    row("gray frame", locked(Mono8), {5, 2}, gray(17 * 7));
    row("deep gray frame", locked(Mono16), {5, 1}, gray(22 * 7 | (23 * 7) << 8));
    row("mosaic frame", locked(BayerRG12), {0, 0}, gray(0x700));
    row("colour frame", locked(BGR8), {1, 1}, color(147, 154, 161));
    row("outside a frame", locked(Mono8), {6, 0}, {});
    row("above a frame", locked(Mono8), {0, -1}, {});
    row(
        "image after a frame", [=](Surface& s) { locked(Mono8)(s), s.setImageSrc(colors); }, {0, 0},
        color(0x10, 0x20, 0x30));
    row("frame cleared", [=](Surface& s) { locked(Mono8)(s), s.clearImageSrc(); }, {0, 0}, {});

    const auto asking = [=](const std::function<ScopedLock()>& ask, bool hasData) {
        return [=, source = std::make_shared<AskingSource>(ask)](Surface& s) {
            static const TestFrame frame(6, 4, Mono8, 9);
            s.setImageSrc(colors);
            RawImage raw = frame.raw;
            raw.data = hasData ? raw.data : nullptr;
            s.setImageSrc(source.get(), raw);
        };
    };
    row("lock granted", asking([] { return ScopedLock(new FreeLock); }, true), {0, 0}, gray(9));
    row("lock refused", asking([] { return ScopedLock(); }, true), {0, 0}, {});
    row("null data", asking([] { return ScopedLock(new FreeLock); }, false), {0, 0}, {});
    row("lock throws", asking([]() -> ScopedLock { throw std::runtime_error("gone"); }, true), {0, 0}, {}, 1);
}

void PixelValuesTest::pixelValues()
{
    QFETCH(Operation, feed);
    QFETCH(QPoint, position);
    QFETCH(PixVal, expected);
    Surface surface;
    feed(surface);
    PixVal value = color(1, 2, 3);
    value.mono = true;
    value.value = 4;
    QCOMPARE(surface.imageSrcPixVal({position.x(), position.y()}, value), expected.mono || expected.color);
    QVERIFY(equal(value, expected));
    QTEST(reportedLines.load(), "reports");
}

void PixelValuesTest::waitingForALockHoldsUpNobody()
{
    ShownSurface shown({400, 300});
    Surface& surface = shown.surface;
    Gate gate;
    AskingSource source([&gate] {
        gate.pass();
        return ScopedLock(new FreeLock);
    });
    const TestFrame frame(6, 4, Mono8, 9);
    surface.setImageSrc(&source, frame.raw);
    PixVal value;
    std::thread reader([&] { surface.imageSrcPixVal({1, 1}, value); });
    QTRY_COMPARE(gate.arrived(), 1);

    const QImage image(6, 4, QImage::Format_RGB32);
    shown.show(image, Surface::scalingMax());
    surface.setImageSrc(image);
    shown.picture();
    PixVal other;
    QVERIFY(surface.imageSrcPixVal({1, 1}, other));
    surface.clearImageSrc();
    gate.openForGood();
    reader.join();
    QVERIFY(equal(value, gray(9)));
}

QTEST_MAIN(PixelValuesTest)
#include "PixelValuesTest.moc"
