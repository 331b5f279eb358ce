// SPDX-License-Identifier: MIT
// Reads a text that the host hands out by the protocol of buffer and size.
#include "window/HostText.h"

#include "base/HostCall.h"

namespace Vistrel {

namespace {

constexpr std::size_t longestText = 1 << 16; // bytes; what a source says of itself is not longer

} // namespace

QByteArray hostText(const char* query, const std::function<bool(char* buffer, std::size_t* size)>& question)
{
    return hostCall(query, QByteArray(), [&] {
        std::size_t size = 0;
        if (!question(nullptr, &size) || size == 0 || size > longestText)
            return QByteArray();
        QByteArray text(static_cast<int>(size), '\0');
        // It may have changed meanwhile: what was cut is cut.
        if (!question(text.data(), &size))
            return QByteArray();
        return QByteArray(text.constData());
    });
}

} // namespace Vistrel
