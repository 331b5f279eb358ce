// SPDX-License-Identifier: MIT
// Tests, pixel by pixel, where a surface paints its image and its crosshair.
#include "ShownSurface.h"

#include <QtGui/QScreen>

#include <cmath>
#include <cstdlib>
#include <cstring>

using namespace Vistrel;

namespace {

constexpr QRgb backdrop = ShownSurface::backdrop;

// Four bytes of which each depends on both numbers.
std::uint32_t mixed(int x, int y)
{
    std::uint32_t bits = static_cast<std::uint32_t>(x) * 2654435761u ^ static_cast<std::uint32_t>(y) * 2246822519u;
    bits = (bits ^ bits >> 15) * 2654435761u;
    return bits ^ bits >> 13;
}

// An image in which hardly two pixels are alike. Only the part `filled` of its memory is touched.
QImage noise(const QSize& size, QImage::Format format, const QRect& filled)
{
    const int pixelBytes = format == QImage::Format_Grayscale8 ? 1 : 4;
    const int rowBytes = (size.width() * pixelBytes + 3) / 4 * 4;
    const std::size_t bytes = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(size.height());
    void* const memory = std::calloc(bytes, 1);
    QImage image(static_cast<uchar*>(memory), size.width(), size.height(), rowBytes, format, std::free, memory);
    for (int y = filled.top(); y <= filled.bottom(); ++y) {
        uchar* const row = static_cast<uchar*>(memory) + static_cast<std::ptrdiff_t>(y) * rowBytes;
        for (int x = filled.left(); x <= filled.right(); ++x) {
            const std::uint32_t bits = mixed(x, y) | 0xFF000000; // opaque
            std::memcpy(row + static_cast<std::ptrdiff_t>(x) * pixelBytes, &bits, static_cast<std::size_t>(pixelBytes));
        }
    }
    return image;
}

QImage noise(const QSize& size, QImage::Format format)
{
    return noise(size, format, QRect({}, size));
}

// Empty when each pixel of the picture shows the image pixel in which its centre lies, and the backdrop where there is
// none; else what is wrong. A centre that lies on a border, within the engine's precision, may go either way.
QByteArray fault(const QImage& picture, const QImage& image, const Surface& surface)
{
    constexpr double precision = 0.01; // image pixels
    const QPointF origin = surface.scaledRect().topLeft();
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QPointF place = (QPointF(x + 0.5, y + 0.5) - origin) / surface.scaling();
            bool isRight = false;
            for (const double u : {place.x() - precision, place.x() + precision}) {
                for (const double v : {place.y() - precision, place.y() + precision}) {
                    const QPoint from(static_cast<int>(std::floor(u)), static_cast<int>(std::floor(v)));
                    const QRgb expected = image.rect().contains(from) ? image.pixel(from) : backdrop;
                    isRight = isRight || picture.pixel(x, y) == expected;
                }
            }
            if (!isRight) {
                return QStringLiteral("zoom %1: (%2, %3) does not show (%4, %5) of the image")
                    .arg(surface.scaling())
                    .arg(x)
                    .arg(y)
                    .arg(place.x(), 0, 'f', 3)
                    .arg(place.y(), 0, 'f', 3)
                    .toLatin1();
            }
        }
    }
    return {};
}

} // namespace

class SurfacePaintingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void imageIsPlacedExactly_data();
    void imageIsPlacedExactly();
    void bandsMeetWithoutASeam();
    void crosshair_data();
    void crosshair();
};

void SurfacePaintingTest::imageIsPlacedExactly_data()
{
    QTest::addColumn<QImage::Format>("format");
    QTest::addColumn<QSize>("size");
    const QSize sizes[] = {{37, 23}, {16384, 40}, {16385, 40}, {70001, 40}, {40, 70001}, {140000, 9}};
    for (const auto format : {QImage::Format_Grayscale8, QImage::Format_RGBX8888, QImage::Format_RGB32}) {
        for (const QSize& size : sizes)
            QTest::addRow("%d x %d, format %d", size.width(), size.height(), format) << format << size;
    }
}

