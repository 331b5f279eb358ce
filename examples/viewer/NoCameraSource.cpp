// SPDX-License-Identifier: MIT
// Replaces the camera source in a build without Aravis.
#include "CameraSource.h"

#include <stdexcept>

std::unique_ptr<Vistrel::AbstractAcquisitionInterface> openCamera(const QString&, std::optional<Vistrel::Format>)
{
    throw std::runtime_error("this viewer was built without cameras: install Aravis 0.8 (Debian: libaravis-dev "
                             "libusb-1.0-0-dev) and build again");
}
