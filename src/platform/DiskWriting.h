// SPDX-License-Identifier: MIT
// Whether what was written has reached the disk.
#pragma once

class QFileDevice;

namespace Vistrel {

/// Blocks until the bytes of an open, flushed file are on the disk. Returns false when the system reports only now that
/// they are lost, as on a full or a network disk. Returns true on Windows, where Qt gives no handle of the file.
bool reachesDisk(const QFileDevice& file);

} // namespace Vistrel
