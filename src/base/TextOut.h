// SPDX-License-Identifier: MIT
// How the library hands text to its callers.
#pragma once

#include <cstddef>
#include <string_view>

class QString;

namespace Vistrel {

/// Copies `text` and a terminating zero into `buffer`. `*size` is the buffer's capacity on entry and the text's length
/// plus one on return. A text that is too long is cut and terminated; a null buffer only measures. Returns false only
/// for a null `size`.
bool textOut(std::string_view text, char* buffer, std::size_t* size);

bool latin1Out(const QString& text, char* buffer, std::size_t* size); ///< encodes the text in Latin-1
bool localOut(const QString& text, char* buffer, std::size_t* size);  ///< encodes the text in the local encoding

} // namespace Vistrel
