// SPDX-License-Identifier: MIT
// Tests the coordinates and values written into the cells of enlarged pixels.
#include "AskingSource.h"
#include "ShownSurface.h"

#include "base/Report.h"

#include <QtGui/QFontDatabase>
#include <QtGui/QFontInfo>
#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

using namespace Vistrel;

using Operation = std::function<void(Surface&)>;
Q_DECLARE_METATYPE(Operation)

namespace {

constexpr QRgb gray = 0xFF808080;
constexpr QRgb white = 0xFFFFFFFF;

std::atomic<int> reportedLines{0};

QImage grayImage(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(gray);
    return image;
}

QImage indexedImage(const QSize& size, uchar value = 255)
{
    QImage image(size, QImage::Format_Indexed8);
    QVector<QRgb> ramp(256);
    for (int i = 0; i < 256; ++i)
        ramp[i] = qRgb(i, i, i);
    image.setColorTable(ramp);
    image.fill(value);
    return image;
}

Operation from(const QImage& image)
{
    return [=](Surface& s) { s.setImageSrc(image); };
}

// A frame whose pixels can be read only under its lock; each of its bytes is `fill`.
Operation fromLocked(const QSize& size, Format format, int fill = 0xFF)
{
    const auto width = static_cast<std::size_t>(size.width());
    const auto height = static_cast<std::size_t>(size.height());
    return [=, source = std::make_shared<ProtectedSource>(width, height, format)](Surface& s) {
        RawImage raw;
        ScopedLock lock;
        source->getNextFrame(&raw, &lock);
        std::memset(const_cast<std::uint8_t*>(raw.data), fill, width * height * bytesPerPixel(format));
        s.setImageSrc(source.get(), raw);
    };
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
    void init();
    void cleanup() { setReportSink(nullptr); }

    void everyVisibleCellIsLabelled();
    void labelsNeedLargeCells_data();
    void labelsNeedLargeCells();
    void labelsFollowTheSource();
    void columnIsNamedBeforeTheRow();
    void textIsNotCut_data();
    void textIsNotCut();
};

void PixelOverlayTest::init()
{
    reportedLines = 0;
    setReportSink([](const std::string&) { ++reportedLines; });
}

void PixelOverlayTest::everyVisibleCellIsLabelled()
{
    constexpr int zoom = 96;
    QImage values = indexedImage({5, 4}, 111);
    values.setPixel(2, 1, 112);
    ShownSurface shown({4 * zoom + 20, 300});
    shown.show(grayImage({5, 4}), zoom, {40, 30});
    shown.surface.setImageSrc(values);
    const QImage picture = shown.picture();

    const Labels labels(shown.surface, QStringLiteral(" 4, 3 "), QStringLiteral(" 255 "));
    QVERIFY(labels.neededCell < zoom);
    const auto cellOf = [](int x, int y) { return QRect(x * zoom - 40, y * zoom - 30, zoom, zoom); };
    const auto upper = [&](int x, int y) { return picture.copy(cellOf(x, y)).copy(0, 0, zoom, 47); };
    const auto lower = [&](int x, int y) { return picture.copy(cellOf(x, y)).copy(0, 47, zoom, zoom - 47); };
    for (int x = 1; x < 4; ++x) { // those that are seen whole
        for (int y = 1; y < 3; ++y) {
            const QRectF box = labels.boxIn(cellOf(x, y));
            const QRect inside = box.toAlignedRect().adjusted(2, 2, -2, -2);
            QImage beside = picture;
            QPainter(&beside).fillRect(box.toAlignedRect().adjusted(-1, -1, 1, 1), QColor(gray));
            QCOMPARE(beside.copy(cellOf(x, y)), grayImage({zoom, zoom}));
            for (int i = inside.left(); i <= inside.right(); ++i)
                QVERIFY(ink(picture, {i, inside.top() - 3, 1, 3}).isValid() &&
                        ink(picture, {i, inside.bottom() + 1, 1, 3}).isValid());
            for (int i = inside.top(); i <= inside.bottom(); ++i)
                QVERIFY(ink(picture, {inside.left() - 3, i, 3, 1}).isValid() &&
                        ink(picture, {inside.right() + 1, i, 3, 1}).isValid());
            QVERIFY(isLabelled(picture.copy(inside)));
            QVERIFY(ink(picture, inside).intersects(cellOf(x, y).adjusted(0, 0, 0, -55)));
            QVERIFY(ink(picture, inside).intersects(cellOf(x, y).adjusted(0, 55, 0, 0)));
        }
    }
    QVERIFY(upper(1, 1) != upper(3, 1));
    QVERIFY(upper(1, 1) != upper(1, 2));
    QVERIFY(lower(1, 1) == lower(1, 2));
    QVERIFY(lower(1, 1) != lower(2, 1));
    for (const QRect& cut : {cellOf(0, 0), cellOf(0, 1), cellOf(4, 1), cellOf(2, 0), cellOf(2, 3)})
        QVERIFY(isLabelled(picture.copy(cut & picture.rect())));
}

void PixelOverlayTest::labelsNeedLargeCells_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<Operation>("source");
    QTest::addColumn<QString>("position");
    QTest::addColumn<QString>("value");
    const QString grayText = QStringLiteral(" %1 ");
    const QString colorText = QStringLiteral(" R: %1 \n G: %1 \n B: %1 ");
    const QString last = QStringLiteral(" 9, 7 ");
    const QSize size(10, 8);
    QTest::newRow("gray image") << size << from(indexedImage(size)) << last << grayText.arg(255);
    QTest::newRow("colour image") << size << from(grayImage(size)) << last << colorText.arg(255);
    QTest::newRow("8-bit frame") << size << fromLocked(size, Mono8) << last << grayText.arg(255);
    QTest::newRow("16-bit frame") << size << fromLocked(size, Mono16) << last << grayText.arg(65535);
    QTest::newRow("mosaic frame") << size << fromLocked(size, BayerRG12) << last << grayText.arg(4095);
    QTest::newRow("colour frame") << size << fromLocked(size, RGB8) << last << colorText.arg(255);
    QTest::newRow("wide image") << QSize(12000, 8) << from(indexedImage({12000, 8})) << QStringLiteral(" 11999, 7 ")
                                << grayText.arg(255);
}

