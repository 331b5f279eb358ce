// SPDX-License-Identifier: MIT
// Tests, pixel by pixel, where a surface paints its image and its crosshair, on devices of any ratio.
#include "ShownSurface.h"
#include "pipeline/VectorUnits.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

using namespace Vistrel;

namespace {

constexpr QRgb backdrop = ShownSurface::backdrop;

// An image in which hardly two pixels are alike, of any format.
QImage noise(const QSize& size, QImage::Format format)
{
    QImage image(size, QImage::Format_RGB32);
    std::minstd_rand random;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, static_cast<QRgb>(random() >> 7 | 0xFF000000));
    }
    return image.convertToFormat(format);
}

// The image columns, or rows, that contain the corners of the device pixels along a line. Where rounding decides, the
// second may be right too.
std::vector<std::pair<int, int>> places(int count, double ratio, double origin, double scaling)
{
    std::vector<std::pair<int, int>> all;
    for (int x = 0; x < count; ++x) {
        const double position = (x / ratio - origin) / scaling;
        all.emplace_back(static_cast<int>(std::floor(position - 1e-7)), static_cast<int>(std::floor(position + 1e-7)));
    }
    return all;
}

// Empty when each device pixel of the picture shows the image pixel that contains its corner, and the backdrop where
// there is none; else what is wrong.
QByteArray fault(const QImage& picture, const QImage& image, const Surface& surface)
{
    const QImage plain = image.convertToFormat(QImage::Format_RGB32);
    const QPointF origin = surface.scaledRect().topLeft();
    const double ratio = picture.devicePixelRatio();
    const auto columns = places(picture.width(), ratio, origin.x(), surface.scaling());
    const auto rows = places(picture.height(), ratio, origin.y(), surface.scaling());
    const auto shows = [&](QRgb color, int column, int row) {
        return color == (plain.rect().contains(column, row)
                             ? reinterpret_cast<const QRgb*>(plain.constScanLine(row))[column]
                             : backdrop);
    };
    for (int y = 0; y < picture.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const auto [column, nextColumn] = columns[static_cast<std::size_t>(x)];
            const auto [row, nextRow] = rows[static_cast<std::size_t>(y)];
            if (!shows(line[x], column, row) && !shows(line[x], nextColumn, row) && !shows(line[x], column, nextRow) &&
                !shows(line[x], nextColumn, nextRow))
                return "pixel " + QByteArray::number(x) + ", " + QByteArray::number(y);
        }
    }
    return {};
}

// What shrinking makes of a block of pixels: of each channel the mean, or the largest value.
QRgb combined(const QImage& image, const QRect& block, ShrinkMode mode)
{
    const bool isMean = mode == ShrinkMode::Mean;
    const auto number = isMean ? static_cast<unsigned>(block.width() * block.height()) : 1;
    QRgb color = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        unsigned all = 0;
        for (int y = block.top(); y <= block.bottom(); ++y) {
            const auto* const row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
            for (int x = block.left(); x <= block.right(); ++x)
                all = isMean ? all + (row[x] >> shift & 0xFF) : std::max(all, row[x] >> shift & 0xFF);
        }
        color |= (2 * all + number) / (2 * number) << shift;
    }
    return color;
}

} // namespace

class SurfacePaintingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void imageIsPlacedExactly_data();
    void imageIsPlacedExactly();
    void anyFormat();
    void shrinkingLosesNoPixel();
    void turnedPainter();
    void crosshair();
};

void SurfacePaintingTest::imageIsPlacedExactly_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize& size : {QSize(1, 1), QSize(37, 23), QSize(16385, 40), QSize(40, 140000)})
        QTest::addRow("%d x %d", size.width(), size.height()) << size;
}

