// SPDX-License-Identifier: MIT
// The steps from a delivered frame to its picture.
#pragma once

#include "pipeline/pixels/PixelFormats.h"

#include <array>
#include <cstddef>
#include <memory>
#include <utility>

namespace Vistrel {

/// A step from a delivered frame to its picture, with its settings. A stage is immutable: other settings make another
/// object, so that the object identifies its version. Thread-safe.
class Stage
{
public:
    /// The order of the stages. The palette is applied to the converted pixels, the others make them.
    enum Place : std::size_t { Order, Mosaic, Palette, Count };

    Stage() = default;
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    virtual ~Stage() = default;

    /// The format in which a frame of format `delivered` is converted; the stages before this one chose `chosen`.
    virtual Format format(Format /*delivered*/, Format chosen) const { return chosen; }

    /// Whether `changeRows` does anything.
    virtual bool changesRows() const { return false; }
    /// Changes converted rows below `end` in place, while they are in the cache. Several threads may change rows of one
    /// picture at once.
    virtual void changeRows(const RawImage&, const PictureTarget&, std::size_t /*row*/, std::size_t /*end*/) const {}
};

/// The stages of a picture. A place holds null while its stage is off.
class Stages
{
public:
    template <typename T>
    std::shared_ptr<const T> get() const
    {
        return std::static_pointer_cast<const T>(m_stages[T::place]);
    }
    void set(Stage::Place place, std::shared_ptr<const Stage> stage) { m_stages[place] = std::move(stage); }

    /// The format in which a frame is converted.
    Format format(Format delivered) const;
    bool changesRows() const;
    void changeRows(const RawImage& raw, const PictureTarget& picture, std::size_t row, std::size_t end) const;

    /// Whether a stage that differs from that of `other` makes other pixels of a frame of this format.
    bool convertOtherwise(const Stages& other, Format delivered) const;

private:
    std::array<std::shared_ptr<const Stage>, Stage::Count> m_stages;
};

} // namespace Vistrel
