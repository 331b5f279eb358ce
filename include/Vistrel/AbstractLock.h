// SPDX-License-Identifier: MIT
// A lock that is released by destroying it.
#pragma once

#include <Vistrel/BaseClass.h>

namespace Vistrel {

/// A concrete lock releases its resource in its destructor, which must not throw and may run on any thread. Reentrant.
class VISTREL_EXPORT AbstractLock : public BaseClass
{
public:
    ~AbstractLock() override;

protected:
    AbstractLock();
    AbstractLock(const AbstractLock&);
    AbstractLock& operator=(const AbstractLock&);
};

} // namespace Vistrel