void SurfacePaintingTest::imageIsPlacedExactly()
{
    QFETCH(QSize, size);
    ShownSurface shown({203, 150});
    for (const auto format : {QImage::Format_Grayscale8, QImage::Format_RGBX8888}) {
        const QImage image = noise(size, format);
        for (const double zoom : {0.0, 0.5, 1.0, 13.37, Surface::scalingMax()}) {
            for (const double from : {0.0, 131072.0, 1e9}) { // seen before the middle of the view
                shown.show(image, zoom);
                const double offset = from * shown.surface.scaling() - 100.3;
                shown.surface.setScaledOffset({offset, offset});
                for (const double ratio : {1.0, 1.25, 1.5, 2.0, 3.0}) {
                    const QImage whole = shown.picture(ratio);
                    const QByteArray wrong = fault(whole, image, shown.surface);
                    QVERIFY2(wrong.isEmpty(),
                             wrong + ", zoom " + QByteArray::number(zoom) + ", ratio " + QByteArray::number(ratio));
                    QVERIFY(shown.picture(ratio, QRect(31, 17, 77, 63)) == whole);
                }
            }
        }
    }
}

void SurfacePaintingTest::anyFormat()
{
    ShownSurface shown({97, 61});
    for (int format = QImage::Format_Mono; format < QImage::NImageFormats; ++format) {
        const QImage image = noise({40, 301}, static_cast<QImage::Format>(format));
        for (const double zoom : {0.3, 1.0, 2.6}) {
            shown.show(image, zoom, {3.4, 7.8});
            for (const double ratio : {1.0, 1.5}) {
                const QByteArray wrong = fault(shown.picture(ratio), image, shown.surface);
                QVERIFY2(wrong.isEmpty(), wrong + ", format " + QByteArray::number(format));
            }
        }
    }
    QImage glass({40, 301}, QImage::Format_ARGB32_Premultiplied);
    glass.fill(Qt::transparent);
    shown.show(glass, 0.3);
    QCOMPARE(shown.picture(1.5).pixel(72, 45), backdrop);
}

void SurfacePaintingTest::shrinkingLosesNoPixel()
{
    ShownSurface shown({104, 76});
    Surface& surface = shown.surface;
    // The first of the columns, or rows, that each device pixel shows, and where the last ones end.
    const auto starts = [&](int count, int size, double ratio, double origin) {
        std::vector<int> all;
        int before = -1 / ratio < origin ? -1 : 0;
        for (const auto& [least, place] : places(count + 1, ratio, origin, surface.scaling())) {
            all.push_back(before < 0 ? 0 : std::min(place, size));
            before = place;
        }
        return all;
    };
    for (const auto format : {QImage::Format_Grayscale8, QImage::Format_Indexed8, QImage::Format_RGBX8888,
                              QImage::Format_BGR888, QImage::Format_ARGB32_Premultiplied}) {
        const bool isIndexed = format == QImage::Format_Indexed8; // of which the indices are combined
        for (const QSize& size : {QSize(997, 613), QSize(30001, 120)}) {
            QImage image = noise(size, isIndexed ? QImage::Format_Grayscale8 : format);
            const QImage values = image.convertToFormat(QImage::Format_RGB32);
            const auto shownAs = [&](QRgb color) { return isIndexed ? 0xFF000000 | (color & 0xFF) * 65599 : color; };
            QVector<QRgb> table;
            for (unsigned level = 0; level < 256; ++level)
                table.push_back(shownAs(level));
            image.reinterpretAsFormat(format);
            image.setColorTable(isIndexed ? table : QVector<QRgb>());
            for (const double zoom : {0.0, 0.07, 0.313, 0.5}) {
                for (const double ratio : {1.0, 1.25}) {
                    for (const ShrinkMode mode : {ShrinkMode::Mean, ShrinkMode::Maximum}) {
                        surface.setShrinkMode(mode);
                        shown.show(image, zoom, {7.3, 1.6});
                        const QPointF origin = surface.scaledRect().topLeft();
                        QImage expected = shown.picture(ratio);
                        expected.fill(backdrop);
                        const auto columns = starts(expected.width(), size.width(), ratio, origin.x());
                        const auto rows = starts(expected.height(), size.height(), ratio, origin.y());
                        for (int y = 0; y < expected.height(); ++y) {
                            for (int x = 0; x < expected.width(); ++x) {
                                const QRect block(QPoint(columns[std::size_t(x)], rows[std::size_t(y)]),
                                                  QPoint(columns[std::size_t(x) + 1], rows[std::size_t(y) + 1]));
                                const QRect pixels = block.adjusted(0, 0, -1, -1);
                                if (!pixels.isEmpty())
                                    expected.setPixel(x, y, shownAs(combined(values, pixels, mode)));
                            }
                        }
                        const QByteArray wrong = faultInVectors([&]() -> QByteArray {
                            shown.show(image, zoom, {7.3, 1.6}); // another picture
                            return shown.picture(ratio) == expected &&
                                           shown.picture(ratio, QRect(31, 17, 57, 43)) == expected
                                       ? ""
                                       : "zoom " + QByteArray::number(zoom) + ", ratio " + QByteArray::number(ratio);
                        });
                        QVERIFY2(wrong.isEmpty(), wrong + ", format " + QByteArray::number(format));
                    }
                }
            }
        }
    }
}

