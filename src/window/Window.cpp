// SPDX-License-Identifier: MIT
// A display window, for hosts that do not use Qt.
#include "window/Window_p.h"

#include "base/Log.h"
#include "base/TextOut.h"
#include "base/UserInterfaceCall.h"

#include <Vistrel/Action.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtWidgets/QAction>

#include <cassert>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

namespace Vistrel {

// The window behind it ------------------------------------------------------------------------------------------------

Window::PrivateData::PrivateData(Window* owner, WindowQt* newWindow)
    : window(owner), windowQt(newWindow), transientLink(new TransientLink(newWindow))
{
    connect(windowQt, SIGNAL(partsGoing()), this, SLOT(windowQtDestroyed()));
    connect(windowQt, SIGNAL(destroyed()), this, SLOT(windowQtDestroyed()));
}

void Window::PrivateData::windowQtDestroyed()
{
    clearCallTarget(window);
    transientLink.reset();
    windowQt = nullptr;
}

void Window::PrivateData::windowIsGone(const char* member)
{
#if !defined(NDEBUG)
    reportLine(std::string("Vistrel::Window::") + member + ": The window has been closed.");
    assert(!"a member of Vistrel::Window was called after the window had been closed");
#endif
    static_cast<void>(member);
}

Window::Window(ScopedAcquisitionInterface&& acquisitionInterface)
    : Window(std::move(acquisitionInterface), ScopedFileInterface())
{
}

Window::Window(ScopedAcquisitionInterface&& acquisitionInterface, ScopedFileInterface&& fileInterface)
    : m_data(new PrivateData(this, new WindowQt(std::move(acquisitionInterface), std::move(fileInterface))))
{
    addCallTarget(this, m_data->windowQt);
}

Window::~Window()
{
    removeCallTarget(this);
    m_data->transientLink.reset();
    if (WindowQt* const window = std::exchange(m_data->windowQt, nullptr))
        window->discard();
}

bool Window::good() const
{
    return m_data->windowQt;
}

QWidget* Window::qt_handle()
{
    return m_data->windowQt;
}

const QWidget* Window::qt_handle() const
{
    return m_data->windowQt;
}

void Window::setTitle(const char* const title)
{
    m_data->tell("setTitle", [=](WindowQt& w) { w.setWindowTitle(QString::fromLatin1(title)); });
}

bool Window::title(char* const buffer, std::size_t* const size) const
{
    return m_data->ask("title", [=](WindowQt& w) { return latin1Out(w.windowTitle(), buffer, size); });
}

// Forwards ------------------------------------------------------------------------------------------------------------

// clang-format off
#define VISTREL_PART(Part, getter)                                                                                     \
    Part* Window::getter() { return m_data->ask(#getter, [](WindowQt& w) { return w.getter(); }); }                    \
    const Part* Window::getter() const { return const_cast<Window*>(this)->getter(); }

VISTREL_PART(AbstractAcquisitionInterface, acquisitionInterface)
VISTREL_PART(AbstractFileInterface, fileInterface)
VISTREL_PART(SurfaceStream, surfaceStream)
VISTREL_PART(SurfaceScrollArea, surfaceScrollArea)

#define VISTREL_COMMAND(member, call)                                                                                  \
    void Window::member() { m_data->tell(#member, [](WindowQt& w) { w.call; }); }

VISTREL_COMMAND(show, setVisible(true))
VISTREL_COMMAND(hide, setVisible(false))
VISTREL_COMMAND(raise, raise())
VISTREL_COMMAND(minimize, showMinimized())
VISTREL_COMMAND(maximize, showMaximized())
VISTREL_COMMAND(restore, showNormal())
VISTREL_COMMAND(setRunning, setRunning())
VISTREL_COMMAND(setConfigured, setConfigured())
VISTREL_COMMAND(setUnconfigured, setUnconfigured())
VISTREL_COMMAND(unlockBitmap, surfaceStream()->unlockBitmap())

#define VISTREL_QUERY(Type, member, answer)                                                                            \
    Type Window::member() const { return m_data->ask(#member, [](WindowQt& w) { return answer; }); }

VISTREL_QUERY(HWND, native_handle, reinterpret_cast<HWND>(w.winId()))
VISTREL_QUERY(int, width, w.width())
VISTREL_QUERY(int, height, w.height())
VISTREL_QUERY(bool, isMinimized, w.isMinimized())
VISTREL_QUERY(bool, isMaximized, w.isMaximized())
VISTREL_QUERY(Format, bayerFilterOverride, w.bayerDemosaicFilter())
VISTREL_QUERY(double, zoomLevel, w.surfaceScrollArea()->zoomScaling())
VISTREL_QUERY(int, imageOffsetX, w.surfaceScrollArea()->imageOffset().x())
VISTREL_QUERY(int, imageOffsetY, w.surfaceScrollArea()->imageOffset().y())
VISTREL_QUERY(bool, bitmapLocked, w.surfaceStream()->bitmapLocked())

#define VISTREL_PROPERTY(Type, Setter, getter, target, targetGetter)                                                   \
    void Window::Setter(Type value) { m_data->tell(#Setter, [=](WindowQt& w) { (target).Setter(value); }); }           \
    VISTREL_QUERY(Type, getter, (target).targetGetter())

VISTREL_PROPERTY(bool, setVisible, isVisible, w, isVisible)
VISTREL_PROPERTY(bool, setFullScreen, isFullScreen, w, fullScreen)
VISTREL_PROPERTY(bool, setExhibitView, isExhibitView, w, exhibitView)
VISTREL_PROPERTY(bool, setCloseable, closeable, w, closeable)
VISTREL_PROPERTY(bool, setPreviewFrameRate, previewFrameRate, w, previewFrameRate)
VISTREL_PROPERTY(bool, setPreviewBuffersQueued, previewBuffersQueued, w, previewBuffersQueued)
VISTREL_PROPERTY(bool, setPreviewBuffersFilled, previewBuffersFilled, w, previewBuffersFilled)
VISTREL_PROPERTY(bool, setPreviewBuffersDropped, previewBuffersDropped, w, previewBuffersDropped)
VISTREL_PROPERTY(bool, setPreviewBuffersDelivered, previewBuffersDelivered, w, previewBuffersDelivered)
VISTREL_PROPERTY(bool, setPreviewImageDimensions, previewImageDimensions, w, previewImageDimensions)
VISTREL_PROPERTY(bool, setPreviewImageFormat, previewImageFormat, w, previewImageFormat)
VISTREL_PROPERTY(bool, setPreviewPixelValue, previewPixelValue, w, previewPixelValue)
VISTREL_PROPERTY(bool, setPreviewZoomLevel, previewZoomLevel, w, previewZoomLevel)
VISTREL_PROPERTY(bool, setPreviewSetupMode, previewSetupMode, w, previewSetupMode)
VISTREL_PROPERTY(bool, setKeepImageInfoVisible, keepImageInfoVisible, w, keepImageInfoVisible)
VISTREL_PROPERTY(ColorTable, setColorTable, colorTable, w, colorTable)
VISTREL_PROPERTY(bool, setBayerDemosaicEnabled, bayerDemosaicEnabled, w, bayerDemosaicEnabled)
VISTREL_PROPERTY(bool, setRgbOrderReversed, rgbOrderReversed, w, rgbOrderReversed)
VISTREL_PROPERTY(bool, setPixelCrosshairVisible, pixelCrosshairVisible, w, pixelCrosshairVisible)
VISTREL_PROPERTY(PixelValues, setPixelValues, pixelValues, *w.surfaceScrollArea()->surface(), pixelValues)
VISTREL_PROPERTY(ShrinkMode, setShrinkMode, shrinkMode, *w.surfaceScrollArea()->surface(), shrinkMode)
VISTREL_PROPERTY(bool, setAnalyzeMenuVisible, analyzeMenuVisible, w, analyzeMenuVisible)
VISTREL_PROPERTY(bool, setRefreshEnabled, refreshEnabled, *w.surfaceStream(), refreshEnabled)
VISTREL_PROPERTY(int, setRefreshRate, refreshRate, *w.surfaceStream(), refreshRate)
VISTREL_PROPERTY(bool, setRefreshRateAuto, refreshRateAuto, *w.surfaceStream(), refreshRateAuto)
VISTREL_PROPERTY(bool, setZoomToFit, zoomToFit, *w.surfaceScrollArea(), zoomToFit)

#undef VISTREL_PART
#undef VISTREL_COMMAND
#undef VISTREL_QUERY
#undef VISTREL_PROPERTY
// clang-format on

// The image -----------------------------------------------------------------------------------------------------------

void Window::setBayerFilterOverride(Format filter)
{
    m_data->tell("setBayerFilterOverride", [=](WindowQt& w) {
        // By the pattern's bits.
        constexpr void (WindowQt::*choices[])() = {
            &WindowQt::setBayerDemosaicFilterAuto, &WindowQt::setBayerDemosaicFilterGBRG,
            &WindowQt::setBayerDemosaicFilterGRBG, &WindowQt::setBayerDemosaicFilterRGGB,
            &WindowQt::setBayerDemosaicFilterBGGR};
        const auto value = static_cast<std::uint32_t>(filter);
        if ((value & ~formatPatternMask) == 0 && value >> 8 < std::size(choices))
            (w.*choices[value >> 8])();
        else
            reportLine("Vistrel::Window::setBayerFilterOverride: Unknown Bayer filter with index " +
                       std::to_string(value) + ".");
    });
}

void Window::setZoomLevel(double zoom)
{
    m_data->tell("setZoomLevel", [=](WindowQt& w) {
        SurfaceScrollArea& area = *w.surfaceScrollArea();
        if (area.surface()->pixmap().isNull())
            area.surface()->setScaling(zoom); // for later images; there is no centre to keep
        else
            area.setZoomTo(zoom, QPoint(-1, -1));
    });
}

void Window::setImageOffset(int x, int y)
{
    m_data->tell("setImageOffset", [=](WindowQt& w) { w.surfaceScrollArea()->setImageOffset(QPointF(x, y)); });
}

bool Window::setBitmapLocked(int width, int height, Format format)
{
    return m_data->ask("setBitmapLocked",
                       [=](WindowQt& w) { return w.surfaceStream()->setBitmapLocked(width, height, format); });
}

bool Window::getBitmap(RawImage* const image) const
{
    return m_data->ask("getBitmap", [=](WindowQt& w) { return w.surfaceStream()->getBitmap(image); });
}

// Actions -------------------------------------------------------------------------------------------------------------

Action* Window::addMainMenuAction(ScopedActionInterface&& actionInterface, const char* const menuTitle,
                                  const char* const actionText)
{
    return m_data->ask("addMainMenuAction", [&](WindowQt& w) {
        return new Action(this,
                          w.addMainMenuAction(QString::fromLocal8Bit(menuTitle), QString::fromLocal8Bit(actionText)),
                          std::move(actionInterface));
    });
}

Action* Window::addToolBarAction(ScopedActionInterface&& actionInterface, const char* const actionText)
{
    return m_data->ask("addToolBarAction", [&](WindowQt& w) {
        return new Action(this, w.addToolBarAction(QString::fromLocal8Bit(actionText)), std::move(actionInterface));
    });
}

Action* Window::addImageStatsAction(ScopedActionInterface&& actionInterface, const char* const actionText)
{
    return m_data->ask("addImageStatsAction", [&](WindowQt& w) {
        return new Action(this, w.addImageStatsAction(QString::fromLocal8Bit(actionText)), std::move(actionInterface));
    });
}

// Transient parent ----------------------------------------------------------------------------------------------------

void Window::setTransientParent(HWND parent)
{
    m_data->tell("setTransientParent", [=](WindowQt&) { m_data->transientLink->setParent(parent); });
}

HWND Window::transientParent() const
{
    return m_data->transientLink ? m_data->transientLink->parentHandle() : nullptr;
}

} // namespace Vistrel
