// SPDX-License-Identifier: MIT
// How the library hands text to its callers.
#pragma once

#include <cstddef>
#include <string_view>

class QString;

namespace Vistrel {

/// Copies `text` and a terminating zero into `buffer`, whose capacity `*size` is on entry, and stores the length plus
/// one in `*size`. A text too long arrives cut and terminated. False only when `size` is null; a null buffer only
/// measures.
bool textOut(std::string_view text, char* buffer, std::size_t* size);

bool latin1Out(const QString& text, char* buffer, std::size_t* size); ///< encodes the text in Latin-1
bool localOut(const QString& text, char* buffer, std::size_t* size);  ///< encodes the text in the local encoding

} // namespace Vistrel
