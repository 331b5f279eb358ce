// SPDX-License-Identifier: MIT
// The pictures of a folder, played as frames: a source that pushes its frames.
#include "FileSource.h"

#include "Console.h"
#include "DeepPgm.h"

#include <QtCore/QDir>
#include <QtGui/QImageReader>

#include <algorithm>
#include <stdexcept>

namespace {

using Clock = Playback::Clock;

// Copies an image's rows without their padding: of each `step` bytes, a pixel, the first `bytes`.
void packRows(const QImage& image, int step, int bytes, std::vector<std::uint8_t>& pixels)
{
    pixels.resize(std::size_t(image.width()) * std::size_t(image.height()) * std::size_t(bytes));
    std::uint8_t* target = pixels.data();
    for (int y = 0; y < image.height(); ++y) {
        const uchar* line = image.constScanLine(y);
        if (step == bytes) {
            target = std::copy_n(line, image.width() * bytes, target);
            continue;
        }
        for (int x = 0; x < image.width(); ++x)
            target = std::copy_n(line + x * step, bytes, target);
    }
}

// Converts a picture to a pixel format of its depth. Qt has red first in memory, which the library calls BGR.
// `deepGray` is the format for words.
Vistrel::Format toFrame(const QImage& image, Vistrel::Format deepGray, std::vector<std::uint8_t>& pixels)
{
    switch (image.format()) {
    case QImage::Format_Grayscale16:
        packRows(image, 2, 2, pixels);
        return deepGray;
    case QImage::Format_RGBX64:
    case QImage::Format_RGBA64:
    case QImage::Format_RGBA64_Premultiplied:
        packRows(image.convertToFormat(QImage::Format_RGBX64), 8, 6, pixels);
        return Vistrel::BGR16;
    default:
        break;
    }
    if (image.isGrayscale()) {
        packRows(image.convertToFormat(QImage::Format_Grayscale8), 1, 1, pixels);
        return Vistrel::Mono8;
    }
    packRows(image.convertToFormat(QImage::Format_RGB888), 3, 3, pixels);
    return Vistrel::BGR8;
}

} // namespace

FileSource::FileSource(const QString& folder, double fps) : m_fps(fps)
{
    const QDir directory(folder);
    if (!directory.exists())
        throw std::runtime_error(qPrintable(QStringLiteral("there is no folder \"%1\"").arg(folder)));
    const QStringList suffixes{QStringLiteral("*.png"), QStringLiteral("*.pgm"), QStringLiteral("*.jpg"),
                               QStringLiteral("*.jpeg")};
    for (const QString& name : directory.entryList(suffixes, QDir::Files | QDir::Readable, QDir::Name))
        m_files.append(directory.filePath(name));
    if (m_files.isEmpty())
        throw std::runtime_error(qPrintable(QStringLiteral("no PNG, PGM or JPEG files in \"%1\"").arg(folder)));

    setHasStartSingleReverse(true);
    setHasStartReverse(true);
    setHasStart(true);
    setHasStartSingle(true);
    setHasPause(true);
    setHasStop(true);
    setHasFrameRate(true);
    setHasFramesDelivered(true);
    // Without this no frame is taken; with it, framesLocked() blocks while a frame is being read.
    setFramesLocked(true);
    m_playback.setup();
    m_playback.start(Length::Endless);
    m_player = std::thread([this] { play(); });
}

FileSource::~FileSource()
{
    m_playback.close();
    m_player.join();
}

void FileSource::play()
{
    const auto interval = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1 / m_fps));
    Clock::time_point due = Clock::now();
    std::uint64_t runNumber = 0;
    std::uintptr_t number = 0;
    while (const std::optional<Playback::Run> run = m_playback.waitForRun()) {
        Vistrel::Format deepGray = Vistrel::Mono16;
        int index = 0;
        const QImage image = readNext(run->isReverse, &deepGray, &index);
        if (image.isNull()) {
            printError(QStringLiteral("none of the files can be read"));
            m_playback.fail();
            return;
        }
        Buffer& buffer = bufferForWriting();
        const Vistrel::Format format = toFrame(image, deepGray, buffer.pixels);
        const bool isFirst = run->number != runNumber;
        due = isFirst ? Clock::now() : std::max(due + interval, Clock::now());
        // After another command this may be the wrong picture.
        if (!m_playback.waitUntil(due, *run) || !m_playback.finishFrame(*run))
            continue;
        runNumber = run->number;
        m_shown = index;
        {
            const std::lock_guard<std::mutex> guard(m_mutex);
            m_pushed = buffer.number = ++number;
        }
        setNextFrame(buffer.pixels.data(), std::size_t(image.width()), std::size_t(image.height()), format,
                     reinterpret_cast<void*>(number));
        signalGetFrameNow();
    }
}

// The picture after, or before, the one shown last. Null when none of the files can be read.
QImage FileSource::readNext(bool isReverse, Vistrel::Format* deepGray, int* index)
{
    while (!m_files.isEmpty()) {
        const int count = m_files.size();
        const int next = isReverse ? (std::max(m_shown, 0) + count - 1) % count : (m_shown + 1) % count;
        const QString& file = m_files[next];
        QImageReader reader(file);
        QImage image = readDeepPgm(file, deepGray);
        if (image.isNull())
            image = reader.read();
        if (!image.isNull()) {
            *index = next;
            return image;
        }
        printError(QStringLiteral("%1: %2; skipped").arg(file, reader.errorString()));
        m_files.removeAt(next);
        if (next < m_shown)
            --m_shown;
    }
    return {};
}

FileSource::Buffer& FileSource::bufferForWriting()
{
    // Waits until no frame is being read. Every frame that was taken is in `m_taken` then.
    framesLocked();
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto isFree = [this](const Buffer& buffer) {
        return buffer.number == 0 ||
               (buffer.number != m_pushed && buffer.number != m_taken[0] && buffer.number != m_taken[1]);
    };
    Buffer& buffer = *std::find_if(m_buffers.begin(), m_buffers.end(), isFree);
    buffer.number = 0;
    return buffer;
}

bool FileSource::getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock)
{
    if (!ImperativeAcquisitionInterface::getNextFrame(image, lock))
        return false;
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_taken = {reinterpret_cast<std::uintptr_t>(image->userData), m_taken[0]};
    ++m_delivered;
    return true;
}

Vistrel::ScopedLock FileSource::getFrameLock(const Vistrel::RawImage& image)
{
    // Under the mutex no buffer is chosen for writing. One that has been chosen has no number.
    Vistrel::ScopedLock lock = ImperativeAcquisitionInterface::getFrameLock(image);
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto holdsFrame = [&image](const Buffer& buffer) {
        return buffer.number == reinterpret_cast<std::uintptr_t>(image.userData);
    };
    if (std::none_of(m_buffers.begin(), m_buffers.end(), holdsFrame))
        return {};
    return lock;
}
