// SPDX-License-Identifier: MIT
// A GigE Vision or USB3 Vision camera, through Aravis.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QString>

#include <memory>
#include <optional>

/// Opens the camera of that name, or the first one found when it is empty, and starts it. `format`, when given, is
/// asked of the camera. Throws `std::runtime_error` when that is not possible, or when the camera sends pixels that
/// cannot be shown as they are.
///
/// The camera's own buffers are lent to the display: no pixel is copied on the way. A camera that is lost is looked for
/// until it answers, told its settings again, and goes on as it was.
std::unique_ptr<Vistrel::AbstractAcquisitionInterface> openCamera(const QString& name,
                                                                  std::optional<Vistrel::Format> format);
