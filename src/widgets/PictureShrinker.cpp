// SPDX-License-Identifier: MIT
// Paints a picture smaller, by the mean or the maximum of the pixels that share a device pixel.
#include "widgets/PictureShrinker.h"

#include "pipeline/pixels/Kernels.h"
#include "widgets/SurfaceGeometry.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace Vistrel {

namespace {

constexpr std::size_t channels = 4;
constexpr std::size_t fewRows = 8;                           // that the processor fetches ahead at once
constexpr std::size_t fetchedBytes = std::size_t{128} << 10; // which all processors' caches hold

// Of the columns or rows of device pixel `first` and of those that follow. Each column belongs to one device pixel.
template <typename SampledAt>
std::vector<int> startsOf(int first, int count, int size, SampledAt&& sampledAt)
{
    std::vector<int> starts(static_cast<std::size_t>(count) + 1);
    int least = 0;
    for (int i = 0; i <= count; ++i) {
        const int start = i == 0 && sampledAt(first - 1) < 0 ? 0 : sampledAt(first + i);
        starts[static_cast<std::size_t>(i)] = std::clamp(start, least, size - count + i);
        least = starts[static_cast<std::size_t>(i)] + 1;
    }
    return starts;
}

std::size_t sizeOf(const std::vector<int>& starts, std::size_t i)
{
    return static_cast<std::size_t>(starts[i + 1] - starts[i]);
}

bool isOfLevels(const QImage& picture)
{
    return picture.format() == QImage::Format_Grayscale8 ||
           (picture.format() == QImage::Format_Indexed8 && !picture.hasAlphaChannel());
}

// Whether the bytes of a pixel can be combined one by one.
bool isOfBytes(const QImage& picture)
{
    return picture.format() == QImage::Format_RGB32 || picture.format() == QImage::Format_RGBX8888 ||
           picture.format() == QImage::Format_ARGB32_Premultiplied;
}

QImage::Format shrunkFormat(const QImage& picture)
{
    return picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
}

// As Qt shows the picture: grey without a table, and the last entry for levels past its end.
std::vector<std::uint32_t> tableOf(const QImage& picture)
{
    const QVector<QRgb> colors = picture.colorTable();
    std::vector<std::uint32_t> table;
    if (picture.format() != QImage::Format_Indexed8 || colors.isEmpty())
        return table;
    for (int level = 0; level < 256; ++level)
        table.push_back(colors[std::min(level, colors.size() - 1)]);
    return table;
}

template <typename Value>
Value* begin(PixelBuffer& buffer, std::size_t count)
{
    const std::size_t bytes = count * sizeof(Value) + ShrinkKernels::slack;
    if (buffer.size() < bytes)
        buffer.resize(bytes);
    return reinterpret_cast<Value*>(buffer.data());
}

void combineSome(const ShrinkKernels::Rows& rows, bool isBegun, std::uint8_t* line)
{
    ShrinkKernels::maximumOfRows(rows, isBegun, line);
}

void combineSome(const ShrinkKernels::Rows& rows, bool isBegun, std::uint16_t* line)
{
    ShrinkKernels::sumOfRows(rows, isBegun, line);
}

template <typename Value>
void combineRows(const ShrinkKernels::Rows& rows, Value* line)
{
    ShrinkKernels::Rows some = rows;
    for (std::size_t row = 0; row < rows.count; row += fewRows) {
        some.first = rows.first + row * rows.stride;
        some.count = std::min(fewRows, rows.count - row);
        combineSome(some, row > 0, line);
    }
}

// Adds each row's sums to every `apart`-th value of the line.
void addRows(const ShrinkKernels::Rows& rows, std::uint16_t* sums, std::size_t apart, std::uint32_t* line)
{
    ShrinkKernels::Rows some = rows;
    for (std::size_t row = 0; row < rows.count; row += ShrinkKernels::mostSummed) {
        some.first = rows.first + row * rows.stride;
        some.count = std::min(ShrinkKernels::mostSummed, rows.count - row);
        combineRows(some, sums);
        for (std::size_t i = 0; i < rows.bytes; ++i)
            line[i * apart] = (row > 0 ? line[i * apart] : 0) + sums[i];
    }
}

} // namespace

