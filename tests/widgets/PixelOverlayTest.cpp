// SPDX-License-Identifier: MIT
// Tests the coordinates and values written into the cells of enlarged pixels.
#include "ShownSurface.h"

#include "base/Log.h"
#include "support/FakeSources.h"

#include <QtCore/QScopeGuard>

#include <algorithm>

using namespace Vistrel;

namespace {

constexpr QRgb gray = 0xFF808080;
constexpr QRgb white = 0xFFFFFFFF;

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

bool isLabelled(const QImage& picture)
{
    const auto* const pixels = reinterpret_cast<const QRgb*>(picture.constBits());
    return std::count(pixels, pixels + picture.sizeInBytes() / 4, white) > 0;
}

} // namespace

class PixelOverlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyVisibleCellIsLabelled();
    void nothingIsReadWithoutALock();
};

void PixelOverlayTest::everyVisibleCellIsLabelled()
{
    constexpr int zoom = 96;
    QImage values(5, 4, QImage::Format_Indexed8);
    for (int i = 0; i < 256; ++i)
        values.setColor(i, qRgb(i, i, i));
    values.fill(111);
    values.setPixel(2, 1, 112);
    ShownSurface shown({4 * zoom + 20, 300});
    shown.show(colorImage({5, 4}, gray), zoom, {40, 30});
    shown.surface.setImageSrc(values);
    const QImage picture = shown.picture();

    const auto cellOf = [](int x, int y) { return QRect(x * zoom - 40, y * zoom - 30, zoom, zoom); };
    for (const QRect& cell : {cellOf(1, 1), cellOf(2, 1), cellOf(3, 1), cellOf(1, 2), cellOf(3, 2)}) { // seen whole
        QVERIFY(isLabelled(picture.copy(cell)));
        const QImage edge = picture.copy(cell.left(), cell.top(), zoom, 2);
        QCOMPARE(edge, colorImage(edge.size(), gray));
    }
    // Coordinates above, the value below.
    const auto upper = [&](int x, int y) { return picture.copy(cellOf(x, y)).copy(0, 0, zoom, 47); };
    const auto lower = [&](int x, int y) { return picture.copy(cellOf(x, y)).copy(0, 47, zoom, zoom - 47); };
    QVERIFY(upper(1, 1) != upper(3, 1) && upper(1, 1) != upper(1, 2));
    QVERIFY(lower(1, 1) == lower(1, 2) && lower(1, 1) != lower(2, 1));
}

void PixelOverlayTest::nothingIsReadWithoutALock()
{
    reportedLines = 0;
    setReportSink([](const std::string&) { ++reportedLines; });
    const auto reset = qScopeGuard([] { setReportSink(nullptr); });
    ShownSurface shown({250, 200});
    Surface& surface = shown.surface;
    shown.show(colorImage({4, 4}, gray), Surface::scalingMax());
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
        return success || !isEmpty || isLabelled(shown.picture());
    };
    surface.setImageSrc(colorImage({4, 4}, gray));
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
