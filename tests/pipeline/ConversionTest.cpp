// SPDX-License-Identifier: MIT
// Tests conversions and readout of every pixel format against a naive reference, in memory with no byte to spare, and
// the way from images back to frames.
#include "pipeline/frames/Conversion.h"
#include "pipeline/PixelReference.h"
#include "pipeline/VectorUnits.h"
#include "pipeline/pixels/ColorTables.h"
#include "pipeline/pixels/PixelFormats.h"
#include "pipeline/pixels/PixelReader.h"

#include <QtTest/QtTest>

#include <climits>
#include <numeric>
#include <tuple>

using namespace PixelReference;

namespace {

bool areEqual(const PixVal& a, const PixVal& b)
{
    return std::tie(a.mono, a.value, a.color, a.r, a.g, a.b) == std::tie(b.mono, b.value, b.color, b.r, b.g, b.b);
}

bool isReadRight(const RawImage& raw)
{
    const Layout layout = layoutOf(raw.format);
    const auto width = static_cast<int>(raw.width);
    const auto height = static_cast<int>(raw.height);
    for (const PixPos& outside : {PixPos{-1, 0}, {0, -1}, {width, 0}, {0, height}, {INT_MAX, INT_MAX}, {INT_MIN, 0}}) {
        PixVal value{true, 1, true, 2, 3, 4};
        if (readPixel(raw, outside, value) || !areEqual(value, PixVal()))
            return false;
    }
    for (std::size_t i = 0; i < raw.width * raw.height; ++i) {
        const std::size_t x = i % raw.width;
        const std::size_t y = i / raw.width;
        const auto channel = [&](unsigned color) {
            return channelAt(raw, x, y, channelOf(raw.format, color)) & ((1u << layout.bits) - 1);
        };
        PixVal expected;
        if (layout.channels == 1)
            expected = {true, channel(0), false, 0, 0, 0};
        else
            expected = {false, 0, true, channel(0), channel(1), channel(2)};
        PixVal value;
        if (!readPixel(raw, {static_cast<int>(x), static_cast<int>(y)}, value) || !areEqual(value, expected))
            return false;
    }
    return true;
}

// With one deep site, there are rows with and without such.
enum Content { AnyBits, WithinDepth, Extremes, OneDeepSite };

void fill(const GuardedBuffer& buffer, Format format, Content content, Random& random)
{
    fillRandom(buffer, random);
    const Layout layout = layoutOf(format);
    const unsigned bits = content == OneDeepSite ? 12 : layout.bits;
    for (std::size_t i = 0; i < buffer.size() && content != AnyBits; ++i) {
        std::uint8_t& byte = buffer.data()[i];
        if (content == Extremes)
            byte = i % layout.bytes == 1 ? buffer.data()[i - 1] : byte & 1 ? 0xFF : 0;
        if (layout.bytes == 2 && i % 2 == 1 && packingOf(format) != 0x4000 && packingOf(format) != 0x8000)
            byte &= static_cast<std::uint8_t>(0xFF >> (16 - bits));
    }
    if (content == OneDeepSite)
        buffer.data()[random() % buffer.size() | 1] = 0xFF;
}

} // namespace

class ConversionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyWidth_data();
    void everyWidth();
    void largeFrames();
    void lookUp();
    void impossibleFramesAreRefused();
    void imagesBecomeFrames();

private:
    void check(Format format, std::size_t width, std::size_t height, Content content = AnyBits,
               GuardedBuffer::Placement placement = GuardedBuffer::AtBack);

    Random m_random{1};
    CopyPool m_pool{3};
};