void SurfacePaintingTest::turnedPainter()
{
    ShownSurface shown({64, 64});
    const QImage image = noise({64, 64}, QImage::Format_RGB32);
    shown.show(image, 1);
    QImage print(image.size(), QImage::Format_RGB32);
    QPainter painter(&print);
    painter.translate(64, 0);
    painter.rotate(90);
    shown.host.render(&painter);
    painter.end();
    QVERIFY(print == image.transformed(QTransform().rotate(90)));
}

void SurfacePaintingTest::crosshair()
{
    QImage image(16, 12, QImage::Format_RGB32);
    image.fill(0xFF808080);
    ShownSurface shown({100, 80});
    shown.surface.setCrosshairVisible(true);
    const auto check = [&](double zoom, const QPointF& offset, const QPoint& pixel, double ratio) {
        shown.surface.setActivePixel(-1, -1);
        shown.show(image, zoom, offset);
        const QImage plain = shown.picture(ratio);
        shown.surface.setActivePixel(pixel);
        const QImage picture = shown.picture(ratio);
        QVERIFY(shown.picture(ratio, QRect(31, 17, 41, 33)) == picture);
        const auto edge = [&](double origin, int number) {
            return static_cast<int>(std::ceil((origin + number * zoom) * ratio - 1e-6));
        };
        const QPointF origin = shown.surface.scaledRect().topLeft();
        const QPoint corner(edge(origin.x(), pixel.x()), edge(origin.y(), pixel.y()));
        const QPoint opposite(edge(origin.x(), pixel.x() + 1), edge(origin.y(), pixel.y() + 1));
        const int thickness = qRound(ratio);
        const int dash = qRound(4 * ratio);
        const auto isIn = [&](int position, int first) { return position >= first && position < first + thickness; };
        const auto dashed = [&](int along) { return along / dash % 2 == 0 ? 0xFFFFFFFF : 0xFF000000; };
        const bool isClosed = zoom >= 1.5;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const bool inWidth = isClosed && x >= corner.x() && x < opposite.x() + thickness;
                const bool inHeight = isClosed && y >= corner.y() && y < opposite.y() + thickness;
                QRgb expected = plain.pixel(x, y);
                if (isIn(y, corner.y())) // a later line lies on top
                    expected = dashed(x);
                if (isIn(x, corner.x()))
                    expected = dashed(y);
                if (inWidth && isIn(y, opposite.y()))
                    expected = dashed(x - corner.x());
                if (inHeight && isIn(x, opposite.x()))
                    expected = dashed(y - corner.y());
                QVERIFY2(picture.pixel(x, y) == expected, qPrintable(QStringLiteral("(%1, %2)").arg(x).arg(y)));
            }
        }
    };
    for (const double ratio : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        check(1, {}, {3, 2}, ratio);
        check(1.49, {}, {4, 3}, ratio);
        check(1.5, {}, {4, 2}, ratio);
        check(8, {20.3, 10}, {3, 2}, ratio);
        check(8, {20.3, 10}, {13, 10}, ratio);
    }
}

QTEST_MAIN(SurfacePaintingTest)
#include "SurfacePaintingTest.moc"
