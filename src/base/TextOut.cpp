// SPDX-License-Identifier: MIT
// How the library hands text to its callers.
#include "base/TextOut.h"

#include <QtCore/QString>

#include <algorithm>
#include <cstring>

namespace Vistrel {

bool textOut(std::string_view text, char* buffer, std::size_t* size)
{
    if (!size)
        return false;
    const std::size_t capacity = *size;
    if (buffer && capacity > 0) {
        const std::size_t length = std::min(text.size(), capacity - 1);
        std::memcpy(buffer, text.data(), length);
        buffer[length] = '\0';
        buffer[capacity - 1] = '\0';
    }
    *size = text.size() + 1;
    return true;
}

bool latin1Out(const QString& text, char* buffer, std::size_t* size)
{
    return textOut(text.toLatin1().toStdString(), buffer, size);
}

bool localOut(const QString& text, char* buffer, std::size_t* size)
{
    return textOut(text.toLocal8Bit().toStdString(), buffer, size);
}

} // namespace Vistrel
