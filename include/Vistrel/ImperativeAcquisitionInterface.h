// SPDX-License-Identifier: MIT
// A source into which the host pushes its frames.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <memory>

namespace Vistrel {

/// A source for hosts that push their frames. A pushed frame is pending until the stream takes it or a newer one
/// replaces it. Only the descriptor is copied; the host owns the pixels. Before the host writes into a buffer that was
/// pushed, it calls `framesLocked()`, which blocks until the stream no longer reads. It must not free a buffer's memory
/// before two later frames have been taken: pixel values of the picture in view are read from it.
///
/// The stream takes frames only under a lock: call `setFramesLocked(true)` first, or no frame is shown. It takes none
/// while `isSetup()` is false. Both are reported once on the standard error stream, and in the empty view. A host
/// derives from this class and implements `isSetup` and `isRunning`. `setNextFrame`, `clearNextFrame`, `framesLocked`
/// and `setFramesLocked` are thread-safe. The latter two must not be called by a thread that holds a frame lock or
/// anything else that an override of `getFrameLock` waits for.
class VISTREL_EXPORT ImperativeAcquisitionInterface : public AbstractAcquisitionInterface
{
public:
    ImperativeAcquisitionInterface();
    ~ImperativeAcquisitionInterface() override;

    /// Makes a frame the pending one; never blocks. `data` has the layout that `RawImage` describes.
    void setNextFrame(const unsigned char* const data, std::size_t width, std::size_t height, Format format,
                      void* const userData);
    void setNextFrame(const RawImage& image);
    /// Drops the pending frame, if any; never blocks.
    void clearNextFrame();
    /// The number of frames pushed. Thread-safe; never blocks.
    std::size_t framesPushed() const;

    /// Whether frames are delivered under a lock; false at first. Both block while a frame is being read.
    bool framesLocked() const;
    void setFramesLocked(bool locked);

    /// Takes the pending frame. With `lock` a frame is delivered only under a lock: while frames are not locked, it is
    /// dropped and the result is false. The lock that `*lock` held before is released first.
    bool getNextFrame(RawImage* const image, ScopedLock* const lock) override;
    /// The exclusive lock on all frames; blocks until it is free. Empty while frames are not locked. It may be released
    /// on any thread, also after the source is destroyed.
    ScopedLock getFrameLock(const RawImage& image) override;

    /// Called at the start of every `getNextFrame`, on the same thread: the last moment to push a frame.
    virtual void readyNextFrame();

private:
    struct VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_imperative;
};

} // namespace Vistrel
