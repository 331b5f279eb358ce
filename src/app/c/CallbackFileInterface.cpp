// SPDX-License-Identifier: MIT
// A file interface made from a C host's functions.
#include "app/c/CallbackFileInterface.h"

#include "base/HostCall.h"

#include <Vistrel/FileIO.h>

#include <utility>

namespace Vistrel {

CallbackFileInterface::CallbackFileInterface(std::shared_ptr<HostFunctions> functions)
    : m_functions(std::move(functions))
{
}

bool CallbackFileInterface::load(const char* const fileName, FileIO* const image)
{
    const auto load = m_functions->get<VTLoadCallback>(VT_FEATURE_FILE_LOAD);
    if (!load || !image)
        return false;
    LentFrame frame(m_functions);
    frame.isLent = hostCall("load", false, [&] { return load(fileName, &frame.image, m_functions->userData); });
    return frame.isLent && image->setData(toRawImage(frame.image));
}

bool CallbackFileInterface::save(const RawImage& image, const char* const fileName)
{
    const auto save = m_functions->get<VTSaveCallback>(VT_FEATURE_FILE_SAVE);
    const VTRawImage frame = toVTRawImage(image);
    return save && save(&frame, fileName, m_functions->userData);
}

} // namespace Vistrel
