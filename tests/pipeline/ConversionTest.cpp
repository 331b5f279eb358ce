// SPDX-License-Identifier: MIT
// Tests conversions and readout of every pixel format against a naive reference, in memory with no byte to spare.
#include "pipeline/frames/Conversion.h"
#include "pipeline/PixelReference.h"
#include "pipeline/VectorUnits.h"
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

/// Reads and converts a frame of random bytes in every way there is. Returns what went wrong, or nothing.
QByteArray faultOf(CopyPool& pool, Format format, std::size_t width, std::size_t height,
                   GuardedBuffer::Placement placement, Random& random)
{
    const GuardedBuffer source(neededBytes(format, width, height), placement);
    fillRandom(source, random);
    const RawImage raw{source.data(), width, height, format, nullptr};
    if (!isReadRight(raw))
        return "readout";
    if (isMosaic(format))
        return QByteArray();

    const bool gray = layoutOf(format).channels == 1;
    for (const QImage::Format kind :
         {gray ? QImage::Format_Indexed8 : QImage::Format_RGBX8888, QImage::Format_RGB888}) {
        if (gray && kind == QImage::Format_RGB888)
            continue;
        const QByteArray expected = converted(raw, kind);
        const GuardedBuffer memory(static_cast<std::size_t>(expected.size()), placement);
        QImage target = imageIn(memory, width, height, kind);
        const QByteArray fault = faultInVectors([&]() -> QByteArray {
            target.fill(0x5A);
            if (!copyFrame(pool, target, raw) || bytesOf(target) != expected)
                return "copy";
            return memory.isIntact() ? "" : "written beside the target";
        });
        if (!fault.isEmpty())
            return fault;
        PixelBuffer buffer;
        if (kind != QImage::Format_RGB888 && (!convertFrame(pool, target, buffer, raw) || target.format() != kind ||
                                              target.constBits() != buffer.data() || bytesOf(target) != expected))
            return "conversion";
    }
    return QByteArray();
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
    void storesMakeNoDifference();
    void impossibleFramesAreRefused_data();
    void impossibleFramesAreRefused();
    void unfitTargetsAreRefused();
    void readoutOutsideTheFrameIsZero();

private:
    CopyPool m_pool{3};
};

void ConversionTest::everyWidth_data()
{
    QTest::addColumn<unsigned>("format");
    for (const NamedFormat& named : namedFormats())
        QTest::newRow(named.name.constData()) << unsigned{named.format};
    QTest::newRow("both packing bits: unpacked") << 0xC00Au;
    QTest::newRow("packing of 12 bits: ignored") << 0x400Cu;
    QTest::newRow("packing of colour: ignored") << 0x801Eu;
    QTest::newRow("order of monochrome: ignored") << 0x2008u;
    QTest::newRow("order 1: RGB") << 0x1018u;
    QTest::newRow("order 3: RGB") << 0x301Eu;
    QTest::newRow("pattern of colour: ignored") << 0x2330u;
}

void ConversionTest::everyWidth()
{
    QFETCH(unsigned, format);
    Random random(format);
    std::vector<std::size_t> widths(67);
    std::iota(widths.begin(), widths.end(), 1u);
    widths.insert(widths.end(), {131, 641}); // several blocks of the widest vectors
    for (const auto placement : {GuardedBuffer::AtFront, GuardedBuffer::AtBack, GuardedBuffer::Unaligned}) {
        for (const std::size_t width : widths) {
            for (const std::size_t height : {1u, 2u, 5u}) {
                const QByteArray fault = faultOf(m_pool, Format(format), width, height, placement, random);
                QVERIFY2(fault.isEmpty(), qPrintable(QStringLiteral("%1 x %2, placement %3: %4")
                                                         .arg(width)
                                                         .arg(height)
                                                         .arg(placement)
                                                         .arg(QLatin1String(fault))));
            }
        }
    }
}

// Others are not worth waking the pool.
void ConversionTest::largeFrames()
{
    Random random(1);
    for (const Format format : {Mono8, Mono10p, Mono12, RGB8, RGB10p32, RGB16}) {
        const QByteArray fault = faultOf(m_pool, format, 1601, 1327, GuardedBuffer::AtBack, random);
        QVERIFY2(fault.isEmpty(), fault.constData());
    }
}

