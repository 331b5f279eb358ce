// SPDX-License-Identifier: MIT
// The pictures of a folder, played as frames: a source that pushes its frames.
#pragma once

#include "PlayedSource.h"

#include <Vistrel/ImperativeAcquisitionInterface.h>

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtGui/QImage>

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

/// Plays PNG, PGM and JPEG files repeatedly in name order, forwards or backwards, or shows the next or the previous
/// one; plays at first. A file that cannot be read is reported once and then skipped; when none can be read, the source
/// has failed.
class FileSource : public PlayedSource<Vistrel::ImperativeAcquisitionInterface>
{
public:
    /// Throws `std::runtime_error` when the folder has no picture files.
    FileSource(const QString& folder, double fps);
    ~FileSource() override;

    std::size_t framesDelivered() const override { return m_delivered; }

    bool getNextFrame(Vistrel::RawImage* const image, Vistrel::ScopedLock* const lock) override;
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage& image) override;

private:
    struct Buffer
    {
        std::vector<std::uint8_t> pixels;
        std::uintptr_t number = 0; // of the frame it holds, also in the frame's `userData`
    };

    void play();
    QImage readNext(bool isReverse, Vistrel::Format* deepGray, int* index);
    Buffer& bufferForWriting();

    const double m_fps;
    // Used only by the playing thread.
    QStringList m_files;
    int m_shown = -1; // index of the file pushed last

    std::atomic<std::size_t> m_delivered{0};

    std::mutex m_mutex; // guards all below
    // The frame that was pushed last and the last two that were taken are kept; one buffer is being written.
    std::array<Buffer, 4> m_buffers;
    std::uintptr_t m_pushed = 0;
    std::array<std::uintptr_t, 2> m_taken{}; // the newest first

    std::thread m_player; // last, so that it starts after the others are made
};
