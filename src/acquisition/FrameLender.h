// SPDX-License-Identifier: MIT
// A source that is told when a frame is no longer used.
#pragma once

#include <memory>

namespace Vistrel {

/// Implemented, with the acquisition interface, by a source that must know when each of its frames is no longer used.
class FrameLender
{
public:
    /// Returns the frame that the last `getNextFrame` delivered; called on the same thread right after it. The frame is
    /// in use as long as a reference to it exists.
    virtual std::shared_ptr<const void> takeDelivered() = 0;

protected:
    ~FrameLender() = default;
};

} // namespace Vistrel
