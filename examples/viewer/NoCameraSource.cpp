// SPDX-License-Identifier: MIT
// Stands in for cameras where Aravis was not found.
#include "CameraSource.h"

#include <stdexcept>

std::unique_ptr<Vistrel::AbstractAcquisitionInterface> openCamera(const QString&, std::optional<Vistrel::Format>)
{
    throw std::runtime_error("this viewer was built without cameras: install Aravis 0.8 (Debian: libaravis-dev "
                             "libusb-1.0-0-dev) and build again");
}
