// SPDX-License-Identifier: MIT
// Runs the same code in every kind of vectors that this processor has.
#pragma once

#include <hwy/targets.h>

#include <QtCore/QByteArray>

/// Calls `fault` once for each kind, the plain loops included; it returns what went wrong, or nothing. The first fault
/// found is returned, with the kind's name.
template <typename Fault>
QByteArray faultInVectors(Fault&& fault)
{
    const auto use = [](std::int64_t units) {
        hwy::SetSupportedTargetsForTest(units);
        hwy::GetChosenTarget().DeInit();
    };
    static const auto all = new auto(hwy::SupportedAndGeneratedTargets());
    for (const std::int64_t unit : *all) {
        use(unit);
        const QByteArray found = fault();
        use(0);
        if (!found.isEmpty())
            return QByteArray(hwy::TargetName(unit)) + ": " + found;
    }
    return QByteArray();
}
