// SPDX-License-Identifier: MIT
// Where the viewer writes what it has to say.
#pragma once

#include <QtCore/QString>

/// Takes the console that the program was started from, if any, where the standard streams lead nowhere: on Windows, a
/// program of windows has none unless they were redirected. To be called first. False when nobody can read its errors.
bool useConsole();

/// Writes a line to the standard output stream, as the next one to the standard error stream after the program's name.
/// A console shows every letter; elsewhere the encoding is the local one. Thread-safe.
void printLine(const QString& line);
void printError(const QString& line);
