// SPDX-License-Identifier: MIT
// Tests the ways from images back to frames and from stored images to painted ones.
#include "pipeline/PixelReference.h"
#include "pipeline/frames/Conversion.h"

#include <QtTest/QtTest>

using namespace PixelReference;

namespace {

// Levels in no order, so that numbering them as they come cannot go unnoticed.
QImage scene(QSize size, bool gray)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int level = (200 + 37 * x + 91 * y) & 0xFF;
            image.setPixel(x, y, gray ? qRgb(level, level, level) : qRgb(level, 255 - level, (level * 3) & 0xFF));
        }
    }
    return image;
}

} // namespace

class ImageConversionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyImageBecomesAFrame_data();
    void everyImageBecomesAFrame();
    void renderedImages();

private:
    static void isRenderedRight(QImage::Format format, int entries, bool reverse);

    CopyPool m_pool{3};
};

void ImageConversionTest::everyImageBecomesAFrame_data()
{
    QTest::addColumn<QImage>("image");
    for (const QSize size : {QSize(13, 5), QSize(12, 4)}) {
        for (int format = QImage::Format_Invalid + 1; format < QImage::NImageFormats; ++format) {
            for (const bool gray : {false, true})
                QTest::addRow("%s format %d, %d pixels wide", gray ? "grey" : "coloured", format, size.width())
                    << scene(size, gray).convertToFormat(static_cast<QImage::Format>(format));
        }
    }
}

void ImageConversionTest::everyImageBecomesAFrame()
{
    QFETCH(QImage, image);
    const bool isIndexed = image.format() == QImage::Format_Indexed8;
    const bool isGray = isIndexed || (image.format() != QImage::Format_RGB888 &&
                                      image.format() != QImage::Format_RGBX8888 && image.isGrayscale());
    const Format expected = isGray ? Mono8 : image.format() == QImage::Format_RGB888 ? RGB8 : RGBa8;
    const QImage opaque = image.convertToFormat(QImage::Format_RGB32);
    const QImage before = image.copy();
    int userData = 0;
    PixelBuffer buffer;
    RawImage raw;
    raw.userData = &userData;
    QVERIFY(rawFromImage(m_pool, image, buffer, image, raw)); // in place: what it needs of the image must stay
    QVERIFY(raw.userData == &userData && raw.data == image.constBits());
    QVERIFY(raw.width == static_cast<std::size_t>(before.width()) &&
            raw.height == static_cast<std::size_t>(before.height()));
    QCOMPARE(raw.format, expected);
    QCOMPARE(image.bytesPerLine(), before.width() * static_cast<int>(layoutOf(expected).bytes));
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const std::uint8_t* const pixel =
                raw.data + static_cast<std::size_t>(y * image.width() + x) * layoutOf(expected).bytes;
            if (isIndexed)
                QCOMPARE(int{*pixel}, before.pixelIndex(x, y));
            else
                QCOMPARE(isGray ? qRgb(*pixel, *pixel, *pixel) : qRgb(pixel[0], pixel[1], pixel[2]),
                         opaque.pixel(x, y));
            QCOMPARE(image.pixel(x, y), opaque.pixel(x, y));
        }
    }
}

void ImageConversionTest::renderedImages()
{
    isRenderedRight(QImage::Format_Indexed8, 256, true);  // nothing to reverse
    isRenderedRight(QImage::Format_Indexed8, 255, false); // an entry short: grey
    isRenderedRight(QImage::Format_RGBX8888, 256, false);
    isRenderedRight(QImage::Format_RGBX8888, 256, true);
    isRenderedRight(QImage::Format_RGB888, 0, true);
}

void ImageConversionTest::isRenderedRight(QImage::Format format, int entries, bool reverse)
{
    constexpr std::size_t width = 13;
    constexpr std::size_t height = 5;
    const std::size_t bytes = format == QImage::Format_Indexed8 ? 1 : format == QImage::Format_RGB888 ? 3 : 4;
    QVector<unsigned int> palette(entries);
    for (int i = 0; i < entries; ++i)
        palette[i] = qRgb(i & 0xFF, 255 - (i & 0xFF), (i * 7) & 0xFF);
    const GuardedBuffer memory(width * height * bytes, GuardedBuffer::AtBack);
    for (std::size_t i = 0; i < memory.size(); ++i)
        memory.data()[i] = i % 4 == 3 && bytes == 4 ? 0xFF : static_cast<std::uint8_t>(i * 91);
    const QImage stored = imageIn(memory, width, height, format);
    const QByteArray before = bytesOf(stored);
    QImage rendered = imageForRender(stored, palette, reverse);

    std::fill_n(memory.data(), memory.size(), std::uint8_t{0}); // the next frame
    QCOMPARE(rendered.format(), format);
    for (std::size_t i = 0; i < width * height; ++i) {
        const auto* const pixel = reinterpret_cast<const std::uint8_t*>(before.constData()) + i * bytes;
        QRgb expected = qRgb(*pixel, *pixel, *pixel);
        if (bytes > 1)
            expected = reverse ? qRgb(pixel[2], pixel[1], pixel[0]) : qRgb(pixel[0], pixel[1], pixel[2]);
        else if (entries == 256)
            expected = palette[*pixel];
        QCOMPARE(rendered.pixel(static_cast<int>(i % width), static_cast<int>(i / width)), expected);
    }
    QCOMPARE(rendered.colorCount(), bytes == 1 ? 256 : 0);

    std::fill_n(rendered.bits(), rendered.sizeInBytes(), uchar{0x11}); // a host that draws
    QCOMPARE(bytesOf(stored), QByteArray(before.size(), '\0'));
}

QTEST_GUILESS_MAIN(ImageConversionTest)
#include "ImageConversionTest.moc"
