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

/// What a host implements to have its frames shown and its acquisition driven.
///
/// A capability (`has*`) says that the source offers a command or a statistic at all; `can*` says that the command is
/// possible now. Set capabilities, bounds and setup modes before the source is handed over, or on the user-interface
/// thread; they are not locked. An exception that leaves one of the virtual operations is caught by the caller,
/// reported in one line on the standard error stream, and counts as that operation's failure.
///
/// Bound to the user-interface thread, but for what is called on others:
/// - Commands (`setup` to `stop`): on the window's busy-work thread, one at a time. They may take as long as they like.
/// - `getNextFrame`: on the stream's worker, at most once a refresh and once an announcement. It may wait.
/// - `getFrameLock`: on the worker and on the user-interface thread, there for each picture and each move of the mouse
///   while a pixel value is shown.
/// - `can*`, `is*`, `activeSetupMode`: on the user-interface thread, each after every picture that is shown, every
///   announcement and every command; statistics there four times a second. `isSetup` and `isRunning` also on the
///   busy-work thread, right before a command that depends on them.
/// - `uxClosed`: on the user-interface thread, also while a command or a fetch is under way, which it may end.
///
/// Everything that is called on the user-interface thread must answer within a millisecond: the window stands still
/// until then. While commands are under way or wait, none of it is called but `uxClosed` and, when the host asks a
/// `SurfaceStream` for the latest image under a lock, `getFrameLock`. So a mutex that a command holds until it is over,
/// and that the queries wait for, does not stop the window. One that is held while waiting for a frame does.
class VISTREL_EXPORT AbstractAcquisitionInterface : public BaseClass
{
public:
    ~AbstractAcquisitionInterface() override;
    AbstractAcquisitionInterface(const AbstractAcquisitionInterface&) = delete;
    AbstractAcquisitionInterface& operator=(const AbstractAcquisitionInterface&) = delete;

    /// The user interface that shows this source is closing. Called exactly once.
    virtual void uxClosed();

    // Commands: true when carried out. A source offers what it overrides.
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
    /// By default the negation of `isRunning()`.
    virtual bool isStopped() const;

    /// Writes the name of the active setup mode under the text-out convention (see `setupModeName`); false, and nothing
    /// written, when none is active.
    virtual bool activeSetupMode(char* const buffer, std::size_t* const size) const;

    // Statistics.
    virtual double frameRate() const; ///< frames a second
    virtual std::size_t framesQueued() const;
    virtual std::size_t framesFilled() const;
    virtual std::size_t framesDropped() const;
    virtual std::size_t framesDelivered() const;

    /// Delivers the next frame, or returns false when there is none; may block for as long as it takes, but never while
    /// a lock that it handed out is held. `lock`, when not null, receives the lock under which the frame is delivered.
    ///
    /// The delivered buffer must stay readable while its lock is held. Pixel values of the picture in view are read
    /// under a new lock: until two later frames have been delivered, a lock on this one must be refused or its memory
    /// be there. A frame that was delivered without a lock is not read any more once the next call here has begun, but
    /// for what a lock on it is granted for. Null `data` clears the picture.
    virtual bool getNextFrame(RawImage* const image, ScopedLock* const lock) = 0;

    /// A lock under which the pixels of `image`, which was delivered before, can be read; empty when they cannot be any
    /// more. Called on several threads; must not wait for a frame.
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

    /// Appends a named setup mode. False when a pointer is null or the name, compared byte by byte, exists already.
    bool addSetupMode(const char* const name, const char* const description);
    bool addSetupMode(const char* const name);
    void clearSetupModes();
    std::size_t setupModeCount() const;

    /// Text-out convention: `*size` is the buffer's capacity on entry and the text's length plus one on return; a text
    /// too long arrives cut and terminated, and the result is still true; a null buffer only measures; a null `size`
    /// gives false. An index that is not below the count gives false and writes nothing.
    bool setupModeName(std::size_t index, char* const buffer, std::size_t* const size) const;
    bool setupModeDescription(std::size_t index, char* const buffer, std::size_t* const size) const;

    /// The object whose signals announce this source's changes. It lives on the thread that made the source.
    AcquisitionSignalHandler* signalHandler();
    const AcquisitionSignalHandler* signalHandler() const;

protected:
    AbstractAcquisitionInterface();

    // For sources, from any thread.
    void signalAcquisitionStateChange(); ///< after a change of an `is*` answer
    void signalFeatureSetChange();       ///< after a change of capabilities, `can*` answers or setup modes
    void signalGetFrameNow();            ///< a frame is ready to be fetched at once

private:
    struct VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
