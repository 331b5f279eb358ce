// SPDX-License-Identifier: MIT
// A moving test picture in any pixel format: a source that is asked for its frames.
#include "PatternSource.h"

#include "PixelWriter.h"
#include "TestPicture.h"

#include <QtCore/QtMath>

#include <algorithm>
#include <thread>
#include <vector>

namespace {

using Clock = Playback::Clock;

// Two frames stay readable, a third may still be locked, and one is being drawn.
constexpr int bufferCount = 4;
constexpr std::chrono::milliseconds longestWait(20);
constexpr qint64 counterEnd = 1000000; // six digits

constexpr std::pair<Vistrel::Format, const char*> modes[] = {
    {Vistrel::RGB8, "Colour, 8 bits a channel"},
    {Vistrel::Mono8, "Grey, 8 bits"},
    {Vistrel::Mono12, "Grey, 12 bits"},
    {Vistrel::BayerRG8, "Colour mosaic, 8 bits"},
};

} // namespace

/// The picture in one pixel format, and the buffers that it is drawn into.
class PatternSource::Pattern : public std::enable_shared_from_this<Pattern>
{
public:
    Pattern(Vistrel::Format format, const QSize& size);

    /// Returns a frame with its moving parts at their place at `time`, in seconds; null when all buffers are in use.
    LentBuffer draw(qint64 number, double time, Vistrel::RawImage* frame);

private:
    struct Buffer
    {
        std::vector<std::uint8_t> pixels;
        // Rows that contain moving parts, as first row and end.
        int ballTop = 0;
        int ballEnd = 0;
    };

    void put(std::unique_ptr<Buffer> buffer);
    std::unique_ptr<Buffer> take();
    void drawParts(Buffer& buffer, qint64 number, double time) const;

    const Vistrel::Format m_format;
    const QSize m_size;
    const std::size_t m_rowBytes;
    TestPicture m_parts;
    std::vector<std::uint8_t> m_still; // the still part, as a frame
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Buffer>> m_free; // the buffers that are not in use
};

PatternSource::Pattern::Pattern(Vistrel::Format format, const QSize& size)
    : m_format(format),
      m_size(size),
      m_rowBytes(std::size_t(size.width()) * bytesPerPixel(format)),
      m_parts(drawTestPicture(
          size,
          QStringLiteral("%1 %2x%3").arg(QLatin1String(formatName(format))).arg(size.width()).arg(size.height()))),
      m_still(m_rowBytes * std::size_t(size.height()))
{
    for (int y = 0; y < size.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgba64*>(m_parts.still.constScanLine(y));
        std::uint8_t* row = m_still.data() + std::size_t(y) * m_rowBytes;
        for (int x = 0; x < size.width(); ++x)
            writePixel(row, x, y, format, line[x]);
    }
    m_parts.still = QImage();

    for (int i = 0; i < bufferCount; ++i) {
        auto buffer = std::make_unique<Buffer>();
        buffer->pixels = m_still;
        put(std::move(buffer));
    }
}

void PatternSource::Pattern::put(std::unique_ptr<Buffer> buffer)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_free.push_back(std::move(buffer));
}

std::unique_ptr<PatternSource::Pattern::Buffer> PatternSource::Pattern::take()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_free.empty())
        return nullptr;
    std::unique_ptr<Buffer> buffer = std::move(m_free.back());
    m_free.pop_back();
    return buffer;
}

LentBuffer PatternSource::Pattern::draw(qint64 number, double time, Vistrel::RawImage* frame)
{
    std::unique_ptr<Buffer> buffer = take();
    if (!buffer)
        return nullptr;
    drawParts(*buffer, number, time);
    *frame = {buffer->pixels.data(), std::size_t(m_size.width()), std::size_t(m_size.height()), m_format, nullptr};
    return LentBuffer(buffer.release(), [pattern = shared_from_this()](Buffer* returned) {
        pattern->put(std::unique_ptr<Buffer>(returned));
    });
}

