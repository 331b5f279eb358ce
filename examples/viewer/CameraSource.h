// SPDX-License-Identifier: MIT
// A GigE Vision or USB3 Vision camera, through Aravis.
#pragma once

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QString>

#include <memory>
#include <optional>

/// Opens the camera of that name, or the first one found for an empty name, and starts it. `format`, when given, is
/// set on the camera. Throws `std::runtime_error` when that fails, or when the camera sends pixels that cannot be shown
/// without conversion.
///
/// Lends the camera's buffers to the window without a copy. Looks for a lost camera until it answers, restores its
/// settings and its state.
std::unique_ptr<Vistrel::AbstractAcquisitionInterface> openCamera(const QString& name,
                                                                  std::optional<Vistrel::Format> format);
