// SPDX-License-Identifier: MIT
// A file interface made from a C host's functions.
#pragma once

#include "app/c/HostFunctions.h"

#include <Vistrel/AbstractFileInterface.h>

namespace Vistrel {

class CallbackFileInterface : public AbstractFileInterface
{
public:
    explicit CallbackFileInterface(std::shared_ptr<HostFunctions> functions);

    bool load(const char* const fileName, FileIO* const image) override;
    bool save(const RawImage& image, const char* const fileName) override;

private:
    const std::shared_ptr<HostFunctions> m_functions;
};

} // namespace Vistrel
