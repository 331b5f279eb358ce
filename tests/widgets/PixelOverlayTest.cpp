// SPDX-License-Identifier: MIT
// Tests the coordinates and values written into the cells of enlarged pixels.
#include "ShownSurface.h"

#include "base/Report.h"
#include "support/FakeSources.h"

#include <QtCore/QScopeGuard>
#include <QtGui/QFontDatabase>
#include <QtGui/QFontInfo>
#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

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

QImage indexedImage(const QSize& size, uchar value)
{
    QImage image(size, QImage::Format_Indexed8);
    for (int i = 0; i < 256; ++i)
        image.setColor(i, qRgb(i, i, i));
    image.fill(value);
    return image;
}

bool isLabelled(const QImage& picture)
{
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, y) == white)
                return true;
        }
    }
    return false;
}

// What the labels of a source need: the largest of the sizes, from the base size down, that fits at the largest zoom.
struct Labels
{
    Labels(const QWidget& shownOn, const QString& position, const QString& value)
        : font(QFontDatabase::systemFont(QFontDatabase::SmallestReadableFont))
    {
        for (int points = QFontInfo(font).pointSize(); points > 0; --points) {
            font.setPointSize(points);
            const QFontMetricsF metrics(font, &shownOn); // whose resolution need not be the default one
            positionSize = metrics.size(0, position) + QSizeF(4, 4);
            valueSize = metrics.size(0, value) + QSizeF(4, 4);
            neededCell = 1.125 * std::max({positionSize.width(), valueSize.width(),
                                           2 * positionSize.height() + valueSize.height()});
            if (neededCell < Surface::scalingMax())
                break;
        }
    }

    QRectF boxIn(const QRectF& cell) const
    {
        QRectF box(0, 0, std::max(positionSize.width(), valueSize.width()), positionSize.height() + valueSize.height());
        box.moveCenter(cell.center());
        return box;
    }

    QFont font;
    QSizeF positionSize;
    QSizeF valueSize;
    double neededCell = 0;
};

// Where anything dark stands.
QRect ink(const QImage& picture, const QRect& area)
{
    QRect found;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (qGray(picture.pixel(x, y)) < 100)
                found |= QRect(x, y, 1, 1);
        }
    }
    return found;
}

} // namespace

class PixelOverlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyVisibleCellIsLabelled();
    void labelsFillLargeCells();
    void columnIsNamedBeforeTheRow();
    void nothingIsReadWithoutALock();
};

void PixelOverlayTest::everyVisibleCellIsLabelled()
{
    constexpr int zoom = 96;
    QImage values = indexedImage({5, 4}, 111);
    values.setPixel(2, 1, 112);
    ShownSurface shown({4 * zoom + 20, 300});
    shown.show(colorImage({5, 4}, gray), zoom, {40, 30});
    shown.surface.setImageSrc(values);
    const QImage picture = shown.picture();

    const Labels labels(shown.surface, QStringLiteral(" 4, 3 "), QStringLiteral(" 255 "));
    const auto cellOf = [](int x, int y) { return QRect(x * zoom - 40, y * zoom - 30, zoom, zoom); };
    for (const QRect& cell : {cellOf(1, 1), cellOf(2, 1), cellOf(3, 1), cellOf(1, 2), cellOf(3, 2)}) { // seen whole
        const QRect box = labels.boxIn(cell).toAlignedRect();
        QImage beside = picture;
        QPainter(&beside).fillRect(box.adjusted(-1, -1, 1, 1), QColor(gray));
        QCOMPARE(beside.copy(cell), colorImage({zoom, zoom}, gray));
        const QRect inside = box.adjusted(2, 2, -2, -2);
        for (int i = inside.left(); i <= inside.right(); ++i)
            QVERIFY(ink(picture, {i, inside.top() - 3, 1, 3}).isValid() &&
                    ink(picture, {i, inside.bottom() + 1, 1, 3}).isValid());
        for (int i = inside.top(); i <= inside.bottom(); ++i)
            QVERIFY(ink(picture, {inside.left() - 3, i, 3, 1}).isValid() &&
                    ink(picture, {inside.right() + 1, i, 3, 1}).isValid());
        QVERIFY(isLabelled(picture.copy(inside)));
    }
    // Coordinates above, the value below.
    const auto upper = [&](int x, int y) { return picture.copy(cellOf(x, y)).copy(0, 0, zoom, 47); };
    const auto lower = [&](int x, int y) { return picture.copy(cellOf(x, y)).copy(0, 47, zoom, zoom - 47); };
    QVERIFY(upper(1, 1) != upper(3, 1) && upper(1, 1) != upper(1, 2));
    QVERIFY(lower(1, 1) == lower(1, 2) && lower(1, 1) != lower(2, 1));

    for (const QRect& cut : {cellOf(0, 0), cellOf(0, 1), cellOf(4, 1), cellOf(2, 0), cellOf(2, 3)})
        QVERIFY(isLabelled(picture.copy(cut & picture.rect())));
    // A paint that begins within one cell and ends within the next labels both.
    const QImage part = shown.picture(cellOf(2, 1).translated(60, 0));
    QVERIFY(isLabelled(part.copy(0, 0, 36, zoom)) && isLabelled(part.copy(36, 0, zoom - 36, zoom)));
}

