// SPDX-License-Identifier: MIT
// What the image information bar can show: one row for each item, from its switch to its text.
#include "window/InfoItems.h"

#include "base/HostCall.h"
#include "pipeline/pixels/PixelFormats.h"
#include "ui_WindowQt.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QCoreApplication>

#include <cmath>
#include <cstdint>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

constexpr int longestMode = 32; // characters; a longer name is cut in the bar

QString translated(const char* text)
{
    return QCoreApplication::translate("Vistrel::InfoBar", text);
}

bool isKnown(const RawImage& image)
{
    return image.data && image.width > 0 && image.height > 0;
}

template <typename Value>
std::optional<Value> statistic(const InfoState& state, const char* query, Value (Source::*value)() const)
{
    return hostCall(query, std::optional<Value>(),
                    [&] { return state.source ? std::optional<Value>((state.source->*value)()) : std::nullopt; });
}

QString modeText(const InfoState& state)
{
    return QString::fromLocal8Bit(state.setupMode).simplified();
}

QString frameRateText(const InfoState& state)
{
    const std::optional<double> rate = statistic(state, "frameRate", &Source::frameRate);
    return rate && std::isfinite(*rate) && *rate >= 0 ? QString::number(*rate, 'f', 2) : QString();
}

QString countText(const std::optional<std::size_t>& count)
{
    return count ? QString::number(static_cast<qulonglong>(*count)) : QString();
}

QString dimensionsText(const InfoState& state)
{
    const RawImage& image = state.image;
    const QString text = translated("%1 x %2 x %3 bit");
    return isKnown(image) ? text.arg(image.width).arg(image.height).arg(formatDepth(image.format)) : QString();
}

QString formatText(const InfoState& state)
{
    return isKnown(state.image) ? QString::fromLatin1(formatName(state.image.format)) : QString();
}

QString zoomText(const InfoState& state)
{
    return state.scaling > 0 ? QString::number(state.scaling * 100, 'f', 1) : QString();
}

#define VISTREL_COUNT(query) [](const InfoState& state) { return countText(statistic(state, #query, &Source::query)); }

// clang-format off
constexpr InfoRow rows[infoItemCount] = {
    {&Ui_WindowQt::actionActive_Setup_Mode, &Source::hasSetupMode, modeText,
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Playback Mode"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Mode: %1"), "%1", nullptr, InfoMoment::Mode, 6},
    {&Ui_WindowQt::actionFrame_Rate, &Source::hasFrameRate, frameRateText,
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frame Rate"), "%1", QT_TRANSLATE_NOOP("Vistrel::InfoBar", "%1 fps"), "000.00", InfoMoment::Statistics, 9},
    {&Ui_WindowQt::actionBuffers_Queued, &Source::hasFramesQueued, VISTREL_COUNT(framesQueued),
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frames Queued"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Queued: %1"), "%1", "00", InfoMoment::Statistics, 3},
    {&Ui_WindowQt::actionBuffers_Filled, &Source::hasFramesFilled, VISTREL_COUNT(framesFilled),
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frames Filled"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Filled: %1"), "%1", "00", InfoMoment::Statistics, 2},
    {&Ui_WindowQt::actionBuffers_Dropped, &Source::hasFramesDropped, VISTREL_COUNT(framesDropped),
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frames Dropped"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Dropped: %1"), "%1", "000", InfoMoment::Statistics, 7},
    {&Ui_WindowQt::actionBuffers_Delivered, &Source::hasFramesDelivered, VISTREL_COUNT(framesDelivered),
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Frames Delivered"), QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Delivered: %1"), "%1", "00000", InfoMoment::Statistics, 4},
    {&Ui_WindowQt::actionImageDimensions, nullptr, dimensionsText,
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Dimensions"), "%1", "%1", nullptr, InfoMoment::Image, 5},
    {&Ui_WindowQt::actionImage_Format, nullptr, formatText,
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Image Format"), "%1", "%1", nullptr, InfoMoment::Image, 1},
    {&Ui_WindowQt::actionZoom_Level, nullptr, zoomText,
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Zoom Level"), "%1", QT_TRANSLATE_NOOP("Vistrel::InfoBar", "%1 %"), "000.0", InfoMoment::Zoom, 10},
    {&Ui_WindowQt::actionPixel_Value, nullptr,
     [](const InfoState& state) { return pixelText(state.pixel, state.value); },
     QT_TRANSLATE_NOOP("Vistrel::InfoBar", "Pixel Value"), "%1", "%1", nullptr, InfoMoment::Pixel, 11},
};
// clang-format on

#undef VISTREL_COUNT

} // namespace

const InfoRow& infoRow(InfoItem item)
{
    return rows[static_cast<std::size_t>(item)];
}

QString pixelText(const PixPos& position, const std::optional<PixVal>& value)
{
    if (position.x < 0 || position.y < 0)
        return {};
    const QString place = QStringLiteral("(%1, %2) ").arg(position.x).arg(position.y);
    if (value && value->color)
        return place + QStringLiteral("R: %1 G: %2 B: %3").arg(value->r).arg(value->g).arg(value->b);
    return place + (value && value->mono ? QString::number(value->value) : QStringLiteral("\u2013"));
}

QString widestPixelText(const RawImage& image)
{
    if (!isKnown(image))
        return {};
    const std::uint32_t maximum = channelMaximum(image.format);
    const bool isMono = isMonochrome(image.format);
    const PixPos last{static_cast<int>(image.width) - 1, static_cast<int>(image.height) - 1};
    return pixelText(last, PixVal{isMono, maximum, !isMono, maximum, maximum, maximum});
}

QString infoName(InfoItem item)
{
    return translated(infoRow(item).name);
}

QString infoWithUnit(InfoItem item, const QString& value)
{
    return translated(infoRow(item).unit).arg(value);
}

QString infoText(InfoItem item, const QString& value)
{
    QString text = value.isEmpty() ? QStringLiteral("\u2013") : value;
    if (item == InfoItem::SetupMode && text.size() > longestMode)
        text = text.left(longestMode - 1) + QChar(0x2026);
    return translated(infoRow(item).caption).arg(infoWithUnit(item, text));
}

} // namespace Vistrel