void PictureShrinker::Plan::set(const Starts& starts)
{
    const std::size_t count = starts.size() - 1;
    few = count > 2 ? static_cast<std::size_t>(starts[count - 1] - starts[1]) / (count - 2)
                    : std::min(sizeOf(starts, 0), sizeOf(starts, count - 1));
    columns.runs = 1;
    while (std::size_t{2} << (columns.runs - 1) <= few)
        ++columns.runs;
    const auto piecesOf = [this](std::size_t width) {
        std::size_t pieces = width >> (columns.runs - 1);
        for (std::size_t rest = width - (pieces << (columns.runs - 1)); rest > 0; rest &= rest - 1)
            ++pieces;
        return pieces;
    };
    columns.count = static_cast<std::size_t>(starts.back() - starts.front());
    columns.pitch = columns.count + few + ShrinkKernels::slack / channels;
    columns.pieces = std::max(piecesOf(few), piecesOf(few + 1));
    columns.combined = count;

    places.assign(columns.pieces * count, static_cast<int>(columns.runs * columns.pitch)); // a pixel of zeros
    wide.resize(channels * count + ShrinkKernels::slack);
    odd.clear();
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t left = sizeOf(starts, i);
        const bool isWide = left == few + 1;
        std::fill_n(wide.begin() + static_cast<std::ptrdiff_t>(channels * i), channels, isWide ? 0xFFFF : 0);
        if (left != few && !isWide) {
            odd.push_back(i);
            continue;
        }
        auto place = static_cast<std::size_t>(starts[i] - starts.front());
        for (std::size_t piece = 0, run = columns.runs - 1; left > 0;) {
            if (left >> run == 0) {
                --run;
                continue;
            }
            places[piece++ * count + i] = static_cast<int>(run * columns.pitch + place);
            place += std::size_t{1} << run;
            left -= std::size_t{1} << run;
        }
    }
    columns.places = places.data();
}

struct PictureShrinker::Strip
{
    ShrinkKernels::Rows rows[channels]; // one of colours, otherwise one for each channel
    ShrinkKernels::Rows next;           // some of those of the strip that follows
    std::size_t lineCount;              // of the shrunk picture; the others are repeated
    std::size_t first;                  // of these lines
    bool isOfLevels;

    std::size_t rowCount(std::size_t channel) const { return rows[isOfLevels ? channel : 0].count; }
};

void PictureShrinker::draw(QPainter& painter, const QImage& picture, qint64 key, const SurfaceGeometry& geometry,
                           const QRect& drawn, ShrinkMode mode)
{
    if (drawn.isEmpty())
        return;
    Starts columns =
        startsOf(drawn.left(), drawn.width(), picture.width(), [&](int x) { return geometry.sampledColumn(x); });
    Starts rows =
        startsOf(drawn.top(), drawn.height(), picture.height(), [&](int y) { return geometry.sampledRow(y); });
    if (key != m_key || mode != m_mode || columns != m_columns || rows != m_rows) {
        m_key = 0;
        if (columns != m_columns)
            m_plan.set(columns);
        m_columns = std::move(columns);
        m_rows = std::move(rows);
        m_mode = mode;
        const QImage::Format format = shrunkFormat(picture);
        if (m_shrunk.format() != format || m_shrunk.width() < drawn.width() || m_shrunk.height() < drawn.height())
            m_shrunk = QImage(drawn.size().expandedTo(m_shrunk.size()), format);
        if (m_shrunk.isNull())
            return;
        shrink(picture);
        m_key = key;
    }
    painter.drawImage(drawn.topLeft(), m_shrunk, QRect(QPoint(0, 0), drawn.size()));
}

