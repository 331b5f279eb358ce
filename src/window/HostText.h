// SPDX-License-Identifier: MIT
// Reads a text that the host hands out by the protocol of buffer and size.
#pragma once

#include <QtCore/QByteArray>

#include <cstddef>
#include <functional>

namespace Vistrel {

/// Null when the host has none, or throws, which is reported with the query's name.
QByteArray hostText(const char* query, const std::function<bool(char* buffer, std::size_t* size)>& question);

} // namespace Vistrel
