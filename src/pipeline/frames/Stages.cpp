// SPDX-License-Identifier: MIT
// The steps from a delivered frame to its picture.
#include "pipeline/frames/Stages.h"

#include <algorithm>

namespace Vistrel {

namespace {

bool hasRows(const std::shared_ptr<const Stage>& stage)
{
    return stage && stage->changesRows();
}

} // namespace

// Two packings at once mean none.
Format Stages::format(Format delivered) const
{
    const std::uint32_t packing = delivered & formatPackingMask;
    auto chosen = static_cast<Format>((delivered & (formatDepthMask | formatLayoutMask | formatOrderMask)) |
                                      (packing == formatPackingMask ? 0 : packing));
    for (const auto& stage : m_stages) {
        if (stage)
            chosen = stage->format(delivered, chosen);
    }
    return chosen;
}

bool Stages::changesRows() const
{
    return std::any_of(m_stages.begin(), m_stages.end(), hasRows);
}

void Stages::changeRows(const RawImage& raw, const PictureTarget& picture, std::size_t row, std::size_t end) const
{
    for (const auto& stage : m_stages) {
        if (hasRows(stage))
            stage->changeRows(raw, picture, row, end);
    }
}

bool Stages::convertOtherwise(const Stages& other, Format delivered) const
{
    for (std::size_t place = 0; place < Stage::Palette; ++place) {
        if (m_stages[place] == other.m_stages[place])
            continue;
        Stages before = *this;
        before.m_stages[place] = other.m_stages[place];
        if (plainFormat(format(delivered)) != plainFormat(before.format(delivered)) || hasRows(m_stages[place]) ||
            hasRows(other.m_stages[place]))
            return true;
    }
    return false;
}

} // namespace Vistrel
