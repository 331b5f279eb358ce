// SPDX-License-Identifier: MIT
// A source into which the host pushes its frames.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <memory>

namespace Vistrel {

/// A ready-made source for hosts that have a frame in hand. The latest pushed frame waits until the display takes it or
/// a newer one replaces it. Only the descriptor is copied: the pixels stay the host's, who calls `framesLocked()`
/// before it writes into a buffer that was pushed, and so waits until the display has finished reading. A buffer's
/// memory must not be freed before two later frames have been taken: pixel values of the picture in view are read from
/// it.
///
/// The display takes frames only under a lock: call `setFramesLocked(true)` first, or no frame is shown. It takes none
/// while `isSetup()` is false. Both are told once on the standard error stream, and in the empty view. A host still
/// derives from this class and answers `isSetup` and `isRunning`. `setNextFrame`, `clearNextFrame`, `framesLocked` and
/// `setFramesLocked` are thread-safe; the latter two must not be called by a thread that holds a frame lock, nor while
/// holding anything that an override of `getFrameLock` waits for.
class VISTREL_EXPORT ImperativeAcquisitionInterface : public AbstractAcquisitionInterface
{
public:
    ImperativeAcquisitionInterface();
    ~ImperativeAcquisitionInterface() override;

    /// Makes a frame the pending one; never blocks. `data` has the shape that `RawImage` tells.
    void setNextFrame(const unsigned char* const data, std::size_t width, std::size_t height, Format format,
                      void* const userData);
    void setNextFrame(const RawImage& image);
    /// Drops the pending frame, if any; never blocks.
    void clearNextFrame();
    /// How many frames have been pushed. Thread-safe; never blocks.
    std::size_t framesPushed() const;

    /// Whether frames are handed out under a lock; false at first. Both wait while a frame is being read.
    bool framesLocked() const;
    void setFramesLocked(bool locked);

    /// Takes the pending frame. A caller that asks for a lock gets a frame only under one: while frames are not locked,
    /// the frame is dropped and the result is false. Whatever `*lock` held is released first.
    bool getNextFrame(RawImage* const image, ScopedLock* const lock) override;
    /// The one lock on all frames, which nobody else holds meanwhile; empty while frames are not locked. It may be
    /// released on any thread, also after the source is gone.
    ScopedLock getFrameLock(const RawImage& image) override;

    /// Called at the start of every `getNextFrame`, on the same thread: the last moment to push a frame.
    virtual void readyNextFrame();

private:
    struct VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_imperative;
};

} // namespace Vistrel
