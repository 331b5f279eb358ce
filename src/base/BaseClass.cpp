// SPDX-License-Identifier: MIT
// The common root of the exported classes.
#include <Vistrel/BaseClass.h>

namespace Vistrel {

BaseClass::BaseClass() = default;
BaseClass::BaseClass(const BaseClass&) = default;
BaseClass::BaseClass(BaseClass&&) noexcept = default;
BaseClass& BaseClass::operator=(const BaseClass&) = default;
BaseClass& BaseClass::operator=(BaseClass&&) noexcept = default;
BaseClass::~BaseClass() = default;

} // namespace Vistrel
