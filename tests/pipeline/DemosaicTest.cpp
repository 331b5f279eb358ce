// SPDX-License-Identifier: MIT
// Tests the demosaic against the published filters, written out tap by tap.
#include "pipeline/pixels/Demosaic.h"
#include "pipeline/PixelReference.h"
#include "pipeline/VectorUnits.h"
#include "pipeline/frames/Conversion.h"

#include <QtTest/QtTest>

using namespace PixelReference;

namespace {

using Taps = int[5][5]; // sixteenths

constexpr Taps itself = {{}, {}, {0, 0, 16, 0, 0}, {}, {}};
constexpr Taps greenAtColor = {{0, 0, -2, 0, 0}, {0, 0, 4, 0, 0}, {-2, 4, 8, 4, -2}, {0, 0, 4, 0, 0}, {0, 0, -2, 0, 0}};
constexpr Taps colorOfTheRow = {
    {0, 0, 1, 0, 0}, {0, -2, 0, -2, 0}, {-2, 8, 10, 8, -2}, {0, -2, 0, -2, 0}, {0, 0, 1, 0, 0}};
constexpr Taps colorOfTheColumn = {
    {0, 0, -2, 0, 0}, {0, -2, 8, -2, 0}, {1, 0, 10, 0, 1}, {0, -2, 8, -2, 0}, {0, 0, -2, 0, 0}};
constexpr Taps oppositeColor = {
    {0, 0, -3, 0, 0}, {0, 4, 0, 4, 0}, {-3, 0, 12, 0, -3}, {0, 4, 0, 4, 0}, {0, 0, -3, 0, 0}};

/// 'R', 'G' or 'B'.
char colorAt(Format format, int x, int y)
{
    const char* const patterns[] = {"GBRG", "GRBG", "RGGB", "BGGR"};
    return patterns[((format >> 8) & 0xF) - 1][(y & 1) * 2 + (x & 1)];
}

/// Beyond the borders the mosaic goes on mirrored about the outermost sites.
std::size_t mirrored(int index, int size)
{
    const int inside = index < 0 ? -index : index;
    return static_cast<std::size_t>(inside >= size ? 2 * (size - 1) - inside : inside);
}

char levelOf(const RawImage& raw, int x, int y, char color)
{
    const Taps* taps = &oppositeColor;
    if (colorAt(raw.format, x, y) == color)
        taps = &itself;
    else if (color == 'G')
        taps = &greenAtColor;
    else if (colorAt(raw.format, x + 1, y) == color)
        taps = &colorOfTheRow;
    else if (colorAt(raw.format, x, y + 1) == color)
        taps = &colorOfTheColumn;
    int sum = 0;
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 5; ++column)
            sum += (*taps)[row][column] *
                   static_cast<int>(channelAt(raw, mirrored(x + column - 2, static_cast<int>(raw.width)),
                                              mirrored(y + row - 2, static_cast<int>(raw.height))));
    }
    const int rounded = (sum + 8) >> 4;
    return static_cast<char>(qBound(0, rounded >> (layoutOf(raw.format).bits - 8), 255));
}

QByteArray demosaiced(const RawImage& raw)
{
    QByteArray bytes;
    for (int y = 0; y < static_cast<int>(raw.height); ++y) {
        for (int x = 0; x < static_cast<int>(raw.width); ++x) {
            for (const char color : {'R', 'G', 'B'})
                bytes += levelOf(raw, x, y, color);
            bytes += '\xFF';
        }
    }
    return bytes;
}

/// Demosaics a frame in every way there is. Returns what went wrong, or nothing.
QByteArray faultOf(CopyPool& pool, const RawImage& raw, GuardedBuffer::Placement placement)
{
    const QByteArray expected = demosaiced(raw);
    const GuardedBuffer memory(static_cast<std::size_t>(expected.size()), placement);
    QImage target = imageIn(memory, raw.width, raw.height, QImage::Format_RGBX8888);
    return faultInVectors([&]() -> QByteArray {
        target.fill(0);
        if (!copyFrame(pool, target, raw) || bytesOf(target) != expected)
            return "demosaic";
        return memory.isIntact() ? "" : "written beside the target";
    });
}

