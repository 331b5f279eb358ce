// SPDX-License-Identifier: MIT
// Tests the coordinates and values written into the cells of enlarged pixels.
#include "ShownSurface.h"

#include "support/FakeSources.h"
#include "widgets/SurfaceGeometry.h"

#include <algorithm>
#include <cstdlib>

using namespace Vistrel;

namespace {

constexpr QRgb dark = 0xFF5A5A5A;
constexpr QRgb bright = 0xFFA8A8A8;

/// A source that asks the test for each lock.
struct AskingSource : PullSource
{
    explicit AskingSource(std::function<ScopedLock()> question)
        : PullSource([](RawImage*, ScopedLock*) { return false; }), ask(std::move(question))
    {
    }
    ScopedLock getFrameLock(const RawImage&) override { return ask(); }
    const std::function<ScopedLock()> ask;
};

struct FreeLock : AbstractLock
{
};

QImage colorImage(const QSize& size, QRgb color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

// Whether something is written that has full contrast to a background.
bool hasInk(const QImage& picture, QRgb background)
{
    const auto* const pixels = reinterpret_cast<const QRgb*>(picture.constBits());
    return std::any_of(pixels, pixels + picture.sizeInBytes() / 4,
                       [=](QRgb pixel) { return std::abs(qGray(pixel) - (background == dark ? 255 : 0)) < 60; });
}

} // namespace

class PixelOverlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void labelsStandInTheirCells();
    void nothingIsReadWithoutALock();
};

// Of 5 x 4 pixels, (2, 1) has another value than the rest, in colour another blue.
void PixelOverlayTest::labelsStandInTheirCells()
{
    const struct
    {
        PixelValues values;
        Format format; // 0: an indexed image
        double zoom;   // 32 and 48 are the least for values alone
    } rows[] = {{PixelValues::WithPosition, Mono8, 96},    {PixelValues::WithPosition, RGB16, 111},
                {PixelValues::ValueOnly, Format(0), 32},   {PixelValues::ValueOnly, Mono16, 32},
                {PixelValues::ValueOnly, BayerGR12, 33.3}, {PixelValues::ValueOnly, RGB16, 48}};
    for (const auto& [values, format, zoom] : rows) {
        const bool isBare = values == PixelValues::ValueOnly;
        const bool isGray = isBare && format != RGB16;
        ShownSurface shown({int(4.5 * zoom), int(3.4 * zoom)});
        shown.surface.setPixelValues(values);
        TestFrame frame(5, 4, format ? format : Mono8, 0xFF);
        frame.pixels[7 * bytesPerPixel(frame.raw.format)] = 5; // blue comes first
        QImage image(frame.pixels.data(), 5, 4, 5, QImage::Format_Indexed8);
        image.setColorTable(QVector<QRgb>(255, 0xFF050505) << bright);
        int locks = 0;
        AskingSource source([&] { return ++locks, ScopedLock(new FreeLock); });
        format ? shown.surface.setImageSrc(&source, frame.raw) : shown.surface.setImageSrc(image);
        for (const auto& [ratio, color] :
             {std::pair(1.0, dark), {1.25, bright}, {1.5, dark}, {2.0, bright}, {3.0, dark}}) {
            shown.show(colorImage({5, 4}, color), zoom, {zoom / 3, zoom / 7});
            locks = 0;
            const QImage whole = shown.picture(ratio);
            QCOMPARE(locks, format ? 1 : 0);
            SurfaceGeometry geometry = shown.surface.viewGeometry();
            geometry.setGrid(ratio, {0, 0});
            const QImage odd = whole.copy(geometry.cellOf({2, 1}));
            for (const QPoint& pixel : {QPoint(1, 1), QPoint(3, 1), QPoint(2, 2)}) {
                const QRect place = geometry.cellOf(pixel);
                const QImage cell = whole.copy(place);
                const int right = cell.width() - 1, bottom = cell.height() - 1;
                QVERIFY(hasInk(cell.copy(0, 0, right / 3, bottom), color)); // as large on any screen
                for (const QRect& edge :
                     {QRect(0, 0, right, 1), {0, 0, 1, bottom}, {0, bottom, right, 1}, {right, 0, 1, bottom}})
                    QVERIFY(!hasInk(cell.copy(edge), color));
                // Coordinates stand above, blue below; nothing above a gray value.
                const QRect upper(0, 0, right, bottom / (isGray ? 5 : 2));
                if (odd.size() != cell.size()) // an edge is rounded
                    continue;
                QCOMPARE(cell.copy(upper) == odd.copy(upper), isBare);
                QVERIFY(cell.copy(0, bottom / 3, right, bottom) != odd.copy(0, bottom / 3, right, bottom));
            }
            QVERIFY(shown.picture(ratio, QRect(int(zoom), int(zoom * 0.9), int(zoom * 1.4), int(zoom * 0.7))) == whole);
        }
        shown.surface.setScaling(zoom - 0.01);
        QCOMPARE(hasInk(shown.picture(), dark), zoom != 32 && zoom != 48);
    }
}

void PixelOverlayTest::nothingIsReadWithoutALock()
{
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
        return surface.imageSrcPixVal({1, 1}, value) || value.mono || value.color ||
               value.value + value.r + value.g + value.b > 0 || hasInk(shown.picture(), dark);
    };
    surface.setImageSrc(colorImage({4, 4}, dark));
    QVERIFY(isRead());
    surface.clearImageSrc();
    QVERIFY(!isRead());
    surface.setImageSrc(&source, frame.raw);
    QVERIFY(!isRead());
    isThrowing = true;
    QVERIFY(!isRead());
}

QTEST_MAIN(PixelOverlayTest)
#include "PixelOverlayTest.moc"
