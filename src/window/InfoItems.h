// SPDX-License-Identifier: MIT
// What the image information bar can show: one row for each item, from its switch to its text.
#pragma once

#include <Vistrel/PixVal.h>
#include <Vistrel/RawImage.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstddef>
#include <optional>

class QAction;
class Ui_WindowQt;

namespace Vistrel {

class AbstractAcquisitionInterface;

/// In the order of the bar.
enum class InfoItem {
    SetupMode,
    FrameRate,
    Queued,
    Filled,
    Dropped,
    Delivered,
    Dimensions,
    Format,
    Zoom,
    PixelValue,
};
constexpr std::size_t infoItemCount = 10;

/// What the items are read from.
struct InfoState
{
    const AbstractAcquisitionInterface* source = nullptr; // or null
    QByteArray setupMode;                                 // null when none is active
    RawImage image;                                       // the pixels are not read
    double scaling = 0;
    PixPos pixel{-1, -1};        // negative: there is no such pixel
    std::optional<PixVal> value; // none when it could not be read
};

/// When an item may have changed.
enum class InfoMoment { Mode, Statistics, Image, Zoom, Pixel };

struct InfoRow
{
    QAction* Ui_WindowQt::*action;                     // switches the item
    bool (AbstractAcquisitionInterface::*has)() const; // whether the source has the item; null when every source does
    QString (*value)(const InfoState& state);          // null when it has none
    const char* name;
    const char* caption; // around the value and its unit, in the bar alone
    const char* unit;
    const char* usual; // the value that the bar reserves room for at first; null: a dash
    InfoMoment moment;
    int importance; // a narrow bar leaves out the smallest first
};

const InfoRow& infoRow(InfoItem item);

/// The values of a pixel as text; null without a pixel.
QString pixelText(const PixPos& position, const std::optional<PixVal>& value);
QString widestPixelText(const RawImage& image); ///< of the pixels that such an image may have

QString infoName(InfoItem item);
QString infoWithUnit(InfoItem item, const QString& value);
/// Returns what the bar shows for a value: a dash for an empty one.
QString infoText(InfoItem item, const QString& value);

} // namespace Vistrel
