// SPDX-License-Identifier: MIT
// Format codes without what means nothing in them.
#pragma once

#include <Vistrel/Format.h>

namespace Vistrel {

/// The format as which a code with stray or meaningless fields, such as a channel order in monochrome, is shown. The
/// code itself when it is shown as none.
Format plainFormat(Format format);

} // namespace Vistrel
