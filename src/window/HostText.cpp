// SPDX-License-Identifier: MIT
// Reads a text that the host writes into a buffer.
#include "window/HostText.h"

#include "base/HostCall.h"

namespace Vistrel {

namespace {

constexpr std::size_t longestText = 1 << 16; // bytes

} // namespace

QByteArray hostText(const char* query, const std::function<bool(char* buffer, std::size_t* size)>& question)
{
    return hostCall(query, QByteArray(), [&] {
        std::size_t size = 0;
        if (!question(nullptr, &size) || size == 0 || size > longestText)
            return QByteArray();
        QByteArray text(static_cast<int>(size), '\0');
        // A text that has grown since the first call stays cut.
        if (!question(text.data(), &size))
            return QByteArray();
        return QByteArray(text.constData());
    });
}

} // namespace Vistrel
