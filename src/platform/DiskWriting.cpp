// SPDX-License-Identifier: MIT
// Whether what was written has reached the disk.
#include "platform/DiskWriting.h"

#include <QtCore/QFileDevice>

#if !defined(_WIN32)
#include <cerrno>
#include <unistd.h>
#endif

namespace Vistrel {

bool reachesDisk(const QFileDevice& file)
{
#if defined(_WIN32)
    static_cast<void>(file);
    return true;
#else
    // Some file systems do not support it.
    return fsync(file.handle()) == 0 || (errno != EIO && errno != ENOSPC && errno != EDQUOT);
#endif
}

} // namespace Vistrel