// Reads and converts a frame in every way there is.
void ConversionTest::check(Format format, std::size_t width, std::size_t height, Content content,
                           GuardedBuffer::Placement placement)
{
    if (QTest::currentTestFailed())
        return;
    const QByteArray size = QByteArray::number(qulonglong{width}) + " x " + QByteArray::number(qulonglong{height});
    const GuardedBuffer source(neededBytes(format, width, height), placement);
    fill(source, format, content, m_random);
    const RawImage raw{source.data(), width, height, format, nullptr};
    QVERIFY2(isReadRight(raw), size.constData());
    const PictureConversion& conversion = findFormat(format)->conversion;
    const bool isGray = layoutOf(format).channels == 1 && !isMosaic(format);
    std::vector<QImage::Format> kinds{isGray ? QImage::Format_Indexed8 : QImage::Format_RGBX8888};
    if (isColor(format))
        kinds.push_back(QImage::Format_RGB888);
    for (const QImage::Format kind : kinds) {
        const QByteArray expected = converted(raw, kind);
        const GuardedBuffer memory(static_cast<std::size_t>(expected.size()), placement);
        QImage target = imageIn(memory, width, height, kind);
        const PictureTarget streamed{memory.data(), memory.size() / height / width, Kernels::Stores::Streamed};
        const QByteArray fault = faultInVectors([&]() -> QByteArray {
            target.fill(0x5A);
            if (!isConvertible(raw) || !fitsTarget(target, raw))
                return size;
            fillTarget(m_pool, target, raw);
            if (bytesOf(target) != expected)
                return size;
            target.fill(0x5A);
            conversion.rows(*findFormat(format), raw, streamed, 0, height);
            return bytesOf(target) == expected && memory.isIntact() ? "" : "streamed " + size;
        });
        QVERIFY2(fault.isEmpty(), fault.constData());
        PixelBuffer buffer;
        if (kind == kinds.front())
            QVERIFY2(convertFrame(m_pool, target, buffer, raw) && target.format() == kind &&
                         target.constBits() == buffer.data() && bytesOf(target) == expected,
                     size.constData());
    }
}

void ConversionTest::everyWidth_data()
{
    QTest::addColumn<unsigned>("format");
    for (const NamedFormat& named : namedFormats()) {
        QCOMPARE(QByteArray(formatName(named.format)), named.name);
        QTest::newRow(named.name.constData()) << unsigned{named.format};
    }
    // Fields that mean nothing: both packing bits, packing of 12 bits and of colour, order of monochrome, orders 1 and
    // 3, pattern of colour.
    for (const unsigned code : {0xC00Au, 0xC10Au, 0x400Cu, 0x801Eu, 0x2008u, 0x1018u, 0x301Eu, 0x2330u})
        QTest::addRow("0x%X", code) << code;
}

void ConversionTest::everyWidth()
{
    QFETCH(unsigned, format);
    const std::size_t least = isMosaic(Format(format)) ? 4 : 1;
    const std::size_t most = isMosaic(Format(format)) ? 20 : 67;
    std::vector<std::size_t> widths(most + 1 - least);
    std::iota(widths.begin(), widths.end(), least);
    widths.insert(widths.end(), {67, 131, 641}); // several blocks of the widest vectors
    for (const std::size_t width : widths) {
        for (const std::size_t height : {least, least + 1, least + 4}) {
            check(Format(format), width, height, AnyBits, GuardedBuffer::AtBack);
            check(Format(format), width, height, WithinDepth, GuardedBuffer::AtFront);
            check(Format(format), width, height, Extremes, GuardedBuffer::Unaligned);
        }
    }
}

// Others are not worth waking the pool. A mosaic is interpolated in pieces of 4096 columns.
void ConversionTest::largeFrames()
{
    for (const Format format : {Mono8, Mono10p, Mono12, RGB8, RGB10p32, RGB16})
        check(format, 1601, 1327);
    const std::pair<std::size_t, std::size_t> sizes[] = {{4097, 89}, {4098, 4}, {4099, 5}, {4100, 6}, {8201, 4}};
    for (const auto& [width, height] : sizes) {
        check(BayerGB8, width, height);
        check(BayerGR10p, width, height);
        check(BayerBG16, width, height, OneDeepSite);
    }
}

void ConversionTest::lookUp()
{
    std::uint32_t table[256];
    std::generate_n(table, 256, [&] { return static_cast<std::uint32_t>(m_random()); });
    for (std::size_t count = 0; count <= 67; ++count) {
        const GuardedBuffer source(count, GuardedBuffer::AtBack);
        fillRandom(source, m_random);
        const GuardedBuffer target(4 * count, GuardedBuffer::AtBack);
        auto* const entries = reinterpret_cast<std::uint32_t*>(target.data());
        for (const auto stores : {Kernels::Stores::Cached, Kernels::Stores::Streamed}) {
            const QByteArray fault = faultInVectors([&]() -> QByteArray {
                std::fill_n(entries, count, 0u);
                Kernels::lookUp(source.data(), entries, count, table, stores);
                const bool isRight = std::equal(entries, entries + count, source.data(),
                                                [&](auto entry, auto index) { return entry == table[index]; });
                return isRight && target.isIntact() ? "" : "wrong entries";
            });
            QVERIFY2(fault.isEmpty(), fault.constData());
        }
    }
}