void PictureShrinker::shrink(const QImage& picture)
{
    if (!m_pool)
        m_pool = CopyPool::shared();
    m_table = tableOf(picture);
    m_line = m_shrunk.bits();
    m_stride = static_cast<std::size_t>(m_shrunk.bytesPerLine());
    const std::size_t height = m_rows.size() - 1;
    const std::size_t linesOfStrip = isOfLevels(picture) ? channels : 1;
    const std::size_t rowBytes = m_plan.columns.count * static_cast<std::size_t>(std::max(8, picture.depth())) / 8;
    const auto rowCount = static_cast<std::size_t>(m_rows.back() - m_rows.front());
    m_pool->runRowsAtOnce((height + linesOfStrip - 1) / linesOfStrip, linesOfStrip * rowBytes * rowCount / height,
                          [&](std::size_t strip, std::size_t end) {
                              std::unique_ptr<Scratch> scratch = takeScratch();
                              for (; strip < end; ++strip)
                                  shrinkStrip(picture, strip * linesOfStrip, *scratch);
                              giveBack(std::move(scratch));
                          });
}

void PictureShrinker::shrinkStrip(const QImage& picture, std::size_t first, Scratch& scratch)
{
    Strip strip;
    strip.isOfLevels = isOfLevels(picture);
    strip.first = first;
    const std::size_t height = m_rows.size() - 1;
    strip.lineCount = strip.isOfLevels ? std::min(channels, height - first) : 1;
    QImage converted;
    std::size_t mostRows = 0;
    for (std::size_t i = 0; i < (strip.isOfLevels ? channels : 1); ++i) {
        const std::size_t line = first + std::min(i, strip.lineCount - 1);
        ShrinkKernels::Rows& rows = strip.rows[i];
        rows.count = sizeOf(m_rows, line);
        rows.bytes = m_plan.columns.count * (strip.isOfLevels ? 1 : channels);
        mostRows = std::max(mostRows, rows.count);
        if (strip.isOfLevels || isOfBytes(picture)) {
            rows.first =
                picture.constScanLine(m_rows[line]) + std::ptrdiff_t{m_columns.front()} * (picture.depth() / 8);
            rows.stride = static_cast<std::size_t>(picture.bytesPerLine());
        } else {
            converted = picture
                            .copy(m_columns.front(), m_rows[line], m_columns.back() - m_columns.front(),
                                  static_cast<int>(rows.count))
                            .convertToFormat(shrunkFormat(picture));
            if (converted.isNull())
                return; // no memory
            rows.first = converted.constBits();
            rows.stride = static_cast<std::size_t>(converted.bytesPerLine());
        }
    }
    if (const std::size_t next = first + strip.lineCount; converted.isNull() && next < height) {
        strip.next = strip.rows[0];
        strip.next.first =
            picture.constScanLine(m_rows[next]) + (strip.rows[0].first - picture.constScanLine(m_rows[first]));
        strip.next.count =
            std::min(fetchedBytes / strip.next.bytes,
                     static_cast<std::size_t>(m_rows[std::min(next + strip.lineCount, height)] - m_rows[next]));
    }
    if (m_mode == ShrinkMode::Maximum)
        combine<std::uint8_t>(strip, scratch);
    else if ((m_plan.few + 1) * mostRows <= ShrinkKernels::mostSummed)
        combine<std::uint16_t>(strip, scratch);
    else
        combine<std::uint32_t>(strip, scratch);
    write(picture, strip, begin<std::uint8_t>(scratch.means, 0));
}

