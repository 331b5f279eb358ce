// SPDX-License-Identifier: MIT
// Tests, pixel by pixel, where a surface paints its image and its crosshair.
#include "ShownSurface.h"

#include <QtGui/QPainter>

#include <cmath>
#include <cstring>
#include <random>

using namespace Vistrel;

namespace {

constexpr QRgb backdrop = ShownSurface::backdrop;

// An image in which hardly two pixels are alike.
QImage noise(const QSize& size, QImage::Format format)
{
    QImage image(size, format);
    std::minstd_rand random;
    const int pixelBytes = image.depth() / 8;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const auto bits = static_cast<std::uint32_t>(random() >> 7 | 0xFF000000); // opaque
            std::memcpy(image.scanLine(y) + x * pixelBytes, &bits, static_cast<std::size_t>(pixelBytes));
        }
    }
    return image;
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
            if (!isRight)
                return "pixel " + QByteArray::number(x) + ", " + QByteArray::number(y);
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
    void fullSizeShowsWhatIsRead();
    void printsEveryPixel();
    void crosshair();
};

void SurfacePaintingTest::imageIsPlacedExactly_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize& size : {QSize(37, 23), QSize(16384, 40), QSize(16385, 40), QSize(70001, 40), QSize(40, 140000)})
        QTest::addRow("%d x %d", size.width(), size.height()) << size;
}

void SurfacePaintingTest::imageIsPlacedExactly()
{
    QFETCH(QSize, size);
    ShownSurface shown({203, 150});
    for (const auto format : {QImage::Format_Grayscale8, QImage::Format_RGBX8888, QImage::Format_RGB32}) {
        const QImage image = noise(size, format);
        for (const double zoom : {0.0, 0.5, 1.0, 1.7, 13.37, Surface::scalingMax()}) {
            for (const double from : {0.0, 16384.0, 65536.0, 131072.0, 1e9}) { // seen before the middle of the view
                shown.show(image, zoom);
                const double offset = from * shown.surface.scaling() - 100.3;
                shown.surface.setScaledOffset({offset, offset});
                const QByteArray wrong = fault(shown.picture(), image, shown.surface);
                QVERIFY2(wrong.isEmpty(), wrong + ", zoom " + QByteArray::number(zoom));
            }
        }
    }
}

// Of which an odd number of pixels beside the image, or a part of one before it, makes no difference.
void SurfacePaintingTest::fullSizeShowsWhatIsRead()
{
    ShownSurface shown({203, 150});
    const QImage image = noise({40, 301}, QImage::Format_RGBX8888);
    for (const double offset : {0.0, 3.5, 7.25}) {
        shown.show(image, 1.0, {0, offset});
        const QImage picture = shown.picture();
        const QPointF origin = shown.surface.scaledRect().topLeft();
        QCOMPARE(origin, QPointF(81.5, -offset));
        for (const QPoint& position : {QPoint(82, 0), QPoint(82, 149), QPoint(121, 3)}) {
            const QPointF place = position - origin; // where the pointer has it
            QCOMPARE(picture.pixel(position), image.pixel(static_cast<int>(place.x()), static_cast<int>(place.y())));
        }
        QVERIFY(picture.pixel(81, 0) == backdrop && picture.pixel(122, 0) == backdrop);
    }
}

void SurfacePaintingTest::printsEveryPixel()
{
    ShownSurface shown({64, 64});
    const QImage image = noise({256, 256}, QImage::Format_RGBX8888);
    shown.show(image, 0.25);
    QImage print(image.size(), QImage::Format_RGB32);
    QPainter painter(&print);
    painter.scale(4, 4);
    shown.host.render(&painter);
    painter.end();
    QVERIFY(print == image.convertToFormat(QImage::Format_RGB32));
}

void SurfacePaintingTest::crosshair()
{
    QImage image(16, 12, QImage::Format_RGB32);
    image.fill(0xFF808080);
    ShownSurface shown({100, 80});
    // `corner` is where the pixel's cell begins, `opposite` the first point after it, when the cell is closed.
    const auto check = [&](double zoom, const QPointF& offset, const QPoint& pixel, const QPoint& corner,
                           const QPoint& opposite) {
        shown.surface.setActivePixel(-1, -1);
        shown.show(image, zoom, offset);
        const QImage plain = shown.picture();
        shown.surface.setActivePixel(pixel);
        const QImage picture = shown.picture();
        const QRect closed = opposite.isNull() ? QRect() : QRect(corner, opposite);
        int white = 0;
        for (int y = 0; y < 79; ++y) { // the outermost end of a line is the engine's business
            for (int x = 0; x < 99; ++x) {
                const bool isLine = x == corner.x() || y == corner.y() ||
                                    (closed.contains(x, y) && (x == opposite.x() || y == opposite.y()));
                const QRgb color = picture.pixel(x, y);
                const bool isMarked = color == 0xFFFFFFFF || color == 0xFF000000;
                QVERIFY2(isLine ? isMarked : color == plain.pixel(x, y),
                         qPrintable(QStringLiteral("(%1, %2)").arg(x).arg(y)));
                white += y == corner.y() && color == 0xFFFFFFFF;
            }
        }
        QVERIFY2(white >= 40 && white <= 59, QByteArray::number(white)); // dashes
    };
    shown.surface.setCrosshairVisible(true);
    check(1, {}, {3, 2}, {45, 36}, {});
    check(1.49, {}, {4, 3}, {44, 35}, {});
    check(1.5, {}, {4, 2}, {44, 34}, {45, 35});
    check(8, {20, 10}, {3, 2}, {4, 6}, {12, 14});
    check(8, {20, 10}, {14, 10}, {92, 70}, {100, 78});
}

QTEST_MAIN(SurfacePaintingTest)
#include "SurfacePaintingTest.moc"