void PatternSource::Pattern::drawParts(Buffer& buffer, qint64 number, double time) const
{
    const auto drawPart = [&](const QImage& part, const QPoint& corner, bool opaqueOnly) {
        const QRect inside = QRect(corner, part.size()) & QRect(QPoint(0, 0), m_size);
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            const auto* line = reinterpret_cast<const QRgba64*>(part.constScanLine(y - corner.y()));
            std::uint8_t* row = buffer.pixels.data() + std::size_t(y) * m_rowBytes;
            for (int x = inside.left(); x <= inside.right(); ++x) {
                const QRgba64 color = line[x - corner.x()];
                if (!opaqueOnly || color.isOpaque())
                    writePixel(row, x, y, m_format, color);
            }
        }
    };

    // Removes the ball drawn in this buffer before; the counter below overwrites its own place.
    const auto oldRows = std::ptrdiff_t(std::size_t(buffer.ballTop) * m_rowBytes);
    std::copy_n(m_still.begin() + oldRows, std::size_t(buffer.ballEnd - buffer.ballTop) * m_rowBytes,
                buffer.pixels.begin() + oldRows);

    const double angle = std::fmod(time / 4, 1.0) * 2 * M_PI; // once round in four seconds
    const QPointF centre = m_parts.orbitCentre + QPointF(std::sin(angle), -std::cos(angle)) * m_parts.orbitRadius;
    const QPoint corner = (centre - QPointF(m_parts.ball.width(), m_parts.ball.height()) / 2).toPoint();
    buffer.ballTop = std::clamp(corner.y(), 0, m_size.height());
    buffer.ballEnd = std::clamp(corner.y() + m_parts.ball.height(), buffer.ballTop, m_size.height());
    drawPart(m_parts.ball, corner, true);

    // Wraps like a tape counter, also below zero.
    qint64 shown = (number % counterEnd + counterEnd) % counterEnd;
    for (int place = 5; place >= 0; --place, shown /= 10) {
        const QImage& digit = m_parts.digits[std::size_t(shown % 10)];
        drawPart(digit, m_parts.counter + QPoint(place * digit.width(), 0), false);
    }
}

// The source ----------------------------------------------------------------------------------------------------------

PatternSource::PatternSource(Vistrel::Format format, const QSize& size, double fps) : m_size(size), m_fps(fps)
{
    for (const auto& [modeFormat, description] : modes)
        addMode(modeFormat, description);
    addMode(format, "From the command line");
    m_mode = std::size_t(std::find(m_formats.begin(), m_formats.end(), format) - m_formats.begin());

    setHasSetup(true);
    setHasSetupMode(true);
    setHasCleanup(true);
    setHasTrigger(true);
    setHasStartSingleReverse(true);
    setHasStartReverse(true);
    setHasStart(true);
    setHasStartFixed(true);
    setStartFixedMax(10000);
    setHasStartSingle(true);
    setHasPause(true);
    setHasStop(true);
    setHasFrameRate(true);
    setHasFramesDropped(true);
    setHasFramesDelivered(true);

    drawPattern();
    m_playback.setup();
    m_playback.start(Length::Endless);
}

PatternSource::~PatternSource() = default;

void PatternSource::addMode(Vistrel::Format format, const char* description)
{
    if (addSetupMode(formatName(format), description))
        m_formats.push_back(format);
}

void PatternSource::drawPattern()
{
    auto pattern = std::make_shared<Pattern>(m_formats[m_mode], m_size);
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_pattern.swap(pattern);
}

bool PatternSource::setup()
{
    drawPattern();
    return PlayedSource::setup();
}

bool PatternSource::setupMode(const char* const name)
{
    const auto hasName = [name](Vistrel::Format format) { return qstrcmp(formatName(format), name) == 0; };
    const auto found = std::find_if(m_formats.begin(), m_formats.end(), hasName);
    if (found == m_formats.end())
        return false;
    m_mode = std::size_t(found - m_formats.begin());
    drawPattern();
    return isSetup() || PlayedSource::setup(); // a run continues in the new mode
}

bool PatternSource::cleanup()
{
    const bool isDone = PlayedSource::cleanup();
    std::shared_ptr<Pattern> outgoing; // destroyed after the mutex is released
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_pattern.swap(outgoing);
    return isDone;
}

bool PatternSource::activeSetupMode(char* const buffer, std::size_t* const size) const
{
    return isSetup() && setupModeName(m_mode, buffer, size);
}

bool PatternSource::getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock)
{
    const std::optional<Playback::Run> run = m_playback.run();
    if (!run)
        return false;
    const Clock::time_point now = Clock::now();
    if (run->number != m_runNumber) {
        m_runNumber = run->number;
        m_runStart = now;
        m_runFrames = 0;
    }
    const auto due = m_runStart + std::chrono::duration_cast<Clock::duration>(
                                      std::chrono::duration<double>(double(m_runFrames) / m_fps));
    if (due - now > longestWait)
        return false;
    std::this_thread::sleep_until(due);

    const std::chrono::duration<double> age = std::max(due, now) - m_runStart;
    const qint64 made = std::max(qint64(age.count() * m_fps) + 1 - m_runFrames, qint64(1));
    const qint64 number = m_number + (run->isReverse ? -made : made);
    std::shared_ptr<Pattern> pattern;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        pattern = m_pattern;
    }
    Vistrel::RawImage frame;
    const LentBuffer lent = pattern ? pattern->draw(number, double(number) / m_fps, &frame) : nullptr;
    if (!lent || !m_playback.finishFrame(*run, std::size_t(made)))
        return false;
    m_number = number;
    m_runFrames += made;
    m_dropped += std::size_t(made - 1);
    m_recent.deliver(frame, lent, image, lock);
    return true;
}
