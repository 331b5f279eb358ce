// SPDX-License-Identifier: MIT
// Chooses the toolkit's platform for a test program, and for those that it starts, unless the environment names one. An
// environment variable from outside would do on Linux; Wine keeps the toolkit's from its programs.
#include <QtCore/QByteArray>

namespace {

[[maybe_unused]] const bool isChosen =
    qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qputenv("QT_QPA_PLATFORM", VISTREL_TEST_PLATFORM);

} // namespace
