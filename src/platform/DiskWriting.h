// SPDX-License-Identifier: MIT
// Whether what was written has reached the disk.
#pragma once

class QFileDevice;

namespace Vistrel {

/// Waits until the bytes of an open file that has been flushed are on the disk. False when the system tells only now
/// that they are lost, as it may on a full or a network disk. True on Windows, where the toolkit gives no handle out.
bool reachesDisk(const QFileDevice& file);

} // namespace Vistrel