// One surface after the other source: each is measured anew, whatever it has in common with the one before.
void PixelOverlayTest::labelsFillLargeCells()
{
    AskingSource source([] { return ScopedLock(new FreeLock); });
    const TestFrame frame(10000, 8, RGB16, 0xFF);
    ShownSurface shown({300, 250});
    const double largest = Surface::scalingMax();
    const auto check = [&](const QSize& size, const QString& value) {
        const QString last = QStringLiteral(" %1, %2 ").arg(size.width() - 1).arg(size.height() - 1);
        const Labels labels(shown.surface, last, value);
        const double needed = labels.neededCell;
        QVERIFY2(needed < largest, QByteArray::number(needed));
        for (const double zoom : {needed + 0.01, needed - 0.01, 1.0, largest / 10, needed + 0.01, largest}) {
            shown.show(colorImage(size, gray), zoom);
            QVERIFY2(isLabelled(shown.picture()) == (zoom > needed), QByteArray::number(zoom));
        }
        // Nothing of the text is cut.
        QImage whole = colorImage({200, 200}, white);
        whole.setDotsPerMeterX(qRound(shown.surface.logicalDpiX() / 0.0254));
        whole.setDotsPerMeterY(qRound(shown.surface.logicalDpiY() / 0.0254));
        QPainter painter(&whole);
        painter.setFont(labels.font);
        painter.drawText(QRectF(20.5, 20.5, 150, 150), Qt::AlignLeft, value);
        painter.end();
        const QRectF written =
            labels.boxIn({0, 0, largest, largest}).adjusted(2, labels.positionSize.height() + 2, -2, -2);
        const QSize off = ink(shown.picture(), written.toAlignedRect()).size() - ink(whole, whole.rect()).size();
        QVERIFY2(std::abs(off.width()) <= 1 && std::abs(off.height()) <= 1,
                 qPrintable(QStringLiteral("%1 x %2 too large").arg(off.width()).arg(off.height())));
    };
    const auto checkImage = [&](const QImage& image, const QString& value) {
        shown.surface.setImageSrc(image);
        check(image.size(), value);
    };
    const auto checkFrame = [&](int width, Format format, const QString& value) {
        shown.surface.setImageSrc(&source, {frame.pixels.data(), std::size_t(width), 8, format, nullptr});
        check({width, 8}, value);
    };
    const QString monoText = QStringLiteral(" %1 ");
    const QString colorText = QStringLiteral(" R: %1 \n G: %1 \n B: %1 ");
    shown.surface.setImageSrc(indexedImage({10, 8}, 255));
    shown.picture(); // at 100 %, which tells nothing for the next zoom
    checkImage(indexedImage({10, 8}, 255), monoText.arg(255));
    checkImage(indexedImage({10000, 8}, 255), monoText.arg(255));
    checkImage(indexedImage({10, 8}, 255), monoText.arg(255));
    checkImage(colorImage({10, 8}, white), colorText.arg(255));
    checkFrame(10, Mono8, monoText.arg(255));
    checkFrame(10, Mono16, monoText.arg(65535));
    checkFrame(10000, Mono16, monoText.arg(65535));
    checkFrame(10000, RGB10p32, colorText.arg(1023));
    checkFrame(10, Mono8, monoText.arg(255));
    shown.surface.setValueOverlayEnabled(false);
    QVERIFY(!isLabelled(shown.picture()));
}

void PixelOverlayTest::columnIsNamedBeforeTheRow()
{
    ShownSurface shown({120, 120});
    const double zoom = Surface::scalingMax();
    shown.show(colorImage({2, 2000}, gray), zoom, {0, zoom * 1111});
    shown.surface.setImageSrc(indexedImage({2, 2000}, 255));
    const Labels labels(shown.surface, QStringLiteral(" 1, 1999 "), QStringLiteral(" 255 "));
    QRectF position = labels.boxIn({0, 0, zoom, zoom});
    position.setHeight(labels.positionSize.height() - 2);
    const QRect text = ink(shown.picture(), position.toAlignedRect().adjusted(2, 2, -2, -2)); // "0, 1111"
    const QRect comma = ink(shown.picture(), {text.left(), text.bottom(), text.width(), 1});  // reaches lowest
    QVERIFY(comma.center().x() < text.center().x());
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
