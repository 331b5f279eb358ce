// SPDX-License-Identifier: MIT
// The viewer's output.
#pragma once

#include <QtCore/QString>

/// If the standard streams are not connected, uses the console that the program was started from: on Windows, a program
/// without a console has none unless they are redirected. Call it first. Returns false when its errors cannot be read.
bool useConsole();

/// The first writes a line to the standard output stream, the second the program's name and a line to the standard
/// error stream. A console gets every character; a file or pipe gets the local encoding. Thread-safe.
void printLine(const QString& line);
void printError(const QString& line);
