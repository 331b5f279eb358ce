// SPDX-License-Identifier: MIT
// A source that wants each of its frames back.
#pragma once

#include <memory>

namespace Vistrel {

/// Implemented beside the acquisition interface by a source that is told when a frame is no longer used.
class FrameLender
{
public:
    /// The frame that the last `getNextFrame` has delivered, on the same thread right after it: in use for as long as
    /// somebody holds this.
    virtual std::shared_ptr<const void> takeDelivered() = 0;

protected:
    ~FrameLender() = default;
};

} // namespace Vistrel