void ConversionTest::lookUp()
{
    Random random(2);
    std::uint32_t table[256];
    std::generate_n(table, 256, [&] { return static_cast<std::uint32_t>(random()); });
    for (std::size_t count = 0; count <= 67; ++count) {
        const GuardedBuffer source(count, GuardedBuffer::AtBack);
        fillRandom(source, random);
        const GuardedBuffer target(4 * count, GuardedBuffer::AtBack);
        const QByteArray fault = faultInVectors([&]() -> QByteArray {
            auto* const entries = reinterpret_cast<std::uint32_t*>(target.data());
            for (const auto stores : {Kernels::Stores::Cached, Kernels::Stores::Streamed}) {
                std::fill_n(entries, count, 0u);
                Kernels::lookUp(source.data(), entries, count, table, stores);
                const bool right =
                    std::equal(entries, entries + count, source.data(),
                               [&](std::uint32_t entry, std::uint8_t index) { return entry == table[index]; });
                if (!right || !target.isIntact())
                    return "wrong entries";
            }
            return "";
        });
        QVERIFY2(fault.isEmpty(), fault.constData());
    }
}

void ConversionTest::storesMakeNoDifference()
{
    using namespace Kernels;
    struct Case
    {
        const char* name;
        std::size_t sourceBytes, targetBytes; // of four pixels
        void (*run)(const PixelRun&);
    };
    Random random(3);
    const Case cases[] = {{"bytes", 4, 4, copyBytes},         {"words", 8, 4, shiftToGray},
                          {"packed", 5, 4, packed10ToGray},   {"3 bytes", 12, 16, bytes3ToColor},
                          {"4 bytes", 16, 16, bytes4ToColor}, {"3 words", 24, 16, words3ToColor},
                          {"fields", 16, 16, fields30ToColor}};
    for (const Case& one : cases) {
        const std::size_t step = one.sourceBytes % 4 == 0 ? 1 : 4;    // groups are whole
        for (std::size_t count = step; count <= 200; count += step) { // so the target begins anywhere within a vector
            const GuardedBuffer source(count * one.sourceBytes / 4, GuardedBuffer::AtBack);
            fillRandom(source, random);
            std::vector<std::uint8_t> expected(count * one.targetBytes / 4);
            PixelRun run{source.data(), expected.data(), count, Stores::Cached, 4, true, one.targetBytes / 4};
            run.end = source.data() + source.size();
            one.run(run);
            run.stores = Stores::Streamed;
            for (const auto placement : {GuardedBuffer::AtBack, GuardedBuffer::Unaligned}) {
                const GuardedBuffer target(expected.size(), placement);
                const QByteArray fault = faultInVectors([&]() -> QByteArray {
                    std::fill_n(target.data(), target.size(), std::uint8_t{0});
                    run.target = target.data();
                    one.run(run);
                    const bool same = std::equal(expected.begin(), expected.end(), target.data());
                    return same && target.isIntact() ? QByteArray() : one.name + QByteArray::number(qulonglong{count});
                });
                QVERIFY2(fault.isEmpty(), fault.constData());
            }
        }
    }
}

void ConversionTest::impossibleFramesAreRefused_data()
{
    QTest::addColumn<unsigned>("format");
    QTest::addColumn<quint64>("width");
    QTest::addColumn<quint64>("height");
    QTest::addColumn<bool>("hasData");
    QTest::addColumn<bool>("readable"); // each pixel by itself
    const auto row = [](const char* name, unsigned format, quint64 width, quint64 height, bool hasData = true,
                        bool readable = false) {
        QTest::newRow(name) << format << width << height << hasData << readable;
    };
    constexpr quint64 most = SIZE_MAX;
    constexpr quint64 two32 = quint64{1} << 32;
    row("no data", Mono8, 4, 4, false);
    row("no width", Mono8, 0, 4);
    row("no height", RGB8, 4, 0);
    row("unknown depth", 9, 4, 4);
    row("unknown pattern", 0x508, 4, 4);
    row("unknown layout", 0x10008, 4, 4);
    row("mosaic too narrow", BayerGR8, 3, 100, true, true);
    row("mosaic too low", BayerGR10p, 100, 3, true, true);
    row("product overflows to 0", Mono8, most / 2 + 1, 2);
    row("row overflows", RGB16, most / 6 + 2, 1);
    row("all far too large", Mono16, most, most);
    row("wider than int, lower half fits", Mono8, two32 + 4, 4);
    row("higher than int, lower half fits", RGB8, 4, two32 + 4);
    row("target's row longer than int", RGB8, two32 / 8, 1, true, true);
    row("mosaic's target row longer than int", BayerRG8, two32 / 8, 4, true, true);
}