// Into `scratch.means`, which holds the maxima if `Value` is a byte.
template <typename Value>
void PictureShrinker::combine(const Strip& strip, Scratch& scratch) const
{
    ShrinkKernels::Columns columns = m_plan.columns;
    columns.next = strip.next;
    const std::size_t zeros = channels * columns.runs * columns.pitch;
    Value* const pixels = begin<Value>(scratch.pixels, zeros + channels);
    std::fill_n(pixels + zeros, channels, Value{0});
    const std::size_t lineLength = strip.rows[0].bytes + ShrinkKernels::slack;
    if constexpr (sizeof(Value) == 4) {
        auto* const sums = begin<std::uint16_t>(scratch.lines, lineLength);
        for (std::size_t i = 0; i < (strip.isOfLevels ? channels : 1); ++i)
            addRows(strip.rows[i], sums, strip.isOfLevels ? channels : 1, pixels + i);
    } else if (strip.isOfLevels) {
        Value* const lines = begin<Value>(scratch.lines, channels * lineLength);
        const Value* sources[channels];
        for (std::size_t i = 0; i < channels; ++i) {
            combineRows(strip.rows[i], lines + i * lineLength);
            sources[i] = lines + i * lineLength;
        }
        ShrinkKernels::group(sources, columns.count, pixels);
    } else {
        combineRows(strip.rows[0], pixels);
    }

    auto* const means = begin<std::uint8_t>(scratch.means, channels * columns.combined);
    if constexpr (sizeof(Value) == 1) {
        ShrinkKernels::combine(columns, pixels, means);
    } else {
        Value* const sums = begin<Value>(scratch.sums, channels * columns.combined);
        ShrinkKernels::combine(columns, pixels, sums);
        ShrinkKernels::Numbers<Value> numbers;
        for (std::size_t i = 0; i < channels; ++i) {
            numbers.few[i] = static_cast<Value>(m_plan.few * strip.rowCount(i));
            numbers.more[i] = static_cast<Value>(strip.rowCount(i));
        }
        ShrinkKernels::divide(sums, numbers, m_plan.wide.data(), columns.combined, means);
    }

    for (const std::size_t place : m_plan.odd) {
        const std::size_t width = sizeOf(m_columns, place);
        for (std::size_t i = 0; i < channels; ++i) {
            const Value* const run = pixels + channels * static_cast<std::size_t>(m_columns[place] - m_columns[0]) + i;
            std::uint64_t all = 0;
            for (std::size_t column = 0; column < width; ++column) {
                const std::uint64_t value = run[channels * column];
                all = sizeof(Value) == 1 ? std::max(all, value) : all + value;
            }
            const std::size_t number = sizeof(Value) == 1 ? 1 : width * strip.rowCount(i);
            means[channels * place + i] = static_cast<std::uint8_t>((all + number / 2) / number);
        }
    }
}

void PictureShrinker::write(const QImage& picture, const Strip& strip, const std::uint8_t* pixels) const
{
    const std::size_t count = m_plan.columns.combined;
    for (std::size_t i = 0; i < strip.lineCount; ++i) {
        auto* const line = m_line + (strip.first + i) * m_stride;
        auto* const colors = reinterpret_cast<std::uint32_t*>(line);
        if (strip.isOfLevels && m_table.empty()) {
            ShrinkKernels::spreadGray(pixels, i, count, colors);
        } else if (strip.isOfLevels) {
            for (std::size_t x = 0; x < count; ++x)
                colors[x] = m_table[pixels[channels * x + i]];
        } else if (picture.format() == QImage::Format_RGBX8888) {
            Kernels::PixelRun run;
            run.source = pixels;
            run.target = line;
            run.count = count;
            run.reversed = true;
            run.pixelBytes = channels;
            Kernels::bytes4ToColor(run);
        } else {
            std::memcpy(line, pixels, channels * count);
        }
    }
}

std::unique_ptr<PictureShrinker::Scratch> PictureShrinker::takeScratch()
{
    const std::lock_guard<std::mutex> guard(m_scratchMutex);
    if (m_scratch.empty())
        return std::make_unique<Scratch>();
    std::unique_ptr<Scratch> scratch = std::move(m_scratch.back());
    m_scratch.pop_back();
    return scratch;
}

void PictureShrinker::giveBack(std::unique_ptr<Scratch> scratch)
{
    const std::lock_guard<std::mutex> guard(m_scratchMutex);
    m_scratch.push_back(std::move(scratch));
}

} // namespace Vistrel
