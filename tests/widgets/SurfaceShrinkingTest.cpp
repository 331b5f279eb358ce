// SPDX-License-Identifier: MIT
// Tests, pixel by pixel, what a surface shows of the image pixels that share a device pixel.
#include "ShownSurface.h"
#include "pipeline/VectorUnits.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <random>
#include <vector>

using namespace Vistrel;

namespace {

// The first of the columns, or rows, that each device pixel of a line shows, and where the last ones end. Those beside
// the image show none.
std::vector<int> starts(int count, int size, double ratio, double origin, double scaling)
{
    std::vector<int> all;
    const auto at = [&](int place) { return std::floor((place / ratio - origin) / scaling + 1e-9); };
    for (int x = 0; x <= count; ++x)
        all.push_back(at(x) < 0 || at(x - 1) < 0 ? 0 : static_cast<int>(std::min<double>(at(x), size)));
    return all;
}

// Of each channel the largest value, or the mean.
QRgb combined(const QImage& image, const QRect& block, bool isMean)
{
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

class SurfaceShrinkingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPixelCounts_data();
    void everyPixelCounts();
};

void SurfaceShrinkingTest::everyPixelCounts_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("format");
    QTest::newRow("gray") << QSize(1223, 601) << int(QImage::Format_Grayscale8);
    QTest::newRow("levels in colours") << QSize(611, 407) << int(QImage::Format_Indexed8);
    QTest::newRow("colour") << QSize(2997, 413) << int(QImage::Format_RGBX8888);
    QTest::newRow("other colour") << QSize(301, 203) << int(QImage::Format_BGR888);
    QTest::newRow("glass") << QSize(301, 203) << int(QImage::Format_ARGB32_Premultiplied);
    QTest::newRow("long") << QSize(30001, 120) << int(QImage::Format_Grayscale8);
}

void SurfaceShrinkingTest::everyPixelCounts()
{
    QFETCH(QSize, size);
    QFETCH(int, format);
    std::minstd_rand random;
    const bool isGlass = format == QImage::Format_ARGB32_Premultiplied;
    QImage image(size, isGlass ? QImage::Format_ARGB32 : static_cast<QImage::Format>(format));
    for (int y = 0; y < size.height(); ++y)
        std::generate_n(image.scanLine(y), image.bytesPerLine(), [&] { return static_cast<uchar>(random() >> 8); });
    image = image.convertToFormat(static_cast<QImage::Format>(format));
    QImage values = image; // what is combined
    std::vector<QRgb> table;
    if (format == QImage::Format_Indexed8) {
        values.reinterpretAsFormat(QImage::Format_Grayscale8);
        std::generate_n(std::back_inserter(table), 256, [&] { return static_cast<QRgb>(random() >> 7 | 0xFF000000); });
        image.setColorTable(QVector<QRgb>(table.begin(), table.end()));
    }
    values = values.convertToFormat(isGlass ? values.format() : QImage::Format_RGB32);

    ShownSurface shown({103, 75});
    for (const double zoom : {0.0, 0.07, 0.125, 0.313, 0.5, 0.77}) {
        shown.show(image, zoom, {7.3, 1.6});
        const QPointF origin = shown.surface.scaledRect().topLeft();
        const double scaling = shown.surface.scaling();
        for (const double ratio : {1.0, 1.5, 2.0}) {
            shown.surface.setShrinkMode(ShrinkMode::Sample);
            const QImage sampled = shown.picture(ratio);
            const auto columns = starts(sampled.width(), size.width(), ratio, origin.x(), scaling);
            const auto rows = starts(sampled.height(), size.height(), ratio, origin.y(), scaling);
            for (const ShrinkMode mode : {ShrinkMode::Mean, ShrinkMode::Maximum}) {
                QImage shrunk(sampled.size(), QImage::Format_ARGB32_Premultiplied);
                shrunk.fill(Qt::transparent);
                for (int y = 0; y < shrunk.height(); ++y) {
                    for (int x = 0; x < shrunk.width(); ++x) {
                        const QRect block(QPoint(columns[std::size_t(x)], rows[std::size_t(y)]),
                                          QPoint(columns[std::size_t(x) + 1] - 1, rows[std::size_t(y) + 1] - 1));
                        if (block.isEmpty())
                            continue;
                        const QRgb color = combined(values, block, mode == ShrinkMode::Mean);
                        reinterpret_cast<QRgb*>(shrunk.scanLine(y))[x] = table.empty() ? color : table[color & 0xFF];
                    }
                }
                QImage expected(sampled.size(), QImage::Format_RGB32);
                expected.fill(ShownSurface::backdrop);
                QPainter(&expected).drawImage(0, 0, shrunk);
                if (scaling * ratio >= 1)
                    expected = sampled;
                expected.setDevicePixelRatio(ratio);

                shown.surface.setShrinkMode(mode);
                const QByteArray wrong = faultInVectors([&]() -> QByteArray {
                    shown.surface.setPixmap(QPixmap::fromImage(image, Qt::NoFormatConversion)); // not the same again
                    if (shown.picture(ratio) != expected)
                        return "zoom " + QByteArray::number(zoom) + ", ratio " + QByteArray::number(ratio);
                    return shown.picture(ratio, QRect(31, 17, 57, 43)) == expected ? "" : "a part";
                });
                QVERIFY2(wrong.isEmpty(), wrong);
            }
        }
    }
}

QTEST_MAIN(SurfaceShrinkingTest)
#include "SurfaceShrinkingTest.moc"
