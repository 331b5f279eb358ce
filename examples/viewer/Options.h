// SPDX-License-Identifier: MIT
// The viewer's command line.
#pragma once

#include <Vistrel/Format.h>

#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

struct Options
{
    enum class Source { Pattern, Files, Camera };

    Source source = Source::Pattern;
    QString location;                      // folder of the files, or name of the camera; empty: the first camera found
    std::optional<Vistrel::Format> format; // of the pattern, or to be set on the camera
    QSize size{1280, 960};                 // pixels, of the pattern
    double fps = 60;                       // of the pattern and the files
    double zoom = 0;                       // percent; 0: to fit
    quint64 frames = 0;                    // ends after this number of published frames; 0: never
    QString screenshot;                    // file that the window is saved to at the end
    bool help = false;
};

/// Reads the command line, program name first. Returns nothing and writes a line to `error` when it is wrong.
std::optional<Options> parseOptions(const QStringList& arguments, QString* error);

QString helpText();
