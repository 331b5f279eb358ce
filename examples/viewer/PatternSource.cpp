// SPDX-License-Identifier: MIT
// A moving test picture in any pixel format: a source that the display pulls frames from.
#include "PatternSource.h"

#include "PixelWriter.h"
#include "TestPicture.h"

#include <QtCore/QtMath>

#include <algorithm>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// Two frames stay readable, a third may still be locked, and one is being drawn.
constexpr int bufferCount = 4;
constexpr std::chrono::milliseconds longestWait(20);

} // namespace

struct PatternSource::Buffer
{
    std::vector<std::uint8_t> pixels;
    // Rows that the moving parts have been drawn over, as first row and end.
    int ballTop = 0;
    int ballEnd = 0;
};

/// The buffers that are not in use.
class PatternSource::Buffers
{
public:
    void put(std::unique_ptr<Buffer> buffer)
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_free.push_back(std::move(buffer));
    }

    std::unique_ptr<Buffer> take()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_free.empty())
            return nullptr;
        std::unique_ptr<Buffer> buffer = std::move(m_free.back());
        m_free.pop_back();
        return buffer;
    }

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Buffer>> m_free;
};

struct PatternSource::Picture
{
    TestPicture parts;
    std::vector<std::uint8_t> still; // the still part, as a frame
    std::size_t rowBytes = 0;
};

PatternSource::PatternSource(Vistrel::Format format, const QSize& size, double fps)
    : m_format(format), m_size(size), m_fps(fps), m_buffers(std::make_shared<Buffers>()), m_start(Clock::now())
{
    auto picture = std::make_unique<Picture>();
    picture->parts = drawTestPicture(
        size, QStringLiteral("%1 %2x%3").arg(QLatin1String(formatName(format))).arg(size.width()).arg(size.height()));
    picture->rowBytes = std::size_t(size.width()) * bytesPerPixel(format);
    picture->still.resize(picture->rowBytes * std::size_t(size.height()));
    for (int y = 0; y < size.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgba64*>(picture->parts.still.constScanLine(y));
        std::uint8_t* row = picture->still.data() + std::size_t(y) * picture->rowBytes;
        for (int x = 0; x < size.width(); ++x)
            writePixel(row, x, y, format, line[x]);
    }
    picture->parts.still = QImage();

    for (int i = 0; i < bufferCount; ++i) {
        auto buffer = std::make_unique<Buffer>();
        buffer->pixels = picture->still;
        m_buffers->put(std::move(buffer));
    }
    m_picture = std::move(picture);
    setHasFrameRate(true);
    setHasFramesDelivered(true);
}

PatternSource::~PatternSource() = default;

bool PatternSource::getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock)
{
    const auto dueTime = [this](qint64 number) {
        return m_start +
               std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(double(number) / m_fps));
    };
    const Clock::time_point due = dueTime(m_lastNumber + 1);
    if (due - Clock::now() > longestWait)
        return false;
    std::this_thread::sleep_until(due);

    std::unique_ptr<Buffer> buffer = m_buffers->take();
    if (!buffer)
        return false;
    const std::chrono::duration<double> age = Clock::now() - m_start;
    m_lastNumber = std::max(m_lastNumber + 1, qint64(age.count() * m_fps));
    drawFrame(*buffer, m_lastNumber);

    const Vistrel::RawImage frame{buffer->pixels.data(), std::size_t(m_size.width()), std::size_t(m_size.height()),
                                  m_format, nullptr};
    const LentBuffer lent(buffer.release(),
                          [buffers = m_buffers](Buffer* returned) { buffers->put(std::unique_ptr<Buffer>(returned)); });
    m_recent.deliver(frame, lent, image, lock);
    return true;
}

void PatternSource::drawFrame(Buffer& buffer, qint64 number) const
{
    const TestPicture& parts = m_picture->parts;
    const std::size_t rowBytes = m_picture->rowBytes;
    const auto drawPart = [&](const QImage& part, const QPoint& corner, bool opaqueOnly) {
        const QRect inside = QRect(corner, part.size()) & QRect(QPoint(0, 0), m_size);
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            const auto* line = reinterpret_cast<const QRgba64*>(part.constScanLine(y - corner.y()));
            std::uint8_t* row = buffer.pixels.data() + std::size_t(y) * rowBytes;
            for (int x = inside.left(); x <= inside.right(); ++x) {
                const QRgba64 color = line[x - corner.x()];
                if (!opaqueOnly || color.isOpaque())
                    writePixel(row, x, y, m_format, color);
            }
        }
    };

    // Where the ball was when this buffer was drawn last; the counter below covers its own place.
    const auto oldRows = std::ptrdiff_t(std::size_t(buffer.ballTop) * rowBytes);
    std::copy_n(m_picture->still.begin() + oldRows, std::size_t(buffer.ballEnd - buffer.ballTop) * rowBytes,
                buffer.pixels.begin() + oldRows);

    const double angle = std::fmod(double(number) / m_fps / 4, 1.0) * 2 * M_PI; // once round in four seconds
    const QPointF centre = parts.orbitCentre + QPointF(std::sin(angle), -std::cos(angle)) * parts.orbitRadius;
    const QPoint corner = (centre - QPointF(parts.ball.width(), parts.ball.height()) / 2).toPoint();
    buffer.ballTop = std::clamp(corner.y(), 0, m_size.height());
    buffer.ballEnd = std::clamp(corner.y() + parts.ball.height(), buffer.ballTop, m_size.height());
    drawPart(parts.ball, corner, true);

    for (int place = 5; place >= 0; --place, number /= 10) {
        const QImage& digit = parts.digits[std::size_t(number % 10)];
        drawPart(digit, parts.counter + QPoint(place * digit.width(), 0), false);
    }
}
