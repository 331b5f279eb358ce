// SPDX-License-Identifier: MIT
// Tests the coordinates and values written into the cells of enlarged pixels.
#include "ShownSurface.h"

#include "base/Log.h"
#include "support/FakeSources.h"
#include "widgets/SurfaceGeometry.h"

#include <Vistrel/SurfaceScrollArea.h>

#include <QtCore/QScopeGuard>

#include <algorithm>
#include <cstdlib>

using namespace Vistrel;

Q_DECLARE_METATYPE(Vistrel::PixelValues)
Q_DECLARE_METATYPE(Vistrel::Format)

namespace {

constexpr QRgb dark = 0xFF5A5A5A;
constexpr QRgb bright = 0xFFA8A8A8;

std::atomic<int> reportedLines{0};

/// A source that asks the test for each lock.
class AskingSource : public PullSource
{
public:
    explicit AskingSource(std::function<ScopedLock()> ask)
        : PullSource([](RawImage*, ScopedLock*) { return false; }), m_ask(std::move(ask))
    {
    }
    ScopedLock getFrameLock(const RawImage&) override { return m_ask(); }

private:
    std::function<ScopedLock()> m_ask;
};

class FreeLock : public AbstractLock
{
};

QImage colorImage(const QSize& size, QRgb color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

// Whether something is written on a background of one colour that has full contrast to it.
bool hasInk(const QImage& picture, QRgb background)
{
    const QImage plain = picture.convertToFormat(QImage::Format_RGB32);
    const auto* const pixels = reinterpret_cast<const QRgb*>(plain.constBits());
    const int wanted = qGray(background) < 128 ? 255 : 0;
    return std::any_of(pixels, pixels + plain.sizeInBytes() / 4,
                       [=](QRgb pixel) { return std::abs(qGray(pixel) - wanted) < 60; });
}

} // namespace

class PixelOverlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void labelsStandInTheirCells_data();
    void labelsStandInTheirCells();
    void zoomThatShowsValues();
    void nothingIsReadWithoutALock();
};

void PixelOverlayTest::labelsStandInTheirCells_data()
{
    QTest::addColumn<PixelValues>("values");
    QTest::addColumn<Format>("format"); // 0: of an image
    QTest::addColumn<double>("zoom");
    QTest::newRow("boxes, 8 bit") << PixelValues::WithPosition << Mono8 << 96.0;
    QTest::newRow("boxes, colour") << PixelValues::WithPosition << RGB16 << Surface::scalingMax();
    QTest::newRow("values, image") << PixelValues::ValueOnly << Format(0) << 32.0;
    QTest::newRow("values, 16 bit") << PixelValues::ValueOnly << Mono16 << 32.0;
    QTest::newRow("values, colour") << PixelValues::ValueOnly << RGB16 << 48.0;
    QTest::newRow("large values") << PixelValues::ValueOnly << RGB8 << 77.7;
}

// Of 5 x 4 pixels, (2, 1) has another value than the rest, in colour another blue.
void PixelOverlayTest::labelsStandInTheirCells()
{
    QFETCH(PixelValues, values);
    QFETCH(Format, format);
    QFETCH(double, zoom);
    const bool isBare = values == PixelValues::ValueOnly;
    const bool isOneLine = isBare && format != RGB8 && format != RGB16;
    ShownSurface shown({int(4.5 * zoom), int(3.4 * zoom)});
    shown.surface.setPixelValues(values);
    TestFrame frame(5, 4, format ? format : Mono8, 0xFF);
    frame.pixels[7 * bytesPerPixel(frame.raw.format)] = 0xAA; // blue comes first
    QImage image(frame.pixels.data(), 5, 4, 5, QImage::Format_Indexed8);
    image.setColorTable(QVector<QRgb>(256, 0xFF6F6F6F));
    int locks = 0;
    AskingSource source([&] { return ++locks, ScopedLock(new FreeLock); });
    if (format)
        shown.surface.setImageSrc(&source, frame.raw);
    else
        image.setColor(0xAA, 0xFF707070), shown.surface.setImageSrc(image);

    for (const double ratio : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        for (const QRgb color : {dark, bright}) {
            shown.show(colorImage({5, 4}, color), zoom, {zoom / 3, zoom / 7});
            locks = 0;
            const QImage whole = shown.picture(ratio);
            QCOMPARE(locks, format ? 1 : 0);
            SurfaceGeometry geometry = shown.surface.viewGeometry();
            geometry.setGrid(ratio, {0, 0});
            for (const QPoint& pixel : {QPoint(1, 1), QPoint(3, 1), QPoint(2, 2)}) {
                const QImage odd = whole.copy(geometry.cellOf({2, 1}));
                const QImage cell = whole.copy(geometry.cellOf(pixel));
                const int width = cell.width(), height = cell.height();
                QVERIFY(hasInk(cell, color));
                for (const QRect& edge : {QRect(0, 0, width, 1), QRect(0, height - 1, width, 1), QRect(0, 0, 1, height),
                                          QRect(width - 1, 0, 1, height)})
                    QVERIFY(!hasInk(cell.copy(edge), color));
                if (odd.size() != cell.size())
                    continue; // an edge is rounded
                // Coordinates stand above; blue is the last line.
                const QRect upper(0, 0, width, isOneLine ? 1 : height / 2);
                QCOMPARE(cell.copy(upper) == odd.copy(upper), isBare);
                QVERIFY(cell.copy(0, height / 3, width, height) != odd.copy(0, height / 3, width, height));
            }
            QVERIFY(shown.picture(ratio, QRect(int(zoom), int(zoom / 2), int(zoom * 1.4), int(zoom * 0.7))) == whole);
        }
    }
    shown.surface.setScaling(zoom - 0.01);
    QCOMPARE(hasInk(shown.picture(), bright), zoom != 32.0 && zoom != 48.0);
}

