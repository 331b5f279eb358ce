// SPDX-License-Identifier: MIT
// Reads a text that the host writes into a buffer.
#pragma once

#include <QtCore/QByteArray>

#include <cstddef>
#include <functional>

namespace Vistrel {

/// Calls `question` for the size, then for the text. Null when the host has none or throws; an exception is reported
/// with the name `query`.
QByteArray hostText(const char* query, const std::function<bool(char* buffer, std::size_t* size)>& question);

} // namespace Vistrel
