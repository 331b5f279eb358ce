// SPDX-License-Identifier: MIT
// The contract between a source of frames and the display.
#pragma once

#include <Vistrel/BaseClass.h>
#include <Vistrel/RawImage.h>
#include <Vistrel/ScopedLock.h>

#include <cstddef>
#include <memory>

namespace Vistrel {

class AcquisitionSignalHandler;

/// The interface of a source: a host implements it so that its frames are shown and its acquisition is controlled.
///
/// A capability (`has*`) says that the source offers a command or a statistic at all; `can*` says that the command is
/// possible now. Capabilities, bounds and setup modes are not locked: set them before the source is handed over, or on
/// the user-interface thread. The caller catches an exception that leaves a virtual operation, reports it in one line
/// on the standard error stream, and counts it as the operation's failure.
///
/// Bound to the user-interface thread, except for the calls on other threads:
/// - Commands (`setup` to `stop`): on the window's busy-work thread, one at a time. They may block.
/// - `getNextFrame`: on the stream's worker, at most once a refresh and once an announcement. It may block.
/// - `getFrameLock`: on the worker, and on the user-interface thread for each picture and each move of the mouse while
///   a pixel value is shown.
/// - `can*`, `is*`, `activeSetupMode`: on the user-interface thread, each after every picture that is shown, every
///   announcement and every command. `isSetup` and `isRunning` also on the busy-work thread, right before a command
///   that depends on them.
/// - Statistics: on the user-interface thread, four times a second.
/// - `uxClosed`: on the user-interface thread. It may come while a command or a fetch runs, and may end that.
///
/// A call on the user-interface thread must return within a millisecond: it blocks the window. While a command runs or
/// waits in the queue, only `uxClosed` is called there and, when the host asks a `SurfaceStream` for the latest image
/// under a lock, `getFrameLock`. So a mutex that commands hold and queries wait for does not block the window. A mutex
/// that is held while waiting for a frame does.
class VISTREL_EXPORT AbstractAcquisitionInterface : public BaseClass
{
public:
    ~AbstractAcquisitionInterface() override;
    AbstractAcquisitionInterface(const AbstractAcquisitionInterface&) = delete;
    AbstractAcquisitionInterface& operator=(const AbstractAcquisitionInterface&) = delete;

    /// Tells the source that the user interface is closing. Called exactly once.
    virtual void uxClosed();

    // Commands: true on success. A source overrides those that it offers.
    virtual bool setup();
    virtual bool setupMode(const char* const name);
    virtual bool cleanup();
    virtual bool trigger();
    virtual bool startSingleReverse();
    virtual bool startReverse();
    virtual bool start();
    virtual bool startFixed(std::size_t frames);
    virtual bool startSingle();
    virtual bool pause();
    virtual bool stop();

    // Whether a command is possible now.
    virtual bool canSetup() const;
    virtual bool canSetupMode() const;
    virtual bool canCleanup() const;
    virtual bool canTrigger() const;
    virtual bool canStartSingleReverse() const;
    virtual bool canStartReverse() const;
    virtual bool canStart() const;
    virtual bool canStartFixed() const;
    virtual bool canStartSingle() const;
    virtual bool canPause() const;
    virtual bool canStop() const;

    // State.
    virtual bool isSetup() const = 0;
    virtual bool isRunningSingleReverse() const;
    virtual bool isRunningReverse() const;
    virtual bool isRunning() const = 0;
    virtual bool isRunningFixed() const;
    virtual bool isRunningSingle() const;
    virtual bool isPaused() const;
    /// Returns `!isRunning()` by default.
    virtual bool isStopped() const;

    /// Writes the name of the active setup mode by the text-out convention (see `setupModeName`). Returns false and
    /// writes nothing when none is active.
    virtual bool activeSetupMode(char* const buffer, std::size_t* const size) const;

    // Statistics.
    virtual double frameRate() const; ///< frames a second
    virtual std::size_t framesQueued() const;
    virtual std::size_t framesFilled() const;
    virtual std::size_t framesDropped() const;
    virtual std::size_t framesDelivered() const;

    /// Delivers the next frame, or returns false when there is none. May block for any time, but never while a lock
    /// that it handed out is held. `lock`, when not null, receives the lock under which the frame is delivered. Null
    /// `data` clears the picture.
    ///
    /// The delivered buffer must stay readable while its lock is held. Pixel values of the picture in view are read
    /// under a new lock: until two later frames have been delivered, the source refuses a lock on this frame or keeps
    /// its memory. A frame that was delivered without a lock is read until the next call here begins; after that only
    /// under a lock that `getFrameLock` grants.
    virtual bool getNextFrame(RawImage* const image, ScopedLock* const lock) = 0;

    /// Returns a lock under which the pixels of `image`, a frame delivered before, can be read; an empty one when they
    /// no longer can. Called on several threads; must not wait for a frame.
    virtual ScopedLock getFrameLock(const RawImage& image) = 0;

    // Capabilities, all false at first.
    bool hasSetup() const;
    bool hasSetupMode() const;
    bool hasCleanup() const;
    bool hasTrigger() const;
    bool hasStartSingleReverse() const;
    bool hasStartReverse() const;
    bool hasStart() const;
    bool hasStartFixed() const;
    bool hasStartSingle() const;
    bool hasPause() const;
    bool hasStop() const;
    bool hasFrameRate() const;
    bool hasFramesQueued() const;
    bool hasFramesFilled() const;
    bool hasFramesDropped() const;
    bool hasFramesDelivered() const;

    void setHasSetup(bool has);
    void setHasSetupMode(bool has);
    void setHasCleanup(bool has);
    void setHasTrigger(bool has);
    void setHasStartSingleReverse(bool has);
    void setHasStartReverse(bool has);
    void setHasStart(bool has);
    void setHasStartFixed(bool has);
    void setHasStartSingle(bool has);
    void setHasPause(bool has);
    void setHasStop(bool has);
    void setHasFrameRate(bool has);
    void setHasFramesQueued(bool has);
    void setHasFramesFilled(bool has);
    void setHasFramesDropped(bool has);
    void setHasFramesDelivered(bool has);

    // Bounds and step of the frame count of `startFixed`: 1, 65536 and 1 at first.
    int startFixedMin() const;
    int startFixedMax() const;
    int startFixedInc() const;
    void setStartFixedMin(int frames);
    void setStartFixedMax(int frames);
    void setStartFixedInc(int frames);

    /// Appends a named setup mode. Returns false when a pointer is null or the name, compared by bytes, exists already.
    bool addSetupMode(const char* const name, const char* const description);
    bool addSetupMode(const char* const name);
    void clearSetupModes();
    std::size_t setupModeCount() const;

    /// Text-out convention: `*size` is the buffer's capacity on entry and the text's length plus one on return. A text
    /// that is too long is cut and terminated, and the result is true. A null buffer only measures. Returns false and
    /// writes nothing for a null `size` and for an index that is not below the count.
    bool setupModeName(std::size_t index, char* const buffer, std::size_t* const size) const;
    bool setupModeDescription(std::size_t index, char* const buffer, std::size_t* const size) const;

    /// The object whose signals announce this source's changes. Its thread is the one that made the source.
    AcquisitionSignalHandler* signalHandler();
    const AcquisitionSignalHandler* signalHandler() const;

protected:
    AbstractAcquisitionInterface();

    // For sources. Thread-safe.
    void signalAcquisitionStateChange(); ///< after a change of an `is*` answer
    void signalFeatureSetChange();       ///< after a change of capabilities, `can*` answers or setup modes
    void signalGetFrameNow();            ///< when a frame is ready, to be fetched at once

private:
    struct VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
