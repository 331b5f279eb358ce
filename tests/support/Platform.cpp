// SPDX-License-Identifier: MIT
// Chooses Qt's platform for a test program, and for those that it starts, unless the environment names one. CTest
// cannot set it for both systems: Wine does not pass Qt's environment variables to its programs.
#include <QtCore/QByteArray>

namespace {

[[maybe_unused]] const bool isChosen =
    qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qputenv("QT_QPA_PLATFORM", VISTREL_TEST_PLATFORM);

} // namespace
