// SPDX-License-Identifier: MIT
// The common root of the exported classes.
#pragma once

#include <Vistrel/Export.h>

namespace Vistrel {

/// Empty polymorphic root, so that a handle can be checked by `dynamic_cast`. Never created or deleted by itself.
class VISTREL_EXPORT BaseClass
{
protected:
    BaseClass();
    BaseClass(const BaseClass&);
    BaseClass(BaseClass&&) noexcept;
    BaseClass& operator=(const BaseClass&);
    BaseClass& operator=(BaseClass&&) noexcept;
    virtual ~BaseClass();
};

} // namespace Vistrel