void PixelOverlayTest::labelsNeedLargeCells()
{
    QFETCH(QSize, size);
    QFETCH(Operation, source);
    QFETCH(QString, position);
    QFETCH(QString, value);
    ShownSurface shown({300, 250});
    const double needed = Labels(shown.surface, position, value).neededCell;
    QVERIFY2(needed < Surface::scalingMax(), QByteArray::number(needed));
    source(shown.surface);
    for (const double zoom : {1.0, Surface::scalingMax() / 10 - 0.01, Surface::scalingMax() / 10, needed - 0.01,
                              needed + 0.01, Surface::scalingMax(), needed - 0.01, needed + 0.01}) {
        shown.show(grayImage(size), zoom);
        QVERIFY2(isLabelled(shown.picture()) == (zoom > needed), QByteArray::number(zoom));
    }
    shown.surface.setValueOverlayEnabled(false);
    QVERIFY(!isLabelled(shown.picture()));
}

void PixelOverlayTest::labelsFollowTheSource()
{
    ShownSurface shown({300, 250});
    AskingSource source([] { return ScopedLock(new FreeLock); });
    const TestFrame frame(12000, 8, RGB8);
    const auto raw = [&](std::size_t width, Format format) {
        return [&, width, format](Surface& s) {
            s.setImageSrc(&source, {frame.pixels.data(), width, 8, format, nullptr});
        };
    };
    // Each is measured anew, whatever it has in common with the one before.
    const Operation narrow[] = {from(indexedImage({10, 8})), raw(10, Mono8)};
    const Operation wide[] = {from(indexedImage({12000, 8})), from(grayImage({10, 8})), raw(10, RGB8),
                              raw(12000, Mono8)};
    shown.show(grayImage({12000, 8}),
               Labels(shown.surface, QStringLiteral(" 9, 7 "), QStringLiteral(" 255 ")).neededCell + 0.01);
    for (const Operation& small : narrow) {
        for (const Operation& large : wide) {
            small(shown.surface);
            QVERIFY(isLabelled(shown.picture()));
            large(shown.surface);
            QVERIFY(!isLabelled(shown.picture()));
        }
    }
}

