// SPDX-License-Identifier: MIT
// The properties of all handles, as tables.
#include "app/c/Properties.h"

#include "app/c/CallbackAcquisition.h"
#include "app/c/WindowWrapper.h"
#include "base/HostCall.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <cstring>
#include <iterator>
#include <limits>
#include <string>

namespace Vistrel {

namespace {

// Rows of the tables --------------------------------------------------------------------------------------------------

template <bool (Window::*get)() const, void (Window::*set)(bool)>
constexpr Property<bool> windowSwitch(std::int32_t number)
{
    return {number, [](const Owner& o) { return (o.window->*get)(); },
            [](const Owner& o, bool on) { return (o.window->*set)(on), true; }, nullptr};
}

template <bool (AbstractAcquisitionInterface::*has)() const>
constexpr Property<bool> capability(std::int32_t number)
{
    return {number, [](const Owner& o) { return (o.source().*has)(); }, nullptr, nullptr};
}

template <bool (Action::*get)() const, void (Action::*set)(bool)>
constexpr Property<bool> actionSwitch(std::int32_t number)
{
    return {number, [](const Owner& o) { return (o.action->*get)(); },
            [](const Owner& o, bool on) { return (o.action->*set)(on), true; }, nullptr};
}

template <int (AbstractAcquisitionInterface::*get)() const, void (AbstractAcquisitionInterface::*set)(int)>
constexpr Property<std::int32_t> startFixedBound(std::int32_t number)
{
    return {number, [](const Owner& o) { return std::int32_t{(o.source().*get)()}; },
            [](const Owner& o, std::int32_t frames) {
                (o.source().*set)(frames);
                o.parts->acquisition->send(VT_SIGNAL_FEATURE_SET_CHANGED);
                return true;
            },
            [](std::int32_t frames) { return frames >= 1; }};
}

template <std::int32_t most>
bool isUpTo(std::int32_t value)
{
    return value >= 0 && value <= most;
}

bool isPattern(std::int32_t value)
{
    return isUpTo<VT_FORMAT_BAYER_BG>(value) && value % VT_FORMAT_BAYER_GB == 0;
}

std::int32_t showState(const Owner& owner)
{
    if (owner.window->isMinimized())
        return VT_SHOW_MINIMIZED;
    return owner.window->isMaximized() ? VT_SHOW_MAXIMIZED : VT_SHOW_NORMAL;
}

bool setShowState(const Owner& owner, std::int32_t state)
{
    if (state == VT_SHOW_MINIMIZED)
        owner.window->minimize();
    else if (state == VT_SHOW_MAXIMIZED)
        owner.window->maximize();
    else
        owner.window->restore();
    return true;
}

std::int32_t acquisitionState(const Owner& owner)
{
    const AbstractAcquisitionInterface& source = owner.source();
    if (hostCall("isRunning", false, [&] { return source.isRunning(); }))
        return VT_ACQUISITION_RUNNING;
    return hostCall("isSetup", false, [&] { return source.isSetup(); }) ? VT_ACQUISITION_CONFIGURED
                                                                        : VT_ACQUISITION_UNCONFIGURED;
}

bool setAcquisitionState(const Owner& owner, std::int32_t state)
{
    if (state == VT_ACQUISITION_RUNNING)
        owner.window->setRunning();
    else if (state == VT_ACQUISITION_CONFIGURED)
        owner.window->setConfigured();
    else
        owner.window->setUnconfigured();
    return true;
}

template <typename Read>
std::string wholeText(Read&& read)
{
    std::size_t size = 0;
    read(nullptr, &size);
    std::string text(size, '\0');
    read(text.data(), &size);
    return text;
}

// The data of a host need not be aligned.
template <typename Value>
Value fromData(const void* data)
{
    Value value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

template <typename Value>
bool toData(const Value& value, void* data)
{
    std::memcpy(data, &value, sizeof value);
    return true;
}

struct Rectangle
{
    std::int32_t x, y, width, height;
};

struct Offset
{
    std::int32_t x, y;
};

struct BitmapLock
{
    std::uint32_t width, height, format;
};

static_assert(sizeof(LargestData) >= sizeof(Rectangle) && sizeof(LargestData) >= sizeof(BitmapLock));

bool isRectangle(const void* data)
{
    const auto place = fromData<Rectangle>(data);
    return place.width > 0 && place.height > 0;
}

template <void (Window::*get)(int&, int&, int&, int&) const, void (Window::*set)(int, int, int, int)>
constexpr DataProperty placeProperty(std::int32_t number)
{
    return {number,
            false,
            sizeof(Rectangle),
            [](const Owner& o, void* data) {
                Rectangle place{};
                (o.window->*get)(place.x, place.y, place.width, place.height);
                return toData(place, data);
            },
            [](const Owner& o, const void* data) {
                const auto place = fromData<Rectangle>(data);
                (o.window->*set)(place.x, place.y, place.width, place.height);
                return true;
            },
            &isRectangle};
}

bool setTransientParent(const Owner& owner, const void* data)
{
    const HWND parent = static_cast<HWND>(fromData<void*>(data));
    owner.window->setTransientParent(parent);
    return owner.window->transientParent() == parent;
}

bool isBitmapLock(const void* data)
{
    const auto lock = fromData<BitmapLock>(data);
    constexpr std::uint32_t most = std::numeric_limits<std::int32_t>::max();
    return lock.width > 0 && lock.width <= most && lock.height > 0 && lock.height <= most &&
           (lock.format == VT_FORMAT_MONO8 || lock.format == VT_FORMAT_RGB8 || lock.format == VT_FORMAT_RGBA8);
}

bool readBitmapLock(const Owner& owner, void* data)
{
    RawImage bitmap;
    return owner.window->getBitmap(&bitmap) &&
           toData(BitmapLock{static_cast<std::uint32_t>(bitmap.width), static_cast<std::uint32_t>(bitmap.height),
                             bitmap.format},
                  data);
}

bool writeBitmapLock(const Owner& owner, const void* data)
{
    const auto lock = data ? fromData<BitmapLock>(data) : BitmapLock();
    const auto width = static_cast<int>(lock.width);
    const auto height = static_cast<int>(lock.height);
    const auto format = static_cast<Format>(lock.format);
    if (data && !SurfaceStream::canLockBitmap(width, height, format))
        return false; // an existing lock survives a refusal
    RawImage before;
    if (owner.window->getBitmap(&before))
        owner.parts->acquisition->takeAway(before.data); // its pixels are about to be freed
    if (!data)
        return owner.window->unlockBitmap(), true;
    return owner.window->setBitmapLocked(width, height, format);
}

// The tables ----------------------------------------------------------------------------------------------------------

using W = Window;
using S = AbstractAcquisitionInterface;

constexpr Property<std::int32_t> int32Rows[] = {
    {VT_WINDOW_COLOR_TABLE, [](const Owner& o) { return static_cast<std::int32_t>(o.window->colorTable()); },
     [](const Owner& o, std::int32_t table) { return o.window->setColorTable(static_cast<ColorTable>(table)), true; },
     &isUpTo<VT_COLOR_TABLE_CONTOURS>},
    {VT_WINDOW_BAYER_FILTER_OVERRIDE,
     [](const Owner& o) { return static_cast<std::int32_t>(o.window->bayerFilterOverride()); },
     [](const Owner& o, std::int32_t filter) {
         return o.window->setBayerFilterOverride(static_cast<Format>(filter)), true;
     },
     &isPattern},
    {VT_WINDOW_REFRESH_RATE, [](const Owner& o) { return std::int32_t{o.window->refreshRate()}; },
     [](const Owner& o, std::int32_t rate) { return o.window->setRefreshRate(rate), true; },
     [](std::int32_t rate) { return rate >= 1; }},
    {VT_WINDOW_SHOW_STATE, &showState, &setShowState, &isUpTo<VT_SHOW_MAXIMIZED>},
    {VT_WINDOW_ACQUISITION_STATE, &acquisitionState, &setAcquisitionState, &isUpTo<VT_ACQUISITION_RUNNING>},
    {VT_WINDOW_PIXEL_VALUES, [](const Owner& o) { return static_cast<std::int32_t>(o.window->pixelValues()); },
     [](const Owner& o, std::int32_t values) {
         return o.window->setPixelValues(static_cast<PixelValues>(values)), true;
     },
     &isUpTo<VT_PIXEL_VALUES_VALUE_ONLY>},
    {VT_WINDOW_SHRINK_MODE, [](const Owner& o) { return static_cast<std::int32_t>(o.window->shrinkMode()); },
     [](const Owner& o, std::int32_t mode) { return o.window->setShrinkMode(static_cast<ShrinkMode>(mode)), true; },
     &isUpTo<VT_SHRINK_MAXIMUM>},
    startFixedBound<&S::startFixedMin, &S::setStartFixedMin>(VT_SOURCE_START_FIXED_MIN),
    startFixedBound<&S::startFixedMax, &S::setStartFixedMax>(VT_SOURCE_START_FIXED_MAX),
    startFixedBound<&S::startFixedInc, &S::setStartFixedInc>(VT_SOURCE_START_FIXED_INC),
    {VT_SOURCE_SETUP_MODE_COUNT, [](const Owner& o) { return static_cast<std::int32_t>(o.source().setupModeCount()); },
     nullptr, nullptr},
};

constexpr Property<double> doubleRows[] = {
    {VT_WINDOW_ZOOM, [](const Owner& o) { return o.window->zoomLevel(); },
     [](const Owner& o, double zoom) { return o.window->setZoomLevel(zoom), true; },
     [](double zoom) { return zoom >= Surface::scalingMin() && zoom <= Surface::scalingMax(); }},
};

constexpr Property<bool> boolRows[] = {
    {VT_APP_QUIT_ON_LAST_WINDOW_CLOSED, [](const Owner& o) { return o.application->quitOnLastWindowClosed(); },
     [](const Owner& o, bool quit) { return o.application->setQuitOnLastWindowClosed(quit), true; }, nullptr},
    windowSwitch<&W::isVisible, &W::setVisible>(VT_WINDOW_VISIBLE),
    {VT_WINDOW_RAISE, nullptr,
     [](const Owner& o, bool raise) {
         if (raise)
             o.window->raise();
         return true;
     },
     nullptr},
    windowSwitch<&W::closeable, &W::setCloseable>(VT_WINDOW_CLOSEABLE),
    windowSwitch<&W::isFullScreen, &W::setFullScreen>(VT_WINDOW_FULL_SCREEN),
    windowSwitch<&W::isExhibitView, &W::setExhibitView>(VT_WINDOW_EXHIBIT_VIEW),
    windowSwitch<&W::zoomToFit, &W::setZoomToFit>(VT_WINDOW_ZOOM_TO_FIT),
    windowSwitch<&W::pixelCrosshairVisible, &W::setPixelCrosshairVisible>(VT_WINDOW_PIXEL_CROSSHAIR_VISIBLE),
    windowSwitch<&W::bayerDemosaicEnabled, &W::setBayerDemosaicEnabled>(VT_WINDOW_BAYER_DEMOSAIC_ENABLED),
    windowSwitch<&W::rgbOrderReversed, &W::setRgbOrderReversed>(VT_WINDOW_RGB_ORDER_REVERSED),
    windowSwitch<&W::refreshEnabled, &W::setRefreshEnabled>(VT_WINDOW_REFRESH_ENABLED),
    windowSwitch<&W::refreshRateAuto, &W::setRefreshRateAuto>(VT_WINDOW_REFRESH_RATE_AUTO),
    windowSwitch<&W::keepImageInfoVisible, &W::setKeepImageInfoVisible>(VT_WINDOW_KEEP_IMAGE_INFO_VISIBLE),
    windowSwitch<&W::analyzeMenuVisible, &W::setAnalyzeMenuVisible>(VT_WINDOW_ANALYZE_MENU_VISIBLE),
    windowSwitch<&W::previewFrameRate, &W::setPreviewFrameRate>(VT_WINDOW_PREVIEW_FRAME_RATE),
    windowSwitch<&W::previewBuffersQueued, &W::setPreviewBuffersQueued>(VT_WINDOW_PREVIEW_BUFFERS_QUEUED),
    windowSwitch<&W::previewBuffersFilled, &W::setPreviewBuffersFilled>(VT_WINDOW_PREVIEW_BUFFERS_FILLED),
    windowSwitch<&W::previewBuffersDropped, &W::setPreviewBuffersDropped>(VT_WINDOW_PREVIEW_BUFFERS_DROPPED),
    windowSwitch<&W::previewBuffersDelivered, &W::setPreviewBuffersDelivered>(VT_WINDOW_PREVIEW_BUFFERS_DELIVERED),
    windowSwitch<&W::previewImageDimensions, &W::setPreviewImageDimensions>(VT_WINDOW_PREVIEW_IMAGE_DIMENSIONS),
    windowSwitch<&W::previewImageFormat, &W::setPreviewImageFormat>(VT_WINDOW_PREVIEW_IMAGE_FORMAT),
    windowSwitch<&W::previewPixelValue, &W::setPreviewPixelValue>(VT_WINDOW_PREVIEW_PIXEL_VALUE),
    windowSwitch<&W::previewZoomLevel, &W::setPreviewZoomLevel>(VT_WINDOW_PREVIEW_ZOOM_LEVEL),
    windowSwitch<&W::previewSetupMode, &W::setPreviewSetupMode>(VT_WINDOW_PREVIEW_SETUP_MODE),
    capability<&S::hasSetup>(VT_SOURCE_HAS_SETUP),
    capability<&S::hasSetupMode>(VT_SOURCE_HAS_SETUP_MODE),
    capability<&S::hasCleanup>(VT_SOURCE_HAS_CLEANUP),
    capability<&S::hasTrigger>(VT_SOURCE_HAS_TRIGGER),
    capability<&S::hasStartSingleReverse>(VT_SOURCE_HAS_START_SINGLE_REVERSE),
    capability<&S::hasStartReverse>(VT_SOURCE_HAS_START_REVERSE),
    capability<&S::hasStart>(VT_SOURCE_HAS_START),
    capability<&S::hasStartFixed>(VT_SOURCE_HAS_START_FIXED),
    capability<&S::hasStartSingle>(VT_SOURCE_HAS_START_SINGLE),
    capability<&S::hasPause>(VT_SOURCE_HAS_PAUSE),
    capability<&S::hasStop>(VT_SOURCE_HAS_STOP),
    capability<&S::hasFrameRate>(VT_SOURCE_HAS_FRAME_RATE),
    capability<&S::hasFramesQueued>(VT_SOURCE_HAS_FRAMES_QUEUED),
    capability<&S::hasFramesFilled>(VT_SOURCE_HAS_FRAMES_FILLED),
    capability<&S::hasFramesDropped>(VT_SOURCE_HAS_FRAMES_DROPPED),
    capability<&S::hasFramesDelivered>(VT_SOURCE_HAS_FRAMES_DELIVERED),
    actionSwitch<&Action::isCheckable, &Action::setCheckable>(VT_ACTION_CHECKABLE),
    actionSwitch<&Action::isChecked, &Action::setChecked>(VT_ACTION_CHECKED),
    actionSwitch<&Action::isEnabled, &Action::setEnabled>(VT_ACTION_ENABLED),
};

constexpr TextProperty textRows[] = {
    {VT_WINDOW_TITLE, [](const Owner& o, char* buffer, std::size_t* size) { return o.window->title(buffer, size); },
     [](const Owner& o, const char* text) { return o.window->setTitle(text), true; }},
    {VT_WINDOW_GEOMETRY_TEXT,
     [](const Owner& o, char* buffer, std::size_t* size) { return o.window->saveGeometry(buffer, size); },
     [](const Owner& o, const char* text) { return o.window->restoreGeometry(text); }},
    {VT_WINDOW_ABOUT_TITLE,
     [](const Owner& o, char* buffer, std::size_t* size) { return o.window->applicationAboutTitle(buffer, size); },
     [](const Owner& o, const char* text) {
         const std::string description =
             wholeText([&](char* buffer, std::size_t* size) { o.window->applicationAboutDescription(buffer, size); });
         return o.window->setApplicationAbout(text, description.c_str()), true;
     }},
    {VT_WINDOW_ABOUT_TEXT,
     [](const Owner& o, char* buffer, std::size_t* size) {
         return o.window->applicationAboutDescription(buffer, size);
     },
     [](const Owner& o, const char* text) {
         const std::string title =
             wholeText([&](char* buffer, std::size_t* size) { o.window->applicationAboutTitle(buffer, size); });
         return o.window->setApplicationAbout(title.c_str(), text), true;
     }},
    {VT_ACTION_TEXT, [](const Owner& o, char* buffer, std::size_t* size) { return o.action->text(buffer, size); },
     [](const Owner& o, const char* text) { return o.action->setText(text), true; }},
    {VT_ACTION_TOOL_TIP,
     [](const Owner& o, char* buffer, std::size_t* size) { return o.action->toolTip(buffer, size); },
     [](const Owner& o, const char* text) { return o.action->setToolTip(text), true; }},
};

constexpr DataProperty dataRows[] = {
    placeProperty<&W::getGeometry, &W::setGeometry>(VT_WINDOW_GEOMETRY),
    placeProperty<&W::getFrameGeometry, &W::setFrameGeometry>(VT_WINDOW_FRAME_GEOMETRY),
    {VT_WINDOW_IMAGE_OFFSET, false, sizeof(Offset),
     [](const Owner& o, void* data) {
         return toData(Offset{o.window->imageOffsetX(), o.window->imageOffsetY()}, data);
     },
     [](const Owner& o, const void* data) {
         const auto offset = fromData<Offset>(data);
         return o.window->setImageOffset(offset.x, offset.y), true;
     },
     nullptr},
    {VT_WINDOW_TRANSIENT_PARENT, false, sizeof(void*),
     [](const Owner& o, void* data) { return toData(static_cast<void*>(o.window->transientParent()), data); },
     &setTransientParent, nullptr},
    {VT_WINDOW_BITMAP_LOCK, true, sizeof(BitmapLock), &readBitmapLock, &writeBitmapLock, &isBitmapLock},
    {VT_WINDOW_BITMAP, true, sizeof(VTRawImage),
     [](const Owner& o, void* data) {
         RawImage bitmap;
         return o.window->getBitmap(&bitmap) && toData(toVTRawImage(bitmap), data);
     },
     nullptr, nullptr},
};

} // namespace

PropertyTable<Property<std::int32_t>> int32Properties()
{
    return {std::begin(int32Rows), std::end(int32Rows)};
}

PropertyTable<Property<double>> doubleProperties()
{
    return {std::begin(doubleRows), std::end(doubleRows)};
}

PropertyTable<Property<bool>> boolProperties()
{
    return {std::begin(boolRows), std::end(boolRows)};
}

PropertyTable<TextProperty> textProperties()
{
    return {std::begin(textRows), std::end(textRows)};
}

PropertyTable<DataProperty> dataProperties()
{
    return {std::begin(dataRows), std::end(dataRows)};
}

} // namespace Vistrel