void ConversionTest::impossibleFramesAreRefused()
{
    struct Frame
    {
        const char* name;
        quint64 width, height;
        unsigned format;
        bool isReadable = false; // each pixel by itself
    };
    constexpr quint64 most = SIZE_MAX;
    constexpr quint64 two32 = quint64{1} << 32;
    const Frame frames[] = {
        {"no width", 0, 4, Mono8},
        {"no height", 4, 0, RGB8},
        {"unknown depth", 4, 4, 9},
        {"unknown pattern", 4, 4, 0x508},
        {"unknown layout", 4, 4, 0x10008},
        {"mosaic too narrow", 3, 100, BayerGR8, true},
        {"mosaic too low", 100, 3, BayerGR10p, true},
        {"product overflows to 0", most / 2 + 1, 2, Mono8},
        {"row overflows", most / 6 + 2, 1, RGB16},
        {"wider than int, lower half fits", two32 + 4, 4, Mono8},
        {"higher than int, lower half fits", 4, two32 + 4, RGB8},
        {"target's row longer than int", two32 / 8, 1, RGB8, true},
        {"mosaic's target row longer than int", two32 / 8, 4, BayerRG8, true},
    };
    const GuardedBuffer memory(16, GuardedBuffer::AtBack);
    QImage target;
    PixelBuffer buffer;
    QVERIFY(prepareTarget(target, buffer, 5, 3, 32));
    const auto isRefused = [&](const RawImage& raw) {
        return !convertFrame(m_pool, target, buffer, raw) && target.constBits() == buffer.data() &&
               target.size() == QSize(5, 3);
    };
    for (const Frame& frame : frames) {
        const RawImage raw{memory.data(), frame.width, frame.height, Format(frame.format), nullptr};
        PixVal value{true, 9, true, 9, 9, 9};
        QVERIFY2(isRefused(raw) && !isConvertible(raw), frame.name);
        QVERIFY2(isReadable(raw) == frame.isReadable, frame.name);
        QVERIFY2(frame.isReadable || (!readPixel(raw, {0, 0}, value) && areEqual(value, PixVal())), frame.name);
    }
    const RawImage none{nullptr, 4, 4, Mono8, nullptr};
    PixVal value;
    QVERIFY(isRefused(none) && !readPixel(none, {0, 0}, value));
}

void ConversionTest::imagesBecomeFrames()
{
    for (int i = 4; i < 4 * QImage::NImageFormats; ++i) {
        const auto kind = static_cast<QImage::Format>(i / 4);
        QImage image(12 + i % 2, 5, QImage::Format_RGB32);
        std::generate_n(image.bits(), image.sizeInBytes(), [this] { return static_cast<uchar>(m_random()); });
        if (i % 4 < 2)
            image = image.convertToFormat(QImage::Format_Grayscale8);
        image = image.convertToFormat(kind);
        const QImage opaque = image.convertToFormat(QImage::Format_RGB32);
        const QVector<QRgb> colors = image.colorTable();
        const bool isIndexed = kind == QImage::Format_Indexed8;
        const bool isGray =
            isIndexed || (kind != QImage::Format_RGB888 && kind != QImage::Format_RGBX8888 && image.isGrayscale());
        PixelBuffer buffer;
        RawImage raw;
        QVERIFY(rawFromImage(m_pool, image, buffer, image, raw)); // in place: what it needs of the image must stay
        QCOMPARE(raw.format, isGray ? Mono8 : kind == QImage::Format_RGB888 ? RGB8 : RGBa8);
        QCOMPARE(static_cast<std::size_t>(image.bytesPerLine()), raw.width * layoutOf(raw.format).bytes);
        QVERIFY(raw.data == image.constBits() && raw.height == 5);
        QCOMPARE(image.convertToFormat(QImage::Format_RGB32), opaque);
        QCOMPARE(image.colorTable(), isIndexed ? colors : isGray ? grayRamp() : QVector<QRgb>());
    }
}

QTEST_GUILESS_MAIN(ConversionTest)
#include "ConversionTest.moc"