void PixelOverlayTest::columnIsNamedBeforeTheRow()
{
    ShownSurface shown({120, 120});
    const double zoom = Surface::scalingMax();
    shown.show(grayImage({2, 2000}), zoom, {0, zoom * 1111});
    shown.surface.setImageSrc(indexedImage({2, 2000}));
    const Labels labels(shown.surface, QStringLiteral(" 1, 1999 "), QStringLiteral(" 255 "));
    QRectF position = labels.boxIn({0, 0, zoom, zoom});
    position.setHeight(labels.positionSize.height() - 2);
    const QRect text = ink(shown.picture(), position.toAlignedRect().adjusted(2, 2, -2, -2)); // "0, 1111"
    const QRect comma = ink(shown.picture(), {text.left(), text.bottom(), text.width(), 1});  // reaches lowest
    QVERIFY(comma.center().x() < text.center().x());
}

void PixelOverlayTest::textIsNotCut_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<Operation>("source");
    QTest::addColumn<QString>("value");
    const QString colorText = QStringLiteral(" R: %1 \n G: %1 \n B: %1 ");
    const QSize size(2, 2);
    QTest::newRow("gray image") << size << from(indexedImage(size)) << QStringLiteral(" 255 ");
    QTest::newRow("colour image") << size << from(grayImage(size)) << colorText.arg(128);
    QTest::newRow("10-bit frame") << size << fromLocked(size, Mono10) << QStringLiteral(" 1023 ");
    QTest::newRow("16-bit frame") << size << fromLocked(size, Mono16) << QStringLiteral(" 65535 ");
    QTest::newRow("30-bit frame") << size << fromLocked(size, RGB10p32) << colorText.arg(1023);
    QTest::newRow("48-bit frame") << size << fromLocked(size, RGB16) << colorText.arg(65535);
}

void PixelOverlayTest::textIsNotCut()
{
    QFETCH(QSize, size);
    QFETCH(Operation, source);
    QFETCH(QString, value);
    const double zoom = Surface::scalingMax();
    ShownSurface shown({120, 120});
    shown.show(grayImage(size), zoom);
    source(shown.surface);

    const Labels labels(shown.surface, QStringLiteral(" 1, 1 "), value);
    QImage whole(200, 200, QImage::Format_RGB32);
    whole.setDotsPerMeterX(qRound(shown.surface.logicalDpiX() / 0.0254));
    whole.setDotsPerMeterY(qRound(shown.surface.logicalDpiY() / 0.0254));
    whole.fill(Qt::white);
    QPainter painter(&whole);
    painter.setFont(labels.font);
    painter.drawText(QRectF(20.5, 20.5, 150, 150), Qt::AlignLeft, value);
    painter.end();
    const QSize uncut = ink(whole, whole.rect()).size();

    const QRectF box = labels.boxIn(QRectF(0, 0, zoom, zoom));
    const QRectF written = box.adjusted(2, labels.positionSize.height() + 2, -2, -2);
    const QSize seen = ink(shown.picture(), written.toAlignedRect()).size();
    QVERIFY2(std::abs(seen.width() - uncut.width()) <= 1 && std::abs(seen.height() - uncut.height()) <= 1,
             qPrintable(QStringLiteral("%1 x %2, not %3 x %4")
                            .arg(seen.width())
                            .arg(seen.height())
                            .arg(uncut.width())
                            .arg(uncut.height())));
}

QTEST_MAIN(PixelOverlayTest)
#include "PixelOverlayTest.moc"