enum Content { AnyBits, WithinDepth, Extremes };

void fill(const GuardedBuffer& buffer, Format format, Content content, Random& random)
{
    fillRandom(buffer, random);
    const Layout layout = layoutOf(format);
    for (std::size_t i = 0; i < buffer.size() && content != AnyBits; ++i) {
        std::uint8_t& byte = buffer.data()[i];
        if (content == Extremes)
            byte = i % layout.bytes == 1 ? buffer.data()[i - 1] : byte & 1 ? 0xFF : 0;
        if (layout.bytes == 2 && i % 2 == 1 && packingOf(format) != 0x4000 && packingOf(format) != 0x8000)
            byte &= static_cast<std::uint8_t>(0xFF >> (16 - layout.bits));
    }
}

} // namespace

class DemosaicTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySize_data();
    void everySize();
    void largeFrames();

private:
    CopyPool m_pool{3};
};

void DemosaicTest::everySize_data()
{
    QTest::addColumn<unsigned>("format");
    for (const NamedFormat& named : namedFormats()) {
        if (isMosaic(named.format))
            QTest::newRow(named.name.constData()) << unsigned{named.format};
    }
    QTest::newRow("both packing bits: unpacked") << 0xC000u + BayerGB10;
}

void DemosaicTest::everySize()
{
    QFETCH(unsigned, format);
    Random random(format);
    std::vector<std::pair<std::size_t, std::size_t>> sizes{{4, 40}, {67, 5}, {323, 61}};
    for (std::size_t width = 4; width <= 20; ++width) {
        for (std::size_t height = 4; height <= 9; ++height)
            sizes.emplace_back(width, height);
    }
    const std::pair<Content, GuardedBuffer::Placement> runs[] = {{AnyBits, GuardedBuffer::AtBack},
                                                                 {WithinDepth, GuardedBuffer::AtFront},
                                                                 {Extremes, GuardedBuffer::AtBack},
                                                                 {AnyBits, GuardedBuffer::Unaligned}};
    for (const auto& [width, height] : sizes) {
        for (const auto& [content, placement] : runs) {
            const GuardedBuffer source(neededBytes(Format(format), width, height), placement);
            fill(source, Format(format), content, random);
            const RawImage raw{source.data(), width, height, Format(format), nullptr};
            const QByteArray fault = faultOf(m_pool, raw, placement);
            QVERIFY2(fault.isEmpty(), qPrintable(QStringLiteral("%1 x %2, content %3: %4")
                                                     .arg(width)
                                                     .arg(height)
                                                     .arg(content)
                                                     .arg(QLatin1String(fault))));
        }
    }
}

// Rows are interpolated in pieces of 4096 columns, and handed out to threads only when a frame is large. Deep sites are
// few, so that there are rows with and without them.
void DemosaicTest::largeFrames()
{
    Random random(1);
    const std::pair<std::size_t, std::size_t> sizes[] = {{4097, 89}, {4098, 4}, {4099, 5}, {4100, 6}, {8201, 4}};
    for (const Format format : {BayerGB8, BayerGR10p, BayerBG16}) {
        for (const auto& [width, height] : sizes) {
            const GuardedBuffer source(neededBytes(format, width, height), GuardedBuffer::AtBack);
            fill(source, format == BayerBG16 ? BayerBG12 : format, WithinDepth, random);
            if (format == BayerBG16)
                source.data()[random() % source.size() | 1] = 0xFF;
            const QByteArray fault =
                faultOf(m_pool, {source.data(), width, height, format, nullptr}, GuardedBuffer::AtBack);
            QVERIFY2(fault.isEmpty(), fault.constData());
        }
    }
}

QTEST_GUILESS_MAIN(DemosaicTest)
#include "DemosaicTest.moc"