void SurfacePaintingTest::imageIsPlacedExactly()
{
    QFETCH(QImage::Format, format);
    QFETCH(QSize, size);
    const QImage image = noise(size, format);
    ShownSurface shown({203, 150});
    for (const double zoom : {0.0, 0.1, 0.5, 1.0, 1.7, 8.0, 13.37, Surface::scalingMax()}) {
        for (const double from : {0.0, 16384.0, 65536.0, 131072.0, 1e9}) { // seen just before the middle of the view
            shown.show(image, zoom);
            const double offset = from * shown.surface.scaling() - 100.3;
            shown.surface.setScaledOffset({offset, offset});
            const QByteArray wrong = fault(shown.picture(), image, shown.surface);
            QVERIFY2(wrong.isEmpty(), wrong);
        }
    }
}

void SurfacePaintingTest::bandsMeetWithoutASeam()
{
    const QRect part(16300, 16300, 168, 168);
    const QImage image = noise({16800, 16600}, QImage::Format_Grayscale8, part);
    ShownSurface whole({203, 150});
    ShownSurface cropped({203, 150});
    for (const double zoom : {1.3, 1.7, 6.25, 55.5}) {
        const QPointF middle = QPointF(84, 84) * zoom - QPointF(101, 75);
        whole.show(image, zoom, QPointF(part.topLeft()) * zoom + middle);
        const QImage picture = whole.picture();
        const QByteArray wrong = fault(picture, image, whole.surface);
        QVERIFY2(wrong.isEmpty(), wrong);
        cropped.show(image.copy(part), zoom, middle);
        QCOMPARE(picture, cropped.picture());
    }
}

void SurfacePaintingTest::crosshair_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<QPointF>("offset");
    QTest::addColumn<QPoint>("pixel");
    QTest::addColumn<QPoint>("corner");   // where its cell begins
    QTest::addColumn<QPoint>("opposite"); // the first point after it, when the cell is closed
    // The image has 16 x 12 pixels, the view 100 x 80.
    QTest::newRow("100 %") << 1.0 << QPointF() << QPoint(3, 2) << QPoint(45, 36) << QPoint();
    QTest::newRow("just not closed") << 1.49 << QPointF() << QPoint(4, 3) << QPoint(44, 35) << QPoint();
    QTest::newRow("just closed") << 1.5 << QPointF() << QPoint(4, 2) << QPoint(44, 34) << QPoint(45, 35);
    QTest::newRow("200 %") << 2.0 << QPointF() << QPoint(3, 2) << QPoint(40, 32) << QPoint(42, 34);
    QTest::newRow("scrolled") << 8.0 << QPointF(20, 10) << QPoint(3, 2) << QPoint(4, 6) << QPoint(12, 14);
    QTest::newRow("cut") << 8.0 << QPointF(20, 10) << QPoint(14, 10) << QPoint(92, 70) << QPoint(100, 78);
}

void SurfacePaintingTest::crosshair()
{
    QFETCH(double, zoom);
    QFETCH(QPointF, offset);
    QFETCH(QPoint, pixel);
    QFETCH(QPoint, corner);
    QFETCH(QPoint, opposite);
    QImage image(16, 12, QImage::Format_RGB32);
    image.fill(0xFF808080);
    ShownSurface shown({100, 80});
    shown.show(image, zoom, offset);
    const QImage plain = shown.picture();
    shown.surface.setCrosshairVisible(true);
    shown.surface.setActivePixel(pixel);
    const QImage picture = shown.picture();

    const QRect closed = opposite.isNull() ? QRect() : QRect(corner, opposite);
    for (int y = 0; y < 79; ++y) { // the outermost end of a line is the engine's business
        for (int x = 0; x < 99; ++x) {
            const bool isLine = x == corner.x() || y == corner.y() ||
                                (closed.contains(x, y) && (x == opposite.x() || y == opposite.y()));
            const QRgb color = picture.pixel(x, y);
            const bool isMarked = color == 0xFFFFFFFF || color == 0xFF000000;
            QVERIFY2(isLine ? isMarked : color == plain.pixel(x, y),
                     qPrintable(QStringLiteral("(%1, %2)").arg(x).arg(y)));
        }
    }
    // Dashes: as much white as black.
    int white = 0;
    for (int x = 0; x < 96; ++x)
        white += picture.pixel(x, corner.y()) == 0xFFFFFFFF;
    QVERIFY2(white >= 40 && white <= 56, QByteArray::number(white));
}

QTEST_MAIN(SurfacePaintingTest)
#include "SurfacePaintingTest.moc"