void ConversionTest::impossibleFramesAreRefused()
{
    QFETCH(unsigned, format);
    QFETCH(quint64, width);
    QFETCH(quint64, height);
    QFETCH(bool, hasData);
    QFETCH(bool, readable);
    const GuardedBuffer memory(16, GuardedBuffer::AtBack);
    const RawImage raw{hasData ? memory.data() : nullptr, width, height, Format(format), nullptr};
    QImage target;
    PixelBuffer buffer;
    QVERIFY(prepareTarget(target, buffer, 5, 3, 32));
    target.fill(Qt::cyan);
    const QImage before = target.copy();
    PixVal value{true, 9, true, 9, 9, 9};
    QVERIFY(!copyFrame(m_pool, target, raw));
    QVERIFY(!convertFrame(m_pool, target, buffer, raw));
    QVERIFY(target == before && target.constBits() == buffer.data() && buffer.size() == 4 * 5 * 3);
    QVERIFY(readable || (!readPixel(raw, {0, 0}, value) && areEqual(value, PixVal())));
    QCOMPARE(isReadable(raw), readable || !hasData); // takes the pointer at its word
    QCOMPARE(isConvertible(raw), !hasData);
}

void ConversionTest::unfitTargetsAreRefused()
{
    struct Target
    {
        QImage::Format format;
        QSize size;
        int padding;
    };
    for (const Format format : {Mono8, Mono10p, RGB8, BGR16, BayerRG8}) {
        const bool isGray = layoutOf(format).channels == 1 && !isMosaic(format);
        const auto own = isGray ? QImage::Format_Indexed8 : QImage::Format_RGBX8888;
        const auto other = isGray ? QImage::Format_RGBX8888 : QImage::Format_Indexed8;
        for (const Target& unfit :
             {Target{own, {16, 5}, 0}, Target{own, {8, 5}, 0}, Target{own, {12, 6}, 0}, Target{own, {12, 4}, 0},
              Target{own, {12, 5}, 4}, Target{QImage::Format_RGB32, {12, 5}, 0}, Target{other, {12, 5}, 0},
              Target{QImage::Format_RGB888, {12, 5}, isColor(format) ? 4 : 0}}) {
            const std::vector<std::uint8_t> bytes(neededBytes(format, 12, 5), 0xEE);
            const std::vector<std::uint8_t> before(6 * 64, 7);
            std::vector<std::uint8_t> memory = before;
            const int rowBytes = unfit.size.width() * QImage(1, 1, unfit.format).depth() / 8 + unfit.padding;
            QImage image(memory.data(), unfit.size.width(), unfit.size.height(), rowBytes, unfit.format);
            QVERIFY(!image.isNull() && !copyFrame(m_pool, image, {bytes.data(), 12, 5, format, nullptr}));
            QCOMPARE(memory, before);
        }
    }
    QImage none;
    QVERIFY(!copyFrame(m_pool, none, {nullptr, 12, 5, Mono8, nullptr}));
}

void ConversionTest::readoutOutsideTheFrameIsZero()
{
    const std::vector<std::uint8_t> bytes(6 * 4 * 3, 0xFF);
    for (const Format format : {Mono8, Mono10p, BayerRG12, RGB16}) {
        const PixPos positions[] = {{-1, 0}, {0, -1}, {4, 0}, {0, 3}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MIN}};
        for (const PixPos& position : positions) {
            PixVal value{true, 1, true, 2, 3, 4};
            QVERIFY(!readPixel({bytes.data(), 4, 3, format, nullptr}, position, value));
            QVERIFY(areEqual(value, PixVal()));
        }
    }
}

QTEST_GUILESS_MAIN(ConversionTest)
#include "ConversionTest.moc"