void PixelOverlayTest::zoomThatShowsValues()
{
    SurfaceScrollArea area;
    area.resize(400, 300);
    area.show();
    QVERIFY(QTest::qWaitForWindowExposed(&area));
    Surface& surface = *area.surface();
    area.doZoomToPixelValues(); // without an image
    QCOMPARE(surface.scaling(), 1.0);
    surface.setPixmap(QPixmap::fromImage(colorImage({4000, 3000}, bright)));
    surface.setImageSrc(colorImage({4000, 3000}, bright));
    const QPoint kept(120, 90);
    for (const PixelValues values : {PixelValues::Off, PixelValues::WithPosition, PixelValues::ValueOnly}) {
        surface.setPixelValues(values);
        area.setZoomTo(1, kept);
        const QPoint pixel = surface.viewGeometry().pixelAt(kept);
        area.doZoomToPixelValues(kept);
        QCOMPARE(surface.viewGeometry().pixelAt(kept), pixel);
        QCOMPARE(surface.scaling() > 1, values != PixelValues::Off);
        QCOMPARE(hasInk(surface.grab().toImage(), bright), values != PixelValues::Off);
        area.setZoomTo(surface.scaling() - 1 / surface.devicePixelRatioF(), kept); // a device pixel less
        QVERIFY(!hasInk(surface.grab().toImage(), bright));
    }
}

void PixelOverlayTest::nothingIsReadWithoutALock()
{
    reportedLines = 0;
    setReportSink([](const std::string&) { ++reportedLines; });
    const auto reset = qScopeGuard([] { setReportSink(nullptr); });
    ShownSurface shown({250, 200});
    Surface& surface = shown.surface;
    shown.show(colorImage({4, 4}, dark), Surface::scalingMax());
    const TestFrame frame(4, 4, Mono8, 9);
    bool isThrowing = false;
    AskingSource source([&] {
        surface.setImageSrc(&source, frame.raw); // no mutex is held
        return isThrowing ? throw std::runtime_error("gone") : ScopedLock();
    });
    const auto isRead = [&] {
        PixVal value{true, 1, true, 1, 1, 1};
        const bool success = surface.imageSrcPixVal({1, 1}, value);
        const bool isEmpty = !value.mono && !value.color && value.value + value.r + value.g + value.b == 0;
        return success || !isEmpty || hasInk(shown.picture(), dark);
    };
    surface.setImageSrc(colorImage({4, 4}, dark));
    QVERIFY(isRead());
    surface.clearImageSrc();
    QVERIFY(!isRead());
    surface.setImageSrc(&source, frame.raw);
    QVERIFY(!isRead());
    QCOMPARE(reportedLines.load(), 0);
    isThrowing = true;
    QVERIFY(!isRead());
    QCOMPARE(reportedLines.load(), 2);
}

QTEST_MAIN(PixelOverlayTest)
#include "PixelOverlayTest.moc"
